// colcal calibrate: the wizard's forward path on one camera, driven through the
// session model only. Once the camera's settings are backed up, every way out
// short of success (a failed step, Ctrl-C, a timeout) puts them back.
#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"
#include "enginereport.h"

#include "chartcolors.h"
#include "colorchecker.h"
#include "colorcorrectionautochartfinder.h"
#include "colorcorrectionmodel.h"
#include "original.h"
#include "resultsdocumentkeys.h"

#include "camerapool/camerapool.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icamerainfo.h"
#include "camerapool/icamerastatusservice.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTimer>

#include <array>
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

template <class T>
QSharedPointer<T> service(const Plugin::CameraPool::CameraPool& pool)
{
    for (const auto& s : pool.services())
        if (auto t = s.template objectCast<T>())
            return t;
    return {};
}

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

/// A leaf of the results document as a JSON number; null where the camera's
/// settings text did not hold the feature under the name the document reads.
QJsonValue leaf(const QJsonValue& v)
{
    return v.isString() ? QJsonValue(v.toString().toDouble()) : QJsonValue();
}

QString shown(const QJsonValue& v, int width = 0)
{
    return v.isDouble() ? QString("%1").arg(v.toDouble(), width, 'f', 4) : QString("%1").arg("-", width);
}

// ------------------------------------------------------------------ request

/// What the command line asks for, checked before any camera is touched.
struct Request {
    explicit Request(const cli::Args& words) : args(words), cameraId(words.value("camera", "emu-cmed-0")) {}

    const cli::Args& args;
    QString cameraId;
    int timeoutS = 0;
    PublishedChart published;
    QString settingsText;   ///< --load-settings, read whole
    QString settingsShown;  ///< how messages name that file
};

Request readRequest(const cli::Args& args)
{
    if (!args.positional().isEmpty())
        throw cli::Error(QString("unexpected argument \"%1\"").arg(args.positional().first()), cli::BadInput);
    if (int(!args.grid().isEmpty()) + int(args.flag("find-chart")) + int(args.flag("stored-grid")) > 1)
        throw cli::Error("choose one of --grid, --find-chart and --stored-grid", cli::BadInput);
    if (args.flag("set-default") && !args.has("user-set"))
        throw cli::Error("--set-default needs --user-set NAME", cli::BadInput);
    Request request(args);
    bool ok = false;
    request.timeoutS = args.value("timeout-s", "120").toInt(&ok);
    if (!ok || request.timeoutS <= 0)
        throw cli::Error("--timeout-s needs a positive number of seconds", cli::BadInput);
    for (const char* folder : {"settings-dir", "report-dir"})
        if (args.has(folder) && args.value(folder).trimmed().isEmpty())
            throw cli::Error(QString("--%1 needs a folder").arg(folder), cli::BadInput);
    request.published = publishedChart(args);
    if (args.has("load-settings")) {
        const QString file = args.value("load-settings");
        request.settingsText = QString::fromUtf8(cli::readSettingsFile(file));
        request.settingsShown = file == "-" ? "<stdin>" : file;
    }
    return request;
}

// ------------------------------------------------------------------- camera

/// The camera the request names, refused (BadInput) when unknown or when the
/// plug-in would not offer to calibrate it.
QSharedPointer<Plugin::CameraPool::ICameraInfo> supportedCamera(Plugin::CameraPool::CameraPool& pool,
                                                                const QString& id)
{
    const auto info = pool.cameraInfo(id);
    if (!info) {
        QStringList known;
        for (const auto& d : EmulatedCameras::all())
            known << QString::fromStdString(d.id);
        throw cli::Error(QString("no camera \"%1\" (known: %2)").arg(id, known.join(", ")), cli::BadInput);
    }
    const auto params = pool.parameterCollection(info);
    const auto pipeline =
        params ? params->parameter(ParameterCollection::IntegerParameterName("DeviceColorPipelineVersion")) : nullptr;
    const int version = pipeline && !pipeline->isNull() ? int(pipeline->value()) : 0;
    if (!EmulatedCameras::isCompatible(info->modelName(), version))
        throw cli::Error(QString("camera %1 (%2) is not supported by the colour calibration").arg(id, info->modelName()),
                         cli::BadInput);
    return info;
}

