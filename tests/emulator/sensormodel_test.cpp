#include "chartspectra.h"
#include "sensormodel.h"

#include <dlib/matrix.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

TEST(SensorModel, PlanckPeakFollowsWiensLaw)
{
    for (double kelvin : {4000.0, 5000.0, 6000.0}) {
        double bestNm = 0, best = 0;
        for (double nm = 380; nm <= 1000; nm += 1)
            if (SensorModel::planck(nm, kelvin) > best) {
                best = SensorModel::planck(nm, kelvin);
                bestNm = nm;
            }
        EXPECT_NEAR(bestNm, 2.8978e6 / kelvin, 1.5) << kelvin << " K";
    }
}

TEST(SensorModel, FlatResponseIsLinearAndWhiteUnderReferenceLightIsOne)
{
    SensorDesign reference, warm, cool;
    reference.sceneKelvin = reference.referenceKelvin;
    warm.sceneKelvin = 3000;
    cool.sceneKelvin = 6500;
    const auto w = SensorModel(reference).flatResponse(1.0);
    const auto a = SensorModel().flatResponse(0.2), b = SensorModel().flatResponse(0.6);
    for (int c = 0; c < 3; ++c) {
        EXPECT_NEAR(w[c], 1.0, 1e-9);
        EXPECT_NEAR(3 * a[c], b[c], 1e-12);
    }
    // Warmer light casts red; the scene light is scaled on green.
    const auto w3 = SensorModel(warm).flatResponse(0.5), w6 = SensorModel(cool).flatResponse(0.5);
    EXPECT_GT(w3[0] / w3[2], 1.8 * w6[0] / w6[2]);
    EXPECT_NEAR(w3[1], 0.5, 0.02);
}

TEST(SensorModel, PrimariesPeakInTheirChannelAndSensitivitiesOverlap)
{
    const SensorModel m;
    for (int c = 0; c < 3; ++c) {
        const auto p = m.patchResponse(14 - c);  // red, green, blue patches
        EXPECT_EQ(std::max_element(p.begin(), p.end()) - p.begin(), c);
        EXPECT_LT(m.sensitivity(c, 760), 1e-3);  // cut in the infrared
    }
    EXPECT_GT(m.sensitivity(1, 600), 0.1);   // green sees orange light
    EXPECT_GT(m.sensitivity(0, 540), 0.05);  // red sees green light
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
