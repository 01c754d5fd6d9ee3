// Camera control on the emulated medical camera at its full 1920x1200, with
// the calibration session as the plug-in runs it:
// - the conversion of a delivered frame into the measuring and display image
//   during continuous acquisition (frame delivery to imageGrabbed()) on the
//   camera the session has neutralised;
// - the session's automatic brightness from a grey patch ten times too dark
//   to on target.
#include "chartdiscriminator.h"
#include "colorcorrectionmodel.h"
#include "convertingimagecamera.h"
#include "chartprojection.h"
#include "emulatedcamera.h"
#include "emulatortransportlayer.h"

#include "camerapool/camerapool.h"
#include "camerapool/icamera.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icamerastatusservice.h"
#include "genicam/nodemap.h"
#include "kalto/transportlayerregistry.h"

#include <QCoreApplication>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr const char* kCamera = "emu-cmed-0";

QCoreApplication* app()
{
    static int argc = 1;
    static char name[] = "bench_model";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* instance = new QCoreApplication(argc, argv);
    return instance;
}

double quantile(std::vector<double> v, double q)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[size_t(q * double(v.size() - 1) + 0.5)];
}

/// The camera behind a host camera pool and a session opened on it with the
/// grid on the chart, neutralised and giving RGB8. Its flash lives in a
/// temporary folder.
class NeutralSession {
public:
    NeutralSession()
    {
        app();
        // The flash and the session's stored grid stay out of the user's folders.
        qputenv("XDG_DATA_HOME", m_flash.path().toUtf8());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_flash.path());
        m_registry.add(m_layer);
        m_pool = std::make_unique<Plugin::CameraPool::CameraPool>(m_registry);
        for (const auto& service : m_pool->services()) {
            if (auto control = service.objectCast<Plugin::CameraPool::ICameraControlService>())
                session.injectCameraControlService(control);
            if (auto status = service.objectCast<Plugin::CameraPool::ICameraStatusService>())
                session.injectCameraStatusService(status);
        }
        EmulatedCamera& device = *m_layer->camera(kCamera);
        const ChartProjection::Quad q = ChartProjection(device.sceneGeometry(), 1920, 1200).grid();  // TL, TR, BR, BL
        auto at = [](const ChartProjection::Point& p) { return QPoint(int(std::lround(p[0])), int(std::lround(p[1]))); };
        opened = session.Open(m_pool->cameraInfo(kCamera)) && session.SetNeutralSettings();
        session.SetGridPositon(CTrapezoid(at(q[0]), at(q[1]), at(q[3]), at(q[2])));
        device.nodeMap().setEnum("PixelFormat", "RGB8");
    }
    ~NeutralSession() { session.Close(); }

    /// The camera for a client beside the session, which gives it up for that.
    QSharedPointer<Plugin::CameraPool::ICamera> handOver()
    {
        session.Close();
        return m_pool->open(m_pool->cameraInfo(kCamera), true);
    }
    void release(const QSharedPointer<Plugin::CameraPool::ICamera>& camera) { m_pool->release(camera); }
    EmulatedCamera& device() { return *m_layer->camera(kCamera); }

    /// Brightest channel of the grey patch in a fresh grab, 0..255.
    double grey()
    {
        QVector<QColor> values;
        if (session.GetColorPatchValues(values, true) <= ChartDiscriminator::kGray80PercentIndex)
            return -1.0;
        const QColor& c = values[ChartDiscriminator::kGray80PercentIndex];
        return std::max({c.red(), c.green(), c.blue()});
    }
    /// Runs the session's automatic brightness to its end.
    bool autoBrightness()
    {
        QSignalSpy finished(&session, &ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished);
        return session.AutoAdjustGray80PercentPatch() && finished.wait(60000);
    }

    ColorCorrectionModel session;
    bool opened = false;

private:
    QTemporaryDir m_flash;
    Kalto::CTransportLayerRegistry m_registry;
    std::shared_ptr<EmulatorTransportLayer> m_layer = std::make_shared<EmulatorTransportLayer>();
    std::unique_ptr<Plugin::CameraPool::CameraPool> m_pool;
};

