#include "gevcamera.h"

#include "registerlayout.h"
#include "registerwritehook.h"

#include "cameramodel.h"
#include "emulatedcamera.h"

#include "genicam/nodemap.h"
#include "kalto/grabresultptr.h"

#include <arv.h>

#include <QDir>
#include <QTemporaryFile>

#include <chrono>
#include <cmath>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <thread>

using Kind = RegisterLayout::Kind;
using Slot = RegisterLayout::Slot;

namespace {

void putBigEndian(uint8_t* p, uint64_t v, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i, v >>= 8)
        p[i] = static_cast<uint8_t>(v & 0xff);
}

uint64_t getBigEndian(const uint8_t* p, int bytes)
{
    uint64_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v = (v << 8) | p[i];
    return v;
}

CameraModel modelFor(const GevCamera::Options& o)
{
    if (o.serial.empty() || o.serial.size() > 15)
        throw std::runtime_error("the serial number needs 1 to 15 characters: \"" + o.serial + "\"");
    if (o.model.empty() || o.model.size() > 31)
        throw std::runtime_error("the model name needs 1 to 31 characters: \"" + o.model + "\"");
    CameraModel m = CameraModel::defaults().front();  // the medical model, SFNC 2.x
    m.id = "gev-" + o.serial;
    m.modelName = o.model;
    m.serialNumber = o.serial;
    return m;
}

}  // namespace

struct GevCamera::Impl {
    using Clock = std::chrono::steady_clock;
    /// How long after a first frame went out a client that still acquires is
    /// taken to stream rather than to wait for its single frame.
    static constexpr std::chrono::milliseconds kSingleFrameGrace{100};

    explicit Impl(const Options& o) : options(o), camera(modelFor(o)), layout(camera.nodeMap())
    {
        shadow.resize(layout.features().size());
    }
    ~Impl();

    void start();
    std::string entryName(const Slot& s, uint32_t value);
    std::vector<uint8_t> encode(const Slot& s);
    void apply(const Slot& s, uint32_t entry);
    void onWrite(uint32_t address, uint32_t size);
    void followStreaming(uint32_t address);
    void pushAll();
    void sensorLoop();
    void fill(ArvBuffer* buffer);
    /// Under frameMutex: the newest frame started after the last write and was not sent yet.
    bool fresh() const { return frame.IsValid() && frame->GetTimeStamp() > std::max(lastWriteNs, lastSentNs); }
    /// Under frameMutex.
    void setTrigger(bool on) { setRegister(RegisterLayout::kTriggerSoftwareAddress, on ? 1 : 0); }
    void setRegister(uint32_t address, uint32_t value)
    {
        uint8_t be[4];
        putBigEndian(be, value, 4);
        RegisterWriteHook::writeMemory(fake, address, 4, be);
    }
    static uint64_t nowNs()
    {
        return static_cast<uint64_t>(
            std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count());
    }

    Options options;
    EmulatedCamera camera;
    RegisterLayout layout;
    QTemporaryFile xmlFile;
    ArvGvFakeCamera* server = nullptr;
    ArvFakeCamera* fake = nullptr;
    /// Register bytes last written per slot; empty forces a write.
    std::vector<std::vector<uint8_t>> shadow;

    std::mutex frameMutex;
    std::condition_variable frameReady;
    Kalto::CGrabResultPtr frame;  ///< the newest rendered frame
    std::condition_variable sensorWake;
    std::thread sensor;
    std::atomic<bool> quit{false};
    bool clientAcquiring = false;  ///< the acquisition register is set
    int framesSent = 0;            ///< since the client last started
    Clock::time_point lastSent;
    uint64_t lastWriteNs = 0;  ///< steady clock, as the frames' time stamps
    uint64_t lastSentNs = 0;
};

GevCamera::Impl::~Impl()
{
    if (fake)
        RegisterWriteHook::setHandler(fake, {});
    {
        std::lock_guard<std::mutex> lock(frameMutex);
        quit = true;
    }
    sensorWake.notify_all();
    if (sensor.joinable())
        sensor.join();
    if (server) {
        g_object_unref(server);  // joins the protocol thread
        server = nullptr;
    }
    camera.setFrameSink({});
    camera.close();
}

std::string GevCamera::Impl::entryName(const Slot& s, uint32_t value)
{
    for (const auto& e : camera.nodeMap().enumEntries(s.selector))
        if (e.value == static_cast<int64_t>(value))
            return e.symbolic;
    return {};
}

