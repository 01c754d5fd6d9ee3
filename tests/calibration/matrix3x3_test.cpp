#include "enginetestutil.h"
#include "matrix3x3.h"

#include <gtest/gtest.h>

namespace {

dlib::matrix<double, 3, 3> fit(const dlib::matrix<double, 24, 3>& chart)
{
    ColorChecker cc;
    Matrix3x3 step(&cc);
    step.SetInputChart(chart);
    step.Run();
    dlib::matrix<double, 3, 3> m;
    step.GetMatrix(m);
    return m;
}

// The target needs no correction and an all-black chart gives nothing to fit;
// a chart seen through the inverse of a unit-row-sum matrix gets that matrix back.
TEST(Matrix3x3, FitsTheMatrixThatUndoesTheCamera)
{
    const dlib::matrix<double, 3, 3> id = dlib::identity_matrix<double>(3);
    const dlib::matrix<double, 3, 3> known1 = {1.2, -0.15, -0.05, -0.1, 1.2, -0.1, 0.0, -0.2, 1.2};
    const dlib::matrix<double, 3, 3> known2 = {1.1, -0.05, -0.05, -0.05, 1.15, -0.1, -0.02, -0.08, 1.1};
    const struct {
        const char* what;
        dlib::matrix<double, 24, 3> chart;
        dlib::matrix<double, 3, 3> expected;
        double tolerance;
    } cases[] = {
        {"target", targetChart(), id, 1e-9},
        {"all zero", dlib::zeros_matrix<double>(24, 3), id, 1e-12},
        {"strong crosstalk", transformChart(targetChart(), dlib::inv(known1)), known1, 1e-8},
        {"mild crosstalk", transformChart(targetChart(), dlib::inv(known2)), known2, 1e-8},
    };
    for (const auto& c : cases) {
        ASSERT_GE(dlib::min(c.chart), 0.0) << c.what;
        ASSERT_LE(dlib::max(c.chart), 255.0) << c.what;
        EXPECT_LT(dlib::max(dlib::abs(fit(c.chart) - c.expected)), c.tolerance) << c.what << "\n" << fit(c.chart);
    }
}

TEST(Matrix3x3, RowsSumToOneAndGreysPassWhateverTheInput)
{
    std::mt19937 rng(7);
    ColorChecker cc;
    for (int trial = 0; trial < 20; ++trial) {
        Matrix3x3 step(&cc);
        step.SetInputChart(randomMeasuredChart(rng));
        step.Run();
        dlib::matrix<double, 3, 3> m;
        step.GetMatrix(m);
        for (long r = 0; r < 3; ++r)
            EXPECT_NEAR(dlib::sum(dlib::rowm(m, r)), 1.0, 1e-12) << trial;

        dlib::matrix<double, 24, 3> greys;
        for (long k = 0; k < 24; ++k)
            greys(k, 0) = greys(k, 1) = greys(k, 2) = k * 255.0 / 23.0;
        step.SetInputChart(greys);
        step.Apply();
        EXPECT_LT(dlib::max(dlib::abs(step.GetOutputChart() - greys)), 1e-9) << trial;
    }
}

TEST(Matrix3x3, ApplyLimitsToRange)
{
    ColorChecker cc;
    Matrix3x3 step(&cc);
    step.SetInputChart(transformChart(targetChart(), dlib::inv(dlib::matrix<double, 3, 3>(
                                                         {1.4, -0.3, -0.1, -0.2, 1.35, -0.15, 0.05, -0.45, 1.4}))));
    step.Run();
    dlib::matrix<double, 24, 3> extreme = dlib::zeros_matrix<double>(24, 3);
    extreme(0, 0) = 255.0;  // pure red: the negative off-diagonals push G and B below 0
    step.SetInputChart(extreme);
    step.Apply();
    const auto& out = step.GetOutputChart();
    EXPECT_EQ(out(0, 0), 255.0);
    EXPECT_EQ(out(0, 1), 0.0);
    EXPECT_GE(dlib::min(out), 0.0);
}

}  // namespace
