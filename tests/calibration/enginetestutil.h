#pragma once

#include "colorchecker.h"

#include <dlib/matrix.h>

#include <random>

// Charts the engine tests build from the target chart.
inline dlib::matrix<double, 24, 3> targetChart()
{
    return ColorChecker().GetTargetRgb();
}

/// Every patch of `chart` (as a column vector) multiplied by `m`.
inline dlib::matrix<double, 24, 3> transformChart(const dlib::matrix<double, 24, 3>& chart,
                                                  const dlib::matrix<double, 3, 3>& m)
{
    return chart * dlib::trans(m);
}

/// A plausible measured chart: target scaled, cast and mixed, with noise.
inline dlib::matrix<double, 24, 3> randomMeasuredChart(std::mt19937& rng)
{
    std::uniform_real_distribution<double> u(-0.15, 0.15), scale(0.4, 1.2), noise(-2.0, 2.0);
    dlib::matrix<double, 3, 3> mix;
    for (long r = 0; r < 3; ++r)
        for (long c = 0; c < 3; ++c)
            mix(r, c) = (r == c ? 1.0 : 0.0) + u(rng);
    dlib::matrix<double, 24, 3> chart = transformChart(targetChart(), mix) * scale(rng);
    for (long k = 0; k < 24; ++k)
        for (long c = 0; c < 3; ++c)
            chart(k, c) = std::min(255.0, std::max(0.5, chart(k, c) + noise(rng)));
    return chart;
}
