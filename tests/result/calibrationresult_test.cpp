#include "calibrationresult.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>

namespace {

const char* kSettings =
    "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n"
    "# Version\t3.1.0\n"
    "Width\t1920\n"
    "PixelFormat\tBayerRG12\n"
    "BlackLevelSelector\tAll\n"
    "BlackLevel\t4\n"
    "OstContrastMode\tSCurve\n"
    "OstHue\t3\n"
    "BalanceRatioSelector\tRed\n"
    "BalanceRatio\t1.5\n"
    "BalanceRatioSelector\tGreen\n"
    "BalanceRatio\t1\n"
    "BalanceRatioSelector\tBlue\n"
    "BalanceRatio\t2.25\n"
    "ColorTransformationValueSelector\tGain00\n"
    "ColorTransformationValue\t1.25\n"
    "ColorAdjustmentSelector\tCyan\n"
    "ColorAdjustmentHue\t-0.5\n"
    "ColorAdjustmentSaturation\t1.125\n"
    "Gamma\t0.45\n"
    "ExposureTime\t10000\n";

// Lets a test make one named file fail to write.
class FailingResult : public CalibrationResult {
public:
    FailingResult(const QString& label, const QString& failing) : CalibrationResult(label), m_failing(failing) {}
    QStringList written;

protected:
    bool CreateTextFile(QString folder, QString fileName, QString& text) override
    {
        if (fileName == m_failing)
            return false;
        written << fileName;
        return CalibrationResult::CreateTextFile(folder, fileName, text);
    }
    bool CreateImageFile(QString folder, QString fileName, const QImage& image) override
    {
        written << fileName;
        return CalibrationResult::CreateImageFile(folder, fileName, image);
    }

private:
    QString m_failing;
};

QImage testImage()
{
    QImage img(32, 24, QImage::Format_RGB32);
    img.fill(QColor(120, 80, 40));
    return img;
}

QStringList subfolders(const QString& base)
{
    return QDir(base).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

// Files may grow to `bytes` only while this lives, as on a disk that fills
// up: a write beyond fails (EFBIG) instead of raising SIGXFSZ.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_previous);
        m_previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = m_previous;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_previousHandler);
    }

private:
    rlimit m_previous{};
    void (*m_previousHandler)(int) = nullptr;
};

class FileWriter : public CalibrationResult {
public:
    FileWriter() : CalibrationResult("cam") {}
    using CalibrationResult::CreateTextFile;
};

QByteArray contentOf(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

TEST(CalibrationResult, WriteThatRunsOutOfSpaceFailsAndKeepsThePreviousFile)
{
    QTemporaryDir dir;
    FileWriter writer;
    QString previous = "previous\n";
    ASSERT_TRUE(writer.CreateTextFile(dir.path(), "calibrated.pfs", previous));

    // 10000 bytes stay in the file's buffer until the final flush; 100000 go
    // out in the write call itself.
    for (const int size : {10000, 100000}) {
        QString text(size, 'x');
        bool written = true;
        {
            FileSizeLimit limit(8192);
            written = writer.CreateTextFile(dir.path(), "calibrated.pfs", text);
        }
        EXPECT_FALSE(written) << size;
        EXPECT_EQ(contentOf(dir.filePath("calibrated.pfs")), QByteArray("previous\n")) << size;
    }
    // Nothing half-written is left beside them.
    // (A PNG that runs out of space is tried through colcal: Qt's encoder
    // leaks its row buffer when a write fails.)
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({"calibrated.pfs"}));
}

TEST(CalibrationResult, FilterKeepsColourFeaturesAndComments)
{
    CalibrationResult r("cam");
    QString text = kSettings;
    const QString filtered = r.FilterSettings(text);
    EXPECT_FALSE(filtered.contains("Width"));
    EXPECT_FALSE(filtered.contains("ExposureTime"));
    EXPECT_TRUE(filtered.contains("OstContrastMode\tSCurve"));  // substring of a listed name
    EXPECT_TRUE(filtered.startsWith("# {05D8C294"));
    EXPECT_FALSE(filtered.endsWith("\n"));
    QString comments = "# a\n\n# b\n";
    EXPECT_EQ(r.FilterSettings(comments), "# a\n# b");
}

