#pragma once

#include <QColor>
#include <QJsonArray>
#include <QJsonObject>
#include <QVector>
#include <QString>

#include <dlib/matrix.h>

#include <vector>

class ColorCalibrationV1;

/// The 24 rows read by cli::readNumberRows as an engine chart.
dlib::matrix<double, 24, 3> chartFromRows(const std::vector<std::vector<double>>& rows);

/// Sets `measured` as the original chart and runs the whole chain. A grey
/// chromatic patch becomes a cli::Error with the engine's message (exit code 3).
void runEngine(ColorCalibrationV1& engine, const dlib::matrix<double, 24, 3>& measured);

/// Results of an engine on which the chain has run: gains, matrix, hue/saturation,
/// gamma, means and, per step, the chart and per-patch errors after that step.
QJsonObject engineReportJson(ColorCalibrationV1& engine);
/// The same as a table for people.
QString engineReportTable(ColorCalibrationV1& engine);

/// Common names of the chart's patches, in chart order.
const char* patchName(int patch);

/// Patches (1-based) that a measurement shows at or near full scale in any
/// channel (250 of 255 and above): overexposed, their true colour unknown.
QVector<int> clippedPatches(const QVector<QColor>& measured);
/// One line naming those patches and what it means for the fit; empty when none.
QString clippedWarning(const QVector<int>& patches);
/// Whole numbers as a JSON array.
QJsonArray numbersJson(const QVector<int>& numbers);
