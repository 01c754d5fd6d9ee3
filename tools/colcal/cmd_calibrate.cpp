// colcal calibrate: the wizard's forward path on one camera, driven through the
// session model only (calibrationrun.h); here the command's words, the camera
// it names and the report of a run.
#include "calibrationrun.h"
#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"
#include "enginereport.h"

#include "chartcolors.h"
#include "colorcorrectionmodel.h"
#include "resultsdocumentkeys.h"

#include "camerapool/camerapool.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icamerainfo.h"
#include "camerapool/icamerastatusservice.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QJsonArray>

namespace {

namespace Keys = ResultsDocumentKeys;
using ChartLayout::kPatches;

template <class T>
QSharedPointer<T> service(const Plugin::CameraPool::CameraPool& pool)
{
    for (const auto& s : pool.services())
        if (auto t = s.template objectCast<T>())
            return t;
    return {};
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

CalibrationRequest readRequest(const cli::Args& args)
{
    if (!args.positional().isEmpty())
        throw cli::Error(QString("unexpected argument \"%1\"").arg(args.positional().first()), cli::BadInput);
    if (int(!args.grid().isEmpty()) + int(args.flag("find-chart")) + int(args.flag("stored-grid")) > 1)
        throw cli::Error("choose one of --grid, --find-chart and --stored-grid", cli::BadInput);
    if (args.flag("set-default") && !args.has("user-set"))
        throw cli::Error("--set-default needs --user-set NAME", cli::BadInput);
    CalibrationRequest request(args);
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
                 const QSharedPointer<Plugin::CameraPool::ICameraInfo>& info, const CalibrationRequest& request)
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
QString scoreTable(const PatchScores& scores, const QJsonObject& publishedFigures, const PublishedChart& published)
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

QString reportText(const QString& heading, const QString& table, const CameraValues& v,
                   const CalibrationOutcome& outcome)
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

void report(const CalibrationRequest& request, const QString& modelName, const CalibrationOutcome& outcome)
{
    const PatchScores& s = outcome.scores;
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
        patches.append(QJsonObject{{"deltaEBefore", p[PatchScores::EBefore]}, {"deltaEAfter", p[PatchScores::EAfter]},
                                   {"deltaCBefore", p[PatchScores::CBefore]}, {"deltaCAfter", p[PatchScores::CAfter]}});
    cli::printJson({
        {"camera", QJsonObject{{"id", request.cameraId}, {"model", modelName}}},
        {"meanDeltaE", QJsonObject{{"before", s.mean[PatchScores::EBefore]}, {"after", s.mean[PatchScores::EAfter]}}},
        {"meanDeltaC", QJsonObject{{"before", s.mean[PatchScores::CBefore]}, {"after", s.mean[PatchScores::CAfter]}}},
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
    const CalibrationRequest request = readRequest(args);
    EmulatedCameras::ensureRegistered();
    Plugin::CameraPool::CameraPool pool(Kalto::CTransportLayerRegistry::instance());
    const auto info = supportedCamera(pool, request.cameraId);
    ColorCorrectionModel model;
    openSession(model, pool, info, request);
    const CalibrationOutcome outcome = runCalibration(model, request, info->modelName());
    report(request, info->modelName(), outcome);
    return cli::Ok;
}
