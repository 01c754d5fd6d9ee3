#include "enginereport.h"

#include <QStringList>

#include <algorithm>

#include "cli.h"
#include "colorcalibrationv1.h"

#include <QJsonArray>

#include <stdexcept>

using ChartLayout::kPatches;

namespace {

const char* const kPatchNames[kPatches] = {
    "dark skin",    "light skin",    "blue sky",   "foliage",       "blue flower",  "bluish green",
    "orange",       "purplish blue", "moderate red", "purple",      "yellow green", "orange yellow",
    "blue",         "green",         "red",        "yellow",        "magenta",      "cyan",
    "white",        "neutral 8",     "neutral 6.5", "neutral 5",    "neutral 3.5",  "black",
};

struct StepInfo {
    COLORCALIBRATION_STEP_TYPE type;
    const char* name;
};
const StepInfo kSteps[] = {
    {COLORCALIBRATION_STEP_ORIGINAL, "Original"},
    {COLORCALIBRATION_STEP_DIGITALGAIN, "DigitalGain"},
    {COLORCALIBRATION_STEP_WHITEBALANCE, "WhiteBalance"},
    {COLORCALIBRATION_STEP_MATRIX3X3, "Matrix3x3"},
    {COLORCALIBRATION_STEP_BC6X2, "Bc6x2"},
};
const char* const kHueColours[6] = {"red", "yellow", "green", "cyan", "blue", "magenta"};

// What a run of the chain leaves in the engine for reporting.
struct Results {
    double gain = 0, r = 0, g = 0, b = 0, gamma = 0;
    dlib::matrix<double, 3, 3> matrix;
    dlib::matrix<double, 12, 1> bc6x2;
};

Results results(ColorCalibrationV1& engine)
{
    Results res;
    engine.GetDigitalGain(res.gain);
    engine.GetWhiteBalance(res.r, res.g, res.b);
    engine.GetMatrix(res.matrix);
    engine.GetBc6x2(res.bc6x2);
    engine.GetGamma(res.gamma);
    return res;
}

QJsonArray rowArray(const dlib::matrix<double, kPatches, 3>& chart, long row)
{
    return {chart(row, 0), chart(row, 1), chart(row, 2)};
}

}  // namespace

const char* patchName(int patch)
{
    return patch >= 0 && patch < kPatches ? kPatchNames[patch] : "";
}

dlib::matrix<double, kPatches, 3> chartFromRows(const std::vector<std::vector<double>>& rows)
{
    dlib::matrix<double, kPatches, 3> chart;
    for (long k = 0; k < kPatches; ++k)
        for (long c = 0; c < 3; ++c)
            chart(k, c) = rows.at(k).at(c);
    return chart;
}

void runEngine(ColorCalibrationV1& engine, const dlib::matrix<double, kPatches, 3>& measured)
{
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, measured);
    try {
        engine.Run();
    } catch (const std::runtime_error& e) {
        throw cli::Error(e.what(), cli::EngineError);
    }
}

PublishedChart publishedChart(const cli::Args& args)
{
    const QString name = args.value("published-chart", PublishedChart::editionName(PublishedChart::Edition::Post2014));
    PublishedChart::Edition edition;
    if (!PublishedChart::editionFromName(name.toStdString(), edition))
        throw cli::Error(QString("--published-chart: \"%1\" is neither post-2014 nor pre-2014").arg(name), cli::BadInput);
    return PublishedChart(edition);
}

QString publishedLabel(const PublishedChart& published)
{
    return QString("against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)")
        .arg(PublishedChart::editionName(published.edition()));
}

