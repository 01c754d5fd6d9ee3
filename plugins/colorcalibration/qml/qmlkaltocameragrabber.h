#pragma once

#include <QImage>
#include <QMutex>
#include <QObject>
#include <QSize>

class CameraInterface;

/// The frame the grabber paints and the live view presents: the display size
/// the view wants and the pixels in the video frame's layout (RGB32, 4 bytes a
/// pixel). Shared between the grabber's thread and the GUI thread.
struct LiveFrame {
    QMutex mutex;
    QSize size;
    QImage pixels;
};

/// Grab loop of the live view; lives in its own thread and starts each grab on
/// the global thread pool so that it can animate the busy indicator meanwhile.
class QMLKaltoCameraGrabber : public QObject {
    Q_OBJECT
public:
    /// Neither pointer is owned. `intervalMs` is the pause between grabs.
    QMLKaltoCameraGrabber(CameraInterface* camera, LiveFrame* frame, int intervalMs, bool single,
                          QObject* parent = nullptr);

    /// Ends the loop after the grab in flight.
    void clearFlags();
    void setForceShowBusyIndicator(bool force);

public slots:
    void doWork();

signals:
    /// `notifiy` is false for busy-indicator frames.
    void imageReady(bool notifiy);
    void imageFailed();
    void imageSizeChanged(QSize imageSize);
    void stopped();

private:
    bool keepGoing() const;
    bool forceBusy() const;
    /// Ends a single shot; false while the loop goes on.
    bool finishSingle();
    void sleepWhileRunning(int ms) const;
    void paintBusy(const QImage& lastFrame, qint64 elapsedMs);
    void paintLogo();
    QImage paintImage(const QImage& image);

    CameraInterface* m_camera;
    LiveFrame* m_frame;
    int m_intervalMs;
    QSize m_lastImageSize;
    mutable QRecursiveMutex m_mutex;
    bool m_single;
    bool m_continuous;
    bool m_forceShowBusyIndicator = false;
};