std::vector<uint8_t> GevCamera::Impl::encode(const Slot& s)
{
    Kalto::CNodeMap& map = camera.nodeMap();
    std::vector<uint8_t> bytes(s.length * s.entries, 0);
    for (uint32_t e = 0; e < s.entries; ++e) {
        std::string entry;
        if (!s.selector.empty()) {
            entry = entryName(s, e);
            if (entry.empty())
                continue;
        }
        uint8_t* p = bytes.data() + e * s.length;
        const bool plain = entry.empty();
        switch (s.kind) {
        case Kind::ScaledFloat: {
            const double v = plain ? map.getFloat(s.name) : map.getFloatFor(s.name, entry);
            putBigEndian(p, static_cast<uint32_t>(static_cast<int32_t>(std::llround(v * s.scale))), 4);
            break;
        }
        case Kind::DoubleFloat: {
            const double v = plain ? map.getFloat(s.name) : map.getFloatFor(s.name, entry);
            uint64_t raw;
            std::memcpy(&raw, &v, sizeof raw);
            putBigEndian(p, raw, 8);
            break;
        }
        case Kind::Integer: {
            const int64_t v = plain ? map.getInteger(s.name) : map.getIntegerFor(s.name, entry);
            putBigEndian(p, static_cast<uint32_t>(static_cast<int32_t>(v)), 4);
            break;
        }
        case Kind::Enumeration: {
            const std::string symbolic = plain ? map.getEnum(s.name) : map.getEnumFor(s.name, entry);
            for (const auto& en : map.enumEntries(s.name))
                if (en.symbolic == symbolic)
                    putBigEndian(p, static_cast<uint32_t>(en.value), 4);
            break;
        }
        case Kind::Boolean:
            putBigEndian(p, (plain ? map.getBool(s.name) : map.getBoolFor(s.name, entry)) ? 1 : 0, 4);
            break;
        case Kind::String: {
            const std::string v = plain ? map.getString(s.name) : map.getStringFor(s.name, entry);
            std::memcpy(p, v.data(), std::min<size_t>(v.size(), s.length));
            break;
        }
        case Kind::Command:
            break;  // reads 0: done
        }
    }
    return bytes;
}

void GevCamera::Impl::apply(const Slot& s, uint32_t entry)
{
    Kalto::CNodeMap& map = camera.nodeMap();
    std::vector<uint8_t> bytes(s.length);
    arv_fake_camera_read_memory(fake, s.address + entry * s.length, s.length, bytes.data());
    const auto raw32 = static_cast<int32_t>(static_cast<uint32_t>(getBigEndian(bytes.data(), 4)));

    // A client addresses a selected register through the selector's value, so
    // the selector already points at it; a bare register write may not.
    std::string previous;
    if (!s.selector.empty()) {
        const std::string wanted = entryName(s, entry);
        if (wanted.empty())
            return;
        if (map.getEnum(s.selector) != wanted) {
            previous = map.getEnum(s.selector);
            map.setEnum(s.selector, wanted);
        }
    }
    try {
        switch (s.kind) {
        case Kind::ScaledFloat: map.setFloat(s.name, raw32 / s.scale); break;
        case Kind::DoubleFloat: {
            const uint64_t raw = getBigEndian(bytes.data(), 8);
            double v;
            std::memcpy(&v, &raw, sizeof v);
            map.setFloat(s.name, v);
            break;
        }
        case Kind::Integer: map.setInteger(s.name, raw32); break;
        case Kind::Enumeration: map.setEnumValue(s.name, raw32); break;
        case Kind::Boolean: map.setBool(s.name, raw32 != 0); break;
        case Kind::String:
            map.setString(s.name, std::string(reinterpret_cast<const char*>(bytes.data()),
                                              strnlen(reinterpret_cast<const char*>(bytes.data()), s.length)));
            break;
        case Kind::Command:
            if (raw32 != 0)
                map.execute(s.name);
            break;
        }
    } catch (...) {
        if (!previous.empty())
            map.setEnum(s.selector, previous);
        throw;
    }
    if (!previous.empty())
        map.setEnum(s.selector, previous);
}

