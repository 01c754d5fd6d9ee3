#pragma once

#include <dlib/matrix.h>

#include <array>

/// A least-squares calibration of a measured chart, the way a calibration
/// tool would fit it to the camera's correction stages: digital gain (patch 19
/// to 150), white balance from greys 19..21, a unit-row-sum 3x3 matrix and the
/// six-sector hue/saturation adjustment, both weighted by the target's
/// Lab-per-RGB Jacobian. Used to show that the emulated sensor is calibratable.
struct ChartFit {
    using Chart = dlib::matrix<double, 24, 3>;

    double digitalGain = 1.0;
    std::array<double, 3> whiteBalance{{1, 1, 1}};
    dlib::matrix<double, 3, 3> matrix;
    std::array<double, 12> bc6x2{{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}};
    Chart afterMatrix;  ///< after gain, white balance and matrix
    Chart corrected;    ///< after all stages

    static ChartFit fit(const Chart& measured);
    /// Mean CIEDE2000 of the 24 patches against the target chart.
    static double meanDeltaE(const Chart& chart);
    static double deltaE(const Chart& chart, long patch);
};
