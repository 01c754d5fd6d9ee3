#pragma once

#include "chartprojection.h"
#include "sensormodel.h"

#include <vector>

/// The scene as the sensor sees it for a unit exposure: one float per pixel,
/// the relative response of that pixel's colour filter (RGGB: red at even
/// x and even y, blue at odd x and odd y). 1.0 is a perfect white in the
/// green channel.
struct RenderedScene {
    int width = 0;
    int height = 0;
    SceneGeometry geometry;
    std::vector<float> response;
};

/// Renders the chart in front of a wall once per geometry; frames then only
/// run the sensor and the pipeline on the result.
class SceneRenderer {
public:
    static RenderedScene render(const SensorModel& sensor, const SceneGeometry& geometry, int width,
                                int height);
    /// Filter colour of a pixel: 0 R, 1 G, 2 B.
    static int channelAt(int x, int y) { return (y & 1) ? ((x & 1) ? 2 : 1) : ((x & 1) ? 1 : 0); }
};
