#pragma once

#include <QLoggingCategory>

/// The chart finder's messages ("colcal.chart"): which search found the chart
/// and why an image was not searched. Debug lines are off unless
/// QT_LOGGING_RULES="colcal.chart.debug=true" asks for them.
Q_DECLARE_LOGGING_CATEGORY(chartLog)
