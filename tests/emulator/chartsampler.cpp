#include "chartsampler.h"

#include <algorithm>
#include <cmath>
#include <vector>

void ChartSampler::pixel(const Frame& f, int x, int y, int rgb[3])
{
    const size_t i = static_cast<size_t>(y) * f.width + x;
    switch (f.format) {
    case Kalto::PixelType_RGB8packed:
        for (int c = 0; c < 3; ++c)
            rgb[c] = f.data[3 * i + c];
        break;
    case Kalto::PixelType_BGR8packed:
        for (int c = 0; c < 3; ++c)
            rgb[c] = f.data[3 * i + 2 - c];
        break;
    case Kalto::PixelType_Mono8:
        rgb[0] = rgb[1] = rgb[2] = f.data[i];
        break;
    default:
        rgb[0] = rgb[1] = rgb[2] = -1;
    }
}

ChartFit::Chart ChartSampler::measure(const Frame& frame, const SceneGeometry& geometry)
{
    const ChartProjection proj(geometry, frame.width, frame.height);
    ChartFit::Chart chart;
    for (int k = 0; k < 24; ++k) {
        const double u0 = ChartProjection::kGap + (k % 6) * (1.0 + ChartProjection::kGap);
        const double v0 = ChartProjection::kGap + (k / 6) * (1.0 + ChartProjection::kGap);
        std::vector<std::array<int, 3>> samples;
        for (double a = 0.15; a <= 0.85; a += 0.02) {
            for (double b = 0.15; b <= 0.85; b += 0.02) {
                const auto p = proj.toImage(u0 + a, v0 + b);
                std::array<int, 3> rgb;
                pixel(frame, static_cast<int>(p[0]), static_cast<int>(p[1]), rgb.data());
                samples.push_back(rgb);
            }
        }
        auto brightest = [](const std::array<int, 3>& c) { return std::max({c[0], c[1], c[2]}); };
        std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end(),
                         [&](const auto& a, const auto& b) { return brightest(a) < brightest(b); });
        const auto& m = samples[samples.size() / 2];
        for (int c = 0; c < 3; ++c)
            chart(k, c) = m[c];
    }
    return chart;
}
