// colcal calibrate: the wizard's forward path on one camera, driven through the
// session model only. Once the camera's settings are backed up, every way out
// short of success (a failed step, Ctrl-C, a timeout) puts them back.
#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"
#include "enginereport.h"

#include "colorchecker.h"
#include "colorspace.h"
#include "colorcorrectionautochartfinder.h"
#include "colorcorrectionmodel.h"
#include "original.h"

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

#include <csignal>
#include <cstdio>

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void onSigint(int)
{
    g_interrupted = 1;
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

class Run {
public:
    Run(ColorCorrectionModel& model) : m_model(model)
    {
        QObject::connect(&m_model, &ColorCorrectionModel::cameraRemoved, [this] { m_removed = true; });
    }

    void check(bool ok, const QString& failure)
    {
        checkInterrupt();
        if (!ok)
            throw Abort{plain(failure), cli::Failed};
    }

    void checkInterrupt()
    {
        if (m_removed)
            throw Abort{"the camera was disconnected", cli::Failed};
        if (g_interrupted)
            throw Abort{"interrupted", 130};
    }

    /// Runs the event loop until `done` or the deadline, checking for Ctrl-C and removal.
    template <class Signal>
    void waitFor(Signal signal, int timeoutS, const QString& what)
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
        QTimer::singleShot(timeoutS * 1000, &loop, &QEventLoop::quit);
        loop.exec();
        QObject::disconnect(c);
        checkInterrupt();
        if (!done)
            throw Abort{QString("%1 did not finish within %2 s").arg(what).arg(timeoutS), cli::Failed};
    }

    bool removed() const { return m_removed; }

private:
    ColorCorrectionModel& m_model;
    bool m_removed = false;
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

/// 24 measured colours as an engine chart (0..255); `linearise` decodes sRGB.
dlib::matrix<double, 24, 3> chartOf(const QVector<QColor>& measured, bool linearise)
{
    const ColorSpace cs;
    dlib::matrix<double, 24, 3> chart;
    for (long k = 0; k < 24; ++k) {
        const double v[3] = {measured[k].redF() * 255.0, measured[k].greenF() * 255.0, measured[k].blueF() * 255.0};
        for (long c = 0; c < 3; ++c)
            chart(k, c) = linearise ? cs.sRGB_to_RGB(v[c]) : v[c];
    }
    return chart;
}

/// The neutral camera's 24 patches as the engine's uncorrected step sees them.
void measure(Original& neutral, const QVector<QColor>& measured)
{
    const dlib::matrix<double, 24, 3> chart = chartOf(measured, false);
    neutral.SetInputChart(chart);
    neutral.SetOutputChart(chart);
}

/// Their mean CIEDE2000 error against the chart.
double meanDeltaE(const QVector<QColor>& measured)
{
    ColorChecker checker;
    Original neutral(&checker, 1.0);
    measure(neutral, measured);
    double sum = 0;
    for (int k = 0; k < 24; ++k)
        sum += neutral.GetError(k, false, false);
    return sum / 24;
}

/// The same from the results document of the calibrated camera.
double meanDeltaE(const QJsonObject& document)
{
    const QJsonObject precise = document.value("PreciseColors").toObject();
    double sum = 0;
    for (int k = 0; k < 24; ++k)
        sum += number(precise.value(QString("Patch%1").arg(k + 1, 2, 10, QChar('0'))).toObject().value("DeltaE"));
    return sum / 24;
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

}  // namespace

int runCalibrate(const cli::Args& args)
{
    const QVector<QPoint>& gridCorners = args.grid();
    if (!args.positional().isEmpty())
        throw cli::Error(QString("unexpected argument \"%1\"").arg(args.positional().first()), cli::BadInput);
    const bool hasGrid = !gridCorners.isEmpty();
    if (int(hasGrid) + int(args.flag("find-chart")) + int(args.flag("stored-grid")) > 1)
        throw cli::Error("choose one of --grid, --find-chart and --stored-grid", cli::BadInput);
    if (args.flag("set-default") && !args.has("user-set"))
        throw cli::Error("--set-default needs --user-set NAME", cli::BadInput);
    bool ok = false;
    const int timeoutS = args.value("timeout-s", "120").toInt(&ok);
    if (!ok || timeoutS <= 0)
        throw cli::Error("--timeout-s needs a positive number of seconds", cli::BadInput);
    for (const char* folder : {"settings-dir", "report-dir"})
        if (args.has(folder) && args.value(folder).trimmed().isEmpty())
            throw cli::Error(QString("--%1 needs a folder").arg(folder), cli::BadInput);
    const PublishedChart published = publishedChart(args);
    const QString settingsFile = args.value("load-settings");
    const QString previousSettings =
        args.has("load-settings") ? QString::fromUtf8(cli::readSettingsFile(settingsFile)) : QString();
    const CTrapezoid givenGrid =
        hasGrid ? CTrapezoid(gridCorners[0], gridCorners[1], gridCorners[2], gridCorners[3]) : CTrapezoid();

    EmulatedCameras::ensureRegistered();
    Plugin::CameraPool::CameraPool pool(Kalto::CTransportLayerRegistry::instance());
    const QString id = args.value("camera", "emu-cmed-0");
    const auto info = pool.cameraInfo(id);
    if (!info) {
        QStringList known;
        for (const auto& d : EmulatedCameras::all())
            known << QString::fromStdString(d.id);
        throw cli::Error(QString("no camera \"%1\" (known: %2)").arg(id, known.join(", ")), cli::BadInput);
    }
    {
        const auto params = pool.parameterCollection(info);
        const auto pipeline = params ? params->parameter(ParameterCollection::IntegerParameterName("DeviceColorPipelineVersion"))
                                     : nullptr;
        const int version = pipeline && !pipeline->isNull() ? int(pipeline->value()) : 0;
        if (!EmulatedCameras::isCompatible(info->modelName(), version))
            throw cli::Error(QString("camera %1 (%2) is not supported by the colour calibration")
                                 .arg(id, info->modelName()),
                             cli::BadInput);
    }

    ColorCorrectionModel model;
    model.SetPublishedChartEdition(published.edition());
    model.injectCameraControlService(service<Plugin::CameraPool::ICameraControlService>(pool));
    model.injectCameraStatusService(service<Plugin::CameraPool::ICameraStatusService>(pool));
    if (!model.Open(info)) {
        const QString why = info->errorDescription();
        throw cli::Error(QString("cannot open camera %1%2").arg(id, why.isEmpty() ? QString() : ": " + why), cli::Failed);
    }

    if (args.has("user-set")) {
        // Found out now, not after the whole calibration.
        QStringList sets;
        for (const QJsonValue& set : model.GetAvailableUserSetsJson().value("UserSets").toArray())
            sets << set.toObject().value("userset").toString();
        if (!sets.contains(args.value("user-set"))) {
            model.Close();
            throw cli::Error(QString("--user-set: camera %1 has no user set \"%2\" (it has: %3)")
                                 .arg(id, args.value("user-set"), sets.join(", ")),
                             cli::BadInput);
        }
    }

    g_interrupted = 0;
    std::signal(SIGINT, onSigint);
    std::signal(SIGTERM, onSigint);
    Run run(model);
    bool backedUp = false;
    double lastHitRate = -1.0;
    QObject::connect(&model, &ColorCorrectionModel::Gray80PercentHitRateChanged, [&](double r) { lastHitRate = r; });

    QVector<QColor> before, after;
    QJsonObject document;
    QString reportFolder, settingsFolder;
    try {
        progress(QString("camera %1 (%2) opened").arg(id, info->modelName()));
        // Step 1: the live image and the grid. The very first wait for an image
        // is short by design, so a slow first frame gets a second chance.
        QImage image;
        bool grabbed = false;
        for (int attempt = 0; attempt < 3 && !grabbed; ++attempt)
            grabbed = model.GrabImage(image, true);
        run.check(grabbed, "The camera delivers no image.");
        if (hasGrid) {
            try {
                cli::checkGrid(gridCorners, image.size(), "--grid");
            } catch (const cli::Error& e) {
                throw Abort{QString::fromUtf8(e.what()), e.exitCode()};
            }
            model.SetGridPositon(givenGrid);
        } else if (!args.flag("stored-grid")) {
            ColorCorrectionAutoChartFinder finder(nullptr);
            const ColorCorrectionAutoChartFinderResult found = finder.GetChartPosition(image);
            run.check(found.valid, "Grid could not be positioned automatically. Place it with --grid or --stored-grid.");
            model.SetGridPositon(CTrapezoid(found.topLeft, found.topRight, found.bottomLeft, found.bottomRight));
        }
        const CTrapezoid g = model.GetGridPosition();
        progress(QString("grid (%1,%2) (%3,%4) (%5,%6) (%7,%8)")
                     .arg(g.getTopLeft().x()).arg(g.getTopLeft().y()).arg(g.getTopRight().x()).arg(g.getTopRight().y())
                     .arg(g.getBottomLeft().x()).arg(g.getBottomLeft().y()).arg(g.getBottomRight().x())
                     .arg(g.getBottomRight().y()));

        // Step 1 to 2.
        model.StopGrab();
        run.check(model.CreateSettingsBackup(false) && model.CreateSettingsBackup(true),
                  "Couldn't back up the camera settings.");
        backedUp = true;
        auto initialiseStep2 = [&] {
            model.StopGrab();
            if (args.has("load-settings")) {
                const bool loaded = loadSettings(model, previousSettings, settingsFile == "-" ? "<stdin>" : settingsFile);
                run.checkInterrupt();
                if (!loaded)
                    throw Abort{QString("%1: not a settings file for this camera: nothing in it could be applied")
                                    .arg(settingsFile == "-" ? "<stdin>" : settingsFile),
                                cli::BadInput};
            }
            run.check(model.SetNeutralSettings(), "Unable to set neutral settings.");
            run.check(model.ExecuteWhitebalance(),
                      "The calibration process failed because the image is either too bright or too dark. Adjust "
                      "the brightness and try again.");
            run.check(model.ActivateMonoImage() && model.DisableAutoFunctions(), "Unable to set neutral settings.");
            double lo, v, hi;
            run.check(model.GetExposureTimeRange(lo, v, hi),
                      "No initial parameters (min, max, value) <br> for exposure time available.");
            run.check(model.GetGainRange(lo, v, hi),
                      "No initial parameters (min, max, value) <br> for gain value available.");
        };
        progress("neutral settings, white balance");
        initialiseStep2();

        // Step 2: brightness.
        progress("automatic brightness");
        auto hitRateLine = QObject::connect(&model, &ColorCorrectionModel::Gray80PercentHitRateChanged, [&](double r) {
            progress(QString("  grey patch at %1 % of target, exposure %2 us, gain %3")
                         .arg(r, 0, 'f', 1).arg(model.GetExposureTimeValue(), 0, 'f', 0).arg(model.GetGainValue(), 0, 'f', 2));
        });
        run.check(model.AutoAdjustGray80PercentPatch(), "Autoadjust values <br> impossible!");
        run.waitFor(&ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished, timeoutS, "automatic brightness");
        QObject::disconnect(hitRateLine);

        // Step 2 to 3.
        QString warning;
        if (lastHitRate >= 0 && std::abs(lastHitRate - 100.0) > 20.0)
            warning = lastHitRate < 100.0 ? "The image is too dark." : "The image is too bright.";
        if (!warning.isEmpty())
            progress("warning: " + warning + " The calibration uses it as it is.");
        model.StopGrab();
        progress("calibration");
        run.check(model.StoreDetectedExposureAndGain(), "Couldn't store detected exposure and gain values.");
        run.check(model.RestoreSettingsBackup(true), "Couldn't restore preneutral camera settings.");
        run.check(model.RestoreDetectedExposureAndGain(), "Couldn't restore detected exposure and gain values.");
        run.check(model.ApplyInitialCameraImageAndPatchValues(),
                  "Couldn't apply initial camera image or set original patch color values.");
        run.check(model.SetNeutralSettings(), "Unable to set neutral settings.");
        run.check(model.RestoreDetectedExposureAndGain(), "Couldn't restore detected exposure and gain values.");
        run.check(model.ApplyInitialColorPatchValues(), "Couldn't apply <br> initial values.");
        model.GetColorPatchValues(before, false);
        run.check(before.size() == 24, QString("Only %1 of 24 patches could be measured.").arg(before.size()));
        const QString clipped = clippedWarning(clippedPatches(before));
        if (!clipped.isEmpty())
            progress(clipped);
        run.check(model.ExecuteCalibrationAndApply(),
                  warning.isEmpty() ? QString("Calibration process failed.")
                                    : warning + " Calibration process failed.");

        // Step 3: the camera's own output now (the results document's current colours).
        model.GetColorPatchValues(after, true);
        run.check(after.size() == 24, "The calibrated camera image could not be measured.");
        document = model.GetCalibrationsResultsJson();
        run.check(!document.isEmpty(), "Couldn't read the calibration results.");
        const double meanBefore = meanDeltaE(before), meanAfter = meanDeltaE(document);
        if (meanAfter > meanBefore)
            throw Abort{QString("the calibration made the colours worse (mean dE00 %1 before, %2 after); nothing "
                                "was kept")
                            .arg(meanBefore, 0, 'f', 2)
                            .arg(meanAfter, 0, 'f', 2),
                        cli::Failed};

        // Step 4: keeping the results.
        if (args.has("settings-dir")) {
            run.check(model.SaveSettingsToFilePath(args.value("settings-dir")), "Couldn't save settings to file path!");
            settingsFolder = newestFolder(args.value("settings-dir"), "Camera_Settings_Ostrel");
        }
        if (args.has("report-dir")) {
            run.check(model.SaveSummaryToFilePath(args.value("report-dir")), "Couldn't save summary!");
            reportFolder = newestFolder(args.value("report-dir"), "Calibration_Report");
        }
        if (args.has("user-set"))
            run.check(model.StoreSettingsInUserSet(args.value("user-set"), args.flag("set-default")),
                      "Couldn't store settings in user set: " + args.value("user-set"));
    } catch (const Abort& abort) {
        model.StopAutoAdjustGray80PercentPatch();
        model.StopGrab();
        QString restored;
        if (backedUp && !run.removed())
            restored = model.RestoreSettingsBackup(false) ? "; the camera's settings were restored"
                                                          : "; restoring the camera's settings FAILED";
        model.Close();
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
        throw cli::Error(abort.reason + restored, abort.exitCode);
    }
    model.Close();
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);

    // Before: the neutral camera's chart; after: the results document's figures.
    ColorChecker checker;
    Original neutral(&checker, 1.0);
    measure(neutral, before);
    const QJsonObject precise = document.value("PreciseColors").toObject();
    const QJsonObject publishedFigures = publishedJson(published, chartOf(before, false), chartOf(after, true));
    const QJsonArray pubBefore = publishedFigures.value("deltaEBefore").toArray(),
                     pubAfter = publishedFigures.value("deltaEAfter").toArray();
    QJsonArray patches;
    double sums[4] = {0, 0, 0, 0};
    QString table = QString("%1 %2 %3 %4 %5 %6 %7\n")
                        .arg("patch", -17).arg("dE before", 10).arg("dE after", 9).arg("dC before", 10).arg("dC after", 9)
                        .arg("pub before", 11).arg("pub after", 10);
    for (int k = 0; k < 24; ++k) {
        const QJsonObject p = precise.value(QString("Patch%1").arg(k + 1, 2, 10, QChar('0'))).toObject();
        const double v[4] = {neutral.GetError(k, false, false), number(p.value("DeltaE")),
                             neutral.GetError(k, true, false), number(p.value("DeltaC"))};
        for (int i = 0; i < 4; ++i)
            sums[i] += v[i];
        patches.append(QJsonObject{{"deltaEBefore", v[0]}, {"deltaEAfter", v[1]}, {"deltaCBefore", v[2]},
                                   {"deltaCAfter", v[3]}});
        table += QString("%1 %2 %3 %4 %5 %6 %7\n")
                     .arg(QString("%1 %2").arg(k + 1, 2).arg(patchName(k)), -17)
                     .arg(v[0], 10, 'f', 2).arg(v[1], 9, 'f', 2).arg(v[2], 10, 'f', 2).arg(v[3], 9, 'f', 2)
                     .arg(pubBefore[k].toDouble(), 11, 'f', 2).arg(pubAfter[k].toDouble(), 10, 'f', 2);
    }
    const QJsonObject pubMean = publishedFigures.value("meanDeltaE").toObject();
    table += QString("%1 %2 %3 %4 %5 %6 %7\n")
                 .arg("mean", -17).arg(sums[0] / 24, 10, 'f', 2).arg(sums[1] / 24, 9, 'f', 2)
                 .arg(sums[2] / 24, 10, 'f', 2).arg(sums[3] / 24, 9, 'f', 2)
                 .arg(pubMean.value("before").toDouble(), 11, 'f', 2).arg(pubMean.value("after").toDouble(), 10, 'f', 2);
    table += "dE, dC: CIEDE2000 against the calibration's targets;\npub: dE00 " + publishedLabel(published) + "\n";

    // What the camera now holds, as it reports it.
    const QJsonObject cal = document.value("Calibrated").toObject();
    const QJsonObject wb = cal.value("WhiteBalance").toObject();
    const QJsonObject mx = cal.value("Matrix").toObject();
    const QJsonObject hue = cal.value("BC6x2").toObject().value("Hue").toObject();
    const QJsonObject sat = cal.value("BC6x2").toObject().value("Saturation").toObject();
    const QJsonArray whiteBalance{leaf(wb.value("Red")), leaf(wb.value("Green")), leaf(wb.value("Blue"))};
    QJsonArray matrix, bc6x2;
    for (int r = 0; r < 3; ++r)
        matrix.append(QJsonArray{leaf(mx.value(QString("Gain%1%2").arg(r).arg(0))),
                                 leaf(mx.value(QString("Gain%1%2").arg(r).arg(1))),
                                 leaf(mx.value(QString("Gain%1%2").arg(r).arg(2)))});
    const char* colours[] = {"Red", "Yellow", "Green", "Cyan", "Blue", "Magenta"};
    for (const char* c : colours)
        bc6x2.append(leaf(hue.value(c)));
    for (const char* c : colours)
        bc6x2.append(leaf(sat.value(c)));
    const QJsonValue gamma = leaf(cal.value("Gamma"));

    if (args.flag("json")) {
        cli::printJson({
            {"camera", QJsonObject{{"id", id}, {"model", info->modelName()}}},
            {"meanDeltaE", QJsonObject{{"before", sums[0] / 24}, {"after", sums[1] / 24}}},
            {"meanDeltaC", QJsonObject{{"before", sums[2] / 24}, {"after", sums[3] / 24}}},
            {"patches", patches},
            {"publishedChart", publishedFigures},
            {"clippedPatches", numbersJson(clippedPatches(before))},
            {"whiteBalance", whiteBalance},
            {"matrix", matrix},
            {"bc6x2", bc6x2},
            {"gamma", gamma},
            {"reportFolder", reportFolder},
            {"settingsFolder", settingsFolder},
        });
    } else {
        QString out = QString("Camera %1 (%2)\n\n").arg(id, info->modelName()) + table + "\n";
        out += QString("White balance  R %1  G %2  B %3\n")
                   .arg(shown(whiteBalance[0]), shown(whiteBalance[1]), shown(whiteBalance[2]));
        for (int r = 0; r < 3; ++r)
            out += QString("%1 %2 %3 %4\n")
                       .arg(r == 0 ? "Colour matrix " : "              ")
                       .arg(shown(matrix[r].toArray()[0], 9), shown(matrix[r].toArray()[1], 9),
                            shown(matrix[r].toArray()[2], 9));
        out += QString("Gamma          %1\n").arg(shown(gamma));
        if (!settingsFolder.isEmpty())
            out += "Settings file  " + settingsFolder + "/Calibrated.pfs\n";
        if (!reportFolder.isEmpty())
            out += "Report         " + reportFolder + "/calibration_report.html\n";
        cli::print(out);
    }
    return cli::Ok;
}