/// Opens the session on the camera; a user set that the camera lacks is
/// found out now, not after the whole calibration.
void openSession(ColorCorrectionModel& model, const Plugin::CameraPool::CameraPool& pool,
                 const QSharedPointer<Plugin::CameraPool::ICameraInfo>& info, const Request& request)
{
    model.SetPublishedChartEdition(request.published.edition());
    model.injectCameraControlService(service<Plugin::CameraPool::ICameraControlService>(pool));
    model.injectCameraStatusService(service<Plugin::CameraPool::ICameraStatusService>(pool));
    if (!model.Open(info)) {
        const QString why = info->errorDescription();
        throw cli::Error(QString("cannot open camera %1%2").arg(request.cameraId, why.isEmpty() ? QString() : ": " + why),
                         cli::Failed);
    }
    if (!request.args.has("user-set"))
        return;
    QStringList sets;
    for (const QJsonValue& set : model.GetAvailableUserSetsJson().value("UserSets").toArray())
        sets << set.toObject().value("userset").toString();
    if (!sets.contains(request.args.value("user-set"))) {
        model.Close();
        throw cli::Error(QString("--user-set: camera %1 has no user set \"%2\" (it has: %3)")
                             .arg(request.cameraId, request.args.value("user-set"), sets.join(", ")),
                         cli::BadInput);
    }
}

// ------------------------------------------------------------------- scores

/// ΔE00 and ΔC00 per patch before (the neutral camera's chart against the
/// calibration's targets) and after (the results document's figures).
struct Scores {
    enum Column { EBefore, EAfter, CBefore, CAfter };
    std::array<std::array<double, 4>, kPatches> patch{};
    std::array<double, 4> mean{};
};