TEST(CalibrationResult, ParserFollowsSelectors)
{
    CalibrationResult r("cam");
    QString text = kSettings;
    const QJsonObject b = r.ParseSettings(text);
    // Leaf by path; null where the text had nothing.
    const std::pair<QString, QJsonValue> leaves[] = {
        {"BlackLevel", "4"},         {"Gamma", "0.45"},        {"HSBC/Hue", "3"},
        {"HSBC/Contrast", {}},       {"WhiteBalance/Blue", "2.25"}, {"Matrix/Gain00", "1.25"},
        {"Matrix/Gain11", {}},       {"BC6x2/Hue/Cyan", "-0.5"}, {"BC6x2/Saturation/Cyan", "1.125"},
        {"BC6x2/Hue/Red", {}},
    };
    for (const auto& [path, value] : leaves) {
        QJsonValue v = b;
        for (const QString& key : path.split('/'))
            v = v.toObject().value(key);
        EXPECT_EQ(v, value) << path.toStdString();
    }

    QString green = "BalanceRatioSelector\tGreen\nBalanceRatio\t1.25\n";
    const QJsonObject wb = r.ParseSettings(green)["WhiteBalance"].toObject();
    EXPECT_EQ(wb["Green"].toString(), "1.25");
    EXPECT_TRUE(wb["Red"].isNull());
    EXPECT_TRUE(wb["Blue"].isNull());

    // Both camera generations' ratio names fill the row.
    for (const char* feature : {"BalanceRatio", "BalanceRatioAbs", "BalanceRatioRaw"}) {
        QString text = QString("BalanceRatioSelector\tRed\n%1\t1.5\nBalanceRatioSelector\tBlue\n%1\t2.03\n").arg(feature);
        const QJsonObject w = r.ParseSettings(text)["WhiteBalance"].toObject();
        EXPECT_EQ(w["Red"].toString(), "1.5") << feature;
        EXPECT_EQ(w["Blue"].toString(), "2.03") << feature;
    }

    QString odd = "BalanceRatio\t3\nBalanceRatioSelector\tRed\nBalanceRatioRaw\t64\nBalanceRatio\t1.5\n"
                  "ColorAdjustmentSelector\tOrange\nColorAdjustmentHue\t1\nGammaWithoutTab\n";
    const QJsonObject o = r.ParseSettings(odd);
    EXPECT_EQ(o["WhiteBalance"].toObject()[""].toString(), "3");  // value before any selector
    EXPECT_EQ(o["WhiteBalance"].toObject()["Red"].toString(), "1.5");  // the later line wins
    EXPECT_EQ(o["BC6x2"].toObject()["Hue"].toObject()["Orange"].toString(), "1");
    EXPECT_TRUE(o["Gamma"].isNull());
}

TEST(CalibrationResult, ResultsDocumentHasBothBranchesAndTitles)
{
    CalibrationResult r("cam");
    QString before = kSettings, after = "Gamma\t1\n";
    r.SetStoredSettings(before);
    r.SetActualSettings(after);
    const QJsonObject doc = r.GetResultsJson();
    EXPECT_EQ(doc.keys(), (QStringList{"Calibrated", "Original"}));
    EXPECT_EQ(doc["Original"].toObject()["Gamma"].toString(), "0.45");
    EXPECT_EQ(doc["Calibrated"].toObject()["Gamma"].toString(), "1");

    const std::pair<const char*, const char*> titles[] = {{"Calibrated", "Current"}, {"DeltaE", "Delta E"}, {"Hue", ""}};
    for (const auto& [key, title] : titles)
        EXPECT_EQ(r.BeautifyRowTitle(key), title) << key;
    const std::pair<const char*, const char*> colours[] = {
        {"#FF8000", "R: 255 G: 128 B: 0"}, {"0a0b0c", "R: 10 G: 11 B: 12"}, {"#xyz", "R: 0 G: 0 B: 0"}};
    for (const auto& [hex, text] : colours)
        EXPECT_EQ(r.ConvertHexToRgb(hex), text) << hex;
}

// Saves into a base with or without a trailing separator, several within one
// second, each get a folder of their own named after the camera; nothing is
// written over.
TEST(CalibrationResult, EverySettingsSaveGetsAFolderOfItsOwn)
{
    QTemporaryDir dir;
    CalibrationResult r("acA1920 (22001234)");
    for (int i = 0; i < 3; ++i) {
        QString text = QString("Gamma\t%1\n").arg(i);
        r.SetActualSettings(text);
        ASSERT_TRUE(r.SaveSettingsToFilePath(dir.path() + (i % 2 ? "/nested/" : "/nested"))) << i;
    }
    const QStringList folders = subfolders(dir.filePath("nested"));
    ASSERT_EQ(folders.size(), 3) << folders.join(" ").toStdString();
    const QRegularExpression name("^Camera_Settings_Ostrel_acA1920__22001234__\\d{8}_\\d{6}(_\\d+)?$");
    QSet<QByteArray> contents;
    for (const QString& f : folders) {
        EXPECT_TRUE(name.match(f).hasMatch()) << f.toStdString();
        contents.insert(contentOf(dir.filePath("nested/" + f + "/Calibrated.pfs")));
    }
    EXPECT_EQ(contents.size(), 3);
}

