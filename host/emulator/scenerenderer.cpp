#include "scenerenderer.h"

#include <array>

RenderedScene SceneRenderer::render(const SensorModel& sensor, const SceneGeometry& geometry,
                                    int width, int height)
{
    RenderedScene scene;
    scene.width = width;
    scene.height = height;
    scene.geometry = geometry;
    scene.response.assign(static_cast<size_t>(width) * height, 0.0f);

    // Materials: 24 patches, the chart body, and the wall.
    std::array<Rgb, 26> material;
    for (int k = 0; k < 24; ++k)
        material[k] = sensor.patchResponse(k);
    material[24] = sensor.flatResponse(0.035);
    material[25] = sensor.flatResponse(geometry.background);

    const ChartProjection projection(geometry, width, height);
    // Four samples per pixel give the patch edges their partial coverage.
    constexpr double kOffsets[4][2] = {{0.25, 0.25}, {0.75, 0.25}, {0.25, 0.75}, {0.75, 0.75}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int c = channelAt(x, y);
            double sum = 0.0;
            for (const auto& o : kOffsets) {
                const auto uv = projection.toChart(x + o[0], y + o[1]);
                const int m = projection.materialAt(uv[0], uv[1]);
                if (m >= 0) {
                    sum += material[m][c];
                } else {
                    // The light falls off gently across the wall.
                    const double shade = 0.8 + 0.3 * (x + o[0]) / width;
                    sum += material[25][c] * shade;
                }
            }
            scene.response[static_cast<size_t>(y) * width + x] = static_cast<float>(sum / 4.0);
        }
    }
    return scene;
}
