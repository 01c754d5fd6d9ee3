// colcal --genicam on kalto-gev-camera: every camera command over a real GigE
// Vision connection on loopback, as a user with a real camera runs them.

#include "chartprojection.h"
#include "chartsampler.h"
#include "cameramodel.h"
#include "gevcameraprocess.h"
#include "loopbackonly.h"
#include "testprocess.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <algorithm>
#include <map>

namespace {

const CameraModel& medical()
{
    static const CameraModel m = CameraModel::defaults().front();
    return m;
}

// Where the chart lies in the camera's full-size image, as --grid words.
QStringList chartGrid()
{
    const auto q = ChartProjection(medical().scene, 1920, 1200).grid();  // TL, TR, BR, BL
    QStringList words{"--grid"};
    for (int i : {0, 1, 3, 2})
        words << QString::number(std::lround(q[i][0])) << QString::number(std::lround(q[i][1]));
    return words;
}

// "Name<TAB>Value" lines of a feature-persistence text, a selected feature
// under "Name[entry]" of the selector line before it.
std::map<std::string, std::string> features(const QByteArray& text)
{
    std::map<std::string, std::string> values, selectors;
    for (const QByteArray& line : text.split('\n')) {
        if (line.startsWith('#') || !line.contains('\t'))
            continue;
        const std::string name = line.left(line.indexOf('\t')).toStdString();
        const std::string value = line.mid(line.indexOf('\t') + 1).toStdString();
        if (name.size() > 8 && name.compare(name.size() - 8, 8, "Selector") == 0)
            selectors[name] = value;
        values[name] = value;
        for (const auto& [selector, entry] : selectors)
            if (name != selector && name.compare(0, selector.size() - 8, selector, 0, selector.size() - 8) == 0)
                values[name + "[" + entry + "]"] = value;
    }
    return values;
}

// The lines of `a` and `b` that differ, for a readable failure.
std::string lineDiff(const QByteArray& a, const QByteArray& b)
{
    const QList<QByteArray> x = a.split('\n'), y = b.split('\n');
    std::string out;
    for (int i = 0; i < std::max(x.size(), y.size()); ++i) {
        const QByteArray l = i < x.size() ? x[i] : "(none)", r = i < y.size() ? y[i] : "(none)";
        if (l != r)
            out += "line " + std::to_string(i + 1) + ": " + l.left(80).toStdString() + "  |  " +
                   r.left(80).toStdString() + "\n";
    }
    return out;
}

class GevColcalTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        ASSERT_TRUE(m_server.start("E" + std::to_string(::getpid()))) << m_server.error();
        m_id = QString::fromStdString(m_server.id());
    }

    void TearDown() override
    {
        if (m_server.process().state() == QProcess::Running) {
            EXPECT_TRUE(m_server.stop()) << "kalto-gev-camera did not end cleanly on SIGTERM";
        }
    }

    QString file(const QString& name) { return QDir(m_colcal.home()).filePath(name); }

    // colcal --genicam; killed after `seconds`, which counts as a hang.
    TestProcess::Result colcal(const QStringList& args, int seconds = 300) { return m_colcal.run(args, {}, seconds); }

    // Starts a calibration; true once the brightness loop runs.
    bool startCalibrationIntoBrightnessLoop()
    {
        return m_colcal.start(QStringList{"calibrate", "--camera", m_id} + chartGrid()) &&
               m_colcal.waitForText("automatic brightness", true, 300);
    }

    QByteArray saveSettings(const QString& name)
    {
        const TestProcess::Result r = colcal({"settings", "save", "--camera", m_id, file(name)});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        QFile f(file(name));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    void loadSettings(const QString& path)
    {
        const TestProcess::Result r = colcal({"settings", "load", "--camera", m_id, path});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    }

    GevCameraProcess m_server;
    TestProcess m_colcal{COLCAL_BINARY, {"--genicam"}};
    QString m_id;
};

