#include "chartsampler.h"
#include "colorcalibrationv1.h"
#include "coloradjustment.h"
#include "imagepipeline.h"
#include "scenerenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>

namespace {

using Chart = ChartFit::Chart;

// A small frame keeps the sanitizer build quick; patches are still ~40 px.
const RenderedScene& scene()
{
    static const RenderedScene s = SceneRenderer::render(SensorModel(), SceneGeometry(), 480, 300);
    return s;
}

Chart measure(const PipelineSettings& s, uint64_t seed = 1)
{
    Frame f;
    ImagePipeline().process(scene(), s, seed, f);
    return ChartSampler::measure(f, scene().geometry);
}

TEST(ImagePipeline, NeutralCameraIsOffTheTargetButCalibratable)
{
    PipelineSettings s;  // patch 19's brightest channel at 150 of 255
    s.exposureUs = 5000;
    for (int i = 0; i < 3; ++i)
        s.exposureUs *= 150.0 / dlib::max(dlib::rowm(measure(s), 19));
    const Chart c = measure(s);
    EXPECT_NEAR(dlib::max(dlib::rowm(c, 19)), 150.0, 3.0);
    EXPECT_GT(std::fabs(c(19, 0) - c(19, 2)), 10.0);  // a colour cast: the grey patch is not grey

    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, c);
    const double full = engine.Run();
    const double neutral = engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, false, true);
    const double matrixOnly = engine.GetError(COLORCALIBRATION_STEP_MATRIX3X3, false, true);
    EXPECT_GE(neutral, 8.0);
    EXPECT_LE(neutral, 20.0);
    EXPECT_LE(full, 2.5);
    EXPECT_LT(full, matrixOnly);
    std::printf("neutral mean dE2000 %.2f, after matrix %.2f, after hue/saturation %.2f\n", neutral, matrixOnly, full);
}

// One stage changed against the plain pipeline at 9 ms: each patch and channel
// listed must come out as `expected` computes it from the plain chart `a` (or
// from the changed chart `b`), within rel * expected + abs.
struct StageRow {
    const char* name;
    std::function<void(PipelineSettings&)> change;
    std::vector<long> patches;
    std::function<double(const Chart& a, const Chart& b, long k, long j)> expected;
    double rel, abs;
};

const std::array<double, 9> kSharpen{{1.2, -0.1, -0.1, -0.1, 1.2, -0.1, -0.1, -0.1, 1.2}};
const ColorAdjustment::Params kAdjust{{0.1, -0.1, 0.05, 0.08, 0.1, -0.15, 0.7, 1.2, 1.1, 0.8, 0.9, 1.3}};

// The plain chart through kSharpen, then through the hue/saturation stage when `adjust`.
double sharpened(const Chart& a, long k, long j, bool adjust)
{
    double v[3];
    for (int r = 0; r < 3; ++r)
        v[r] = kSharpen[3 * r] * a(k, 0) + kSharpen[3 * r + 1] * a(k, 1) + kSharpen[3 * r + 2] * a(k, 2);
    if (adjust)
        ColorAdjustment::apply(v, kAdjust);
    return std::clamp(v[j], 0.0, 255.0);
}

const std::vector<long> kAll = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23};
const std::vector<long> kGreys = {19, 20, 21, 22};