void GevCamera::Impl::onWrite(uint32_t address, uint32_t size)
{
    // The fake camera acknowledging a software trigger, not a client.
    if (address == RegisterLayout::kTriggerSoftwareAddress && size == 4)
        return;
    // Frames rendered before this write no longer show the camera's settings.
    {
        guint32 acquisition = 0;
        arv_fake_camera_read_register(fake, RegisterLayout::kAcquisitionAddress, &acquisition);
        std::lock_guard<std::mutex> lock(frameMutex);
        lastWriteNs = nowNs();
        setTrigger(false);
        if (acquisition != 0 && !clientAcquiring)
            framesSent = 0;
        clientAcquiring = acquisition != 0;
        followStreaming(address);
    }
    sensorWake.notify_all();
    const uint32_t end = address + size;
    bool touched = false;
    const auto& all = layout.features();
    for (size_t i = 0; i < all.size(); ++i) {
        const Slot& s = all[i];
        const uint32_t slotEnd = s.address + s.length * s.entries;
        if (end <= s.address || address >= slotEnd)
            continue;
        if (s.kind == Kind::String) {
            // Long strings arrive in several packets: act on the one that
            // completes the string (holds its end or its terminating zero).
            std::vector<char> written(size);
            arv_fake_camera_read_memory(fake, address, size, written.data());
            const bool terminated = std::memchr(written.data(), 0, size) != nullptr;
            if (!terminated && end < slotEnd)
                continue;
        }
        const uint32_t first = (std::max(address, s.address) - s.address) / s.length;
        const uint32_t last = (std::min(end, slotEnd) - 1 - s.address) / s.length;
        for (uint32_t e = first; e <= last; ++e) {
            try {
                apply(s, e);
            } catch (const std::exception& ex) {
                std::fprintf(stderr, "kalto-gev-camera: %s: %s\n", s.name.c_str(), ex.what());
            }
        }
        shadow[i].clear();  // the register holds what the client wrote: put the device's value back
        touched = true;
    }
    if (touched)
        pushAll();
}

// The fake camera's thread looks for work every 100 ms until it has sent a
// frame, and every millisecond from then on for as long as it streams. So it
// keeps streaming (sending only what the sensor triggers) from the client's
// first acquisition on, and a single frame after the first costs no idle
// poll. It stops, to read the stream address and payload size afresh at the
// next start, when control changes hands or the client sets the stream or the
// image format up anew, which it does only while not acquiring.
void GevCamera::Impl::followStreaming(uint32_t address)
{
    if (address == RegisterLayout::kAcquisitionAddress && clientAcquiring)
        setRegister(RegisterLayout::kStreamingAddress, 1);
    else if (address < RegisterLayout::kAcquisitionAddress &&
             (!clientAcquiring || address == RegisterLayout::kPrivilegeAddress))
        setRegister(RegisterLayout::kStreamingAddress, 0);
}

void GevCamera::Impl::pushAll()
{
    const auto& all = layout.features();
    for (size_t i = 0; i < all.size(); ++i) {
        std::vector<uint8_t> bytes = encode(all[i]);
        if (bytes != shadow[i]) {
            RegisterWriteHook::writeMemory(fake, all[i].address, static_cast<uint32_t>(bytes.size()), bytes.data());
            shadow[i].swap(bytes);
        }
    }
}

// The bridge between the client's acquisition and the emulator. A client
// that takes a single frame stops once it has it; one that streams goes on.
// So the emulator makes the first frame of an acquisition alone and, should
// the client still acquire a moment after it went out, acquires continuously,
// rendering each next frame while the current one goes out. Nothing runs
// while the client does not acquire (the frame in the making is finished, for
// a client that starts again at once), so auto functions act only on frames
// asked for, as in process.
void GevCamera::Impl::sensorLoop()
{
    std::unique_lock<std::mutex> lock(frameMutex);
    while (!quit) {
        if (!clientAcquiring || camera.isAcquiring() || fresh()) {
            sensorWake.wait(lock);
            continue;
        }
        if (framesSent > 0 && Clock::now() < lastSent + kSingleFrameGrace) {
            sensorWake.wait_until(lock, lastSent + kSingleFrameGrace);
            continue;
        }
        lock.unlock();
        try {
            camera.startAcquisition(Kalto::EAcquisitionMode::Continuous);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "kalto-gev-camera: acquisition: %s\n", e.what());
            lock.lock();
            clientAcquiring = false;
            continue;
        }
        lock.lock();
    }
    lock.unlock();
    camera.stopAcquisition();  // before the fake camera it triggers goes
}

