#include "convertingimagecamera.h"

#include "modellog.h"

#include "camerapool/icamera.h"
#include "core/baseexception.h"
#include "kalto/grabresultptr.h"
#include "kalto/imageformatconverter.h"
#include "kalto/kaltoimage.h"
#include "parametercollection/iparametercollection.h"

#include <QEventLoop>
#include <QTimer>

using Plugin::CameraPool::ICamera;
using Plugin::DataProcessing::CImage;

namespace {

// Rows of the measuring image start on 4-byte boundaries.
size_t alignedStride(size_t rowBytes)
{
    return (rowBytes + 3) & ~size_t(3);
}

}  // namespace

ConvertingImageCamera::ConvertingImageCamera(QObject* parent)
    : QObject(parent),
      m_rgb16Converter(std::make_unique<Kalto::CImageFormatConverter>()),
      m_rgb8Converter(std::make_unique<Kalto::CImageFormatConverter>())
{
    m_rgb16Converter->OutputPixelFormat = Kalto::PixelType_RGB16packed;
    m_rgb8Converter->OutputPixelFormat = Kalto::PixelType_BGRA8packed;
}

ConvertingImageCamera::~ConvertingImageCamera()
{
    detachCamera();
    // A delivery that converted before the detach may still be announcing its image.
    std::lock_guard<std::recursive_mutex> announcing(m_signalMutex);
}

void ConvertingImageCamera::attachCamera(QSharedPointer<ICamera> camera)
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    if (m_camera)
        disconnect(m_camera.data(), nullptr, this, nullptr);
    m_camera = std::move(camera);
    if (!m_camera)
        return;
    // Direct: frames are converted on the delivery thread, and the loss is
    // known at once even while this object's thread is busy.
    connect(m_camera.data(), &ICamera::cameraImageGrabbed, this, &ConvertingImageCamera::onCameraImageGrabbed,
            Qt::DirectConnection);
    connect(m_camera.data(), &ICamera::cameraConnectionLost, this, &ConvertingImageCamera::onCammeraConnectionLost,
            Qt::DirectConnection);
}

QSharedPointer<ICamera> ConvertingImageCamera::detachCamera()
{
    QSharedPointer<ICamera> camera;
    {
        std::unique_lock<std::recursive_mutex> lock(m_mutex);
        if (m_camera)
            disconnect(m_camera.data(), nullptr, this, nullptr);
        camera.swap(m_camera);
    }
    // A delivery that began before the disconnect may still be converting.
    std::lock_guard<std::recursive_mutex> delivery(m_deliveryMutex);
    return camera;
}

QSharedPointer<ICamera> ConvertingImageCamera::usableCamera()
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    if (m_connectionLost)
        return {};
    return m_camera;
}

bool ConvertingImageCamera::isOpen()
{
    const auto camera = usableCamera();
    return camera && camera->isOpen();
}

bool ConvertingImageCamera::isGrabbing()
{
    const auto camera = usableCamera();
    return camera && camera->isGrabbing();
}

QSharedPointer<ParameterCollection::IParameterCollection> ConvertingImageCamera::getParameterCollection()
{
    const auto camera = usableCamera();
    if (!camera)
        return {};
    try {
        return camera->parameterCollection();
    } catch (const Core::Exception::BaseException&) {
        return {};  // lost before its signal reached us
    }
}

void ConvertingImageCamera::stopGrabbing()
{
    const auto camera = usableCamera();
    if (camera)
        camera->stopGrabbing();
}