const StageRow kStageRows[] = {
    {"halfExposure", [](auto& s) { s.exposureUs = 4500; }, {0, 6, 13, 19, 20},
     [](const Chart& a, const Chart&, long k, long j) { return 0.5 * a(k, j); }, 0.05, 3},
    {"halfExposureDoubleGain", [](auto& s) { s.exposureUs = 4500; s.gainDb = 20.0 * std::log10(2.0); },
     {0, 6, 13, 19, 20}, [](const Chart& a, const Chart&, long k, long j) { return a(k, j); }, 0.05, 3},
    {"saturatesAt255", [](auto& s) { s.exposureUs = 100000; }, {18},
     [](const Chart&, const Chart&, long, long) { return 255.0; }, 0, 0},
    {"whiteBalance", [](auto& s) { s.balance = {{1.5, 1.0, 0.5}}; }, {20},
     [](const Chart& a, const Chart&, long k, long j) { return std::array<double, 3>{{1.5, 1.0, 0.5}}[j] * a(k, j); },
     0.04, 2},
    {"matrixMixes", [](auto& s) { s.matrix = {{0, 1, 0, 1, 0, 0, 0.5, 0, 0.5}}; }, {1, 6, 14},
     [](const Chart& a, const Chart&, long k, long j) {
         return j == 0 ? a(k, 1) : j == 1 ? a(k, 0) : 0.5 * (a(k, 0) + a(k, 2));
     }, 0, 3},
    // Patches from every sector: reds, oranges, greens, blues, purples, magentas.
    {"colourAdjustmentAfterMatrix", [](auto& s) { s.matrix = kSharpen; s.colorAdjust = kAdjust; },
     {0, 2, 4, 6, 8, 9, 10, 13, 14, 16, 17},
     [](const Chart& a, const Chart&, long k, long j) { return sharpened(a, k, j, true); }, 0, 4},
    {"colourAdjustmentOff", [](auto& s) { s.matrix = kSharpen; s.colorAdjust = kAdjust; s.colorAdjustEnable = false; },
     {14}, [](const Chart& a, const Chart&, long k, long j) { return sharpened(a, k, j, false); }, 0, 3},
    {"saturationZeroIsGrey", [](auto& s) { s.saturation = 0.0; }, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17},
     [](const Chart&, const Chart& b, long k, long j) { return b(k, (j + 1) % 3); }, 0, 1.01},
    {"gammaHalf", [](auto& s) { s.gammaEnable = true; s.gamma = 0.5; }, kGreys,
     [](const Chart& a, const Chart&, long k, long j) { return 255.0 * std::sqrt(a(k, j) / 255.0); }, 0, 3},
    {"gammaSrgb", [](auto& s) { s.gammaEnable = true; s.gamma = 0.5; s.gammaCurve = GammaCurve::SRGB; }, kGreys,
     [](const Chart& a, const Chart&, long k, long j) {
         const double v = a(k, j) / 255.0;
         return 255.0 * (v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055);
     }, 0, 3},
    {"gammaDisabled", [](auto& s) { s.gamma = 0.5; s.gammaCurve = GammaCurve::SRGB; }, {20},
     [](const Chart& a, const Chart&, long k, long j) { return a(k, j); }, 0, 1.01},
    {"lutInverts",
     [](auto& s) {
         s.lutEnable = true;
         for (int i = 0; i < 4096; ++i)
             s.lut.push_back(static_cast<uint16_t>(4095 - i));
     },
     {20}, [](const Chart& a, const Chart&, long k, long j) { return 255 - a(k, j); }, 0, 2},
    {"blackLevel", [](auto& s) { s.blackLevelDn = 160; }, {23},  // 10 of 255
     [](const Chart& a, const Chart&, long k, long j) { return a(k, j) + 10; }, 0, 2},
    {"brightness", [](auto& s) { s.brightness = 0.2; }, {22},
     [](const Chart& a, const Chart&, long k, long j) { return a(k, j) + 25.5; }, 0, 2},
    {"contrast", [](auto& s) { s.contrast = 0.5; }, {23},
     [](const Chart& a, const Chart&, long k, long j) { return std::max(0.0, (a(k, j) - 127.5) * 1.5 + 127.5); }, 0, 2},
    {"bilinearAgreesWithSimple", [](auto& s) { s.demosaicing = Demosaicing::Bilinear; }, kAll,
     [](const Chart& a, const Chart&, long k, long j) { return a(k, j); }, 0.06, 3},
};

TEST(ImagePipeline, EachStageActsAsItsFormulaSays)
{
    PipelineSettings plain;
    plain.exposureUs = 9000;
    const Chart a = measure(plain);
    for (const StageRow& row : kStageRows) {
        SCOPED_TRACE(row.name);
        PipelineSettings s = plain;
        row.change(s);
        const Chart b = measure(s);
        for (long k : row.patches)
            for (long j = 0; j < 3; ++j) {
                const double e = row.expected(a, b, k, j);
                EXPECT_NEAR(b(k, j), e, row.rel * e + row.abs) << "patch " << k << " channel " << j;
            }
    }
}

TEST(ImagePipeline, HueRotationMovesRedTowardsGreen)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    const auto a = measure(s);
    s.hueDeg = 60.0;
    const auto b = measure(s);
    EXPECT_GT(b(14, 1) - b(14, 0), a(14, 1) - a(14, 0) + 20);
}

