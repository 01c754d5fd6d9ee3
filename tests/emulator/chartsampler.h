#pragma once

#include "imagepipeline.h"

#include <dlib/matrix.h>

namespace ChartFit {
/// The 24 patches in chart order, R, G, B on 0..255.
using Chart = dlib::matrix<double, 24, 3>;
}

/// Measures the 24 patches of a delivered RGB8/BGR8/Mono8 frame the way the
/// calibration measures them: the sample whose brightest channel is the median
/// over the inner 70 % of the patch, with its own three channels.
class ChartSampler {
public:
    static ChartFit::Chart measure(const Frame& frame, const SceneGeometry& geometry);
    /// Pixel at (x, y) as 8-bit R, G, B.
    static void pixel(const Frame& frame, int x, int y, int rgb[3]);
};