void GevCamera::Impl::fill(ArvBuffer* buffer)
{
    // Called only once the sink triggered it for a fresh frame, so the
    // protocol thread never waits for the sensor; the wait below covers a
    // trigger a client's write has just withdrawn.
    Kalto::CGrabResultPtr result;
    {
        std::unique_lock<std::mutex> lock(frameMutex);
        if (frameReady.wait_for(lock, std::chrono::seconds(10), [this] { return fresh(); })) {
            result = frame;
            lastSentNs = frame->GetTimeStamp();
            lastSent = Clock::now();
            ++framesSent;
        }
    }
    sensorWake.notify_all();
    if (result && result->GrabSucceeded()) {
        const size_t payload = arv_fake_camera_get_payload(fake);
        std::memcpy(const_cast<void*>(arv_buffer_get_data(buffer, nullptr)), result->GetBuffer(),
                    std::min(payload, result->GetPayloadSize()));
    } else {
        std::fprintf(stderr, "kalto-gev-camera: no frame from the sensor within 10 s\n");
    }
    pushAll();  // auto functions moved exposure, gain or white balance
    if (camera.nodeMap().getEnum("AcquisitionMode") == "SingleFrame") {
        std::lock_guard<std::mutex> lock(frameMutex);
        setRegister(RegisterLayout::kAcquisitionAddress, 0);
        clientAcquiring = false;
    }
}

void GevCamera::Impl::start()
{
    camera.open();
    camera.setFrameSink([this](const Kalto::CGrabResultPtr& r) {
        bool pause;
        {
            std::lock_guard<std::mutex> lock(frameMutex);
            frame = r;
            if (fresh())
                setTrigger(true);
            pause = !clientAcquiring || (fresh() && framesSent == 0);
        }
        frameReady.notify_all();
        if (pause) {
            camera.stopAcquisition();  // from its own thread: ends after this frame
            sensorWake.notify_all();
        }
    });
    sensor = std::thread([this] { sensorLoop(); });

    // The description is generated from the emulator's own feature table, so
    // that names, ranges, increments and selectors cannot drift apart; the
    // fake camera reads it from a file, kept private to this process.
    xmlFile.setFileTemplate(QDir::tempPath() + "/kalto-gev-camera-XXXXXX.xml");
    if (!xmlFile.open())
        throw std::runtime_error("cannot write the GenICam description: " + xmlFile.errorString().toStdString());
    const std::string xml = layout.genicamXml(options.model);
    if (xmlFile.write(xml.data(), static_cast<qint64>(xml.size())) != static_cast<qint64>(xml.size()) ||
        !xmlFile.flush())
        throw std::runtime_error("cannot write the GenICam description: " + xmlFile.errorString().toStdString());

    server = arv_gv_fake_camera_new_full(options.interfaceName.c_str(), options.serial.c_str(),
                                         xmlFile.fileName().toLocal8Bit().constData());
    if (!server || !arv_gv_fake_camera_is_running(server))
        throw std::runtime_error("cannot serve GigE Vision on interface \"" + options.interfaceName + "\"");
    fake = arv_gv_fake_camera_get_fake_camera(server);
    if (!RegisterWriteHook::installed(fake))
        throw std::runtime_error("register writes cannot be followed: this Aravis build calls its memory "
                                 "write internally, past the program's hook");
    pushAll();
    // The emulator renders on its own thread at the pace its exposure allows
    // and triggers the fake camera in software for each new frame; the fake
    // camera's thread looks for a trigger every millisecond and so stays free
    // to answer the client (and its heartbeat) while a frame is being made.
    setRegister(RegisterLayout::kTriggerModeAddress, 1);
    setRegister(RegisterLayout::kTriggerSourceAddress, 1);
    arv_fake_camera_set_trigger_frequency(fake, 1000.0);
    arv_fake_camera_set_fill_pattern(
        fake, [](ArvBuffer* b, void* self, guint32, guint32, ArvPixelFormat) { static_cast<Impl*>(self)->fill(b); },
        this);
    RegisterWriteHook::setHandler(fake, [this](uint32_t address, uint32_t size) { onWrite(address, size); });
}

GevCamera::GevCamera(const Options& options) : d(new Impl(options))
{
    d->start();
}

GevCamera::~GevCamera() = default;

std::string GevCamera::deviceId() const
{
    return "Kalto-" + d->options.model + "-" + d->options.serial;
}

std::string GevCamera::memoryId() const
{
    return d->camera.model().id;
}