TEST_F(GevColcalTest, CamerasListsItWithModelSfncVersionAndCompatibility)
{
    const TestProcess::Result r = colcal({"cameras", "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    QJsonObject found;
    for (const auto& c : QJsonDocument::fromJson(r.out.toUtf8()).object()["cameras"].toArray())
        if (c.toObject()["id"].toString() == m_id)
            found = c.toObject();
    ASSERT_FALSE(found.isEmpty()) << r.out.toStdString();
    EXPECT_EQ(found["model"].toString(), "kA1920-40gcMED Emulator");
    EXPECT_EQ(found["sfncVersion"].toString(), "2.3.0");
    EXPECT_EQ(found["colorPipelineVersion"].toInt(), 1);
    EXPECT_TRUE(found["compatible"].toBool());

    const TestProcess::Result table = colcal({"cameras"});
    EXPECT_TRUE(table.out.contains(m_id)) << table.out.toStdString();
}

TEST_F(GevColcalTest, GrabGivesAFrameOfTheChart)
{
    const QString png = file("frame.png");
    const TestProcess::Result r = colcal({"grab", "--camera", m_id, "--out", png});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QImage image = QImage(png).convertToFormat(QImage::Format_RGB888);
    ASSERT_EQ(image.size(), QSize(1920, 1200));
    Frame frame;
    frame.width = image.width();
    frame.height = image.height();
    frame.format = Kalto::PixelType_RGB8packed;
    for (int y = 0; y < image.height(); ++y)
        frame.data.insert(frame.data.end(), image.constScanLine(y), image.constScanLine(y) + 3 * image.width());
    const ChartFit::Chart chart = ChartSampler::measure(frame, medical().scene);
    // White well above black, the greys in order, the red patch red.
    EXPECT_GT(chart(18, 1), chart(23, 1) + 100);
    for (long k = 19; k < 23; ++k)
        EXPECT_GT(chart(k, 1), chart(k + 1, 1)) << "grey patch " << k;
    EXPECT_GT(chart(14, 0), chart(14, 1) + 40) << "patch 14 (red)";
}

TEST_F(GevColcalTest, SettingsSavedChangedAndLoadedGiveBackTheIdenticalText)
{
    const QByteArray original = saveSettings("original.pfs");
    ASSERT_TRUE(original.contains("\nGamma\t")) << original.toStdString();
    // A user's other settings: gamma, light source and a LUT switched off.
    QByteArray changed = original;
    changed.replace("\nGamma\t0.7\n", "\nGamma\t1.3\n");
    changed.replace("\nLightSourceSelector\tDaylight5000K\n", "\nLightSourceSelector\tTungsten2800K\n");
    changed.replace("\nLUTEnable\t1\n", "\nLUTEnable\t0\n");
    ASSERT_NE(changed, original);
    QFile f(file("changed.pfs"));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(changed) == changed.size());
    f.close();
    loadSettings(f.fileName());
    const auto now = features(saveSettings("now.pfs"));
    EXPECT_EQ(now.at("Gamma"), "1.3");
    EXPECT_EQ(now.at("LightSourceSelector"), "Tungsten2800K");

    loadSettings(file("original.pfs"));
    const QByteArray again = saveSettings("again.pfs");
    EXPECT_TRUE(again == original) << lineDiff(original, again);
}

TEST_F(GevColcalTest, CalibrationReachesTheGoalAndTheCameraHoldsTheResult)
{
    const TestProcess::Result r = colcal(QStringList{"calibrate", "--camera", m_id, "--json"} + chartGrid());
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    const double before = o["meanDeltaE"].toObject()["before"].toDouble();
    const double after = o["meanDeltaE"].toObject()["after"].toDouble();
    std::printf("%s: mean dE00 %.2f -> %.2f\n", qPrintable(m_id), before, after);
    EXPECT_GE(before, 8.0);
    EXPECT_LE(after, 3.0);

    // The camera keeps what the calibration wrote, in the camera's own increments.
    const auto held = features(saveSettings("calibrated.pfs"));
    const char* channels[] = {"Red", "Green", "Blue"};
    const QJsonArray wb = o["whiteBalance"].toArray();
    ASSERT_EQ(wb.size(), 3);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(std::stod(held.at(std::string("BalanceRatio[") + channels[c] + "]")), wb[c].toDouble(), 0.5 / 256)
            << channels[c];
    const QJsonArray matrix = o["matrix"].toArray();
    ASSERT_EQ(matrix.size(), 3);
    for (int row = 0; row < 3; ++row)
        for (int col = 0; col < 3; ++col) {
            const std::string key = "ColorTransformationValue[Gain" + std::to_string(row) + std::to_string(col) + "]";
            EXPECT_NEAR(std::stod(held.at(key)), matrix[row].toArray()[col].toDouble(), 0.5 / 256) << key;
        }
    EXPECT_NEAR(std::stod(held.at("Gamma")), 0.45, 1e-9);
    EXPECT_EQ(held.at("LightSourceSelector"), "Custom");
}

// An interrupt and a failure (the brightness loop's time runs out) both give
// back the camera's settings text byte for byte.
TEST_F(GevColcalTest, CancelAndFailureRestoreTheSettingsText)
{
    const QByteArray original = saveSettings("original.pfs");
    {
        const TestProcess::Result r =
            colcal(QStringList{"calibrate", "--camera", m_id, "--timeout-s", "1"} + chartGrid());
        EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("settings were restored")) << r.err.toStdString();
        const QByteArray after = saveSettings("after-failure.pfs");
        EXPECT_TRUE(after == original) << lineDiff(original, after);
    }
    {
        ASSERT_TRUE(startCalibrationIntoBrightnessLoop()) << m_colcal.output().err.toStdString();
        m_colcal.signal(SIGINT);
        const TestProcess::Result r = m_colcal.finish(60);
        ASSERT_TRUE(r.finished) << r.err.toStdString();
        EXPECT_EQ(r.exitCode, 130) << r.err.toStdString();
        const QByteArray after = saveSettings("after-interrupt.pfs");
        EXPECT_TRUE(after == original) << lineDiff(original, after);
    }
}

// The camera dies in the middle of a calibration: colcal says so and ends,
// within the time GigE Vision needs to notice.
TEST_F(GevColcalTest, KillingTheCameraGivesACleanErrorAndNoHang)
{
    ASSERT_TRUE(startCalibrationIntoBrightnessLoop()) << m_colcal.output().err.toStdString();
    m_server.process().kill();
    ASSERT_TRUE(m_server.process().waitForFinished(10000));
    const auto killed = std::chrono::steady_clock::now();
    const TestProcess::Result r = m_colcal.finish(60);
    ASSERT_TRUE(r.finished) << "colcal hangs after the camera died:\n" << r.err.toStdString();
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - killed).count();
    std::printf("colcal ended %.1f s after the camera died\n", seconds);
    EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("the camera was disconnected")) << r.err.toStdString();
}

}  // namespace
