#pragma once

#include "chartfit.h"
#include "imagepipeline.h"

/// Measures the 24 patches of a delivered RGB8/BGR8/Mono8 frame the way the
/// calibration measures them: the sample whose brightest channel is the median
/// over the inner 70 % of the patch, with its own three channels.
class ChartSampler {
public:
    static ChartFit::Chart measure(const Frame& frame, const SceneGeometry& geometry);
    /// Pixel at (x, y) as 8-bit R, G, B.
    static void pixel(const Frame& frame, int x, int y, int rgb[3]);
};
