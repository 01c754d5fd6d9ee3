#pragma once

#include <array>

/// Where the chart lies in the image. Fractions refer to the image size.
struct SceneGeometry {
    double centreX = 0.5;        ///< chart centre, fraction of the width
    double centreY = 0.5;        ///< chart centre, fraction of the height
    double chartWidth = 0.62;    ///< chart body width, fraction of the image width
    double rotationDeg = 2.0;    ///< clockwise in the image
    double perspective = 0.97;   ///< right edge height / left edge height (1: frontal)
    double background = 0.32;    ///< reflectance of the wall behind the chart
};

/// Maps between chart coordinates and image pixels through a homography.
///
/// Chart coordinates: the body is kBodyWidth x kBodyHeight units, each patch a
/// unit square, patches kGap apart and kGap from the body's edge.
class ChartProjection {
public:
    static constexpr double kGap = 0.22;
    static constexpr double kBodyWidth = 6.0 + 7.0 * kGap;
    static constexpr double kBodyHeight = 4.0 + 5.0 * kGap;

    using Point = std::array<double, 2>;
    /// Corners in the order top-left, top-right, bottom-right, bottom-left.
    using Quad = std::array<Point, 4>;

    ChartProjection(const SceneGeometry& geometry, int width, int height);

    Point toImage(double u, double v) const;
    Point toChart(double x, double y) const;
    /// Patch k (row-major over 6 x 4) in image pixels.
    Quad patch(int k) const;
    /// The outer corners of the 6 x 4 grid of patch cells (where a patch grid
    /// goes): the patch field widened by half a gap on every side.
    Quad grid() const;
    /// -1 outside the body, 24 on the body between patches, else the patch index.
    int materialAt(double u, double v) const;

private:
    std::array<double, 9> m_forward;
    std::array<double, 9> m_inverse;
};
