#include "arvcameradevice.h"

#include "genicam/runtimeexception.h"
#include "kalto/grabresultdata.h"

#include <arv.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <thread>

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

// Buffers in flight: enough to ride out a slow frame sink without dropping.
constexpr int kStreamBuffers = 4;
// How long the delivery thread waits for a buffer before it looks at its stop flag.
constexpr guint64 kPopTimeoutUs = 100000;
// Loopback carries datagrams of up to 64 KiB: a frame in packets that size
// arrives in a fifth of the time 8 KiB ones take, and in a small part of what
// the default 1.4 KB ones take (a real network gets what the camera negotiates).
constexpr int kLoopbackPacketBytes = 65000;

Kalto::EPixelType pixelTypeOf(ArvPixelFormat format)
{
    // Aravis and the SDK both use the PFNC codes.
    switch (format) {
    case ARV_PIXEL_FORMAT_MONO_8: return Kalto::PixelType_Mono8;
    case ARV_PIXEL_FORMAT_MONO_12: return Kalto::PixelType_Mono12;
    case ARV_PIXEL_FORMAT_MONO_16: return Kalto::PixelType_Mono16;
    case ARV_PIXEL_FORMAT_BAYER_RG_8: return Kalto::PixelType_BayerRG8;
    case ARV_PIXEL_FORMAT_BAYER_RG_12: return Kalto::PixelType_BayerRG12;
    case ARV_PIXEL_FORMAT_RGB_8_PACKED: return Kalto::PixelType_RGB8packed;
    case ARV_PIXEL_FORMAT_BGR_8_PACKED: return Kalto::PixelType_BGR8packed;
    default: return Kalto::PixelType_Undefined;
    }
}

const char* statusText(ArvBufferStatus status)
{
    switch (status) {
    case ARV_BUFFER_STATUS_MISSING_PACKETS: return "frame incomplete: packets were lost";
    case ARV_BUFFER_STATUS_TIMEOUT: return "frame timed out";
    case ARV_BUFFER_STATUS_SIZE_MISMATCH: return "frame larger than the buffer";
    case ARV_BUFFER_STATUS_ABORTED: return "frame aborted";
    case ARV_BUFFER_STATUS_FILLING: return "frame still being filled";
    default: return "frame not received";
    }
}

Kalto::CGrabResultPtr resultOf(ArvBuffer* buffer)
{
    auto data = std::make_shared<Kalto::CGrabResultData>();
    data->SetImageNumber(arv_buffer_get_frame_id(buffer));
    data->SetTimeStamp(arv_buffer_get_timestamp(buffer));
    const ArvBufferStatus status = arv_buffer_get_status(buffer);
    if (status != ARV_BUFFER_STATUS_SUCCESS) {
        data->SetError(0xE1000000u | static_cast<uint32_t>(status), statusText(status));
        return Kalto::CGrabResultPtr(data);
    }
    const ArvPixelFormat format = arv_buffer_get_image_pixel_format(buffer);
    const Kalto::EPixelType type = pixelTypeOf(format);
    if (type == Kalto::PixelType_Undefined) {
        char text[80];
        std::snprintf(text, sizeof text, "pixel format 0x%08x cannot be converted", unsigned(format));
        data->SetError(0xE1000100u, text);
        return Kalto::CGrabResultPtr(data);
    }
    size_t size = 0;
    const auto* pixels = static_cast<const uint8_t*>(arv_buffer_get_image_data(buffer, &size));
    gint paddingX = 0, paddingY = 0;
    arv_buffer_get_image_padding(buffer, &paddingX, &paddingY);
    try {
        data->SetImage(std::vector<uint8_t>(pixels, pixels + size), type,
                       static_cast<uint32_t>(arv_buffer_get_image_width(buffer)),
                       static_cast<uint32_t>(arv_buffer_get_image_height(buffer)), static_cast<size_t>(std::max(0, paddingX)));
    } catch (const std::exception& e) {
        data->SetError(0xE1000101u, e.what());
    }
    return Kalto::CGrabResultPtr(data);
}

}  // namespace

