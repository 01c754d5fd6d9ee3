// The emulated medical camera at 1920x1200 in process and over loopback GigE
// Vision (kalto-gev-camera through the GenICam transport layer), side by side:
// frames per second while streaming, and the time from asking for a frame to
// holding it converted to RGB16 (what the calibration measures on).
//
// The GigE Vision cases need a running kalto-gev-camera named by
// KALTO_GEV_CAMERA_ID and a loopback-only network namespace;
// bench/gev_vs_inprocess.sh (run by scripts/bench.sh) provides both. Without
// them those cases are skipped, saying why.
#include "arvtransportlayer.h"
#include "emulatortransportlayer.h"

#include "genicam/inodemap.h"
#include "kalto/grabresultdata.h"
#include "kalto/idevice.h"
#include "kalto/imageformatconverter.h"
#include "kalto/kaltoimage.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>

namespace {

struct Source {
    std::shared_ptr<Kalto::ITransportLayer> layer;
    std::string id;
    std::string unavailable;  ///< why the source cannot be measured here
};

Source inProcess()
{
    static const auto layer = std::make_shared<EmulatorTransportLayer>();
    return {layer, "emu-cmed-0", {}};
}

Source overGigE()
{
    const char* id = std::getenv("KALTO_GEV_CAMERA_ID");
    if (!id || !*id)
        return {nullptr, {}, "KALTO_GEV_CAMERA_ID is not set (run through scripts/bench.sh)"};
    static const auto layer = std::make_shared<ArvTransportLayer>(std::vector<std::string>{"GigEVision"});
    return {layer, id, {}};
}

// Opens the camera with fixed exposure, so that both run at the same frame
// period, and collects what it delivers.
class Stream {
public:
    explicit Stream(const Source& s) : m_device(s.layer->createDevice(s.id))
    {
        if (!m_device)
            throw std::runtime_error("no camera " + s.id);
        m_device->open();
        Kalto::INodeMap& map = m_device->nodeMap();
        map.setEnum("ExposureAuto", "Off");
        map.setEnum("GainAuto", "Off");
        map.setFloat("ExposureTime", 8000.0);
        m_device->setFrameSink([this](const Kalto::CGrabResultPtr& r) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_last = r;
            ++m_count;
            m_cv.notify_all();
        });
    }
    ~Stream()
    {
        m_device->stopAcquisition();
        m_device->setFrameSink({});
        m_device->close();
    }

    Kalto::IDevice& device() { return *m_device; }
    /// The next result after `count` delivered ones; invalid after 10 s.
    Kalto::CGrabResultPtr waitBeyond(uint64_t count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_cv.wait_for(lock, std::chrono::seconds(10), [&] { return m_count > count; }))
            return {};
        return m_last;
    }
    uint64_t count()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_count;
    }

private:
    std::shared_ptr<Kalto::IDevice> m_device;
    std::mutex m_mutex;
    std::condition_variable m_cv;
    Kalto::CGrabResultPtr m_last;
    uint64_t m_count = 0;
};

void framesPerSecond(benchmark::State& state, const Source& source)
{
    if (!source.unavailable.empty()) {
        state.SkipWithError(source.unavailable.c_str());
        return;
    }
    Stream stream(source);
    stream.device().startAcquisition(Kalto::EAcquisitionMode::Continuous);
    uint64_t seen = 0, failed = 0;
    stream.waitBeyond(0);  // the first frame carries the start-up
    seen = stream.count();
    for (auto _ : state) {
        const Kalto::CGrabResultPtr r = stream.waitBeyond(seen);
        if (!r) {
            state.SkipWithError("no frame within 10 s");
            break;
        }
        seen = stream.count();
        if (!r->GrabSucceeded())
            ++failed;
    }
    stream.device().stopAcquisition();
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["failed"] = static_cast<double>(failed);
}

void grabToConverted(benchmark::State& state, const Source& source)
{
    if (!source.unavailable.empty()) {
        state.SkipWithError(source.unavailable.c_str());
        return;
    }
    Stream stream(source);
    Kalto::CImageFormatConverter converter;
    converter.OutputPixelFormat = Kalto::PixelType_RGB16packed;
    uint64_t failed = 0;
    for (auto _ : state) {
        const uint64_t seen = stream.count();
        stream.device().startAcquisition(Kalto::EAcquisitionMode::SingleFrame);
        const Kalto::CGrabResultPtr r = stream.waitBeyond(seen);
        if (!r) {
            state.SkipWithError("no frame within 10 s");
            break;
        }
        if (r->GrabSucceeded()) {
            Kalto::CKaltoImage image;
            converter.Convert(image, r);
            benchmark::DoNotOptimize(image.GetBuffer());
        } else {
            ++failed;  // e.g. packets lost on a busy machine: the caller grabs again
        }
        stream.device().stopAcquisition();
    }
    state.counters["failed"] = static_cast<double>(failed);
}

void BM_FramesPerSecond_InProcess(benchmark::State& s) { framesPerSecond(s, inProcess()); }
void BM_FramesPerSecond_GigE(benchmark::State& s) { framesPerSecond(s, overGigE()); }
void BM_GrabToConvertedRgb16_InProcess(benchmark::State& s) { grabToConverted(s, inProcess()); }
void BM_GrabToConvertedRgb16_GigE(benchmark::State& s) { grabToConverted(s, overGigE()); }

}  // namespace

BENCHMARK(BM_FramesPerSecond_InProcess)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(5.0);
BENCHMARK(BM_FramesPerSecond_GigE)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(5.0);
BENCHMARK(BM_GrabToConvertedRgb16_InProcess)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(5.0);
BENCHMARK(BM_GrabToConvertedRgb16_GigE)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(5.0);

// The in-process camera's user sets go to a temporary folder before anything runs.
int main(int argc, char** argv)
{
    // The in-process camera keeps its user sets away from the user's.
    QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toUtf8());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
