#pragma once

#include "camerapool/icamerainfo.h"

#include <QDockWidget>

class QTreeWidget;
class QTreeWidgetItem;
class ViewerHost;

/// Every camera of every transport layer, grouped by layer. Selecting an item
/// tells the selector service (a layer is a selectable non-camera item);
/// double-click asks to open the camera; the context menu is the menu
/// service's camera selector context menu.
class CameraSelectorDock : public QDockWidget {
    Q_OBJECT
public:
    explicit CameraSelectorDock(ViewerHost& host, QWidget* parent = nullptr);

    /// Re-reads the cameras of every layer.
    void refresh();
    /// Selects the camera of that id; false when no listed camera has it.
    bool selectCamera(const QString& deviceId);
    QTreeWidget* tree() const { return m_tree; }

signals:
    void openRequested(QSharedPointer<Plugin::CameraPool::ICameraInfo> camera);

private:
    void onCurrentItemChanged(QTreeWidgetItem* item);
    void showContextMenu(const QPoint& position);

    ViewerHost& m_host;
    QTreeWidget* m_tree;
};