struct ArvCameraDevice::Impl {
    Kalto::SDeviceInfo info;
    Kalto::CArvNodeMap map;

    // Connection and stream; changed under map.mutex().
    ArvDevice* device = nullptr;
    ArvCamera* camera = nullptr;
    gulong controlLostHandler = 0;
    // Open from the first acquisition to close(): opening one costs the
    // camera a new stream set-up, each single grab again otherwise.
    ArvStream* stream = nullptr;
    guint streamPayload = 0;  // bytes per buffer of `stream`
    gint64 startedUs = 0;     // host real time the acquisition was asked for
    bool started = false;  // the camera's acquisition runs
    // Start and stop one at a time; the delivery thread itself never takes it.
    std::mutex acquisitionMutex;
    std::thread delivery;
    std::atomic<std::thread::id> deliveryId{};

    std::atomic<bool> open{false};
    std::atomic<bool> lost{false};
    std::atomic<bool> acquiring{false};
    std::atomic<bool> stopRequested{false};

    std::mutex handlerMutex;
    FrameSink sink;
    ConnectionLostHandler lostHandler;

    explicit Impl(Kalto::SDeviceInfo i) : info(std::move(i)), map(info.id) {}

    [[noreturn]] void fail(const std::string& what) const
    {
        KALTO_THROW_RUNTIME("Camera " + info.id + ": " + what);
    }

    static void throwOn(Impl& self, const char* what, GError* error)
    {
        if (!error)
            return;
        const std::string message = error->message ? error->message : "unknown error";
        g_error_free(error);
        self.fail(std::string(what) + ": " + message);
    }

    static void onControlLost(ArvDevice*, gpointer user)
    {
        // Runs on Aravis's heartbeat thread; the weak pointer outlives a closing device.
        auto self = static_cast<std::weak_ptr<Impl>*>(user)->lock();
        if (!self || self->lost.exchange(true))
            return;
        self->stopRequested = true;
        self->acquiring = false;
        ConnectionLostHandler handler;
        {
            std::lock_guard<std::mutex> lock(self->handlerMutex);
            handler = self->lostHandler;
        }
        if (handler)
            handler();
    }
    std::weak_ptr<Impl>* weakSelf = nullptr;

    void connect()
    {
        Lock lock(map.mutex());
        if (device)
            return;
        if (lost)
            fail("lost its connection");
        GError* error = nullptr;
        ArvDevice* opened = arv_open_device(info.id.c_str(), &error);
        throwOn(*this, "cannot connect", error);
        if (!opened)
            fail("cannot connect");
        ArvCamera* cam = arv_camera_new_with_device(opened, &error);
        if (error || !cam) {
            g_object_unref(opened);
            throwOn(*this, "not a camera", error);
            fail("not a camera");
        }
        try {
            map.attach(opened);
        } catch (...) {
            g_object_unref(cam);
            g_object_unref(opened);
            throw;
        }
        device = opened;
        camera = cam;
        controlLostHandler = g_signal_connect(device, "control-lost", G_CALLBACK(&Impl::onControlLost), weakSelf);
    }

    void disconnect()
    {
        Lock lock(map.mutex());
        if (!device)
            return;
        map.detach();
        g_signal_handler_disconnect(device, controlLostHandler);
        controlLostHandler = 0;
        g_object_unref(camera);
        g_object_unref(device);
        camera = nullptr;
        device = nullptr;
    }

    // Under map.mutex().
    void stopCamera()
    {
        if (!started || !camera)
            return;
        started = false;
        if (lost)
            return;
        GError* error = nullptr;
        arv_camera_stop_acquisition(camera, &error);
        if (error)
            g_error_free(error);  // a camera that cannot stop has stopped sending to us too
    }

    bool onDeliveryThread() const { return deliveryId.load() == std::this_thread::get_id(); }

    // Ends the delivery thread (unless it is the caller) and the device's
    // acquisition. Safe to call twice.
    void stop()
    {
        stopRequested = true;
        if (onDeliveryThread()) {
            acquiring = false;
            return;  // the thread ends when the sink returns; the next start or close cleans up
        }
        std::lock_guard<std::mutex> lock(acquisitionMutex);
        stopLocked();
    }