// One iteration per delivered frame; the iteration time is the span from the
// camera handing out the frame to imageGrabbed() (both on the delivery thread).
void BM_GrabAndConvertDuringContinuousAcquisition(benchmark::State& state)
{
    NeutralSession neutral;
    const auto camera = neutral.handOver();
    if (!neutral.opened || !camera) {
        state.SkipWithError("the session could not neutralise the camera");
        return;
    }
    neutral.device().nodeMap().setEnum("PixelFormat", state.range(0) ? "BayerRG12" : "RGB8");

    std::mutex mutex;
    std::condition_variable cv;
    Clock::time_point delivered;
    std::vector<double> latencies;
    // Connected before the wrapper's own connection, so it runs first.
    QObject::connect(camera.data(), &Plugin::CameraPool::ICamera::cameraImageGrabbed, camera.data(),
                     [&](const Kalto::CGrabResultPtr&) {
                         std::lock_guard<std::mutex> lock(mutex);
                         delivered = Clock::now();
                     },
                     Qt::DirectConnection);
    ConvertingImageCamera wrapper;
    QObject::connect(&wrapper, &ConvertingImageCamera::imageGrabbed, &wrapper,
                     [&] {
                         std::lock_guard<std::mutex> lock(mutex);
                         latencies.push_back(std::chrono::duration<double>(Clock::now() - delivered).count());
                         cv.notify_all();
                     },
                     Qt::DirectConnection);
    wrapper.attachCamera(camera);
    camera->startGrabbing();

    for (auto _ : state) {
        std::unique_lock<std::mutex> lock(mutex);
        const size_t before = latencies.size();
        if (!cv.wait_for(lock, std::chrono::seconds(5), [&] { return latencies.size() > before; })) {
            state.SkipWithError("no frame within 5 s");
            break;
        }
        state.SetIterationTime(latencies.back());
    }
    camera->stopGrabbing();
    wrapper.detachCamera();
    neutral.release(camera);
    std::lock_guard<std::mutex> lock(mutex);
    state.counters["median_ms"] = quantile(latencies, 0.5) * 1e3;
    state.counters["p90_ms"] = quantile(latencies, 0.9) * 1e3;
    state.counters["frames"] = double(latencies.size());
}
BENCHMARK(BM_GrabAndConvertDuringContinuousAcquisition)
    ->ArgName("bayer12")
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(60)
    ->Unit(benchmark::kMillisecond);

// Rounds (exposure or gain steps) and wall time of one run of the session's
// loop from a grey patch at a tenth of its target.
void BM_AutoBrightnessFromTenTimesTooDark(benchmark::State& state)
{
    NeutralSession neutral;
    ColorCorrectionModel& session = neutral.session;
    // The exposure on target is the one the loop itself finds.
    if (!neutral.opened || !neutral.autoBrightness()) {
        state.SkipWithError("the session could not reach its target");
        return;
    }
    const double onTargetUs = session.GetExposureTimeValue();

    std::vector<double> rounds, finalGrey;
    for (auto _ : state) {
        state.PauseTiming();
        session.SetExposureTimeValue(onTargetUs / 10);
        neutral.grey();
        QCoreApplication::processEvents();  // the notifications of that write
        QSignalSpy exposureSteps(&session, &ColorCorrectionModel::ExposureTimeValueChanged);
        QSignalSpy gainSteps(&session, &ColorCorrectionModel::GainValueChanged);
        state.ResumeTiming();
        if (!neutral.autoBrightness()) {
            state.SkipWithError("automatic brightness did not finish");
            break;
        }
        state.PauseTiming();
        QCoreApplication::processEvents();
        rounds.push_back(exposureSteps.count() + gainSteps.count());
        finalGrey.push_back(neutral.grey());
        state.ResumeTiming();
    }
    state.counters["rounds"] = quantile(rounds, 0.5);
    state.counters["max_rounds"] = rounds.empty() ? 0.0 : *std::max_element(rounds.begin(), rounds.end());
    state.counters["final_grey"] = quantile(finalGrey, 0.5);
}
BENCHMARK(BM_AutoBrightnessFromTenTimesTooDark)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
