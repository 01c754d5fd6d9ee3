#include "qmlkaltocamera.h"

#include "propertyvalue.h"
#include "qmlkaltocameragrabber.h"
#include "uiresources.h"

#include <QAbstractVideoSurface>
#include <QDebug>
#include <QPointer>
#include <QSettings>
#include <QThread>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

namespace {

constexpr int kDefaultIntervalMs = 200;
constexpr int kMaxFramesPerSecond = 24;
const QSize kDefaultSize(640, 480);

int intervalFromSettings()
{
    QSettings settings;
    settings.beginGroup("ColCalPlugin");
    if (!settings.value("EnableDemoMode", false).toBool())
        return kDefaultIntervalMs;
    const int fps = settings.value("FramesPerSecond", kMaxFramesPerSecond).toInt();
    return 1000 / qMin(fps, kMaxFramesPerSecond);
}

}  // namespace

struct QMLKaltoCamera::Impl {
    CameraInterface* camera;
    int interval = intervalFromSettings();
    QPointer<QAbstractVideoSurface> surface;
    QVideoSurfaceFormat format;
    bool grabbing = false;
    bool forceBusy = false;
    QVideoFrame frame;
    LiveFrame live;
    QSize originalSize;
    QImage image;
    QMLKaltoCameraGrabber* grabber = nullptr;
    QThread* thread = nullptr;

    /// Ends the grab loop and joins its thread; the grab in flight is finished first.
    void stopWorker()
    {
        if (!grabber)
            return;
        grabber->clearFlags();
        thread->quit();
        thread->wait();
        delete grabber;
        delete thread;
        grabber = nullptr;
        thread = nullptr;
    }

    /// Starts the surface in the live frame's size when that differs from what it shows.
    void prepareSurface()
    {
        QSize size;
        {
            std::lock_guard<std::mutex> lock(live.mutex);
            size = live.size;
        }
        const QVideoSurfaceFormat wanted(size, QVideoFrame::Format_RGB32);
        if (format.frameSize() != wanted.frameSize() || format.pixelFormat() != wanted.pixelFormat()) {
            frame = QVideoFrame();
            format = wanted;
            if (surface && surface->isActive())
                surface->stop();
        }
        if (surface && !surface->isActive())
            surface->start(format);
    }
};

QMLKaltoCamera::QMLKaltoCamera(CameraInterface* camera, QQuickItem* parent) : QQuickItem(parent), d(new Impl)
{
    initUiResources();
    d->camera = camera;
    d->live.size = kDefaultSize;
}

QMLKaltoCamera::~QMLKaltoCamera()
{
    d->stopWorker();
}

int QMLKaltoCamera::interval() const
{
    return d->interval;
}

void QMLKaltoCamera::setInterval(int intervalMs)
{
    if (assignChanged(d->interval, intervalMs))
        emit intervalChanged();
}

QAbstractVideoSurface* QMLKaltoCamera::videoSurface() const
{
    return d->surface;
}

void QMLKaltoCamera::setVideoSurface(QAbstractVideoSurface* surface)
{
    if (surface == d->surface)
        return;
    if (d->surface && d->surface->isActive())
        d->surface->stop();
    d->surface = surface;
    d->format = QVideoSurfaceFormat();
    if (d->grabbing)
        d->prepareSurface();
}

QSize QMLKaltoCamera::size() const
{
    std::lock_guard<std::mutex> lock(d->live.mutex);
    return d->live.size;
}

void QMLKaltoCamera::setSize(const QSize& size)
{
    {
        std::lock_guard<std::mutex> lock(d->live.mutex);
        if (size == d->live.size || size.isEmpty())
            return;
        d->live.size = size;
    }
    // The grabber paints the next frame in the new size; the surface must expect it.
    if (d->grabbing)
        d->prepareSurface();
    emit sizeChanged();
}

QSize QMLKaltoCamera::originalSize() const
{
    return d->originalSize;
}

void QMLKaltoCamera::setOriginalSize(const QSize& size)
{
    if (assignChanged(d->originalSize, size))
        emit originalSizeChanged();
}

QImage QMLKaltoCamera::image() const
{
    return d->image;
}

void QMLKaltoCamera::setImage(const QImage& image)
{
    d->image = image;
    emit imageChanged();
}

void QMLKaltoCamera::startGrab()
{
    qDebug() << "startGrab()";
    d->grabbing = true;
    update(false);
}

void QMLKaltoCamera::stopGrab()
{
    qDebug() << "stopGrab()";
    d->grabbing = false;
    d->stopWorker();
}

void QMLKaltoCamera::singleGrab()
{
    qDebug() << "singleGrab()";
    update(true);
}

void QMLKaltoCamera::setForceShowBusyIndicator(bool force)
{
    d->forceBusy = force;
    if (d->grabber)
        d->grabber->setForceShowBusyIndicator(force);
}

void QMLKaltoCamera::update(bool single)
{
    d->stopWorker();
    d->prepareSurface();
    d->grabber = new QMLKaltoCameraGrabber(d->camera, &d->live, d->interval, single);
    d->grabber->setForceShowBusyIndicator(d->forceBusy);
    d->thread = new QThread;
    d->grabber->moveToThread(d->thread);
    connect(d->thread, &QThread::started, d->grabber, &QMLKaltoCameraGrabber::doWork);
    connect(d->grabber, &QMLKaltoCameraGrabber::imageReady, this, &QMLKaltoCamera::onImageReady);
    connect(d->grabber, &QMLKaltoCameraGrabber::imageFailed, this, &QMLKaltoCamera::imageFailed);
    connect(d->grabber, &QMLKaltoCameraGrabber::imageSizeChanged, this, &QMLKaltoCamera::onFullImageSizeChanged);
    d->thread->start(QThread::InheritPriority);
}

void QMLKaltoCamera::onImageReady(bool notify)
{
    QImage pixels;
    {
        std::lock_guard<std::mutex> lock(d->live.mutex);
        pixels = d->live.pixels.copy();
    }
    if (pixels.isNull())
        return;
    if (d->surface && d->surface->isActive() && pixels.size() == d->format.frameSize()) {
        // A frame of its own each time: the surface may still hold the previous one.
        d->frame = QVideoFrame(pixels);
        d->surface->present(d->frame);
    }
    d->image = pixels;
    emit imageChanged();
}

void QMLKaltoCamera::onFullImageSizeChanged(QSize size)
{
    setOriginalSize(size);
}