    // Under acquisitionMutex, never on the delivery thread.
    void stopLocked()
    {
        stopRequested = true;
        if (delivery.joinable())
            delivery.join();
        deliveryId = std::thread::id();
        Lock lock(map.mutex());
        stopCamera();
        acquiring = false;
    }

    // Under map.mutex(), no acquisition running.
    void releaseStream()
    {
        if (stream)
            g_object_unref(stream);
        stream = nullptr;
        streamPayload = 0;
    }

    // A stream with buffers of `payload` bytes and nothing delivered waiting
    // in it: what a camera sent after the last frame taken (a continuous one
    // goes on until it hears the stop) belongs to no acquisition. Under
    // map.mutex(), no acquisition running.
    void prepareStream(guint payload)
    {
        if (stream && payload != streamPayload)
            releaseStream();
        if (!stream) {
            GError* error = nullptr;
            stream = arv_camera_create_stream(camera, nullptr, nullptr, &error);
            throwOn(*this, "creating the stream", error);
            for (int i = 0; i < kStreamBuffers; ++i)
                arv_stream_push_buffer(stream, arv_buffer_new_allocate(payload));
            streamPayload = payload;
        }
        while (ArvBuffer* stale = arv_stream_try_pop_buffer(stream))
            arv_stream_push_buffer(stream, stale);
    }

    void deliver(const Kalto::CGrabResultPtr& result)
    {
        FrameSink s;
        {
            std::lock_guard<std::mutex> lock(handlerMutex);
            s = sink;
        }
        if (s)
            s(result);
    }

    void run(bool singleFrame)
    {
        deliveryId = std::this_thread::get_id();
        while (!stopRequested) {
            ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, kPopTimeoutUs);
            if (!buffer)
                continue;
            // A frame the camera began before it was asked for this acquisition
            // (still in the network when the stream was emptied) is stale.
            if (arv_buffer_get_system_timestamp(buffer) < static_cast<guint64>(startedUs) * 1000u) {
                arv_stream_push_buffer(stream, buffer);
                continue;
            }
            const Kalto::CGrabResultPtr result = resultOf(buffer);
            arv_stream_push_buffer(stream, buffer);
            if (stopRequested)
                break;
            if (singleFrame) {
                // Before the sink, which may take a while: a camera that
                // streams would otherwise go on making frames nobody takes.
                Lock lock(map.mutex());
                stopCamera();
            }
            deliver(result);
            if (singleFrame)
                break;
        }
        if (singleFrame) {
            Lock lock(map.mutex());
            stopCamera();
        }
        acquiring = false;
    }
};

ArvCameraDevice::ArvCameraDevice(Kalto::SDeviceInfo info) : d(std::make_shared<Impl>(std::move(info)))
{
    d->weakSelf = new std::weak_ptr<Impl>(d);
}

ArvCameraDevice::~ArvCameraDevice()
{
    try {
        close();
    } catch (...) {
    }
    d->disconnect();
    delete d->weakSelf;
}

std::shared_ptr<ArvCameraDevice> ArvCameraDevice::connectTo(Kalto::SDeviceInfo info)
{
    auto device = std::make_shared<ArvCameraDevice>(std::move(info));
    try {
        device->d->connect();
    } catch (const std::exception&) {
        return nullptr;
    }
    Impl& d = *device->d;
    const auto fill = [&d](std::string& field, const char* (*read)(ArvCamera*, GError**)) {
        GError* error = nullptr;
        const char* value = read(d.camera, &error);
        if (error)
            g_error_free(error);  // a camera without the feature is listed without it
        else if (value)
            field = value;
    };
    fill(d.info.modelName, &arv_camera_get_model_name);
    fill(d.info.vendorName, &arv_camera_get_vendor_name);
    fill(d.info.serialNumber, &arv_camera_get_device_serial_number);
    return device;
}

Kalto::SDeviceInfo ArvCameraDevice::info() const { return d->info; }

