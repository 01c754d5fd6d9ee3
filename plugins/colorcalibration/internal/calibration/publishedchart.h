#pragma once

#include "colorspace.h"
#include "publishedchartedition.h"

#include <dlib/matrix.h>

#include <string>

/// The 24-patch chart as its maker publishes it: CIELAB under D50 (CIE 1931 2°
/// observer), for charts made after November 2014 and for older ones. The
/// engine's own targets (ColorChecker) are linear sRGB under D65 and score the
/// calibration; these values let a user compare the result with other tools.
class PublishedChart {
public:
    using Edition = PublishedChartEdition;

    explicit PublishedChart(Edition edition = Edition::Post2014);

    Edition edition() const { return m_edition; }
    /// "post-2014" or "pre-2014".
    static const char* editionName(Edition edition);
    /// Reads editionName's words; false for anything else.
    static bool editionFromName(const std::string& name, Edition& edition);

    /// Published value of `patch` (0..23, chart order), D50.
    pixel_lab lab(int patch) const;
    /// Linear RGB (0..255, sRGB primaries and D65 white, unclamped) as CIELAB
    /// under D50: XYZ (D65), Bradford adaptation to D50, Lab with the D50 white.
    pixel_lab labD50(const dlib::matrix<double, 1, 3>& linearRgb) const;
    /// CIEDE2000 of a measured patch (linear RGB as above) against its published value.
    double deltaE(int patch, const dlib::matrix<double, 1, 3>& linearRgb) const;
    /// The same without the lightness term.
    double deltaC(int patch, const dlib::matrix<double, 1, 3>& linearRgb) const;

    /// XYZ (0..100) seen under D65 as it would be seen under D50 (Bradford).
    pixel_xyz adaptD65ToD50(const pixel_xyz& xyz) const;
    /// The Bradford transform from D65 to D50, computed from the cone matrix and the two white points.
    static dlib::matrix<double, 3, 3> bradfordD65ToD50();
    /// (0.96422, 1.0, 0.82521).
    static dlib::matrix<double, 1, 3> whitePointD50();

private:
    Edition m_edition;
    ColorSpace m_colorSpace;
};