TEST(CalibrationResult, ReportWritesEveryFileInOrder)
{
    QTemporaryDir dir;
    FailingResult r("cam", QString());
    QString before = kSettings, after = "Gamma\t1\nOstBrightness\t0.030000000000000027\nOstContrast\t1.26953125\n";
    r.SetStoredSettings(before);
    r.SetActualSettings(after);
    QJsonObject results = r.GetResultsJson();
    QJsonObject precise;
    for (int i = 1; i <= 24; ++i)
        precise.insert(QString("Patch%1").arg(i, 2, 10, QChar('0')),
                       QJsonObject{{"Initial", "R: 0.1000 G: 0.2000 B: 0.3000"}, {"Target", "#ff8000"},
                                   {"Current", "R: 0.5 G: 0.5 B: 0.5"}, {"DeltaE", "1.000000"}, {"DeltaC", "0.500000"}});
    results.insert("PreciseColors", precise);
    ASSERT_TRUE(r.SaveSummaryToFilePath(dir.path(), testImage(), testImage(), results));
    EXPECT_EQ(r.written, (QStringList{"calibrated.pfs", "original.pfs", "calibration_report.html", "calibrated.png",
                                      "original.png", "patches.png", "colour_error.png",
                                      "colour_error_published.png"}));
    const QStringList folders = subfolders(dir.path());
    ASSERT_EQ(folders.size(), 1);
    EXPECT_TRUE(folders[0].startsWith("Calibration_Report_cam_"));
    QFile html(dir.filePath(folders[0] + "/calibration_report.html"));
    ASSERT_TRUE(html.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(html.readAll());
    EXPECT_TRUE(page.startsWith("<!DOCTYPE html><html>"));
    EXPECT_TRUE(page.contains("border-collapse"));  // the style sheet is inlined
    EXPECT_TRUE(page.contains("data:image/png;base64,iVBOR"));  // the logo is embedded
    int last = -1;
    for (const char* title : {"Colors", "Black Level", "White Balance", "Color Transformation", "Color Adjustment Hue",
                              "Color Adjustment Saturation", "Gamma", "Hue, Saturation, Brightness, Contrast", "LUT"}) {
        const int at = page.indexOf(QString("<h2>%1</h2>").arg(title));
        EXPECT_GT(at, last) << title;
        last = at;
    }
    // the pictures after the tables
    for (const char* title : {"Patches", "Colour error", "Colour error against the published chart values"}) {
        const int at = page.indexOf(QString("<h2>%1</h2>").arg(title));
        EXPECT_GT(at, last) << title;
        last = at;
    }
    EXPECT_EQ(page.count("<svg "), 3);
    EXPECT_TRUE(page.contains("against the published chart values (D50, post-2014 chart;"));
    // A camera's binary rounding noise is left out; exact binary fractions stay whole.
    EXPECT_TRUE(page.contains("<td>0.03</td>"));
    EXPECT_FALSE(page.contains("0.0300000"));
    EXPECT_TRUE(page.contains("<td>1.26953125</td>"));
    EXPECT_TRUE(page.contains("<td>Current</td>"));
    EXPECT_TRUE(page.contains("R: 255 G: 128 B: 0"));  // target hex colour as text
    EXPECT_TRUE(page.endsWith("</body></html>"));
}

TEST(CalibrationResult, FailureAtOriginalSettingsStopsTheReport)
{
    QTemporaryDir dir;
    FailingResult r("cam", "original.pfs");
    EXPECT_FALSE(r.SaveSummaryToFilePath(dir.path(), testImage(), testImage(), QJsonObject()));
    EXPECT_EQ(r.written, QStringList{"calibrated.pfs"});
    const QStringList folders = subfolders(dir.path());
    ASSERT_EQ(folders.size(), 1);
    EXPECT_EQ(QDir(dir.filePath(folders[0])).entryList(QDir::Files), QStringList{"calibrated.pfs"});
}

TEST(CalibrationResult, HostileCameraLabelStaysInFolderAndOutOfMarkup)
{
    QTemporaryDir dir;
    const QString label = "../../x/<script>alert(\"1\")</script>'";
    CalibrationResult r(label);
    QString text = kSettings;
    r.SetStoredSettings(text);
    r.SetActualSettings(text);
    ASSERT_TRUE(r.SaveSummaryToFilePath(dir.filePath("out"), testImage(), testImage(), r.GetResultsJson()));
    const QStringList folders = subfolders(dir.filePath("out"));
    ASSERT_EQ(folders.size(), 1);
    EXPECT_FALSE(folders[0].contains(".."));
    EXPECT_EQ(subfolders(dir.path()), QStringList{"out"});
    QFile html(dir.filePath("out/" + folders[0] + "/calibration_report.html"));
    ASSERT_TRUE(html.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(html.readAll());
    EXPECT_FALSE(page.contains("<script>"));
    EXPECT_TRUE(page.contains("&lt;script&gt;alert(&quot;1&quot;)"));
}

}  // namespace
