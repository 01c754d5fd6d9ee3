#pragma once

#include <QImage>
#include <QPointF>

#include <array>
#include <cstdint>

/// Synthetic photographs of the 24-patch chart for the finder's evaluation and
/// benchmarks: clutter, a turned and foreshortened chart, uneven light, a
/// colour cast and sensor noise, with the true grid corners.
class ChartScene {
public:
    struct Params {
        int width = 1280;
        int height = 720;
        double scale = 0.6;        ///< chart's bounding box over the frame, in the tighter dimension
        double angleDeg = 0.0;     ///< in-plane turn, clockwise in image coordinates
        double perspective = 0.0;  ///< corner displacement as a share of the chart size
        double noiseSigma = 0.0;   ///< 8-bit code values
        double lightGradient = 0.0;  ///< brightness varies by +-this across the frame
        double cast[3] = {1.0, 1.0, 1.0};
        int clutter = 0;           ///< number of random shapes behind the chart
        double pitch = 0.0;        ///< when above 0: the grid pitch in pixels, overriding `scale`
        int covered = 0;           ///< patches hidden behind shapes in front of the chart
        uint32_t seed = 1;
    };

    /// Parameters drawn at random within the evaluation's ranges.
    static Params randomParams(uint32_t seed, int width, int height);

    /// Renders the scene; `corners` receives the grid corners (top-left,
    /// top-right, bottom-left, bottom-right in chart order).
    static QImage render(const Params& params, std::array<QPointF, 4>& corners);

    /// Mean grid pitch in pixels of grid corners as `render` gives them.
    static double pitchOf(const std::array<QPointF, 4>& corners);
};
