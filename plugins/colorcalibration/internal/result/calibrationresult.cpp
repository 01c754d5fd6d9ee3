#include "calibrationresult.h"

#include "reportpictures.h"
#include "resultsdocumentkeys.h"

#include "core/savefile.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>

#include <cmath>

static void initResources()
{
    Q_INIT_RESOURCE(colcal_resources);
}

namespace {

namespace Keys = ResultsDocumentKeys;

// Suffixes tried after a folder name that already exists.
constexpr int kMaxFoldersPerSecond = 1000;

// The program's list of colour-relevant features. Substring matches are
// deliberate ("Gamma" also keeps GammaEnable); two names repeat harmlessly.
const char* const kFilterNames[] = {
    "TestImageSelector", "OstContrastMode", "PixelFormat", "TonalRangeEnable", "ExposureAuto",
    "TonalRangeAuto", "BalanceWhiteAuto", "GainAuto", "LUTValueAll", "LUTSelector", "LUTEnable",
    "OstContrast", "OstBrightness", "OstSaturation", "OstHue", "BlackLevel", "BlackLevelRaw",
    "BlackLevelSelector", "OstColorAdjustmentSelector", "ColorAdjustmentSelector",
    "OstColorAdjustmentSaturation", "ColorAdjustmentSaturation", "OstColorAdjustmentHue",
    "ColorAdjustmentHue", "OstColorAdjustmentEnable", "ColorAdjustmentEnable", "GammaEnable",
    "GammaSelector", "Gamma", "BalanceRatio", "BalanceRatioRaw", "BalanceRatioSelector",
    "ColorTransformationValue", "ColorTransformationValueSelector", "OstLightSourcePreset",
    "LightSourcePreset", "ColorTransformationValue", "ColorTransformationValueSelector",
    "ProcessedRawEnable", "LightSourceSelector",
};

struct Section {
    const char* title;
    QString key;  // empty: the colour table; "-": the LUT note; "A/B" descends
};
const Section kSections[] = {
    {QT_TRANSLATE_NOOP("CalibrationResult", "Colors"), ""},
    {QT_TRANSLATE_NOOP("CalibrationResult", "Black Level"), Keys::kBlackLevel},
    {QT_TRANSLATE_NOOP("CalibrationResult", "White Balance"), Keys::kWhiteBalance},
    {QT_TRANSLATE_NOOP("CalibrationResult", "Color Transformation"), Keys::kMatrix},
    {QT_TRANSLATE_NOOP("CalibrationResult", "Color Adjustment Hue"), QString("%1/%2").arg(Keys::kBc6x2, Keys::kHue)},
    {QT_TRANSLATE_NOOP("CalibrationResult", "Color Adjustment Saturation"),
     QString("%1/%2").arg(Keys::kBc6x2, Keys::kSaturation)},
    {QT_TRANSLATE_NOOP("CalibrationResult", "Gamma"), Keys::kGamma},
    {QT_TRANSLATE_NOOP("CalibrationResult", "Hue, Saturation, Brightness, Contrast"), Keys::kHsbc},
    {QT_TRANSLATE_NOOP("CalibrationResult", "LUT"), "-"},
};

QString tr(const char* text)
{
    return QCoreApplication::translate("CalibrationResult", text);
}

QJsonObject nullObject(const QStringList& keys)
{
    QJsonObject o;
    for (const QString& k : keys)
        o.insert(k, QJsonValue::Null);
    return o;
}

template <size_t N>
QStringList listOf(const char* const (&keys)[N])
{
    return QStringList(std::begin(keys), std::end(keys));
}

// Sets object[branch][leaf] (or object[branch][sub][leaf]) to value.
void setLeaf(QJsonObject& root, const QStringList& path, const QString& value)
{
    if (path.size() == 1) {
        root.insert(path[0], value);
        return;
    }
    QJsonObject child = root.value(path[0]).toObject();
    setLeaf(child, path.mid(1), value);
    root.insert(path[0], child);
}

QJsonValue descend(const QJsonValue& value, const QStringList& path)
{
    QJsonValue v = value;
    for (const QString& part : path)
        v = v.toObject().value(part);
    return v;
}

QString cellText(const QJsonValue& v)
{
    if (v.isString()) {
        // A camera that rounds to binary steps reports 0.03 as 0.030000000000000027;
        // fifteen significant digits give back the value as it was meant.
        static const QRegularExpression noisy("^-?\\d*\\.\\d{16,}$");
        bool ok = false;
        const double d = v.toString().toDouble(&ok);
        if (ok && std::isfinite(d) && noisy.match(v.toString()).hasMatch())
            return QString::number(d, 'g', 15);
        return v.toString().toHtmlEscaped();
    }
    if (v.isDouble())
        return QString::number(v.toDouble());
    if (v.isBool())
        return v.toBool() ? "true" : "false";
    return "&nbsp;";
}

}  // namespace

