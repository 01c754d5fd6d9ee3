#include "colorcalibrationv1.h"
#include "enginetestutil.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

const auto kUnknown = static_cast<COLORCALIBRATION_STEP_TYPE>(7);
const auto kUnknownSource = static_cast<COLORCALIBRATION_STEP_TYPE>(9);

TEST(ColorCalibrationV1, UnknownStepsGiveMinusOneOrZeros)
{
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, targetChart());
    engine.SetChart(kUnknown, dlib::ones_matrix<double>(24, 3));
    EXPECT_EQ(engine.GetError(kUnknown, false, false), -1.0);
    EXPECT_EQ(engine.GetError(kUnknown, 3, true, true), -1.0);
    EXPECT_EQ(dlib::max(dlib::abs(engine.GetChart(kUnknown))), 0.0);
    EXPECT_EQ(engine.Run(COLORCALIBRATION_STEP_ORIGINAL, kUnknownSource), -1.0);
    EXPECT_EQ(engine.Run(kUnknown, COLORCALIBRATION_STEP_ORIGINAL), -1.0);
    // Nothing ran: Original's output is still the chart that was set.
    EXPECT_EQ(engine.GetChart(COLORCALIBRATION_STEP_ORIGINAL), targetChart());
}

TEST(ColorCalibrationV1, TargetChartCalibratesToAlmostNothing)
{
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, targetChart());
    const double mean = engine.Run();
    EXPECT_LT(mean, 0.5);
    EXPECT_NEAR(engine.GetError(COLORCALIBRATION_STEP_BC6X2, false, true), mean, 1e-12);
    EXPECT_NEAR(dlib::max(dlib::rowm(engine.GetChart(COLORCALIBRATION_STEP_DIGITALGAIN), 19)), 150.0, 1e-9);
    double gamma = 0;
    engine.GetGamma(gamma);
    EXPECT_EQ(gamma, 0.45);
    double r, g, b;
    engine.GetWhiteBalance(r, g, b);
    EXPECT_EQ(std::max({r, g, b}) >= 1.0, true);
    EXPECT_EQ(std::min({r, g, b}), 1.0);
}

TEST(ColorCalibrationV1, CalibrationReducesErrorOfRealisticCharts)
{
    std::mt19937 rng(11);
    for (int trial = 0; trial < 10; ++trial) {
        ColorCalibrationV1 engine;
        engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, randomMeasuredChart(rng));
        const double after = engine.Run();
        const double before = engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, false, false);
        EXPECT_LT(after, before) << trial;
        EXPECT_LT(after, 3.0) << trial;
        dlib::matrix<double, 3, 3> m;
        engine.GetMatrix(m);
        for (long r = 0; r < 3; ++r)
            EXPECT_NEAR(dlib::sum(dlib::rowm(m, r)), 1.0, 1e-12);
        // Per-patch figures average to the step's mean.
        double sum = 0;
        for (int k = 0; k < 24; ++k)
            sum += engine.GetError(COLORCALIBRATION_STEP_BC6X2, k, false, true);
        EXPECT_NEAR(sum / 24.0, after, 1e-12);
    }
}

TEST(ColorCalibrationV1, SingleStepRunRefitsOnlyThatStep)
{
    std::mt19937 rng(5);
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, randomMeasuredChart(rng));
    engine.Run();
    const auto finalChart = engine.GetChart(COLORCALIBRATION_STEP_BC6X2);
    dlib::matrix<double, 3, 3> before;
    engine.GetMatrix(before);

    // Change what white balance produced, then refit only the matrix on it.
    engine.SetChart(COLORCALIBRATION_STEP_WHITEBALANCE, targetChart());
    const double mean = engine.Run(COLORCALIBRATION_STEP_MATRIX3X3, COLORCALIBRATION_STEP_WHITEBALANCE);
    dlib::matrix<double, 3, 3> after;
    engine.GetMatrix(after);
    EXPECT_LT(dlib::max(dlib::abs(after - dlib::identity_matrix<double>(3))), 1e-9);
    EXPECT_NEAR(mean, engine.GetError(COLORCALIBRATION_STEP_MATRIX3X3, false, true), 1e-12);
    EXPECT_EQ(engine.GetChart(COLORCALIBRATION_STEP_BC6X2), finalChart);
    EXPECT_GT(dlib::max(dlib::abs(before - after)), 1e-3);
}

TEST(ColorCalibrationV1, GreyChromaticPatchEscapesRunAfterEarlierSteps)
{
    ColorCalibrationV1 engine;
    dlib::matrix<double, 24, 3> chart = targetChart();
    // Neutral light greys keep the white balance at 1, so the grey patch stays grey.
    for (long k = 19; k < 22; ++k)
        chart(k, 0) = chart(k, 2) = chart(k, 1);
    chart(5, 0) = chart(5, 1) = chart(5, 2) = 80.0;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, chart);
    EXPECT_THROW(engine.Run(), std::runtime_error);
    // Digital gain already ran: its chart has the reference grey at 150.
    EXPECT_NEAR(dlib::max(dlib::rowm(engine.GetChart(COLORCALIBRATION_STEP_DIGITALGAIN), 19)), 150.0, 1e-9);
}

}  // namespace
