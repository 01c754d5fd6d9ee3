#include "chartfit.h"
#include "chartspectra.h"
#include "sensormodel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

TEST(SensorModel, PlanckPeakFollowsWiensLaw)
{
    for (double kelvin : {4000.0, 5000.0, 6000.0}) {
        double bestNm = 0, best = 0;
        for (double nm = 380; nm <= 1000; nm += 1) {
            const double v = SensorModel::planck(nm, kelvin);
            if (v > best) {
                best = v;
                bestNm = nm;
            }
        }
        EXPECT_NEAR(bestNm, 2.8978e6 / kelvin, 1.5) << kelvin << " K";
    }
}

TEST(SensorModel, WhiteUnderReferenceLightIsOne)
{
    SensorDesign design;
    design.sceneKelvin = design.referenceKelvin;
    const auto w = SensorModel(design).flatResponse(1.0);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(w[c], 1.0, 1e-9);
}

TEST(SensorModel, WarmerLightCastsRed)
{
    SensorDesign warm, cool;
    warm.sceneKelvin = 3000;
    cool.sceneKelvin = 6500;
    const auto a = SensorModel(warm).flatResponse(0.5), b = SensorModel(cool).flatResponse(0.5);
    EXPECT_GT(a[0] / a[2], 1.8 * b[0] / b[2]);
    EXPECT_NEAR(a[1], 0.5, 0.02);  // the scene light is scaled on green
}

TEST(SensorModel, ResponseIsLinearInReflectance)
{
    const SensorModel m;
    const auto a = m.flatResponse(0.2), b = m.flatResponse(0.6);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(3 * a[c], b[c], 1e-12);
}

TEST(SensorModel, PrimaryPatchesPeakInTheirChannel)
{
    const SensorModel m;
    const auto blue = m.patchResponse(12), green = m.patchResponse(13), red = m.patchResponse(14);
    EXPECT_GT(blue[2], std::max(blue[0], blue[1]));
    EXPECT_GT(green[1], std::max(green[0], green[2]));
    EXPECT_GT(red[0], std::max(red[1], red[2]));
}

TEST(SensorModel, SensitivitiesOverlapAndAreCutInTheInfrared)
{
    const SensorModel m;
    EXPECT_GT(m.sensitivity(1, 600), 0.1);   // green sees orange light
    EXPECT_GT(m.sensitivity(0, 540), 0.05);  // red sees green light
    for (int c = 0; c < 3; ++c)
        EXPECT_LT(m.sensitivity(c, 760), 1e-3);
}

ChartFit::Chart chartAt150(const SensorModel& m)
{
    ChartFit::Chart c;
    for (int k = 0; k < 24; ++k) {
        const auto r = m.patchResponse(k);
        for (int j = 0; j < 3; ++j)
            c(k, j) = r[j];
    }
    const double mx = std::max({c(19, 0), c(19, 1), c(19, 2)});
    return c * (150.0 / mx);
}

// No 3x3 matrix maps what the sensor would give without its non-linear term
// onto what it gives with it: the least-squares residual stays well above
// zero, and vanishes when the term is switched off.
double matrixResidual(const SensorDesign& design)
{
    SensorDesign linearDesign = design;
    linearDesign.nonlinear = {{0, 0, 0}};
    const SensorModel actual(design), linear(linearDesign);
    dlib::matrix<double, 24, 3> x, y;
    for (int k = 0; k < 24; ++k) {
        const auto a = actual.patchResponse(k), l = linear.patchResponse(k);
        for (int j = 0; j < 3; ++j) {
            y(k, j) = a[j];
            x(k, j) = l[j];
        }
    }
    const dlib::matrix<double, 3, 3> m = dlib::pinv(x) * y;
    return std::sqrt(dlib::sum(dlib::squared(x * m - y)) / dlib::sum(dlib::squared(y)));
}

TEST(SensorModel, NonlinearTermIsNotAMatrix)
{
    EXPECT_GT(matrixResidual(SensorDesign()), 0.005);
    SensorDesign none;
    none.nonlinear = {{0, 0, 0}};
    EXPECT_LT(matrixResidual(none), 1e-12);
}

}  // namespace