CalibrationResult::CalibrationResult(QString cameraLabel) : m_cameraLabel(std::move(cameraLabel))
{
    initResources();
    m_rowTitles = {
        {Keys::kDeltaE, "Delta E"},         {Keys::kDeltaC, "Delta C"},     {Keys::kInitial, "Original"},
        {Keys::kTarget, "Target"},          {Keys::kBlackLevel, "Black Level"}, {Keys::kOriginal, "Original"},
        {Keys::kCalibrated, "Current"},
    };
}

CalibrationResult::~CalibrationResult() = default;

void CalibrationResult::SetStoredSettings(QString& settings)
{
    m_storedSettings = FilterSettings(settings);
}

void CalibrationResult::SetActualSettings(QString& settings)
{
    m_actualSettings = FilterSettings(settings);
}

QString CalibrationResult::FilterSettings(QString& settings)
{
    QStringList kept;
    for (const QString& line : settings.split("\n", Qt::SkipEmptyParts)) {
        bool keep = line.contains("#");
        for (const char* name : kFilterNames)
            keep = keep || line.contains(QLatin1String(name));
        if (keep)
            kept << line;
    }
    return kept.join("\n");
}

QJsonObject CalibrationResult::ParseSettings(QString& settings)
{
    QStringList gains;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            gains << Keys::matrixGainKey(row, column);
    const QJsonObject sixNulls = nullObject(listOf(Keys::kSixColours));
    QJsonObject branch{
        {Keys::kBlackLevel, QJsonValue::Null},
        {Keys::kGamma, QJsonValue::Null},
        {Keys::kBc6x2, QJsonObject{{Keys::kHue, sixNulls}, {Keys::kSaturation, sixNulls}}},
        {Keys::kHsbc, nullObject({Keys::kHue, Keys::kSaturation, Keys::kBrightness, Keys::kContrast})},
        {Keys::kMatrix, nullObject(gains)},
        {Keys::kWhiteBalance, nullObject(listOf(Keys::kBalanceChannels))},
    };
    QString adjustment, transformation, balance;
    for (const QString& line : settings.split("\n", Qt::SkipEmptyParts)) {
        const QStringList f = line.split("\t");
        if (f.size() < 2)
            continue;  // a lone name carries no value
        const QString& name = f[0];
        const QString& value = f[1];
        if (name == "BlackLevelRaw" || name == "BlackLevel")
            setLeaf(branch, {Keys::kBlackLevel}, value);
        else if (name == "Gamma")
            setLeaf(branch, {Keys::kGamma}, value);
        else if (name == "OstHue")
            setLeaf(branch, {Keys::kHsbc, Keys::kHue}, value);
        else if (name == "OstSaturation")
            setLeaf(branch, {Keys::kHsbc, Keys::kSaturation}, value);
        else if (name == "OstBrightness")
            setLeaf(branch, {Keys::kHsbc, Keys::kBrightness}, value);
        else if (name == "OstContrast")
            setLeaf(branch, {Keys::kHsbc, Keys::kContrast}, value);
        else if (name == "ColorAdjustmentSelector" || name == "OstColorAdjustmentSelector")
            adjustment = value;
        else if (name == "ColorAdjustmentHue" || name == "OstColorAdjustmentHue" ||
                 name == "ColorAdjustmentHueRaw" || name == "OstColorAdjustmentHueRaw")
            setLeaf(branch, {Keys::kBc6x2, Keys::kHue, adjustment}, value);
        else if (name == "ColorAdjustmentSaturation" || name == "OstColorAdjustmentSaturation" ||
                 name == "ColorAdjustmentSaturationRaw" || name == "OstColorAdjustmentSaturationRaw")
            setLeaf(branch, {Keys::kBc6x2, Keys::kSaturation, adjustment}, value);
        else if (name == "ColorTransformationValueSelector")
            transformation = value;
        else if (name == "ColorTransformationValue" || name == "ColorTransformationValueRaw")
            setLeaf(branch, {Keys::kMatrix, transformation}, value);
        else if (name == "BalanceRatioSelector")
            balance = value;
        // Cameras before SFNC 2.0.0 name the ratio BalanceRatioAbs (what CameraJustify writes there).
        else if (name == "BalanceRatio" || name == "BalanceRatioRaw" || name == "BalanceRatioAbs")
            setLeaf(branch, {Keys::kWhiteBalance, balance}, value);
    }
    return branch;
}