TEST(ImagePipeline, OutputFormats)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    std::map<Kalto::EPixelType, Frame> f;
    for (auto type : {Kalto::PixelType_RGB8packed, Kalto::PixelType_BGR8packed, Kalto::PixelType_Mono8,
                      Kalto::PixelType_Mono12, Kalto::PixelType_BayerRG8, Kalto::PixelType_BayerRG12}) {
        s.format = type;
        ImagePipeline().process(scene(), s, 7, f[type]);
    }
    const auto& rgb = f[Kalto::PixelType_RGB8packed].data;
    const auto& bgr = f[Kalto::PixelType_BGR8packed].data;
    const auto& mono = f[Kalto::PixelType_Mono8].data;
    const auto& mono12 = f[Kalto::PixelType_Mono12].data;
    const auto& bayer = f[Kalto::PixelType_BayerRG8].data;
    const auto& bayer12 = f[Kalto::PixelType_BayerRG12].data;
    ASSERT_EQ(rgb.size(), 480u * 300 * 3);
    ASSERT_EQ(mono.size(), 480u * 300);
    ASSERT_EQ(mono12.size(), 480u * 300 * 2);
    ASSERT_EQ(bayer12.size(), 480u * 300 * 2);
    for (size_t i = 0; i < 480u * 300; i += 997) {
        EXPECT_EQ(rgb[3 * i], bgr[3 * i + 2]);
        EXPECT_EQ(rgb[3 * i + 2], bgr[3 * i]);
        EXPECT_NEAR(mono[i], 0.2126 * rgb[3 * i] + 0.7152 * rgb[3 * i + 1] + 0.0722 * rgb[3 * i + 2], 1.5);
        const int v12 = mono12[2 * i] | (mono12[2 * i + 1] << 8);
        EXPECT_LE(v12, 4095);
        EXPECT_NEAR(v12 / 16.0, mono[i], 1.5);
        EXPECT_EQ((bayer12[2 * i] | (bayer12[2 * i + 1] << 8)) >> 4, bayer[i]);
    }
    // The red patch's red sites are brighter than its green sites.
    const auto q = ChartProjection(scene().geometry, 480, 300).patch(14);
    const int cx = static_cast<int>((q[0][0] + q[2][0]) / 2) & ~1, cy = static_cast<int>((q[0][1] + q[2][1]) / 2) & ~1;
    EXPECT_GT(bayer[cy * 480 + cx], 2 * bayer[cy * 480 + cx + 1]);
}

TEST(ImagePipeline, TestPatternsReplaceTheScene)
{
    PipelineSettings s;
    s.testPattern = TestPattern::GreyRamp;
    s.format = Kalto::PixelType_Mono8;
    Frame f;
    ImagePipeline().process(scene(), s, 1, f);
    EXPECT_LE(f.data[0], 1);
    EXPECT_GE(f.data[479], 250);
    for (int x = 2; x < 480; x += 2)
        EXPECT_GE(f.data[100 * 480 + x], f.data[100 * 480 + x - 2]);
    s.testPattern = TestPattern::ColorBars;
    s.format = Kalto::PixelType_RGB8packed;
    ImagePipeline().process(scene(), s, 1, f);
    const size_t red = (150 * 480 + 5 * 60 + 30) * 3;  // sixth bar
    EXPECT_GT(f.data[red], 180);
    EXPECT_LT(f.data[red + 1], 5);
}

TEST(ImagePipeline, NoiseDependsOnTheSeedAndStatsFollowExposure)
{
    ImagePipeline p;
    PipelineSettings s;
    s.exposureUs = 9000;
    Frame a, b;
    FrameStats sa, sb;
    p.process(scene(), s, 1, a, &sa);
    p.process(scene(), s, 2, b, &sb);
    EXPECT_NE(a.data, b.data);
    s.exposureUs = 18000;
    p.process(scene(), s, 1, b, &sb);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(sb.meanRaw[c], 2 * sa.meanRaw[c], 0.05 * sb.meanRaw[c]);
    EXPECT_NEAR(sb.meanLevel, 2 * sa.meanLevel, 0.05 * sb.meanLevel);
    EXPECT_GT(sb.highLevel, sb.meanLevel);
    EXPECT_LT(sb.lowLevel, sb.meanLevel);
}

}  // namespace
