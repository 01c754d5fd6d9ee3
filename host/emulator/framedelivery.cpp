#include "framedelivery.h"

#include "emulatedcamera.h"
#include "emulatedfeatures.h"
#include "scenerenderer.h"

#include "genicam/runtimeexception.h"
#include "kalto/grabresultdata.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {
using Clock = std::chrono::steady_clock;
}

struct FrameDelivery::Impl {
    Impl(EmulatedFeatures& f, const SensorModel& s, const SceneGeometry& g, std::function<void()> u)
        : features(f), sensor(s), unplug(std::move(u)), geometry(g)
    {
    }

    EmulatedFeatures& features;
    const SensorModel& sensor;
    const std::function<void()> unplug;

    // Delivery state guarded by `mutex`.
    mutable std::mutex mutex;
    std::condition_variable wake;
    SceneGeometry geometry;
    std::shared_ptr<const RenderedScene> scene;
    bool sceneDirty = true;
    std::atomic<bool> acquiring{false};
    bool stopRequested = false;
    Kalto::EAcquisitionMode mode = Kalto::EAcquisitionMode::Continuous;
    std::mutex threadMutex;  ///< guards `thread` (start and join)
    std::thread thread;
    std::thread::id threadId;  ///< the delivery thread's id, under `mutex`
    Kalto::IDevice::FrameSink sink;
    int disconnectAfter = -1;
    int failCount = 0;
    int extraDelayMs = 0;
    uint64_t frameNumber = 0;

    void loop();
    /// False when asked to stop before `until`.
    bool waitUntil(Clock::time_point until);
    std::shared_ptr<const RenderedScene> currentScene();
    std::shared_ptr<Kalto::CGrabResultData> grab(ImagePipeline& pipeline, const PipelineSettings& settings,
                                                 Clock::time_point started, int& delayMs);
    /// False when the loop is to end: stopped, single frame done or unplugged.
    bool deliver(const std::shared_ptr<Kalto::CGrabResultData>& data);
    void halt();
    void stop();
};

void FrameDelivery::Impl::loop()
{
    {
        std::lock_guard<std::mutex> lock(mutex);
        threadId = std::this_thread::get_id();
    }
    ImagePipeline pipeline;
    auto next = Clock::now();
    for (;;) {
        if (!waitUntil(next))
            return;
        const auto started = Clock::now();
        const PipelineSettings settings = features.resolve();
        int delayMs = 0;
        const auto data = grab(pipeline, settings, started, delayMs);
        const double periodUs = std::max(1e6 / EmulatedCamera::kMaxFramesPerSecond, settings.exposureUs);
        next = started + std::chrono::microseconds(static_cast<int64_t>(periodUs)) + std::chrono::milliseconds(delayMs);
        // A slow frame arrives late, not just the following one.
        if (delayMs > 0 && !waitUntil(started + std::chrono::milliseconds(delayMs)))
            return;
        if (!deliver(data))
            return;
    }
}

bool FrameDelivery::Impl::waitUntil(Clock::time_point until)
{
    std::unique_lock<std::mutex> lock(mutex);
    wake.wait_until(lock, until, [this] { return stopRequested; });
    return !stopRequested;
}

std::shared_ptr<const RenderedScene> FrameDelivery::Impl::currentScene()
{
    int width, height;
    {
        Kalto::CNodeMap& map = features.map();
        std::lock_guard<std::recursive_mutex> lock(map.mutex());
        width = static_cast<int>(map.getInteger("Width"));
        height = static_cast<int>(map.getInteger("Height"));
    }
    std::unique_lock<std::mutex> lock(mutex);
    if (sceneDirty || !scene || scene->width != width || scene->height != height) {
        const SceneGeometry g = geometry;
        lock.unlock();
        auto rendered = std::make_shared<RenderedScene>(SceneRenderer::render(sensor, g, width, height));
        lock.lock();
        scene = rendered;
        sceneDirty = false;
    }
    return scene;
}