QJsonObject CalibrationResult::GetResultsJson()
{
    QJsonObject doc;
    doc.insert(Keys::kOriginal, ParseSettings(m_storedSettings));
    doc.insert(Keys::kCalibrated, ParseSettings(m_actualSettings));
    return doc;
}

QString CalibrationResult::BeautifyRowTitle(QString key)
{
    return m_rowTitles[key];  // an unknown key gets (and keeps) an empty title
}

QString CalibrationResult::ConvertHexToRgb(QString text)
{
    if (text.contains("#"))
        text.remove("#");
    bool ok = false;
    const uint v = text.toUInt(&ok, 16);
    const uint rgb = ok ? v : 0;
    return QString("R: %1 G: %2 B: %3").arg((rgb >> 16) & 0xff).arg((rgb >> 8) & 0xff).arg(rgb & 0xff);
}

QJsonObject CalibrationResult::ConvertColorJsonObjectToRGB(QJsonObject object)
{
    static const QRegularExpression hexColour("^#[0-9A-Fa-f]{6}$");
    QJsonObject out;
    for (auto first = object.begin(); first != object.end(); ++first) {
        QJsonObject second = first.value().toObject();
        for (auto it = second.begin(); it != second.end(); ++it) {
            QJsonObject third = it.value().toObject();
            for (auto leaf = third.begin(); leaf != third.end(); ++leaf)
                if (leaf.value().isString() && hexColour.match(leaf.value().toString()).hasMatch())
                    leaf.value() = ConvertHexToRgb(leaf.value().toString());
            it.value() = third;
        }
        out.insert(first.key(), second);
    }
    return out;
}

QString CalibrationResult::folderSafeLabel() const
{
    // The label comes from the camera: it must not climb out of the chosen folder.
    QString safe;
    for (const QChar c : m_cameraLabel)
        safe += (c.isLetterOrNumber() && c.unicode() < 128) || c == '-' || c == '_' ? c : QChar('_');
    return safe.isEmpty() ? QString("camera") : safe;
}

bool CalibrationResult::CreateOutputFolder(QString base, QString stem, QString& folder)
{
    const QString stamp = QDateTime::currentDateTime().toString("yyyyMMdd_hhmmss");
    QString path = base;
    if (!path.endsWith('/') && !path.endsWith(QDir::separator()))
        path += '/';
    path += QString("%1_%2_%3").arg(stem, folderSafeLabel(), stamp);
    if (!QDir().mkpath(base))
        return false;
    // Two saves within one second (or two processes) each get a folder of
    // their own: mkdir fails on an existing one, so the first free suffix wins.
    for (int n = 1; n <= kMaxFoldersPerSecond; ++n) {
        const QString candidate = n == 1 ? path : QString("%1_%2").arg(path).arg(n);
        if (QDir().mkdir(candidate)) {
            folder = candidate;
            return true;
        }
        if (!QFileInfo::exists(candidate))
            return false;  // not a name clash: the folder cannot be made at all
    }
    return false;
}

bool CalibrationResult::CreateTextFile(QString folder, QString fileName, QString& text)
{
    return Core::saveFile(QDir(folder).filePath(fileName), text.toUtf8());
}

