#pragma once

#include "chartlayout.h"

#include <QColor>
#include <QVector>

#include <dlib/matrix.h>

/// Measured patch colours in chart order as an engine chart: each channel's
/// fraction times 255; `linearise` decodes the sRGB curve first. Rows past the
/// end of `colors` stay black; colours past the last patch are ignored.
dlib::matrix<double, ChartLayout::kPatches, 3> chartFromColors(const QVector<QColor>& colors, bool linearise);
