#pragma once

#include "camerapool/icamerainfo.h"

#include <QDockWidget>

class QTimer;
class QTreeWidget;
class ViewerHost;

/// The selected camera's features as a tree of editors, grouped by what they
/// control. Every editor is read again whenever the camera reports a change,
/// since selectors and auto functions change other features too.
class FeaturesDock : public QDockWidget {
    Q_OBJECT
public:
    explicit FeaturesDock(ViewerHost& host, QWidget* parent = nullptr);

    /// Shows the features of `camera`; nothing for a null camera.
    void showCamera(QSharedPointer<Plugin::CameraPool::ICameraInfo> camera);
    QTreeWidget* tree() const { return m_tree; }

private:
    void refreshAll();

    ViewerHost& m_host;
    QTreeWidget* m_tree;
    QTimer* m_refresh;
    QSharedPointer<Plugin::CameraPool::ICameraInfo> m_camera;
};
