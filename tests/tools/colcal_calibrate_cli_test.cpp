#include "cameramodel.h"
#include "chartprojection.h"
#include "testprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QMap>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <cmath>
#include <csignal>
#include <utility>

namespace {

/// Where the emulated camera's chart lies in its full-size image, as --grid words.
QStringList chartGrid(const char* id)
{
    for (const CameraModel& m : CameraModel::defaults())
        if (m.id == id) {
            const auto q = ChartProjection(m.scene, 1920, 1200).grid();  // TL, TR, BR, BL
            QStringList words{"--grid"};
            for (int i : {0, 1, 3, 2})
                words << QString::number(std::lround(q[i][0])) << QString::number(std::lround(q[i][1]));
            return words;
        }
    return {};
}

TEST(ColcalCalibrate, BadInputIsRefusedBeforeTheCameraIsTouched)
{
    TestProcess colcal(COLCAL_BINARY);
    const QDir home(colcal.home());
    QStringList mirrored = chartGrid("emu-cmed-0");  // top-left and top-right swapped, likewise the bottom
    std::swap(mirrored[1], mirrored[3]);
    std::swap(mirrored[2], mirrored[4]);
    std::swap(mirrored[5], mirrored[7]);
    std::swap(mirrored[6], mirrored[8]);
    QFile huge(home.filePath("huge.pfs"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(300LL * 1024 * 1024));  // sparse
    huge.close();
    struct Case {
        QStringList args;
        QString expected;
    };
    const Case cases[] = {
        {{"--camera", "nope"}, "no camera \"nope\""},
        {{"--camera", "emu-legacy-2"}, "is not supported by the colour calibration"},
        {{"--set-default"}, "--set-default needs --user-set NAME"},
        {{"--grid", "1", "2", "3"}, "--grid needs eight numbers"},
        {{"--load-settings", home.filePath("missing.pfs")}, "missing.pfs: cannot open"},
        {{"--find-chart", "--stored-grid"}, "choose one of"},
        {{"--report-dir", ""}, "--report-dir needs a folder"},
        {{"--settings-dir", " "}, "--settings-dir needs a folder"},
        {{"--load-settings", home.filePath("huge.pfs")}, "huge.pfs: larger than"},
        {{"--user-set", "UserSet9"}, "has no user set \"UserSet9\" (it has: UserSet1, UserSet2, UserSet3)"},
        {{"--grid", "10", "10", "2500", "10", "10", "900", "2500", "900"}, "--grid: grid corner (2500, 10) lies outside the 1920 x 1200 image"},
        {mirrored, "--grid: grid corners cross each other, coincide or are mirrored"},
    };
    for (const Case& c : cases) {
        const TestProcess::Result r = colcal.run(QStringList{"calibrate"} + c.args);
        EXPECT_EQ(r.exitCode, 2) << c.expected.toStdString();
        EXPECT_TRUE(r.out.isEmpty());
        EXPECT_TRUE(r.err.contains(c.expected)) << r.err.toStdString();
    }
}

TEST(ColcalCalibrate, SettingsFileIsNamedWithItsLinesAndRefusedWhenNothingFits)
{
    TestProcess colcal(COLCAL_BINARY);
    const QDir home(colcal.home());
    struct Case {
        QByteArray content;
        int exitCode;
        QStringList expected;
    };
    const Case cases[] = {
        // Nothing fits this camera: bad input, the camera restored.
        {"\x89PNG\r\n\x1a\nNoSuchFeature\t1\n", 2,
         {"settings.pfs: not a settings file for this camera", "the camera's settings were restored"}},
        // A byte-order mark and one line of another camera: the rest is applied,
        // the misfit named by file and line (the short time limit ends the run).
        {"\xEF\xBB\xBFGamma\t1\nNoSuchFeature\t1\n", 1,
         {"settings.pfs:2: NoSuchFeature: unknown feature", "automatic brightness did not finish"}},
    };
    for (const Case& c : cases) {
        QFile f(home.filePath("settings.pfs"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(c.content);
        f.close();
        const TestProcess::Result r = colcal.run(
            QStringList{"calibrate", "--load-settings", f.fileName(), "--timeout-s", "1"} + chartGrid("emu-cmed-0"));
        EXPECT_EQ(r.exitCode, c.exitCode) << r.err.toStdString();
        for (const QString& e : c.expected)
            EXPECT_TRUE(r.err.contains(e)) << e.toStdString() << "\n" << r.err.toStdString();
        EXPECT_FALSE(r.err.contains("settings.pfs:1:")) << r.err.toStdString();  // the mark is no line of its own
    }
}

/// Every file under `dir` with its bytes.
QMap<QString, QByteArray> filesUnder(const QString& dir)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile f(it.next());
        if (f.open(QIODevice::ReadOnly))
            files.insert(f.fileName(), f.readAll());
    }
    return files;
}

// A valid grid on the wrong patches: one patch row too high, so its top row
// lies on the background and every other row on the patches above its own
// (the grey row on the colours). The fit, true to what it was shown, leaves
// the camera worse than the neutral one: the run says so, fails and keeps
// nothing, although a user set, a report and a settings file were asked for.
TEST(ColcalCalibrate, CalibrationThatMakesTheColoursWorseFailsAndKeepsNothing)
{
    TestProcess colcal(COLCAL_BINARY);
    const QDir home(colcal.home());
    QStringList grid = chartGrid("emu-cmed-0");  // "--grid", then TL, TR, BL, BR
    const double rowX = (grid[5].toDouble() - grid[1].toDouble()) / 4, rowY = (grid[6].toDouble() - grid[2].toDouble()) / 4;
    for (int corner = 0; corner < 4; ++corner) {
        grid[1 + 2 * corner] = QString::number(std::lround(grid[1 + 2 * corner].toDouble() - rowX));
        grid[2 + 2 * corner] = QString::number(std::lround(grid[2 + 2 * corner].toDouble() - rowY));
    }
    const TestProcess::Result saved = colcal.run({"settings", "save", home.filePath("before.pfs")});
    ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
    const QMap<QString, QByteArray> memoryBefore = filesUnder(home.filePath("data"));

    const TestProcess::Result r =
        colcal.run(QStringList{"calibrate", "--json", "--report-dir", home.filePath("reports"), "--settings-dir",
                               home.filePath("settings"), "--user-set", "UserSet1", "--set-default"} + grid);
    EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
    const QRegularExpression worse("the calibration made the colours worse \\(mean dE00 ([0-9.]+) before, ([0-9.]+) "
                                   "after\\); nothing was kept; the camera's settings were restored\n$");
    const QRegularExpressionMatch m = worse.match(r.err);
    ASSERT_TRUE(m.hasMatch()) << r.err.toStdString();
    EXPECT_GT(m.captured(2).toDouble(), m.captured(1).toDouble());
    EXPECT_FALSE(QDir(home.filePath("reports")).exists());
    EXPECT_FALSE(QDir(home.filePath("settings")).exists());

    // The camera's memory (user sets, start-up set) is untouched, and the
    // camera comes up with the settings it had.
    EXPECT_EQ(filesUnder(home.filePath("data")), memoryBefore);
    ASSERT_EQ(colcal.run({"settings", "save", home.filePath("after.pfs")}).exitCode, 0);
    QFile before(home.filePath("before.pfs")), after(home.filePath("after.pfs"));
    ASSERT_TRUE(before.open(QIODevice::ReadOnly) && after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll().toStdString(), before.readAll().toStdString());
}

TEST(ColcalCalibrate, InterruptRestoresAndExitsNonZero)
{
    TestProcess colcal(COLCAL_BINARY);
    const QString reports = QDir(colcal.home()).filePath("reports");
    ASSERT_TRUE(colcal.start({"calibrate", "--report-dir", reports}));
    // Interrupt once the settings are backed up and the brightness loop runs.
    ASSERT_TRUE(colcal.waitForText("automatic brightness", true, 180)) << colcal.output().err.toStdString();
    colcal.signal(SIGINT);
    const TestProcess::Result r = colcal.finish(30);
    ASSERT_TRUE(r.finished) << r.err.toStdString();
    EXPECT_EQ(r.exitCode, 130);
    EXPECT_TRUE(r.out.isEmpty());
    EXPECT_TRUE(r.err.contains("interrupted; the camera's settings were restored")) << r.err.toStdString();
    EXPECT_FALSE(QDir(reports).exists());
}

class ColcalCalibrateCamera : public ::testing::TestWithParam<const char*> {};

// One camera placed by the automatic chart finder (the default) and scored
// against the default published chart values, the other with a given grid
// and the older values.
TEST_P(ColcalCalibrateCamera, WholeRunReachesTheGoalAndWritesItsFiles)
{
    TestProcess colcal(COLCAL_BINARY);
    const QDir home(colcal.home());
    const bool finder = GetParam() == QString("emu-cmed-0");
    const QString edition = finder ? "post-2014" : "pre-2014";
    const QStringList chosen = finder ? QStringList() : QStringList{"--published-chart", edition} + chartGrid(GetParam());
    const TestProcess::Result r =
        colcal.run(QStringList{"calibrate", "--camera", GetParam(), "--json", "--report-dir", home.filePath("reports"),
                               "--settings-dir", home.filePath("settings"), "--user-set", "UserSet1", "--set-default"} +
                   chosen);
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("automatic brightness"));  // progress goes to stderr
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    ASSERT_FALSE(o.isEmpty()) << r.out.toStdString();
    EXPECT_EQ(o["camera"].toObject()["id"].toString(), GetParam());
    const double before = o["meanDeltaE"].toObject()["before"].toDouble();
    const double after = o["meanDeltaE"].toObject()["after"].toDouble();
    std::printf("%s: mean dE00 %.2f -> %.2f\n", GetParam(), before, after);
    EXPECT_GE(before, 8.0);
    EXPECT_LE(before, 20.0);
    EXPECT_LE(after, 3.0);
    EXPECT_EQ(o["patches"].toArray().size(), 24);
    EXPECT_EQ(o["bc6x2"].toArray().size(), 12);
    // Beside the targets' figures, the same against the published chart values.
    const QJsonObject published = o["publishedChart"].toObject();
    EXPECT_EQ(published["edition"].toString(), edition);
    for (const char* key : {"deltaEBefore", "deltaEAfter", "deltaCBefore", "deltaCAfter"})
        EXPECT_EQ(published[key].toArray().size(), 24) << key;
    const double publishedBefore = published["meanDeltaE"].toObject()["before"].toDouble();
    const double publishedAfter = published["meanDeltaE"].toObject()["after"].toDouble();
    std::printf("%s: mean dE00 %s %.2f -> %.2f\n", GetParam(), qPrintable(published["label"].toString()),
                publishedBefore, publishedAfter);
    EXPECT_LT(publishedAfter, publishedBefore);
    EXPECT_LE(publishedAfter, 4.0);
    for (const auto& row : o["matrix"].toArray()) {
        const QJsonArray m = row.toArray();
        EXPECT_DOUBLE_EQ(m[0].toDouble() + m[1].toDouble() + m[2].toDouble(), 1.0);  // exactly, after rounding
    }

    const QDir report(o["reportFolder"].toString());
    ASSERT_TRUE(report.exists()) << o["reportFolder"].toString().toStdString();
    EXPECT_TRUE(report.dirName().startsWith("Calibration_Report_"));
    EXPECT_EQ(report.entryList(QDir::Files, QDir::Name),
              (QStringList{"calibrated.pfs", "calibrated.png", "calibration_report.html", "colour_error.png",
                           "colour_error_published.png", "original.pfs", "original.png", "patches.png"}));
    EXPECT_TRUE(QFile::exists(o["settingsFolder"].toString() + "/Calibrated.pfs"));

    // Both camera generations report the ratios they now hold, in the JSON and the report.
    const QJsonArray wb = o["whiteBalance"].toArray();
    ASSERT_EQ(wb.size(), 3);
    for (const auto& ratio : wb)
        EXPECT_TRUE(ratio.isDouble() && ratio.toDouble() > 0.5 && ratio.toDouble() < 4.0) << r.out.toStdString();
    QFile html(report.filePath("calibration_report.html"));
    ASSERT_TRUE(html.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(html.readAll());
    const QString section = text.section("White Balance</h2>", 1).section("</table>", 0, 0);
    const QRegularExpression current("<tr><td>Current</td><td>([0-9.]+)</td><td>([0-9.]+)</td><td>([0-9.]+)</td></tr>");
    EXPECT_TRUE(current.match(section).hasMatch()) << section.toStdString();
    EXPECT_TRUE(text.contains(QString("against the published chart values (D50, %1 chart;").arg(edition)));
}

INSTANTIATE_TEST_SUITE_P(EmulatedCameras, ColcalCalibrateCamera, ::testing::Values("emu-cmed-0", "emu-custom-1"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == "emu-cmed-0" ? "Sfnc2" : "Sfnc1";
                         });

}  // namespace
