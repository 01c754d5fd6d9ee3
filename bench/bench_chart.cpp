#include "chartscene.h"

#include "chartdiscriminator.h"
#include "colorcorrectionautochartfinder.h"

#include "kalto/kaltoimage.h"

#include <QGuiApplication>
#include <QImageReader>

#include <benchmark/benchmark.h>

#include <random>

namespace {

// A real hand-held photograph, cut to 16:9 and brought to 1920 x 1080.
QImage photo1920()
{
    QImageReader reader(COLCAL_TESTDATA_DIR "/charts/pedrodiamel_handheld_sunlight.jpg");
    const QImage full = reader.read();
    return full.copy(0, 96, 1024, 576).scaled(1920, 1080, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// Times the finder on one image; the counter "valid" says whether it found the chart.
void findRepeatedly(benchmark::State& state, const QImage& image)
{
    ColorCorrectionAutoChartFinder finder;
    bool valid = false;
    for (auto _ : state) {
        valid = finder.GetChartPosition(image).valid;
        benchmark::DoNotOptimize(valid);
    }
    state.counters["valid"] = valid;
}

void BM_FindChartPhoto1920x1080(benchmark::State& state)
{
    const QImage image = photo1920();
    findRepeatedly(state, image);
}
BENCHMARK(BM_FindChartPhoto1920x1080)->Unit(benchmark::kMillisecond);

void BM_FindChartSyntheticScene1920x1080(benchmark::State& state)
{
    std::array<QPointF, 4> truth;
    const QImage image = ChartScene::render(ChartScene::randomParams(3, 1920, 1080), truth);
    findRepeatedly(state, image);
}
BENCHMARK(BM_FindChartSyntheticScene1920x1080)->Unit(benchmark::kMillisecond);

// Photographs the standard search cannot resolve: a 40 px chart in a 400 px
// frame (the extended search finds it), and no chart at all (both searches
// run to the end, the slowest case).
void BM_FindChartPhoto(benchmark::State& state, const char* file)
{
    const QImage image = QImageReader(QString(COLCAL_TESTDATA_DIR "/charts/") + file).read();
    findRepeatedly(state, image);
}
BENCHMARK_CAPTURE(BM_FindChartPhoto, SmallChart400x300, "plantcv_small_corner_black_cloth.jpg")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_FindChartPhoto, NoChart400x335, "plantcv_negative_no_chart.jpg")->Unit(benchmark::kMillisecond);

// 1920 x 1200, 16-bit RGB, grid spanning 60 % of the width (1152 x 768 px).
void BM_UpdateColorPatchValues1920x1200(benchmark::State& state)
{
    Kalto::CKaltoImage image;
    image.Reset(Kalto::PixelType_RGB16packed, 1920, 1200);
    std::mt19937 rng(7);
    auto* px = static_cast<uint16_t*>(image.GetBuffer());
    for (size_t i = 0; i < size_t(1920) * 1200 * 3; ++i)
        px[i] = uint16_t(rng() & 0xffff);
    ChartDiscriminator d(70);
    d.setGridPosition(CTrapezoid(QPoint(384, 216), QPoint(1536, 216), QPoint(384, 984), QPoint(1536, 984)));
    for (auto _ : state) {
        const bool ok = d.updateColorPatchValues(&image);
        benchmark::DoNotOptimize(ok);
    }
}
BENCHMARK(BM_UpdateColorPatchValues1920x1200)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
