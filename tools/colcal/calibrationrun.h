#pragma once

#include "chartlayout.h"
#include "publishedchart.h"

#include <QColor>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <array>

class ColorCorrectionModel;
namespace cli {
class Args;
}

/// What the command line asks for, checked before any camera is touched.
struct CalibrationRequest {
    explicit CalibrationRequest(const cli::Args& words);

    const cli::Args& args;
    QString cameraId;
    int timeoutS = 0;
    PublishedChart published;
    QString settingsText;   ///< --load-settings, read whole
    QString settingsShown;  ///< how messages name that file
};

/// ΔE00 and ΔC00 per patch before (the neutral camera's chart against the
/// calibration's targets) and after (the results document's figures).
struct PatchScores {
    enum Column { EBefore, EAfter, CBefore, CAfter };
    std::array<std::array<double, 4>, ChartLayout::kPatches> patch{};
    std::array<double, 4> mean{};
};

/// What a successful run leaves for the report.
struct CalibrationOutcome {
    QVector<QColor> before, after;
    QJsonObject document;  ///< the calibrated camera's results document
    PatchScores scores;
    QString reportFolder, settingsFolder;  ///< empty unless asked for
};

/// The wizard's forward path on a session opened on the camera, which it
/// closes: the grid, neutral settings and white balance, automatic brightness,
/// the calibration, then the files and the user set asked for; progress on
/// stderr. On a failed step, Ctrl-C or the camera's loss the camera's settings
/// are restored and a cli::Error says why.
CalibrationOutcome runCalibration(ColorCorrectionModel& model, const CalibrationRequest& request,
                                  const QString& modelName);
