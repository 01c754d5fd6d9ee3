#pragma once

#include "camerapool/icamera.h"

#include <QMutex>
#include <QWidget>

class QAction;
class QLabel;
class ViewerHost;

/// The open camera's image with Single Shot, Continuous Shot and Stop. Frames
/// are converted on the GUI thread; while one waits there, newer frames
/// replace it, so a slow display never queues up frames.
class LiveView : public QWidget {
    Q_OBJECT
public:
    explicit LiveView(ViewerHost& host, QWidget* parent = nullptr);
    ~LiveView() override;

    /// Opens `camera` (shared with other users of the pool) in place of the
    /// current one; false with the camera's error description logged on failure.
    bool openCamera(QSharedPointer<Plugin::CameraPool::ICameraInfo> camera);
    void closeCamera();
    QSharedPointer<Plugin::CameraPool::ICamera> camera() const { return m_camera; }
    QImage lastImage() const { return m_image; }

    QAction* singleShotAction() const { return m_singleShot; }
    QAction* continuousShotAction() const { return m_continuous; }
    QAction* stopAction() const { return m_stop; }

signals:
    void frameShown(quint64 imageNumber);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void onGrabbed(const Kalto::CGrabResultPtr& result);
    void showLatest();
    void updateActions();
    void showScaled();

    ViewerHost& m_host;
    QSharedPointer<Plugin::CameraPool::ICamera> m_camera;
    QLabel* m_display;
    QLabel* m_status;
    QAction* m_singleShot;
    QAction* m_continuous;
    QAction* m_stop;
    QMutex m_latestMutex;
    Kalto::CGrabResultPtr m_latest;  // guarded by m_latestMutex
    QImage m_image;
};
