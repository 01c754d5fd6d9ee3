#pragma once

#include <QMetaType>
#include <QPoint>

/// Outer grid corners found by the chart finder, in full-size image pixels and
/// in grid order: top-left is the corner next to the chart's first patch
/// ("dark skin"), whatever way the chart is turned in the image.
struct ColorCorrectionAutoChartFinderResult {
    QPoint topLeft;
    QPoint topRight;
    QPoint bottomLeft;
    QPoint bottomRight;
    bool valid = false;
    /// Which search found the chart: the standard one, or the extended one
    /// that runs when the standard one finds nothing. None when not valid.
    enum class Search { None, Standard, Extended };
    Search foundBy = Search::None;
};

Q_DECLARE_METATYPE(ColorCorrectionAutoChartFinderResult)
