// Frame production of the emulated camera at full resolution: the scene is
// rendered once, each frame runs only the sensor and the in-camera pipeline.
// The goal is 30 frames per second or more on one core.
#include "imagepipeline.h"
#include "scenerenderer.h"

#include <benchmark/benchmark.h>

namespace {

const RenderedScene& fullScene()
{
    static const RenderedScene scene = SceneRenderer::render(SensorModel(), SceneGeometry(), 1920, 1200);
    return scene;
}

// A camera as a user runs it: gamma, LUT, HSBC, matrix and hue/saturation all on.
PipelineSettings userSettings(Kalto::EPixelType format, Demosaicing demosaicing)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    s.blackLevelDn = 24;
    s.balance = {{1.0, 1.1, 1.3}};
    s.matrix = {{1.55, -0.40, -0.15, -0.30, 1.50, -0.20, -0.05, -0.45, 1.50}};
    s.colorAdjust = {{0.05, 0, -0.05, 0, 0.1, 0, 1.1, 1, 1.15, 1, 1.05, 0.95}};
    s.hueDeg = 4;
    s.saturation = 1.2;
    s.contrast = 0.1;
    s.gammaEnable = true;
    s.gamma = 0.7;
    s.lutEnable = true;
    s.lut.resize(4096);
    for (int i = 0; i < 4096; ++i)
        s.lut[i] = static_cast<uint16_t>(4095 - i / 2);
    s.format = format;
    s.demosaicing = demosaicing;
    return s;
}

void frames(benchmark::State& state, Kalto::EPixelType format, Demosaicing demosaicing)
{
    const RenderedScene& scene = fullScene();
    ImagePipeline pipeline;
    const PipelineSettings settings = userSettings(format, demosaicing);
    Frame frame;
    FrameStats stats;
    uint64_t seed = 1;
    for (auto _ : state) {
        pipeline.process(scene, settings, seed++, frame, &stats);
        benchmark::DoNotOptimize(frame.data.data());
    }
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_Frame1920x1200_RGB8_Simple(benchmark::State& s) { frames(s, Kalto::PixelType_RGB8packed, Demosaicing::Simple); }
void BM_Frame1920x1200_RGB8_Bilinear(benchmark::State& s) { frames(s, Kalto::PixelType_RGB8packed, Demosaicing::Bilinear); }
void BM_Frame1920x1200_BayerRG8(benchmark::State& s) { frames(s, Kalto::PixelType_BayerRG8, Demosaicing::Simple); }
void BM_Frame1920x1200_BayerRG12(benchmark::State& s) { frames(s, Kalto::PixelType_BayerRG12, Demosaicing::Simple); }
void BM_Frame1920x1200_Mono8(benchmark::State& s) { frames(s, Kalto::PixelType_Mono8, Demosaicing::Simple); }

}  // namespace

BENCHMARK(BM_Frame1920x1200_RGB8_Simple)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Frame1920x1200_RGB8_Bilinear)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Frame1920x1200_BayerRG8)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Frame1920x1200_BayerRG12)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Frame1920x1200_Mono8)->Unit(benchmark::kMillisecond)->UseRealTime();
