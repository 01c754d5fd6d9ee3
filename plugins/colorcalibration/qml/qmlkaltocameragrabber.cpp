#include "qmlkaltocameragrabber.h"

#include "camerainterface.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QPainter>
#include <QThread>
#include <QtConcurrent>

#include <memory>

namespace {

constexpr qint64 kBusyAfterMs = 1000;
constexpr int kBusyFrameMs = 40;
constexpr double kBusyTurnMs = 1500.0;
constexpr double kBusyScale = 0.3;
// Pauses are cut into steps this long so that stopping never waits a whole interval.
constexpr int kSleepStepMs = 10;
const QColor kFailureBackground(0xe6, 0xe6, 0xe6);

}  // namespace

QMLKaltoCameraGrabber::QMLKaltoCameraGrabber(CameraInterface* camera, LiveFrame* frame, int intervalMs, bool single,
                                             QObject* parent)
    : QObject(parent), m_camera(camera), m_frame(frame), m_intervalMs(intervalMs), m_single(single),
      m_continuous(!single)
{
}

void QMLKaltoCameraGrabber::clearFlags()
{
    QMutexLocker lock(&m_mutex);
    m_single = false;
    m_continuous = false;
}

void QMLKaltoCameraGrabber::setForceShowBusyIndicator(bool force)
{
    QMutexLocker lock(&m_mutex);
    m_forceShowBusyIndicator = force;
}

bool QMLKaltoCameraGrabber::keepGoing() const
{
    QMutexLocker lock(&m_mutex);
    return m_single || m_continuous;
}

bool QMLKaltoCameraGrabber::forceBusy() const
{
    QMutexLocker lock(&m_mutex);
    return m_forceShowBusyIndicator;
}

bool QMLKaltoCameraGrabber::finishSingle()
{
    QMutexLocker lock(&m_mutex);
    if (!m_single)
        return false;
    m_single = false;
    return true;
}

void QMLKaltoCameraGrabber::sleepWhileRunning(int ms) const
{
    QElapsedTimer clock;
    clock.start();
    while (keepGoing() && clock.elapsed() < ms)
        QThread::msleep(ulong(qMin<qint64>(kSleepStepMs, ms - clock.elapsed())));
}

void QMLKaltoCameraGrabber::doWork()
{
    QImage lastFrame;
    {
        QMutexLocker lock(&m_frame->mutex);
        lastFrame = m_frame->pixels.copy();
    }
    while (keepGoing()) {
        auto image = std::make_shared<QImage>();
        CameraInterface* camera = m_camera;
        QFuture<bool> grab = QtConcurrent::run([camera, image] { return camera->GrabImage(*image, true); });
        QElapsedTimer clock;
        clock.start();
        while (!grab.isFinished()) {
            if (clock.elapsed() > kBusyAfterMs || forceBusy()) {
                paintBusy(lastFrame, clock.elapsed());
                emit imageReady(false);
            }
            QThread::msleep(kBusyFrameMs);
        }
        if (!grab.result()) {
            qDebug() << "Grab failed, delivery of Ostrel logo";
            paintLogo();
            emit imageFailed();
        } else {
            if (image->size() != m_lastImageSize) {
                m_lastImageSize = image->size();
                emit imageSizeChanged(m_lastImageSize);
            }
            lastFrame = paintImage(*image);
            emit imageReady(true);
        }
        if (finishSingle())
            break;
        sleepWhileRunning(m_intervalMs);
    }
    emit stopped();
}

void QMLKaltoCameraGrabber::paintBusy(const QImage& lastFrame, qint64 elapsedMs)
{
    static const QImage indicator(":/ColCal/busyindicator.png");
    QMutexLocker lock(&m_frame->mutex);
    QImage frame = lastFrame.size() == m_frame->size ? lastFrame.copy()
                                                     : QImage(m_frame->size, QImage::Format_RGB32);
    if (lastFrame.size() != m_frame->size)
        frame.fill(Qt::black);
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.translate(frame.width() / 2.0, frame.height() / 2.0);
    painter.rotate(std::fmod(elapsedMs / kBusyTurnMs * 360.0, 360.0));
    painter.scale(kBusyScale, kBusyScale);
    painter.drawImage(QPointF(-indicator.width() / 2.0, -indicator.height() / 2.0), indicator);
    painter.end();
    m_frame->pixels = frame;
}

void QMLKaltoCameraGrabber::paintLogo()
{
    static const QImage logo(":/ColCal/ostrel-logo.png");
    QMutexLocker lock(&m_frame->mutex);
    QImage frame(m_frame->size, QImage::Format_RGB32);
    frame.fill(kFailureBackground);
    QPainter painter(&frame);
    const QImage shown = logo.width() > frame.width() ? logo.scaledToWidth(frame.width(), Qt::SmoothTransformation)
                                                      : logo;
    painter.drawImage(QPoint((frame.width() - shown.width()) / 2, (frame.height() - shown.height()) / 2), shown);
    painter.end();
    m_frame->pixels = frame;
}

QImage QMLKaltoCameraGrabber::paintImage(const QImage& image)
{
    QMutexLocker lock(&m_frame->mutex);
    m_frame->pixels = image.scaled(m_frame->size, Qt::IgnoreAspectRatio, Qt::FastTransformation)
                          .convertToFormat(QImage::Format_RGB32);
    return m_frame->pixels;
}
