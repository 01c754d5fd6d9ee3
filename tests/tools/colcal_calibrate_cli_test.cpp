#include "cameramodel.h"
#include "chartprojection.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>

namespace {

struct Result {
    int exitCode;
    QString out, err;
};

/// colcal with its camera flash and the viewer's settings in `home`.
Result colcal(const QStringList& args, const QString& home)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", home + "/data");
    env.insert("XDG_CONFIG_HOME", home + "/config");
    env.insert("QT_QPA_PLATFORM", "offscreen");
    p.setProcessEnvironment(env);
    p.start(COLCAL_BINARY, args);
    p.closeWriteChannel();
    EXPECT_TRUE(p.waitForFinished(180000));
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
}

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
    QTemporaryDir home;
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
    };
    for (const Case& c : cases) {
        const Result r = colcal(QStringList{"calibrate"} + c.args, home.path());
        EXPECT_EQ(r.exitCode, 2) << c.expected.toStdString();
        EXPECT_TRUE(r.out.isEmpty());
        EXPECT_TRUE(r.err.contains(c.expected)) << r.err.toStdString();
    }
}

class ColcalCalibrateCamera : public ::testing::TestWithParam<const char*> {};

TEST_P(ColcalCalibrateCamera, GivenGridGivesTheSameResult)
{
    QTemporaryDir home;
    const Result r = colcal(QStringList{"calibrate", "--camera", GetParam(), "--json"} + chartGrid(GetParam()),
                            home.path());
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_LE(o["meanDeltaE"].toObject()["after"].toDouble(), 3.0);
    EXPECT_TRUE(o["reportFolder"].toString().isEmpty());
}

// The default run places the grid with the automatic chart finder.
TEST_P(ColcalCalibrateCamera, WholeRunReachesTheGoalAndWritesItsFiles)
{
    QTemporaryDir home;
    const Result r = colcal(QStringList{"calibrate", "--camera", GetParam(), "--json", "--report-dir",
                                        home.filePath("reports"), "--settings-dir", home.filePath("settings"),
                                        "--user-set", "UserSet1", "--set-default"},
                            home.path());
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
    for (const auto& row : o["matrix"].toArray()) {
        const QJsonArray m = row.toArray();
        EXPECT_DOUBLE_EQ(m[0].toDouble() + m[1].toDouble() + m[2].toDouble(), 1.0);  // exactly, after rounding
    }

    const QDir report(o["reportFolder"].toString());
    ASSERT_TRUE(report.exists()) << o["reportFolder"].toString().toStdString();
    EXPECT_TRUE(report.dirName().startsWith("Calibration_Report_"));
    EXPECT_EQ(report.entryList(QDir::Files, QDir::Name),
              (QStringList{"calibrated.pfs", "calibrated.png", "calibration_report.html", "original.pfs", "original.png"}));
    EXPECT_TRUE(QFile::exists(o["settingsFolder"].toString() + "/Calibrated.pfs"));
}

INSTANTIATE_TEST_SUITE_P(EmulatedCameras, ColcalCalibrateCamera, ::testing::Values("emu-cmed-0", "emu-custom-1"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == "emu-cmed-0" ? "Sfnc2" : "Sfnc1";
                         });

}  // namespace
