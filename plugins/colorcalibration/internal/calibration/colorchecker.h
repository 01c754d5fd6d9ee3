#pragma once

#include "chartlayout.h"

#include <dlib/matrix.h>

/// The 24-patch reference chart: target colours (linear RGB, 0..255, chart
/// order: 18 chromatic patches, white, five greys from light to dark), the
/// exposure reference patch and the Lab-per-RGB sensitivity at each target.
class ColorChecker {
public:
    dlib::matrix<double, ChartLayout::kPatches, 3> GetTargetRgb() const;
    /// Index of the light grey patch that exposure and white balance refer to (19).
    unsigned GetIndex80percent() const;
    /// Level the brightest channel of that patch should reach: 150 (false) or 200 (true).
    double GetBrightness80percent(bool high) const;
    /// 72x72 block diagonal: block k is d(L, a, b)/d(R, G, B) at target k.
    dlib::matrix<double, 3 * ChartLayout::kPatches, 3 * ChartLayout::kPatches> GetTargetFullJacobian() const;
};
