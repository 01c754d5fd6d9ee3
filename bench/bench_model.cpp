// Camera control on the emulated medical camera at its full 1920x1200:
// - the conversion of a delivered frame into the measuring and display image
//   during continuous acquisition (frame delivery to imageGrabbed());
// - automatic brightness from a grey patch ten times too dark to on target.
#include "camerajustify.h"
#include "convertingimagecamera.h"
#include "emulatedcamera.h"
#include "emulatedrig.h"
#include "testcalibrationsession.h"

#include "camerapool/icamera.h"
#include "genicam/nodemap.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSignalSpy>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

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

// One iteration per delivered frame; the iteration time is the span from the
// camera handing out the frame to imageGrabbed() (both on the delivery thread).
void BM_GrabAndConvertDuringContinuousAcquisition(benchmark::State& state)
{
    app();
    EmulatedRig rig(EmulatedRig::kMedical, 1920, 1200);
    CameraJustify justify(rig.camera());
    neutralise(justify);
    rig.device().nodeMap().setEnum("PixelFormat", state.range(0) ? "BayerRG12" : "RGB8");

    std::mutex mutex;
    std::condition_variable cv;
    Clock::time_point delivered;
    std::vector<double> latencies;
    // Connected before the wrapper's own connection, so it runs first.
    QObject::connect(rig.camera().data(), &Plugin::CameraPool::ICamera::cameraImageGrabbed, rig.camera().data(),
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
    wrapper.attachCamera(rig.camera());
    rig.camera()->startGrabbing();

    for (auto _ : state) {
        std::unique_lock<std::mutex> lock(mutex);
        const size_t before = latencies.size();
        if (!cv.wait_for(lock, std::chrono::seconds(5), [&] { return latencies.size() > before; })) {
            state.SkipWithError("no frame within 5 s");
            break;
        }
        state.SetIterationTime(latencies.back());
    }
    rig.camera()->stopGrabbing();
    wrapper.detachCamera();
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

// Rounds (measurements after the start one) and wall time of one run of the
// worker from a grey patch at a tenth of its target.
void BM_AutoBrightnessFromTenTimesTooDark(benchmark::State& state)
{
    app();
    EmulatedRig rig(EmulatedRig::kMedical, 1920, 1200);
    CameraJustify justify(rig.camera());
    neutralise(justify);
    rig.device().nodeMap().setEnum("PixelFormat", "RGB8");
    TestCalibrationSession session(rig.camera(), rig.grid());
    session.measureGrey();  // the short first wait may miss the first frame
    const double grey = session.measureGrey();
    const double onTargetUs = session.GetExposureTimeValue() * 150.0 / std::max(grey, 1.0);

    std::vector<double> rounds, finalGrey;
    for (auto _ : state) {
        state.PauseTiming();
        session.SetExposureTimeValue(onTargetUs / 10);
        session.measureGrey();
        const int measurementsBefore = session.measurements();
        QSignalSpy finished(&justify, &CameraJustify::AutoBrightnessFinished);
        state.ResumeTiming();
        justify.startAutoBrightness(&session);
        if (!finished.wait(60000)) {
            state.SkipWithError("automatic brightness did not finish");
            break;
        }
        state.PauseTiming();
        rounds.push_back(session.measurements() - measurementsBefore - 1);
        finalGrey.push_back(session.measureGrey());
        state.ResumeTiming();
    }
    state.counters["rounds"] = quantile(rounds, 0.5);
    state.counters["max_rounds"] = rounds.empty() ? 0.0 : *std::max_element(rounds.begin(), rounds.end());
    state.counters["final_grey"] = quantile(finalGrey, 0.5);
}
BENCHMARK(BM_AutoBrightnessFromTenTimesTooDark)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
