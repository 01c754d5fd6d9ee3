#pragma once

#include "dataprocessing/image.h"

#include <QObject>
#include <QSharedPointer>

#include <memory>
#include <mutex>

namespace Kalto {
class CGrabResultPtr;
class CImageFormatConverter;
}  // namespace Kalto

namespace Plugin {
namespace CameraPool {
class ICamera;
}
}  // namespace Plugin

namespace ParameterCollection {
class IParameterCollection;
}

/// One camera of the session: converts every grab result at once into a CImage
/// holding a 16-bit RGB image for measuring and a BGRa8 display image, keeps
/// the latest, and offers a blocking grab. Once the camera reports a lost
/// connection every call fails until a new wrapper is made.
///
/// Grab results are converted on the camera's delivery thread; GrabImage runs
/// in the caller's thread (which must be able to run a local event loop).
/// Camera calls are never made under the internal lock, because stopping a
/// camera waits for a delivery that may be waiting for that lock.
class ConvertingImageCamera : public QObject {
    Q_OBJECT
public:
    explicit ConvertingImageCamera(QObject* parent = nullptr);
    /// Detaches; waits for a conversion still running on the delivery thread
    /// and for its imageGrabbed() receivers.
    ~ConvertingImageCamera() override;

    void attachCamera(QSharedPointer<Plugin::CameraPool::ICamera> camera);
    QSharedPointer<Plugin::CameraPool::ICamera> detachCamera();

    bool isOpen();
    bool isGrabbing();
    /// Null after a connection loss or without a camera.
    QSharedPointer<ParameterCollection::IParameterCollection> getParameterCollection();
    void stopGrabbing();

    /// During a continuous acquisition: the latest image at once, without a
    /// new grab (during a single grab still on its way: that grab's image).
    /// Otherwise starts a single grab (grabNew) or continuous acquisition and
    /// waits for the next converted image: at most 200 ms the first time after
    /// construction, 5000 ms afterwards. A wait that times out returns false
    /// and leaves `out` untouched, so an older frame is never passed off as
    /// the requested new one; a lost connection also ends the wait with false.
    /// `out` shares the pixels (no copy).
    bool GrabImage(Plugin::DataProcessing::CImage& out, bool grabNew);

    static constexpr int kFirstGrabTimeoutMs = 200;
    static constexpr int kGrabTimeoutMs = 5000;

signals:
    void imageGrabbed();

public slots:
    void onCameraImageGrabbed(const Kalto::CGrabResultPtr& result);
    void onCammeraConnectionLost();

private:
    /// The camera unless detached or disconnected; taken under the lock, used without it.
    QSharedPointer<Plugin::CameraPool::ICamera> usableCamera();
    bool waitForImage(const QSharedPointer<Plugin::CameraPool::ICamera>& camera, quint64 after, int timeoutMs);
    /// Converts one result into the spare slot; true when a new image is kept.
    bool convert(const Kalto::CGrabResultPtr& result);

    QSharedPointer<Plugin::CameraPool::ICamera> m_camera;
    std::unique_ptr<Kalto::CImageFormatConverter> m_rgb16Converter;
    std::unique_ptr<Kalto::CImageFormatConverter> m_rgb8Converter;
    Plugin::DataProcessing::CImage m_images[2];
    int m_currentIndex = 0;
    bool m_connectionLost = false;
    bool m_firstGrab = true;
    /// Converted images since construction; tells a new image from an old one.
    quint64 m_imageCount = 0;
    /// The last acquisition this object started was a single grab ...
    bool m_singleGrabStarted = false;
    /// ... and it has not delivered yet.
    bool m_singleGrabPending = false;
    // Standard mutexes rather than Qt's: race checkers see their ordering.
    std::recursive_mutex m_mutex;
    /// Held for a whole delivery, so that detaching can wait for one in flight.
    std::recursive_mutex m_deliveryMutex;
    /// Held while imageGrabbed() goes out, so that destruction waits for it.
    std::recursive_mutex m_signalMutex;
};
