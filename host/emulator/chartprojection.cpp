#include "chartprojection.h"

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;

// Solves the 8x8 system that maps the unit-free source quad onto dst.
std::array<double, 9> homography(const ChartProjection::Quad& src, const ChartProjection::Quad& dst)
{
    double a[8][9] = {};
    for (int i = 0; i < 4; ++i) {
        const double x = src[i][0], y = src[i][1], X = dst[i][0], Y = dst[i][1];
        double* r0 = a[2 * i];
        double* r1 = a[2 * i + 1];
        r0[0] = x; r0[1] = y; r0[2] = 1; r0[6] = -x * X; r0[7] = -y * X; r0[8] = X;
        r1[3] = x; r1[4] = y; r1[5] = 1; r1[6] = -x * Y; r1[7] = -y * Y; r1[8] = Y;
    }
    for (int c = 0; c < 8; ++c) {
        int best = c;
        for (int r = c + 1; r < 8; ++r)
            if (std::fabs(a[r][c]) > std::fabs(a[best][c]))
                best = r;
        for (int k = 0; k < 9; ++k)
            std::swap(a[c][k], a[best][k]);
        for (int r = 0; r < 8; ++r) {
            if (r == c || a[c][c] == 0.0)
                continue;
            const double f = a[r][c] / a[c][c];
            for (int k = c; k < 9; ++k)
                a[r][k] -= f * a[c][k];
        }
    }
    std::array<double, 9> h{};
    for (int i = 0; i < 8; ++i)
        h[i] = a[i][8] / a[i][i];
    h[8] = 1.0;
    return h;
}

ChartProjection::Point apply(const std::array<double, 9>& h, double x, double y)
{
    const double w = h[6] * x + h[7] * y + h[8];
    return {{(h[0] * x + h[1] * y + h[2]) / w, (h[3] * x + h[4] * y + h[5]) / w}};
}

}  // namespace

ChartProjection::ChartProjection(const SceneGeometry& g, int width, int height)
{
    const double w = g.chartWidth * width;
    const double h = w * kBodyHeight / kBodyWidth;
    const double left = h, right = h * g.perspective;
    // A body turned about its vertical axis: the far edge is shorter.
    const Quad local{{{{-w / 2, -left / 2}}, {{w / 2, -right / 2}}, {{w / 2, right / 2}}, {{-w / 2, left / 2}}}};
    const double a = g.rotationDeg * kPi / 180.0;
    const double cx = g.centreX * width, cy = g.centreY * height;
    Quad image;
    for (int i = 0; i < 4; ++i) {
        const double x = local[i][0], y = local[i][1];
        image[i] = {{cx + x * std::cos(a) - y * std::sin(a), cy + x * std::sin(a) + y * std::cos(a)}};
    }
    const Quad body{{{{0, 0}}, {{kBodyWidth, 0}}, {{kBodyWidth, kBodyHeight}}, {{0, kBodyHeight}}}};
    m_forward = homography(body, image);
    m_inverse = homography(image, body);
}

ChartProjection::Point ChartProjection::toImage(double u, double v) const
{
    return apply(m_forward, u, v);
}

ChartProjection::Point ChartProjection::toChart(double x, double y) const
{
    return apply(m_inverse, x, y);
}

ChartProjection::Quad ChartProjection::patch(int k) const
{
    const double u = kGap + (k % 6) * (1.0 + kGap);
    const double v = kGap + (k / 6) * (1.0 + kGap);
    return {{toImage(u, v), toImage(u + 1, v), toImage(u + 1, v + 1), toImage(u, v + 1)}};
}

ChartProjection::Quad ChartProjection::grid() const
{
    // Half a gap outside the patch field: a grid cut into 6 x 4 equal cells
    // then has every cell centred on its patch, as a grid extrapolated from
    // the patch centres has. Cut from the patch field's own edges, the cells
    // would drift by up to most of a gap towards the outer columns and rows,
    // and their inner parts would reach the patch borders.
    const double h = 0.5 * kGap;
    const double u1 = kBodyWidth - h, v1 = kBodyHeight - h;
    return {{toImage(h, h), toImage(u1, h), toImage(u1, v1), toImage(h, v1)}};
}

int ChartProjection::materialAt(double u, double v) const
{
    if (u < 0 || v < 0 || u >= kBodyWidth || v >= kBodyHeight)
        return -1;
    const double pu = (u - kGap) / (1.0 + kGap), pv = (v - kGap) / (1.0 + kGap);
    if (pu < 0 || pv < 0)
        return 24;
    const int col = static_cast<int>(pu), row = static_cast<int>(pv);
    if (col > 5 || row > 3 || pu - col >= 1.0 / (1.0 + kGap) || pv - row >= 1.0 / (1.0 + kGap))
        return 24;
    return row * 6 + col;
}
