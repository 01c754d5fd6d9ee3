#pragma once

#include "extendedchartsearchparameters.h"

#include <QImage>
#include <QPoint>
#include <QVector>

class ColorCorrectionAutoChartFinderImpl;

/// The chart search that runs when the standard one finds nothing: small
/// charts (down to `smallestPitch`), any in-plane angle, strong perspective,
/// a few covered patches, and charts of the same layout from other makers,
/// each placement settled and checked as strictly as the standard search's.
class ChartExtendedSearch {
public:
    /// Grid corners in full-size pixels (top-left, top-right, bottom-left,
    /// bottom-right in chart order) of the first candidate that passes the
    /// grid check and the corner rules; an empty list when none does.
    static QVector<QPoint> find(ColorCorrectionAutoChartFinderImpl& impl, const QImage& image,
                                const ExtendedChartSearchParameters& parameters);
};
