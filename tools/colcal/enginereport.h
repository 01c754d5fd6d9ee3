#pragma once

#include "chartlayout.h"
#include "publishedchart.h"

#include <QColor>
#include <QJsonArray>
#include <QJsonObject>
#include <QVector>
#include <QString>

#include <dlib/matrix.h>

#include <vector>

class ColorCalibrationV1;
namespace cli {
class Args;
}

/// The 24 rows read by cli::readNumberRows as an engine chart.
dlib::matrix<double, ChartLayout::kPatches, 3> chartFromRows(const std::vector<std::vector<double>>& rows);

/// Sets `measured` as the original chart and runs the whole chain. A grey
/// chromatic patch becomes a cli::Error with the engine's message (exit code 3).
void runEngine(ColorCalibrationV1& engine, const dlib::matrix<double, ChartLayout::kPatches, 3>& measured);

/// Results of an engine on which the chain has run: gains, matrix, hue/saturation,
/// gamma, means and, per step, the chart and per-patch errors after that step;
/// "publishedChart" scores the measured and the corrected chart against `published`.
QJsonObject engineReportJson(ColorCalibrationV1& engine, const PublishedChart& published);
/// The same as a table for people.
QString engineReportTable(ColorCalibrationV1& engine, const PublishedChart& published);

/// The chart edition of "--published-chart" (post-2014 unless given); BadInput for another word.
PublishedChart publishedChart(const cli::Args& args);
/// How the published-chart figures were made, for their labels.
QString publishedLabel(const PublishedChart& published);
/// {"label", "edition", "meanDeltaE":{"before","after"}, "meanDeltaC":{...},
/// "deltaEBefore":[24], "deltaEAfter", "deltaCBefore", "deltaCAfter"}: the
/// CIEDE2000 error of two charts (linear RGB, 0..255) against the published values.
QJsonObject publishedJson(const PublishedChart& published,
                          const dlib::matrix<double, ChartLayout::kPatches, 3>& before,
                          const dlib::matrix<double, ChartLayout::kPatches, 3>& after);
/// Its means as one line for the tables.
QString publishedSummary(const QJsonObject& publishedJson);

/// Common names of the chart's patches, in chart order.
const char* patchName(int patch);

/// Patches (1-based) that a measurement shows at or near full scale in any
/// channel (250 of 255 and above): overexposed, their true colour unknown.
QVector<int> clippedPatches(const QVector<QColor>& measured);
/// One line naming those patches and what it means for the fit; empty when none.
QString clippedWarning(const QVector<int>& patches);
/// Whole numbers as a JSON array.
QJsonArray numbersJson(const QVector<int>& numbers);
