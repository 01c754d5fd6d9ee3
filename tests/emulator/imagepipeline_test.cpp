#include "chartfit.h"
#include "chartsampler.h"
#include "coloradjustment.h"
#include "imagepipeline.h"
#include "scenerenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

// A small frame keeps the sanitizer build quick; patches are still ~40 px.
const RenderedScene& scene()
{
    static const RenderedScene s = SceneRenderer::render(SensorModel(), SceneGeometry(), 480, 300);
    return s;
}

ChartFit::Chart measure(const PipelineSettings& s, uint64_t seed = 1)
{
    ImagePipeline pipeline;
    Frame f;
    pipeline.process(scene(), s, seed, f);
    return ChartSampler::measure(f, scene().geometry);
}

double brightest(const ChartFit::Chart& c, long k)
{
    return std::max({c(k, 0), c(k, 1), c(k, 2)});
}

// Exposure that brings patch 19's brightest channel to 150 of 255.
PipelineSettings exposedNeutral()
{
    PipelineSettings s;
    s.exposureUs = 5000;
    for (int i = 0; i < 3; ++i)
        s.exposureUs *= 150.0 / brightest(measure(s), 19);
    return s;
}

TEST(ImagePipeline, NeutralCameraIsOffTheTargetButCalibratable)
{
    const PipelineSettings s = exposedNeutral();
    const ChartFit::Chart c = measure(s);
    EXPECT_NEAR(brightest(c, 19), 150.0, 3.0);
    const double neutral = ChartFit::meanDeltaE(c);
    EXPECT_GE(neutral, 8.0);
    EXPECT_LE(neutral, 20.0);
    // A colour cast: the grey patch is not grey.
    EXPECT_GT(std::fabs(c(19, 0) - c(19, 2)), 10.0);

    const ChartFit fit = ChartFit::fit(c);
    const double matrixOnly = ChartFit::meanDeltaE(fit.afterMatrix);
    const double full = ChartFit::meanDeltaE(fit.corrected);
    EXPECT_LE(full, 2.5);
    EXPECT_LT(full, matrixOnly);
    std::printf("neutral mean dE2000 %.2f, after matrix %.2f, after hue/saturation %.2f\n", neutral,
                matrixOnly, full);
}

TEST(ImagePipeline, ValuesScaleWithExposureTimesGain)
{
    PipelineSettings s;
    s.exposureUs = 5000;
    const auto a = measure(s);
    s.exposureUs = 10000;
    const auto b = measure(s);
    s.exposureUs = 5000;
    s.gainDb = 20.0 * std::log10(2.0);
    const auto c = measure(s);
    for (long k : {0L, 6L, 13L, 19L, 20L}) {
        for (long j = 0; j < 3; ++j) {
            EXPECT_NEAR(b(k, j), 2 * a(k, j), 0.05 * b(k, j) + 3) << "patch " << k;
            EXPECT_NEAR(c(k, j), b(k, j), 0.05 * b(k, j) + 3) << "patch " << k;
        }
    }
    s.gainDb = 0;
    s.exposureUs = 100000;
    const auto sat = measure(s);
    for (long j = 0; j < 3; ++j)
        EXPECT_EQ(sat(18, j), 255.0);
}

TEST(ImagePipeline, WhiteBalanceScalesChannels)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    const auto a = measure(s);
    s.balance = {{1.5, 1.0, 0.5}};
    const auto b = measure(s);
    EXPECT_NEAR(b(20, 0), 1.5 * a(20, 0), 0.04 * b(20, 0) + 2);
    EXPECT_NEAR(b(20, 1), a(20, 1), 0.04 * b(20, 1) + 2);
    EXPECT_NEAR(b(20, 2), 0.5 * a(20, 2), 0.04 * b(20, 2) + 2);
}

TEST(ImagePipeline, MatrixMixesChannels)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    const auto a = measure(s);
    s.matrix = {{0, 1, 0, 1, 0, 0, 0.5, 0, 0.5}};
    const auto b = measure(s);
    for (long k : {1L, 6L, 14L}) {
        EXPECT_NEAR(b(k, 0), a(k, 1), 3);
        EXPECT_NEAR(b(k, 1), a(k, 0), 3);
        EXPECT_NEAR(b(k, 2), 0.5 * (a(k, 0) + a(k, 2)), 3);
    }
}

TEST(ImagePipeline, ColorAdjustmentActsAfterTheMatrix)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    s.matrix = {{1.2, -0.1, -0.1, -0.1, 1.2, -0.1, -0.1, -0.1, 1.2}};
    const auto a = measure(s);
    s.colorAdjust = {{0.1, -0.1, 0.05, 0.08, 0.1, -0.15, 0.7, 1.2, 1.1, 0.8, 0.9, 1.3}};
    const auto b = measure(s);
    // Patches from every sector: reds, oranges, greens, blues, purples, magentas.
    for (long k : {0L, 2L, 4L, 6L, 8L, 9L, 10L, 13L, 14L, 16L, 17L}) {
        double v[3] = {a(k, 0), a(k, 1), a(k, 2)};
        ColorAdjustment::apply(v, s.colorAdjust);
        for (long j = 0; j < 3; ++j)
            EXPECT_NEAR(b(k, j), std::clamp(v[j], 0.0, 255.0), 4) << "patch " << k;
    }
    s.colorAdjustEnable = false;
    const auto off = measure(s);
    EXPECT_NEAR(off(14, 1), a(14, 1), 2);
}

