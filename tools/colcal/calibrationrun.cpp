// The run of colcal calibrate: the wizard's steps through the session model.
// Once the camera's settings are backed up, every way out short of success (a
// failed step, Ctrl-C, a timeout) puts them back.
#include "calibrationrun.h"

#include "cli.h"
#include "enginereport.h"

#include "chartcolors.h"
#include "colorchecker.h"
#include "colorcorrectionautochartfinder.h"
#include "colorcorrectionmodel.h"
#include "original.h"
#include "resultsdocumentkeys.h"

#include <QDir>
#include <QEventLoop>
#include <QRegularExpression>
#include <QTimer>

#include <cmath>
#include <csignal>
#include <cstdio>

namespace {

namespace Keys = ResultsDocumentKeys;
using ChartLayout::kPatches;

volatile std::sig_atomic_t g_interrupted = 0;

void onSigint(int)
{
    g_interrupted = 1;
}

void catchInterrupts(bool on)
{
    g_interrupted = 0;
    std::signal(SIGINT, on ? onSigint : SIG_DFL);
    std::signal(SIGTERM, on ? onSigint : SIG_DFL);
}

QString plain(QString text)
{
    // The wizard's texts carry HTML line breaks; a terminal wants spaces.
    text.replace(QRegularExpression("<[^>]*>"), " ");
    return text.simplified();
}

void progress(const QString& line)
{
    // A waiting loop reports the same state again and again; once is enough.
    static QString last;
    if (line == last)
        return;
    last = line;
    std::fprintf(stderr, "colcal calibrate: %s\n", qPrintable(line));
    std::fflush(stderr);
}

/// Why the run stopped early, and the exit code that says so.
struct Abort {
    QString reason;
    int exitCode;
};

/// The newest folder under `base` whose name starts with `stem`.
QString newestFolder(const QString& base, const QString& stem)
{
    const QStringList found = QDir(base).entryList({stem + "_*"}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time);
    return found.isEmpty() ? QString() : QDir(base).absoluteFilePath(found.first());
}

double number(const QJsonValue& v)
{
    return v.toString().toDouble();
}

// The session names each rejected line as "LoadSettings: line N: ..."; the
// user is told the file as well.
QString g_settingsFileShown;
QtMessageHandler g_previousHandler = nullptr;

void nameTheSettingsFile(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    static const QRegularExpression line(";LoadSettings: line (\\d+): (.*)$");
    const QRegularExpressionMatch m = line.match(message);
    if (type == QtWarningMsg && m.hasMatch())
        progress(QString("%1:%2: %3").arg(g_settingsFileShown, m.captured(1), m.captured(2)));
    else
        g_previousHandler(type, context, message);
}

bool loadSettings(ColorCorrectionModel& model, const QString& text, const QString& shown)
{
    g_settingsFileShown = shown;
    g_previousHandler = qInstallMessageHandler(nameTheSettingsFile);
    const bool loaded = model.LoadSettings(text);
    qInstallMessageHandler(g_previousHandler);
    return loaded;
}

PatchScores score(const QVector<QColor>& before, const QJsonObject& document)
{
    ColorChecker checker;
    Original neutral(&checker, 1.0);
    const dlib::matrix<double, kPatches, 3> chart = chartFromColors(before, false);
    neutral.SetInputChart(chart);
    neutral.SetOutputChart(chart);
    const QJsonObject precise = document.value(Keys::kPreciseColors).toObject();
    PatchScores s;
    for (int k = 0; k < kPatches; ++k) {
        const QJsonObject p = precise.value(Keys::patchKey(k)).toObject();
        s.patch[k] = {neutral.GetError(k, false, false), number(p.value(Keys::kDeltaE)),
                      neutral.GetError(k, true, false), number(p.value(Keys::kDeltaC))};
        for (int i = 0; i < 4; ++i)
            s.mean[i] += s.patch[k][i];
    }
    for (double& m : s.mean)
        m /= kPatches;
    return s;
}

/// One calibration of an opened camera in the wizard's steps. A step that
/// fails throws Abort; restore() then brings back what the camera had.
class Calibration {
public:
    Calibration(ColorCorrectionModel& model, const CalibrationRequest& request) : m_model(model), m_request(request)
    {
        QObject::connect(&m_model, &ColorCorrectionModel::cameraRemoved, [this] { m_removed = true; });
        QObject::connect(&m_model, &ColorCorrectionModel::Gray80PercentHitRateChanged,
                         [this](double r) { m_lastHitRate = r; });
    }

    void placeGrid();
    void neutralise();
    void adjustBrightness();
    void measureAndFit();
    void checkResult();
    void keep();
    /// Stops what runs and puts the backed-up settings back; says how that went.
    QString restore();

    const CalibrationOutcome& outcome() const { return m_outcome; }

private:
    void check(bool ok, const QString& failure);
    void checkInterrupt();
    template <class Signal>
    void waitFor(Signal signal, const QString& what);