QJsonObject publishedJson(const PublishedChart& published, const dlib::matrix<double, kPatches, 3>& before,
                          const dlib::matrix<double, kPatches, 3>& after)
{
    QJsonArray dE[2], dC[2];
    double sumE[2] = {0, 0}, sumC[2] = {0, 0};
    for (int i = 0; i < 2; ++i)
        for (int k = 0; k < kPatches; ++k) {
            const dlib::matrix<double, 1, 3> rgb = dlib::rowm(i == 0 ? before : after, k);
            const double e = published.deltaE(k, rgb), c = published.deltaC(k, rgb);
            dE[i].append(e);
            dC[i].append(c);
            sumE[i] += e;
            sumC[i] += c;
        }
    return {
        {"label", publishedLabel(published)},
        {"edition", PublishedChart::editionName(published.edition())},
        {"meanDeltaE", QJsonObject{{"before", sumE[0] / kPatches}, {"after", sumE[1] / kPatches}}},
        {"meanDeltaC", QJsonObject{{"before", sumC[0] / kPatches}, {"after", sumC[1] / kPatches}}},
        {"deltaEBefore", dE[0]},
        {"deltaEAfter", dE[1]},
        {"deltaCBefore", dC[0]},
        {"deltaCAfter", dC[1]},
    };
}

QString publishedSummary(const QJsonObject& publishedJson)
{
    const QJsonObject e = publishedJson.value("meanDeltaE").toObject(), c = publishedJson.value("meanDeltaC").toObject();
    return QString("Mean dE00 %1 before, %2 after; dC00 %3 before, %4 after,\n  %5\n")
        .arg(e.value("before").toDouble(), 0, 'f', 2)
        .arg(e.value("after").toDouble(), 0, 'f', 2)
        .arg(c.value("before").toDouble(), 0, 'f', 2)
        .arg(c.value("after").toDouble(), 0, 'f', 2)
        .arg(publishedJson.value("label").toString());
}

QJsonObject engineReportJson(ColorCalibrationV1& engine, const PublishedChart& published)
{
    const Results res = results(engine);
    const double gain = res.gain, r = res.r, g = res.g, b = res.b, gamma = res.gamma;
    const dlib::matrix<double, 3, 3>& m = res.matrix;
    const dlib::matrix<double, 12, 1>& p = res.bc6x2;

    QJsonArray matrix, bc6x2, steps;
    for (long i = 0; i < 3; ++i)
        matrix.append(QJsonArray{m(i, 0), m(i, 1), m(i, 2)});
    for (long i = 0; i < 12; ++i)
        bc6x2.append(p(i));
    for (const StepInfo& s : kSteps) {
        const dlib::matrix<double, kPatches, 3> chart = engine.GetChart(s.type);
        QJsonArray rows, dE, dC;
        for (int k = 0; k < kPatches; ++k) {
            rows.append(rowArray(chart, k));
            dE.append(engine.GetError(s.type, k, false, true));
            dC.append(engine.GetError(s.type, k, true, true));
        }
        steps.append(QJsonObject{{"step", s.name}, {"chart", rows}, {"deltaE", dE}, {"deltaC", dC}});
    }
    return {
        {"digitalGain", gain},
        {"whiteBalance", QJsonArray{r, g, b}},
        {"matrix", matrix},
        {"bc6x2", bc6x2},
        {"gamma", gamma},
        {"meanDeltaE", QJsonObject{{"original", engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, false, false)},
                                   {"final", engine.GetError(COLORCALIBRATION_STEP_BC6X2, false, true)}}},
        {"meanDeltaC", QJsonObject{{"original", engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, true, false)},
                                   {"final", engine.GetError(COLORCALIBRATION_STEP_BC6X2, true, true)}}},
        {"steps", steps},
        {"publishedChart", publishedJson(published, engine.GetChart(COLORCALIBRATION_STEP_ORIGINAL),
                                         engine.GetChart(COLORCALIBRATION_STEP_BC6X2))},
    };
}