TEST(ImagePipeline, SaturationZeroGivesGrey)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    s.saturation = 0.0;
    const auto c = measure(s);
    for (long k = 0; k < 18; ++k) {
        EXPECT_NEAR(c(k, 0), c(k, 1), 1.01);
        EXPECT_NEAR(c(k, 1), c(k, 2), 1.01);
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

TEST(ImagePipeline, GammaCurves)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    const auto lin = measure(s);
    s.gammaEnable = true;
    s.gamma = 0.5;
    const auto g = measure(s);
    s.gammaCurve = GammaCurve::SRGB;
    const auto srgb = measure(s);
    for (long k : {19L, 20L, 21L, 22L}) {
        const double v = lin(k, 1) / 255.0;
        EXPECT_NEAR(g(k, 1), 255.0 * std::sqrt(v), 3) << k;
        const double enc = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
        EXPECT_NEAR(srgb(k, 1), 255.0 * enc, 3) << k;
    }
    s.gammaEnable = false;
    EXPECT_NEAR(measure(s)(20, 1), lin(20, 1), 1.01);
}

TEST(ImagePipeline, LutAndBlackLevelAndHsbcTone)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    const auto lin = measure(s);
    s.lut.resize(4096);
    for (int i = 0; i < 4096; ++i)
        s.lut[i] = static_cast<uint16_t>(4095 - i);
    s.lutEnable = true;
    const auto inv = measure(s);
    EXPECT_NEAR(inv(20, 1), 255 - lin(20, 1), 2);
    s.lutEnable = false;
    s.blackLevelDn = 160;  // 10 of 255
    const auto black = measure(s);
    EXPECT_NEAR(black(23, 1), lin(23, 1) + 10, 2);
    s.blackLevelDn = 0;
    s.brightness = 0.2;
    EXPECT_NEAR(measure(s)(22, 1), lin(22, 1) + 25.5, 2);
    s.brightness = 0;
    s.contrast = 0.5;
    const auto contrast = measure(s);
    EXPECT_NEAR(contrast(23, 1), std::max(0.0, (lin(23, 1) - 127.5) * 1.5 + 127.5), 2);
}

TEST(ImagePipeline, OutputFormats)
{
    ImagePipeline p;
    PipelineSettings s;
    s.exposureUs = 9000;
    Frame rgb, bgr, mono, mono12, bayer, bayer12;
    p.process(scene(), s, 7, rgb);
    s.format = Kalto::PixelType_BGR8packed;
    p.process(scene(), s, 7, bgr);
    s.format = Kalto::PixelType_Mono8;
    p.process(scene(), s, 7, mono);
    s.format = Kalto::PixelType_Mono12;
    p.process(scene(), s, 7, mono12);
    s.format = Kalto::PixelType_BayerRG8;
    p.process(scene(), s, 7, bayer);
    s.format = Kalto::PixelType_BayerRG12;
    p.process(scene(), s, 7, bayer12);
    ASSERT_EQ(rgb.data.size(), 480u * 300 * 3);
    ASSERT_EQ(mono.data.size(), 480u * 300);
    ASSERT_EQ(mono12.data.size(), 480u * 300 * 2);
    ASSERT_EQ(bayer12.data.size(), 480u * 300 * 2);
    for (size_t i = 0; i < 480u * 300; i += 997) {
        EXPECT_EQ(rgb.data[3 * i], bgr.data[3 * i + 2]);
        EXPECT_EQ(rgb.data[3 * i + 2], bgr.data[3 * i]);
        const double luma = 0.2126 * rgb.data[3 * i] + 0.7152 * rgb.data[3 * i + 1] + 0.0722 * rgb.data[3 * i + 2];
        EXPECT_NEAR(mono.data[i], luma, 1.5);
        const int v12 = mono12.data[2 * i] | (mono12.data[2 * i + 1] << 8);
        EXPECT_LE(v12, 4095);
        EXPECT_NEAR(v12 / 16.0, mono.data[i], 1.5);
        const int b12 = bayer12.data[2 * i] | (bayer12.data[2 * i + 1] << 8);
        EXPECT_EQ(b12 >> 4, bayer.data[i]);
    }
    // The red patch's red sites are brighter than its green sites.
    const ChartProjection proj(scene().geometry, 480, 300);
    const auto q = proj.patch(14);
    const int cx = static_cast<int>((q[0][0] + q[2][0]) / 2) & ~1, cy = static_cast<int>((q[0][1] + q[2][1]) / 2) & ~1;
    EXPECT_GT(bayer.data[cy * 480 + cx], 2 * bayer.data[cy * 480 + cx + 1]);
}

TEST(ImagePipeline, BilinearAgreesWithSimpleInsidePatches)
{
    PipelineSettings s;
    s.exposureUs = 9000;
    const auto a = measure(s);
    s.demosaicing = Demosaicing::Bilinear;
    const auto b = measure(s);
    for (long k = 0; k < 24; ++k)
        for (long j = 0; j < 3; ++j)
            EXPECT_NEAR(a(k, j), b(k, j), 0.06 * a(k, j) + 3) << k;
}

TEST(ImagePipeline, TestPatternsReplaceTheScene)
{
    ImagePipeline p;
    PipelineSettings s;
    s.testPattern = TestPattern::GreyRamp;
    s.format = Kalto::PixelType_Mono8;
    Frame f;
    p.process(scene(), s, 1, f);
    EXPECT_LE(f.data[0], 1);
    EXPECT_GE(f.data[479], 250);
    for (int x = 2; x < 480; x += 2)
        EXPECT_GE(f.data[100 * 480 + x], f.data[100 * 480 + x - 2]);
    s.testPattern = TestPattern::ColorBars;
    s.format = Kalto::PixelType_RGB8packed;
    p.process(scene(), s, 1, f);
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