    ColorCorrectionModel& m_model;
    const CalibrationRequest& m_request;
    bool m_removed = false;
    bool m_backedUp = false;
    double m_lastHitRate = -1.0;
    QString m_brightnessWarning;
    CalibrationOutcome m_outcome;
};

void Calibration::check(bool ok, const QString& failure)
{
    checkInterrupt();
    if (!ok)
        throw Abort{plain(failure), cli::Failed};
}

void Calibration::checkInterrupt()
{
    if (m_removed)
        throw Abort{"the camera was disconnected", cli::Failed};
    if (g_interrupted)
        throw Abort{"interrupted", 130};
}

/// Runs the event loop until `signal`, the timeout, Ctrl-C or the camera's removal.
template <class Signal>
void Calibration::waitFor(Signal signal, const QString& what)
{
    QEventLoop loop;
    bool done = false;
    auto c = QObject::connect(&m_model, signal, &loop, [&] {
        done = true;
        loop.quit();
    });
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (g_interrupted || m_removed)
            loop.quit();
    });
    poll.start(50);
    QTimer::singleShot(m_request.timeoutS * 1000, &loop, &QEventLoop::quit);
    loop.exec();
    QObject::disconnect(c);
    checkInterrupt();
    if (!done)
        throw Abort{QString("%1 did not finish within %2 s").arg(what).arg(m_request.timeoutS), cli::Failed};
}

/// Step 1: the live image and the grid on it.
void Calibration::placeGrid()
{
    // The very first wait for an image is short by design, so a slow first
    // frame gets a second chance.
    QImage image;
    bool grabbed = false;
    for (int attempt = 0; attempt < 3 && !grabbed; ++attempt)
        grabbed = m_model.GrabImage(image, true);
    check(grabbed, "The camera delivers no image.");
    const QVector<QPoint>& given = m_request.args.grid();
    if (!given.isEmpty()) {
        try {
            cli::checkGrid(given, image.size(), "--grid");
        } catch (const cli::Error& e) {
            throw Abort{QString::fromUtf8(e.what()), e.exitCode()};
        }
        m_model.SetGridPositon(CTrapezoid(given[0], given[1], given[2], given[3]));
    } else if (!m_request.args.flag("stored-grid")) {
        ColorCorrectionAutoChartFinder finder(nullptr);
        const ColorCorrectionAutoChartFinderResult found = finder.GetChartPosition(image);
        check(found.valid, "Grid could not be positioned automatically. Place it with --grid or --stored-grid.");
        m_model.SetGridPositon(CTrapezoid(found.topLeft, found.topRight, found.bottomLeft, found.bottomRight));
    }
    const CTrapezoid g = m_model.GetGridPosition();
    progress(QString("grid (%1,%2) (%3,%4) (%5,%6) (%7,%8)")
                 .arg(g.getTopLeft().x()).arg(g.getTopLeft().y()).arg(g.getTopRight().x()).arg(g.getTopRight().y())
                 .arg(g.getBottomLeft().x()).arg(g.getBottomLeft().y()).arg(g.getBottomRight().x())
                 .arg(g.getBottomRight().y()));
}

/// Step 1 to 2: backup, a previous calibration's settings, neutral settings,
/// white balance, then the mono image without auto functions.
void Calibration::neutralise()
{
    m_model.StopGrab();
    check(m_model.CreateSettingsBackup(false) && m_model.CreateSettingsBackup(true),
          "Couldn't back up the camera settings.");
    m_backedUp = true;
    progress("neutral settings, white balance");
    m_model.StopGrab();
    if (m_request.args.has("load-settings")) {
        const bool loaded = loadSettings(m_model, m_request.settingsText, m_request.settingsShown);
        checkInterrupt();
        if (!loaded)
            throw Abort{QString("%1: not a settings file for this camera: nothing in it could be applied")
                            .arg(m_request.settingsShown),
                        cli::BadInput};
    }
    check(m_model.SetNeutralSettings(), "Unable to set neutral settings.");
    check(m_model.ExecuteWhitebalance(),
          "The calibration process failed because the image is either too bright or too dark. Adjust the "
          "brightness and try again.");
    check(m_model.ActivateMonoImage() && m_model.DisableAutoFunctions(), "Unable to set neutral settings.");
    double lo, v, hi;
    check(m_model.GetExposureTimeRange(lo, v, hi),
          "No initial parameters (min, max, value) <br> for exposure time available.");
    check(m_model.GetGainRange(lo, v, hi), "No initial parameters (min, max, value) <br> for gain value available.");
}

/// Step 2: the automatic brightness loop, until the grey patch is on target.
void Calibration::adjustBrightness()
{
    progress("automatic brightness");
    auto hitRateLine =
        QObject::connect(&m_model, &ColorCorrectionModel::Gray80PercentHitRateChanged, [this](double r) {
            progress(QString("  grey patch at %1 % of target, exposure %2 us, gain %3")
                         .arg(r, 0, 'f', 1)
                         .arg(m_model.GetExposureTimeValue(), 0, 'f', 0)
                         .arg(m_model.GetGainValue(), 0, 'f', 2));
        });
    check(m_model.AutoAdjustGray80PercentPatch(), "Autoadjust values <br> impossible!");
    waitFor(&ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished, "automatic brightness");
    QObject::disconnect(hitRateLine);

    // A brightness the loop could not reach is used as it is, with a word.
    if (m_lastHitRate >= 0 && std::abs(m_lastHitRate - 100.0) > 20.0)
        m_brightnessWarning = m_lastHitRate < 100.0 ? "The image is too dark." : "The image is too bright.";
    if (!m_brightnessWarning.isEmpty())
        progress("warning: " + m_brightnessWarning + " The calibration uses it as it is.");
}