void ArvCameraDevice::open()
{
    Lock lock(d->map.mutex());
    if (d->lost)
        d->fail("lost its connection");
    if (d->open)
        return;
    d->connect();
    if (ARV_IS_GV_DEVICE(d->device) && !arv_gv_device_is_controller(ARV_GV_DEVICE(d->device))) {
        d->disconnect();
        d->fail("another application controls it (no control privilege)");
    }
    GError* error = nullptr;
    // A client that crashed while grabbing left the acquisition running.
    arv_camera_stop_acquisition(d->camera, &error);
    if (error)
        g_error_free(error);
    error = nullptr;
    if (arv_camera_is_gv_device(d->camera)) {
        GSocketAddress* local = arv_gv_device_get_interface_address(ARV_GV_DEVICE(d->device));
        const bool loopback =
            G_IS_INET_SOCKET_ADDRESS(local) &&
            g_inet_address_get_is_loopback(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(local)));
        if (loopback)
            arv_camera_gv_set_packet_size(d->camera, kLoopbackPacketBytes, &error);
        else
            arv_camera_gv_auto_packet_size(d->camera, &error);
        if (error)
            g_error_free(error);  // the default packet size still works, only slower
    }
    d->open = true;
}

void ArvCameraDevice::close()
{
    d->stop();
    {
        Lock lock(d->map.mutex());
        d->releaseStream();
    }
    d->open = false;
    d->disconnect();
}

bool ArvCameraDevice::isOpen() const { return d->open && !d->lost; }
bool ArvCameraDevice::isConnected() const { return !d->lost; }

Kalto::CArvNodeMap& ArvCameraDevice::nodeMap()
{
    try {
        if (!d->lost)
            d->connect();
    } catch (const std::exception&) {
        // Unreachable for now: the map stays empty and its calls say so; open() gives the reason.
    }
    return d->map;
}

void ArvCameraDevice::startAcquisition(Kalto::EAcquisitionMode mode)
{
    if (d->lost)
        d->fail("lost its connection");
    if (!d->open)
        d->fail("is not open");
    if (d->onDeliveryThread())
        d->fail("an acquisition cannot be restarted from its own frame sink");
    std::lock_guard<std::mutex> acquisition(d->acquisitionMutex);
    d->stopLocked();
    Lock lock(d->map.mutex());
    const bool single = mode == Kalto::EAcquisitionMode::SingleFrame;
    GError* error = nullptr;
    // AcquisitionMode is one of the camera's saved settings: a grab leaves it
    // alone (a single frame is taken from any mode and the acquisition stopped
    // after it), so that settings saved, grabbed and restored stay identical.
    // Only a continuous acquisition needs a continuous mode.
    if (!single && d->map.hasNode("AcquisitionMode") && d->map.getEnum("AcquisitionMode") != "Continuous" &&
        d->map.isEntryAvailable("AcquisitionMode", "Continuous") && d->map.isWritable("AcquisitionMode")) {
        arv_camera_set_acquisition_mode(d->camera, ARV_ACQUISITION_MODE_CONTINUOUS, &error);
        Impl::throwOn(*d, "setting the acquisition mode", error);
    }
    const guint payload = arv_camera_get_payload(d->camera, &error);
    Impl::throwOn(*d, "reading the payload size", error);
    d->prepareStream(payload);
    d->startedUs = g_get_real_time();
    arv_camera_start_acquisition(d->camera, &error);
    Impl::throwOn(*d, "starting the acquisition", error);
    d->started = true;
    d->stopRequested = false;
    d->acquiring = true;
    d->delivery = std::thread([impl = d.get(), single] { impl->run(single); });
}

void ArvCameraDevice::stopAcquisition() { d->stop(); }

bool ArvCameraDevice::isAcquiring() const { return d->acquiring && !d->lost; }

void ArvCameraDevice::setFrameSink(FrameSink sink)
{
    std::lock_guard<std::mutex> lock(d->handlerMutex);
    d->sink = std::move(sink);
}

void ArvCameraDevice::setConnectionLostHandler(ConnectionLostHandler handler)
{
    std::lock_guard<std::mutex> lock(d->handlerMutex);
    d->lostHandler = std::move(handler);
}
