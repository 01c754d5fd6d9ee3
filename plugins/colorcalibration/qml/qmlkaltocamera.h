#pragma once

#include <QImage>
#include <QQuickItem>
#include <QSize>

#include <memory>

class CameraInterface;
class QAbstractVideoSurface;

/// The live camera image for QML: frames go into the video surface that a
/// VideoOutput sets, a busy indicator shows while a grab takes over a second,
/// and a logo replaces the image when a grab fails.
class QMLKaltoCamera : public QQuickItem {
    Q_OBJECT
    /// Pause between grabs in ms.
    Q_PROPERTY(int interval READ interval WRITE setInterval NOTIFY intervalChanged)
    Q_PROPERTY(QAbstractVideoSurface* videoSurface READ videoSurface WRITE setVideoSurface)
    /// Size of the frames handed to the surface.
    Q_PROPERTY(QSize size READ size WRITE setSize NOTIFY sizeChanged)
    /// Size of the camera's own images.
    Q_PROPERTY(QSize originalSize READ originalSize WRITE setOriginalSize NOTIFY originalSizeChanged)
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
public:
    /// `camera` is not owned. Reads the interval from the persistent settings.
    explicit QMLKaltoCamera(CameraInterface* camera, QQuickItem* parent = nullptr);
    ~QMLKaltoCamera() override;

    int interval() const;
    void setInterval(int intervalMs);
    QAbstractVideoSurface* videoSurface() const;
    void setVideoSurface(QAbstractVideoSurface* surface);
    QSize size() const;
    void setSize(const QSize& size);
    QSize originalSize() const;
    void setOriginalSize(const QSize& size);
    QImage image() const;
    void setImage(const QImage& image);

    Q_INVOKABLE void startGrab();
    Q_INVOKABLE void stopGrab();
    Q_INVOKABLE void singleGrab();
    void setForceShowBusyIndicator(bool force);

signals:
    void intervalChanged();
    void sizeChanged();
    void originalSizeChanged();
    void imageChanged();
    void imageFailed();

private slots:
    void onImageReady(bool notify);
    void onFullImageSizeChanged(QSize size);

private:
    void update(bool single);

    struct Impl;
    std::unique_ptr<Impl> d;
};