/// Step 2 to 3: the neutral camera at the found brightness is measured, the
/// engine fits the corrections and the session writes them into the camera.
void Calibration::measureAndFit()
{
    m_model.StopGrab();
    progress("calibration");
    check(m_model.StoreDetectedExposureAndGain(), "Couldn't store detected exposure and gain values.");
    check(m_model.RestoreSettingsBackup(true), "Couldn't restore preneutral camera settings.");
    check(m_model.RestoreDetectedExposureAndGain(), "Couldn't restore detected exposure and gain values.");
    check(m_model.ApplyInitialCameraImageAndPatchValues(),
          "Couldn't apply initial camera image or set original patch color values.");
    check(m_model.SetNeutralSettings(), "Unable to set neutral settings.");
    check(m_model.RestoreDetectedExposureAndGain(), "Couldn't restore detected exposure and gain values.");
    check(m_model.ApplyInitialColorPatchValues(), "Couldn't apply <br> initial values.");
    QVector<QColor>& before = m_outcome.before;
    m_model.GetColorPatchValues(before, false);
    check(before.size() == kPatches, QString("Only %1 of 24 patches could be measured.").arg(before.size()));
    const QString clipped = clippedWarning(clippedPatches(before));
    if (!clipped.isEmpty())
        progress(clipped);
    check(m_model.ExecuteCalibrationAndApply(), m_brightnessWarning.isEmpty()
                                                    ? QString("Calibration process failed.")
                                                    : m_brightnessWarning + " Calibration process failed.");
}

/// Step 3: the camera's own output now (the results document's current
/// colours); a calibration that made the colours worse is not kept.
void Calibration::checkResult()
{
    m_model.GetColorPatchValues(m_outcome.after, true);
    check(m_outcome.after.size() == kPatches, "The calibrated camera image could not be measured.");
    m_outcome.document = m_model.GetCalibrationsResultsJson();
    check(!m_outcome.document.isEmpty(), "Couldn't read the calibration results.");
    m_outcome.scores = score(m_outcome.before, m_outcome.document);
    const double meanBefore = m_outcome.scores.mean[PatchScores::EBefore];
    const double meanAfter = m_outcome.scores.mean[PatchScores::EAfter];
    if (meanAfter > meanBefore)
        throw Abort{QString("the calibration made the colours worse (mean dE00 %1 before, %2 after); nothing was kept")
                        .arg(meanBefore, 0, 'f', 2)
                        .arg(meanAfter, 0, 'f', 2),
                    cli::Failed};
}

/// Step 4: the settings file, the report and the user set, as asked.
void Calibration::keep()
{
    const cli::Args& args = m_request.args;
    if (args.has("settings-dir")) {
        check(m_model.SaveSettingsToFilePath(args.value("settings-dir")), "Couldn't save settings to file path!");
        m_outcome.settingsFolder = newestFolder(args.value("settings-dir"), "Camera_Settings_Ostrel");
    }
    if (args.has("report-dir")) {
        check(m_model.SaveSummaryToFilePath(args.value("report-dir")), "Couldn't save summary!");
        m_outcome.reportFolder = newestFolder(args.value("report-dir"), "Calibration_Report");
    }
    if (args.has("user-set"))
        check(m_model.StoreSettingsInUserSet(args.value("user-set"), args.flag("set-default")),
              "Couldn't store settings in user set: " + args.value("user-set"));
}

QString Calibration::restore()
{
    m_model.StopAutoAdjustGray80PercentPatch();
    m_model.StopGrab();
    if (!m_backedUp || m_removed)
        return QString();
    return m_model.RestoreSettingsBackup(false) ? "; the camera's settings were restored"
                                                : "; restoring the camera's settings FAILED";
}

}  // namespace

CalibrationRequest::CalibrationRequest(const cli::Args& words)
    : args(words), cameraId(words.value("camera", "emu-cmed-0"))
{
}

CalibrationOutcome runCalibration(ColorCorrectionModel& model, const CalibrationRequest& request,
                                  const QString& modelName)
{
    catchInterrupts(true);
    Calibration run(model, request);
    try {
        progress(QString("camera %1 (%2) opened").arg(request.cameraId, modelName));
        run.placeGrid();
        run.neutralise();
        run.adjustBrightness();
        run.measureAndFit();
        run.checkResult();
        run.keep();
    } catch (const Abort& abort) {
        const QString restored = run.restore();
        model.Close();
        catchInterrupts(false);
        throw cli::Error(abort.reason + restored, abort.exitCode);
    }
    model.Close();
    catchInterrupts(false);
    return run.outcome();
}