QString engineReportTable(ColorCalibrationV1& engine, const PublishedChart& published)
{
    const Results res = results(engine);
    const double gain = res.gain, r = res.r, g = res.g, b = res.b, gamma = res.gamma;
    const dlib::matrix<double, 3, 3>& m = res.matrix;
    const dlib::matrix<double, 12, 1>& p = res.bc6x2;

    QString t;
    t += QString("Digital gain   %1\n").arg(gain, 0, 'f', 4);
    t += QString("White balance  R %1  G %2  B %3\n").arg(r, 0, 'f', 4).arg(g, 0, 'f', 4).arg(b, 0, 'f', 4);
    for (long i = 0; i < 3; ++i)
        t += QString("%1 %2 %3 %4\n")
                 .arg(i == 0 ? "Colour matrix " : "              ")
                 .arg(m(i, 0), 9, 'f', 4).arg(m(i, 1), 9, 'f', 4).arg(m(i, 2), 9, 'f', 4);
    QString hues = "Hue           ", sats = "Saturation    ", names = "              ";
    for (int i = 0; i < 6; ++i) {
        names += QString(" %1").arg(kHueColours[i], 8);
        hues += QString(" %1").arg(p(i), 8, 'f', 4);
        sats += QString(" %1").arg(p(i + 6), 8, 'f', 4);
    }
    t += names + "\n" + hues + "\n" + sats + "\n";
    t += QString("Gamma          %1\n\n").arg(gamma, 0, 'f', 2);

    const dlib::matrix<double, kPatches, 3> in = engine.GetChart(COLORCALIBRATION_STEP_ORIGINAL);
    const dlib::matrix<double, kPatches, 3> out = engine.GetChart(COLORCALIBRATION_STEP_BC6X2);
    t += QString("%1 %2 %3 %4 %5 %6 %7\n")
             .arg("patch", -17).arg("measured R,G,B", 22).arg("calibrated R,G,B", 22)
             .arg("dE before", 10).arg("dE after", 9).arg("dC before", 10).arg("dC after", 9);
    auto rgb = [](const dlib::matrix<double, kPatches, 3>& c, long k) {
        return QString("%1,%2,%3").arg(c(k, 0), 0, 'f', 1).arg(c(k, 1), 0, 'f', 1).arg(c(k, 2), 0, 'f', 1);
    };
    for (int k = 0; k < kPatches; ++k)
        t += QString("%1 %2 %3 %4 %5 %6 %7\n")
                 .arg(QString("%1 %2").arg(k + 1, 2).arg(kPatchNames[k]), -17)
                 .arg(rgb(in, k), 22).arg(rgb(out, k), 22)
                 .arg(engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, k, false, false), 10, 'f', 2)
                 .arg(engine.GetError(COLORCALIBRATION_STEP_BC6X2, k, false, true), 9, 'f', 2)
                 .arg(engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, k, true, false), 10, 'f', 2)
                 .arg(engine.GetError(COLORCALIBRATION_STEP_BC6X2, k, true, true), 9, 'f', 2);
    t += QString("%1 %2 %3 %4 %5 %6 %7\n")
             .arg("mean", -17).arg("", 22).arg("", 22)
             .arg(engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, false, false), 10, 'f', 2)
             .arg(engine.GetError(COLORCALIBRATION_STEP_BC6X2, false, true), 9, 'f', 2)
             .arg(engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, true, false), 10, 'f', 2)
             .arg(engine.GetError(COLORCALIBRATION_STEP_BC6X2, true, true), 9, 'f', 2);
    return t + "\n" + publishedSummary(publishedJson(published, in, out));
}

QVector<int> clippedPatches(const QVector<QColor>& measured)
{
    QVector<int> out;
    for (int k = 0; k < measured.size(); ++k)
        if (std::max({measured[k].red(), measured[k].green(), measured[k].blue()}) >= 250)
            out << k + 1;
    return out;
}

QString clippedWarning(const QVector<int>& patches)
{
    if (patches.isEmpty())
        return QString();
    QStringList named;
    for (int p : patches)
        named << QString("%1 %2").arg(p).arg(patchName(p - 1));
    return QString("warning: patch%1 %2 at or near full scale (overexposed); the fit will suffer, reduce the "
                   "exposure or the light")
        .arg(patches.size() > 1 ? "es" : "", named.join(", ") + (patches.size() > 1 ? " are" : " is"));
}

QJsonArray numbersJson(const QVector<int>& numbers)
{
    QJsonArray out;
    for (int n : numbers)
        out.append(n);
    return out;
}