std::shared_ptr<Kalto::CGrabResultData> FrameDelivery::Impl::grab(ImagePipeline& pipeline,
                                                                  const PipelineSettings& settings,
                                                                  Clock::time_point started, int& delayMs)
{
    const std::shared_ptr<const RenderedScene> current = currentScene();
    auto data = std::make_shared<Kalto::CGrabResultData>();
    bool fail = false;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (failCount > 0) {
            --failCount;
            fail = true;
        }
        delayMs = extraDelayMs;
    }
    const uint64_t number = ++frameNumber;
    if (fail) {
        data->SetError(0xE1000014, "Frame incomplete: the emulated transfer lost packets");
    } else {
        Frame frame;
        FrameStats stats;
        pipeline.process(*current, settings, number * 7919 + 13, frame, &stats);
        data->SetImage(std::move(frame.data), frame.format, static_cast<uint32_t>(frame.width),
                       static_cast<uint32_t>(frame.height));
        features.runAutoFunctions(stats);
    }
    data->SetImageNumber(number);
    data->SetTimeStamp(static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(started.time_since_epoch()).count()));
    return data;
}

bool FrameDelivery::Impl::deliver(const std::shared_ptr<Kalto::CGrabResultData>& data)
{
    Kalto::IDevice::FrameSink to;
    bool single;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (stopRequested)
            return false;
        to = sink;
        single = mode == Kalto::EAcquisitionMode::SingleFrame;
    }
    if (to)
        to(Kalto::CGrabResultPtr(data));
    bool unplugNow = false;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (disconnectAfter > 0 && --disconnectAfter == 0)
            unplugNow = true;
        if (single && !unplugNow) {
            stopRequested = true;
            acquiring = false;
            return false;
        }
    }
    if (unplugNow) {
        unplug();
        return false;
    }
    return true;
}

void FrameDelivery::Impl::halt()
{
    {
        std::lock_guard<std::mutex> lock(mutex);
        stopRequested = true;
        acquiring = false;
    }
    wake.notify_all();
}

void FrameDelivery::Impl::stop()
{
    bool fromDelivery;
    {
        std::lock_guard<std::mutex> lock(mutex);
        stopRequested = true;
        acquiring = false;
        fromDelivery = threadId == std::this_thread::get_id();
    }
    wake.notify_all();
    // The delivery thread cannot join itself; it ends once the sink returns.
    if (!fromDelivery) {
        std::lock_guard<std::mutex> lock(threadMutex);
        if (thread.joinable())
            thread.join();
    }
}

FrameDelivery::FrameDelivery(EmulatedFeatures& features, const SensorModel& sensor, const SceneGeometry& geometry,
                             std::function<void()> unplug)
    : d(new Impl(features, sensor, geometry, std::move(unplug)))
{
}

FrameDelivery::~FrameDelivery()
{
    d->stop();
}

void FrameDelivery::start(Kalto::EAcquisitionMode mode)
{
    {
        std::lock_guard<std::mutex> lock(d->mutex);
        if (d->threadId == std::this_thread::get_id())
            KALTO_THROW_RUNTIME("startAcquisition from inside the frame sink");
    }
    std::lock_guard<std::mutex> threads(d->threadMutex);
    if (d->acquiring)
        return;
    if (d->thread.joinable())
        d->thread.join();
    {
        std::lock_guard<std::mutex> lock(d->mutex);
        d->stopRequested = false;
        d->mode = mode;
        d->acquiring = true;
        d->threadId = std::thread::id();
    }
    d->thread = std::thread([this] { d->loop(); });
}

void FrameDelivery::stop()
{
    d->stop();
}

void FrameDelivery::halt()
{
    d->halt();
}

bool FrameDelivery::isAcquiring() const
{
    return d->acquiring;
}

void FrameDelivery::setSink(Kalto::IDevice::FrameSink sink)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->sink = std::move(sink);
}

void FrameDelivery::setGeometry(const SceneGeometry& geometry)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->geometry = geometry;
    d->sceneDirty = true;
}

SceneGeometry FrameDelivery::geometry() const
{
    std::lock_guard<std::mutex> lock(d->mutex);
    return d->geometry;
}

void FrameDelivery::disconnectAfterFrames(int frames)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->disconnectAfter = frames;
}

void FrameDelivery::failNextGrabs(int count)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->failCount = std::max(0, count);
}

void FrameDelivery::setExtraFrameDelayMs(int milliseconds)
{
    std::lock_guard<std::mutex> lock(d->mutex);
    d->extraDelayMs = std::max(0, milliseconds);
}