Scores score(const QVector<QColor>& before, const QJsonObject& document)
{
    ColorChecker checker;
    Original neutral(&checker, 1.0);
    const dlib::matrix<double, kPatches, 3> chart = chartFromColors(before, false);
    neutral.SetInputChart(chart);
    neutral.SetOutputChart(chart);
    const QJsonObject precise = document.value(Keys::kPreciseColors).toObject();
    Scores s;
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

// -------------------------------------------------------------- calibration

/// What a successful run leaves for the report.
struct Outcome {
    QVector<QColor> before, after;
    QJsonObject document;
    Scores scores;
    QString reportFolder, settingsFolder;
};

/// One calibration of an opened camera in the wizard's steps. A step that
/// fails throws Abort; restore() then brings back what the camera had.
class Calibration {
public:
    Calibration(ColorCorrectionModel& model, const Request& request) : m_model(model), m_request(request)
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

    const Outcome& outcome() const { return m_outcome; }

private:
    void check(bool ok, const QString& failure);
    void checkInterrupt();
    template <class Signal>
    void waitFor(Signal signal, const QString& what);

    ColorCorrectionModel& m_model;
    const Request& m_request;
    bool m_removed = false;
    bool m_backedUp = false;
    double m_lastHitRate = -1.0;
    QString m_brightnessWarning;
    Outcome m_outcome;
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
    const double meanBefore = m_outcome.scores.mean[Scores::EBefore];
    const double meanAfter = m_outcome.scores.mean[Scores::EAfter];
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

/// The whole run on an opened session, which it closes; on failure the
/// camera's settings are restored and the failure is a cli::Error.
Outcome calibrate(ColorCorrectionModel& model, const Request& request, const QString& modelName)
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

// ------------------------------------------------------------------- report

/// What the camera now holds, as the results document reports it.
struct CameraValues {
    QJsonArray whiteBalance, matrix, bc6x2;
    QJsonValue gamma;
};

CameraValues cameraValues(const QJsonObject& document)
{
    const QJsonObject cal = document.value(Keys::kCalibrated).toObject();
    const QJsonObject wb = cal.value(Keys::kWhiteBalance).toObject();
    const QJsonObject mx = cal.value(Keys::kMatrix).toObject();
    const QJsonObject hue = cal.value(Keys::kBc6x2).toObject().value(Keys::kHue).toObject();
    const QJsonObject sat = cal.value(Keys::kBc6x2).toObject().value(Keys::kSaturation).toObject();
    CameraValues v;
    for (const char* channel : Keys::kBalanceChannels)
        v.whiteBalance.append(leaf(wb.value(channel)));
    for (int r = 0; r < 3; ++r)
        v.matrix.append(QJsonArray{leaf(mx.value(Keys::matrixGainKey(r, 0))), leaf(mx.value(Keys::matrixGainKey(r, 1))),
                                   leaf(mx.value(Keys::matrixGainKey(r, 2)))});
    for (const char* c : Keys::kSixColours)
        v.bc6x2.append(leaf(hue.value(c)));
    for (const char* c : Keys::kSixColours)
        v.bc6x2.append(leaf(sat.value(c)));
    v.gamma = leaf(cal.value(Keys::kGamma));
    return v;
}

/// Before and after per patch, against the targets and the published values.
QString scoreTable(const Scores& scores, const QJsonObject& publishedFigures, const PublishedChart& published)
{
    const QJsonArray pubBefore = publishedFigures.value("deltaEBefore").toArray(),
                     pubAfter = publishedFigures.value("deltaEAfter").toArray();
    auto row = [](const QString& title, const std::array<double, 4>& v, double pb, double pa) {
        return QString("%1 %2 %3 %4 %5 %6 %7\n")
            .arg(title, -17)
            .arg(v[0], 10, 'f', 2).arg(v[1], 9, 'f', 2).arg(v[2], 10, 'f', 2).arg(v[3], 9, 'f', 2)
            .arg(pb, 11, 'f', 2).arg(pa, 10, 'f', 2);
    };
    QString table = QString("%1 %2 %3 %4 %5 %6 %7\n")
                        .arg("patch", -17).arg("dE before", 10).arg("dE after", 9).arg("dC before", 10).arg("dC after", 9)
                        .arg("pub before", 11).arg("pub after", 10);
    for (int k = 0; k < kPatches; ++k)
        table += row(QString("%1 %2").arg(k + 1, 2).arg(patchName(k)), scores.patch[k], pubBefore[k].toDouble(),
                     pubAfter[k].toDouble());
    const QJsonObject pubMean = publishedFigures.value("meanDeltaE").toObject();
    table += row("mean", scores.mean, pubMean.value("before").toDouble(), pubMean.value("after").toDouble());
    return table + "dE, dC: CIEDE2000 against the calibration's targets;\npub: dE00 " + publishedLabel(published) + "\n";
}

QString reportText(const QString& heading, const QString& table, const CameraValues& v, const Outcome& outcome)
{
    QString out = heading + "\n\n" + table + "\n";
    out += QString("White balance  R %1  G %2  B %3\n")
               .arg(shown(v.whiteBalance[0]), shown(v.whiteBalance[1]), shown(v.whiteBalance[2]));
    for (int r = 0; r < 3; ++r)
        out += QString("%1 %2 %3 %4\n")
                   .arg(r == 0 ? "Colour matrix " : "              ")
                   .arg(shown(v.matrix[r].toArray()[0], 9), shown(v.matrix[r].toArray()[1], 9),
                        shown(v.matrix[r].toArray()[2], 9));
    out += QString("Gamma          %1\n").arg(shown(v.gamma));
    if (!outcome.settingsFolder.isEmpty())
        out += "Settings file  " + outcome.settingsFolder + "/Calibrated.pfs\n";
    if (!outcome.reportFolder.isEmpty())
        out += "Report         " + outcome.reportFolder + "/calibration_report.html\n";
    return out;
}

void report(const Request& request, const QString& modelName, const Outcome& outcome)
{
    const Scores& s = outcome.scores;
    const QJsonObject publishedFigures = publishedJson(request.published, chartFromColors(outcome.before, false),
                                                       chartFromColors(outcome.after, true));
    const CameraValues values = cameraValues(outcome.document);
    if (!request.args.flag("json")) {
        cli::print(reportText(QString("Camera %1 (%2)").arg(request.cameraId, modelName),
                              scoreTable(s, publishedFigures, request.published), values, outcome));
        return;
    }
    QJsonArray patches;
    for (const auto& p : s.patch)
        patches.append(QJsonObject{{"deltaEBefore", p[Scores::EBefore]}, {"deltaEAfter", p[Scores::EAfter]},
                                   {"deltaCBefore", p[Scores::CBefore]}, {"deltaCAfter", p[Scores::CAfter]}});
    cli::printJson({
        {"camera", QJsonObject{{"id", request.cameraId}, {"model", modelName}}},
        {"meanDeltaE", QJsonObject{{"before", s.mean[Scores::EBefore]}, {"after", s.mean[Scores::EAfter]}}},
        {"meanDeltaC", QJsonObject{{"before", s.mean[Scores::CBefore]}, {"after", s.mean[Scores::CAfter]}}},
        {"patches", patches},
        {"publishedChart", publishedFigures},
        {"clippedPatches", numbersJson(clippedPatches(outcome.before))},
        {"whiteBalance", values.whiteBalance},
        {"matrix", values.matrix},
        {"bc6x2", values.bc6x2},
        {"gamma", values.gamma},
        {"reportFolder", outcome.reportFolder},
        {"settingsFolder", outcome.settingsFolder},
    });
}

}  // namespace

int runCalibrate(const cli::Args& args)
{
    const Request request = readRequest(args);
    EmulatedCameras::ensureRegistered();
    Plugin::CameraPool::CameraPool pool(Kalto::CTransportLayerRegistry::instance());
    const auto info = supportedCamera(pool, request.cameraId);
    ColorCorrectionModel model;
    openSession(model, pool, info, request);
    const Outcome outcome = calibrate(model, request, info->modelName());
    report(request, info->modelName(), outcome);
    return cli::Ok;
}
