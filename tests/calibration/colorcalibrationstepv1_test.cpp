#include "colorcalibrationstepv1.h"
#include "colorchecker.h"
#include "digitalgain.h"
#include "enginetestutil.h"
#include "original.h"
#include "whitebalance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>

namespace {

// A step that only exposes the shared clipping, so it can be driven directly.
class ClipOnly : public ColorCalibrationStepV1 {
public:
    using ColorCalibrationStepV1::ColorCalibrationStepV1;
    void Run() override { ClipResult(); }
};

TEST(ColorCalibrationStepV1, ClipTurnsNaNIntoSaturation)
{
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        double in, out;
    } cases[] = {
        {-3.0, 0.0}, {300.0, 255.0}, {std::numeric_limits<double>::quiet_NaN(), 255.0}, {17.5, 17.5}, {inf, 255.0},
        {-inf, 0.0},
    };
    ColorChecker cc;
    ClipOnly step(&cc);
    dlib::matrix<double, 24, 3> chart = dlib::zeros_matrix<double>(24, 3);
    for (long k = 0; k < long(std::size(cases)); ++k)
        chart(k, k % 3) = cases[k].in;
    step.SetOutputChart(chart);
    step.Run();
    for (long k = 0; k < long(std::size(cases)); ++k)
        EXPECT_EQ(step.GetOutputChart()(k, k % 3), cases[k].out) << cases[k].in;
}

TEST(ColorCalibrationStepV1, TargetChartHasNoError)
{
    ColorChecker cc;
    Original step(&cc, 1.0);
    step.SetInputChart(targetChart());
    step.Run();
    for (int k = 0; k < 24; ++k)
        for (bool chroma : {false, true})
            for (bool after : {false, true})
                EXPECT_NEAR(step.GetError(k, chroma, after), 0.0, 1e-9) << k;
}

TEST(Original, CopiesWithinRangeAndLimitsOutside)
{
    ColorChecker cc;
    Original step(&cc, 1.0);
    dlib::matrix<double, 24, 3> chart = targetChart();
    chart(3, 0) = -4.0;
    chart(4, 2) = 280.0;
    step.SetInputChart(chart);
    step.Run();
    const auto& out = step.GetOutputChart();
    EXPECT_EQ(out(3, 0), 0.0);
    EXPECT_EQ(out(4, 2), 255.0);
    EXPECT_EQ(out(10, 1), chart(10, 1));
    // The error before the step sees the unlimited input.
    EXPECT_GT(step.GetError(4, false, false), step.GetError(4, false, true));
}

TEST(DigitalGain, ScalesReferenceGreyToTarget)
{
    ColorChecker cc;
    DigitalGain step(&cc);
    dlib::matrix<double, 24, 3> chart = dlib::ones_matrix<double>(24, 3) * 10.0;
    chart(19, 0) = 75;
    chart(19, 1) = 60;
    chart(19, 2) = 50;
    chart(5, 1) = 200;  // doubled beyond 255: clipped
    step.SetInputChart(chart);
    step.Run();
    double gain = 0;
    step.GetDigitalGain(gain);
    EXPECT_EQ(gain, 2.0);
    const struct {
        long patch, channel;
        double value;
    } expected[] = {{19, 0, 150.0}, {19, 1, 120.0}, {19, 2, 100.0}, {5, 1, 255.0}, {0, 0, 20.0}};
    for (const auto& e : expected)
        EXPECT_EQ(step.GetOutputChart()(e.patch, e.channel), e.value) << e.patch << "," << e.channel;

    step.SetInputChart(dlib::zeros_matrix<double>(24, 3));
    step.Run();
    step.GetDigitalGain(gain);
    EXPECT_EQ(gain, 1.0);
    EXPECT_EQ(dlib::max(dlib::abs(step.GetOutputChart())), 0.0);
}

struct WhiteBalanceCase {
    const char* name;
    double greys[3][3];  // rows 19, 20, 21
    double expected[3];  // gains R, G, B; NaN where the sums vanish
};

TEST(WhiteBalance, GainsFromLightGreys)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const WhiteBalanceCase cases[] = {
        {"example", {{100, 50, 100}, {80, 40, 80}, {40, 20, 40}}, {1.0, 2.0, 1.0}},
        {"saturated first grey skipped",
         {{255, 200, 200}, {80, 40, 80}, {40, 20, 40}}, {1.0, 2.0, 1.0}},
        {"blue cast", {{60, 60, 120}, {30, 30, 60}, {15, 15, 30}}, {2.0, 2.0, 1.0}},
        {"all saturated", {{255, 255, 255}, {250, 10, 10}, {10, 251, 10}}, {nan, nan, nan}},
    };
    ColorChecker cc;
    for (const auto& c : cases) {
        WhiteBalance step(&cc);
        dlib::matrix<double, 24, 3> chart = dlib::ones_matrix<double>(24, 3) * 30.0;
        for (long r = 0; r < 3; ++r)
            for (long ch = 0; ch < 3; ++ch)
                chart(19 + r, ch) = c.greys[r][ch];
        step.SetInputChart(chart);
        step.Run();
        double g[3];
        step.GetWhiteBalance(g[0], g[1], g[2]);
        for (int ch = 0; ch < 3; ++ch) {
            if (std::isnan(c.expected[ch]))
                EXPECT_TRUE(std::isnan(g[ch])) << c.name;
            else
                EXPECT_DOUBLE_EQ(g[ch], c.expected[ch]) << c.name;
        }
        const auto& out = step.GetOutputChart();
        if (std::isnan(c.expected[0])) {
            EXPECT_EQ(dlib::min(out), 255.0) << c.name;
        } else {
            EXPECT_DOUBLE_EQ(out(0, 1), 30.0 * c.expected[1]) << c.name;
        }
    }
}

}  // namespace