bool CalibrationResult::CreateImageFile(QString folder, QString fileName, const QImage& image)
{
    if (image.isNull())
        return false;
    return Core::saveFile(QDir(folder).filePath(fileName),
                          [&image](QIODevice& device) { return image.save(&device, "PNG"); });
}

QString CalibrationResult::GetFileContent(QString path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

QString CalibrationResult::GetBase64OfImage(QString path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromLatin1(file.readAll().toBase64());
}

bool CalibrationResult::SaveSettingsToFilePath(const QString& path)
{
    QString folder;
    return CreateOutputFolder(path, "Camera_Settings_Ostrel", folder) &&
           CreateTextFile(folder, "Calibrated.pfs", m_actualSettings);
}

bool CalibrationResult::SaveSummaryToFilePath(const QString& path, const QImage& calibrated,
                                              const QImage& original, QJsonObject results)
{
    QString folder;
    if (!CreateOutputFolder(path, "Calibration_Report", folder))
        return false;
    if (!CreateTextFile(folder, "calibrated.pfs", m_actualSettings))
        return false;
    if (!CreateTextFile(folder, "original.pfs", m_storedSettings))
        return false;
    QStringList html;
    GenerateSummary(html, results);
    QString page = html.join("\n");
    if (!CreateTextFile(folder, "calibration_report.html", page))
        return false;
    if (!CreateImageFile(folder, "calibrated.png", calibrated) || !CreateImageFile(folder, "original.png", original))
        return false;
    // The report's pictures also as files of their own, for slides and mails.
    const ReportPictures pictures(results.value(Keys::kPreciseColors).toObject(), m_publishedEdition);
    return !pictures.isValid() ||
           (CreateImageFile(folder, "patches.png", pictures.patchesImage()) &&
            CreateImageFile(folder, "colour_error.png", pictures.errorImage()) &&
            CreateImageFile(folder, "colour_error_published.png", pictures.publishedErrorImage()));
}

void CalibrationResult::GenerateSummary(QStringList& html, QJsonObject results)
{
    const QString label = m_cameraLabel.toHtmlEscaped();
    const QDateTime now = QDateTime::currentDateTime();
    html << "<!DOCTYPE html><html>";
    html << QString("<head><title>Calibration Report for %1</title>").arg(label);
    html << "<style>" << GetFileContent(":/ColCal/resources/summary.css") << "</style></head>";
    html << "<body>";
    html << QString("<div style=\"min-width:800px;margin:0 auto;\"><div class=\"row\"><img src=\"data:image/png;base64,") +
                GetBase64OfImage(":/ColCal/resources/logo.png") +
                "\" alt=\"Ostrel AG\" width=\"283\" height=\"92\" align=\"right\" class=\"logo\"/></div>";
    html << "<div class=\"title\"><h1>Color Calibration Report</h1></div>";
    html << QString("<div class=\"report-camera-info\">%1</div>").arg(label);
    html << QString("<div class=\"report-info\">%1<br/>%2</div>")
                .arg(now.date().toString("yyyy\\MM\\dd"), now.time().toString("hh:mm:ss"));
    html << "<div class=\"container\">";
    const QJsonObject branches{{Keys::kOriginal, results.value(Keys::kOriginal)},
                               {Keys::kCalibrated, results.value(Keys::kCalibrated)}};
    for (const Section& s : kSections) {
        html << QString("<br/><div class=\"subtitle\"><h2>%1</h2></div><div class=\"separator\"></div>")
                    .arg(tr(s.title).toHtmlEscaped());
        const QString& key = s.key;
        if (key.isEmpty())
            BuildColorTable(html, results);
        else if (key == "-")
            html << "<div class=\"info-text\"><br>" +
                        tr("To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color "
                           "Calibrator at the same time, would adversely affect the color calibration.")
                            .toHtmlEscaped() +
                        "</br></div>";
        else
            BuildHTMLTable(html, QString("%1,%2").arg(Keys::kOriginal, Keys::kCalibrated), branches, key, false);
    }
    // After the tables, what a person would rather look at; inline SVG keeps the report one file.
    // The published-value picture lets a user compare with other tools; the
    // tables above keep the engine's own targets.
    const ReportPictures pictures(results.value(Keys::kPreciseColors).toObject(), m_publishedEdition);
    if (pictures.isValid()) {
        for (const auto& [title, picture] :
             {std::pair<QString, QString>{ReportPictures::patchesTitle(), pictures.patchesSvg()},
              std::pair<QString, QString>{ReportPictures::errorTitle(), pictures.errorSvg()},
              std::pair<QString, QString>{ReportPictures::publishedErrorTitle(), pictures.publishedErrorSvg()}})
            html << QString("<br/><div class=\"subtitle\"><h2>%1</h2></div><div class=\"separator\"></div>")
                        .arg(title.toHtmlEscaped())
                 << "<div class=\"info-text\">" + picture + "</div>";
    }
    html << QString("</div><div class=\"row\"><img src=\"data:image/png;base64,") +
                GetBase64OfImage(":/ColCal/resources/logo_s.png") +
                "\" align=\"right\" class=\"logo\" alt=\"Ostrel AG\"/></div></div>";
    html << "</body></html>";
}

void CalibrationResult::BuildHTMLTable(QStringList& html, QString rowOrder, QJsonObject rows, QString key,
                                       bool secondHalf)
{
    const QStringList path = key.split("/", Qt::SkipEmptyParts);
    const QStringList rowNames = rowOrder.split(",", Qt::SkipEmptyParts);

    // Columns: the leaves of the first row that has an object there; a plain
    // value is one column titled by the key itself.
    QStringList columns;
    for (const QString& row : rowNames) {
        const QJsonValue v = descend(rows.value(row), path);
        if (v.isObject()) {
            columns = v.toObject().keys();
            break;
        }
    }
    const bool scalar = columns.isEmpty();
    if (scalar)
        columns << path.value(path.size() - 1);
    if (columns.size() > 12) {
        const int half = (columns.size() + 1) / 2;
        columns = secondHalf ? columns.mid(half) : columns.mid(0, half);
    } else if (secondHalf) {
        return;
    }

    html << "<table id=\"results\">";
    QString header = "<tr><th>&nbsp;</th>";
    for (const QString& c : columns)
        header += QString("<th>%1</th>").arg((scalar ? BeautifyRowTitle(c).isEmpty() ? c : BeautifyRowTitle(c) : c)
                                                 .toHtmlEscaped());
    html << header + "</tr>";
    for (const QString& row : rowNames) {
        const QJsonValue v = descend(rows.value(row), path);
        QString line = QString("<tr><td>%1</td>").arg(BeautifyRowTitle(row).toHtmlEscaped());
        for (const QString& c : columns)
            line += QString("<td>%1</td>").arg(cellText(scalar ? v : v.toObject().value(c)));
        html << line + "</tr>";
    }
    html << "</table>";
}

void CalibrationResult::BuildColorTable(QStringList& html, QJsonObject results)
{
    // Pivot patch -> quantity into quantity -> patch, so that each quantity is a row.
    const QJsonObject precise =
        ConvertColorJsonObjectToRGB({{Keys::kPreciseColors, results.value(Keys::kPreciseColors)}})
            .value(Keys::kPreciseColors)
            .toObject();
    QJsonObject rows;
    const QStringList quantities{Keys::kInitial, Keys::kTarget, Keys::kCurrent, Keys::kDeltaE, Keys::kDeltaC};
    for (const QString& q : quantities) {
        QJsonObject row;
        for (auto it = precise.begin(); it != precise.end(); ++it)
            row.insert(it.key(), it.value().toObject().value(q));
        // "Current" is titled as the settings branch of the calibrated camera is.
        rows.insert(q == Keys::kCurrent ? Keys::kCalibrated : q, row);
    }
    const QString order =
        QStringList{Keys::kInitial, Keys::kTarget, Keys::kCalibrated, Keys::kDeltaE, Keys::kDeltaC}.join(',');
    BuildHTMLTable(html, order, rows, QString(), false);
    BuildHTMLTable(html, order, rows, QString(), true);
}