bool ConvertingImageCamera::GrabImage(CImage& out, bool grabNew)
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    if (m_connectionLost || !m_camera)
        return false;
    const QSharedPointer<ICamera> camera = m_camera;
    const quint64 before = m_imageCount;
    const int timeoutMs = m_firstGrab ? kFirstGrabTimeoutMs : kGrabTimeoutMs;
    lock.unlock();

    bool grabbing = camera->isGrabbing();
    lock.lock();
    const bool singleGrabWindingDown = grabbing && m_singleGrabStarted && !m_singleGrabPending;
    lock.unlock();
    if (singleGrabWindingDown) {
        // Our last single grab has delivered but the camera has not yet
        // noticed its end; it is no acquisition to take images from.
        camera->stopGrabbing();
        grabbing = false;
    }

    if (grabbing) {
        lock.lock();
        // A single grab still on its way (one whose caller gave up waiting)
        // brings a newer image than the one kept: wait for it instead.
        if (m_imageCount > 0 && !m_singleGrabPending) {
            out = m_images[m_currentIndex];
            return true;
        }
        lock.unlock();
    } else {
        lock.lock();
        m_singleGrabPending = grabNew;
        m_singleGrabStarted = grabNew;
        lock.unlock();
        try {
            if (grabNew)
                camera->grabOne(timeoutMs);
            else
                camera->startGrabbing();
        } catch (const Core::Exception::BaseException&) {
            // Lost just now, before its signal reached us: the same answer
            // as for a loss already known. Other failures are the caller's.
            if (!camera->isOpen())
                return false;
            throw;
        }
    }

    const bool arrived = waitForImage(camera, before, timeoutMs);
    lock.lock();
    m_firstGrab = false;
    if (!arrived || m_connectionLost)
        return false;
    out = m_images[m_currentIndex];
    return true;
}

bool ConvertingImageCamera::waitForImage(const QSharedPointer<ICamera>& camera, quint64 after, int timeoutMs)
{
    auto done = [this, after] {
        std::unique_lock<std::recursive_mutex> lock(m_mutex);
        return m_connectionLost || m_imageCount > after;
    };
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    // Queued into this thread; a signal of an older frame does not end the wait.
    connect(this, &ConvertingImageCamera::imageGrabbed, &loop, [&] {
        if (done())
            loop.quit();
    });
    connect(camera.data(), &ICamera::cameraConnectionLost, &loop, &QEventLoop::quit);
    if (!done()) {
        timer.start(timeoutMs);
        loop.exec();
    }
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    return !m_connectionLost && m_imageCount > after;
}

void ConvertingImageCamera::onCameraImageGrabbed(const Kalto::CGrabResultPtr& result)
{
    // The signal goes out after the delivery lock is released: a receiver that
    // calls back into the camera, or waits for a thread that is detaching, must
    // not find that lock taken.
    std::lock_guard<std::recursive_mutex> announcing(m_signalMutex);
    if (convert(result))
        emit imageGrabbed();
}

bool ConvertingImageCamera::convert(const Kalto::CGrabResultPtr& result)
{
    std::lock_guard<std::recursive_mutex> delivery(m_deliveryMutex);
    {
        std::unique_lock<std::recursive_mutex> lock(m_mutex);
        m_singleGrabPending = false;
        if (!result.IsValid() || !result->GrabSucceeded())
            return false;

        Kalto::CKaltoImage source;
        source.AttachUserBuffer(const_cast<void*>(result->GetBuffer()), result->GetPayloadSize(),
                                result->GetPixelType(), result->GetWidth(), result->GetHeight(),
                                result->GetPaddingX());

        const size_t rgb16Row = Kalto::CKaltoImage::ComputeRowBytes(Kalto::PixelType_RGB16packed, source.GetWidth());
        m_rgb16Converter->OutputPaddingX = alignedStride(rgb16Row) - rgb16Row;
        Kalto::CKaltoImage rgb16;
        try {
            m_rgb16Converter->Convert(rgb16, source);
        } catch (const std::exception&) {
            modellog::warning(QStringLiteral("Failed to convert the rgb16 image"));
            return false;
        }

        const int slot = 1 - m_currentIndex;
        CImage image = CImage::ImageFromKaltoImage(rgb16, Kalto::PixelType_RGB16packed);
        if (!image.isValid()) {
            modellog::warning(QStringLiteral("Failed to convert the rgb16 image"));
            return false;
        }
        const size_t bgraRow = Kalto::CKaltoImage::ComputeRowBytes(Kalto::PixelType_BGRA8packed, source.GetWidth());
        m_rgb8Converter->OutputPaddingX = size_t(image.lineOffset()) - bgraRow;
        try {
            m_rgb8Converter->Convert(image.pixelData(), image.sizeBytes(), source);
        } catch (const std::exception&) {
            modellog::warning(QStringLiteral("Failed to convert the rgb8 image"));
            return false;
        }
        m_images[slot] = image;
        m_currentIndex = slot;
        ++m_imageCount;
    }
    return true;
}

void ConvertingImageCamera::onCammeraConnectionLost()
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    m_connectionLost = true;
}
