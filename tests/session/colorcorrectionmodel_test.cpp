#include "colorcorrectionmodel.h"
#include "colorcorrectionmodelimpl.h"

#include "emulatedcamera.h"
#include "emulatedcamerasuite.h"

#include "camerapool/camerapool.h"
#include "genicam/nodemap.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <tuple>
#include <utility>

namespace {

/// The warnings logged while it lives, in order, with their categories.
class Warnings {
public:
    Warnings() : m_previous(qInstallMessageHandler(capture)) { s_current = this; }
    ~Warnings()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }
    /// The lines so far; they are forgotten.
    QStringList take() { return std::exchange(lines, {}); }
    std::string text() const { return lines.join(" | ").toStdString(); }

    QStringList lines;
    QStringList categories;

private:
    static void capture(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        if (type == QtWarningMsg && s_current) {
            s_current->lines << message;
            s_current->categories << QString::fromLatin1(context.category);
        }
    }
    static inline Warnings* s_current = nullptr;
    QtMessageHandler m_previous;
};

/// The wizard's forward path (steps 1 to 3) as the session drives it: the
/// results document, empty when a step failed.
QJsonObject calibrate(ColorCorrectionModel& m)
{
    QSignalSpy finished(&m, &ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished);
    QVector<QColor> before, after;
    const bool ok =
        m.CreateSettingsBackup(false) && m.CreateSettingsBackup(true) && m.SetNeutralSettings() &&
        m.ExecuteWhitebalance() && m.ActivateMonoImage() && m.DisableAutoFunctions() &&
        m.AutoAdjustGray80PercentPatch() && finished.wait(60000) && m.StoreDetectedExposureAndGain() &&
        m.RestoreSettingsBackup(true) && m.RestoreDetectedExposureAndGain() && m.ApplyInitialCameraImageAndPatchValues() &&
        m.SetNeutralSettings() && m.RestoreDetectedExposureAndGain() && m.ApplyInitialColorPatchValues() &&
        m.GetColorPatchValues(before, false) == 24 && m.ExecuteCalibrationAndApply() &&
        m.GetColorPatchValues(after, true) == 24;
    return ok ? m.GetCalibrationsResultsJson() : QJsonObject();
}

double meanOf(const QJsonObject& colors, const char* key)
{
    double sum = 0;
    for (const auto& patch : colors)
        sum += patch.toObject().value(key).toString().toDouble();
    return colors.isEmpty() ? -1.0 : sum / colors.size();
}

class SessionTest : public ::testing::TestWithParam<const char*> {};

TEST_P(SessionTest, WholeCalibrationReachesTheGoalAndCancelRestoresTheCamera)
{
    SessionRig rig(GetParam());
    const QString untouched = rig.settingsText();
    ASSERT_TRUE(rig.open());
    const QString opened = rig.settingsText();  // opening switches a test image off, nothing else

    const QJsonObject document = calibrate(rig.model());
    const QJsonObject colors = document.value("Colors").toObject();
    ASSERT_EQ(colors.size(), 24);
    const double after = meanOf(document.value("PreciseColors").toObject(), "DeltaE");
    std::printf("%s: mean dE00 after calibration %.3f\n", GetParam(), after);
    EXPECT_LE(after, 3.0);

    // The document: zero-padded keys, hex colours, 4 and 6 decimals.
    EXPECT_EQ(colors.keys().first(), "Patch01");
    EXPECT_EQ(colors.keys().last(), "Patch24");
    const QJsonObject p9 = colors.value("Patch09").toObject();
    EXPECT_TRUE(QRegularExpression("^#[0-9a-f]{6}$").match(p9.value("Current").toString()).hasMatch());
    EXPECT_TRUE(QRegularExpression("^\\d+\\.\\d{4}$").match(p9.value("DeltaE").toString()).hasMatch());
    const QJsonObject q9 = document.value("PreciseColors").toObject().value("Patch09").toObject();
    EXPECT_TRUE(QRegularExpression("^R: [01]\\.\\d{4} G: [01]\\.\\d{4} B: [01]\\.\\d{4}$")
                    .match(q9.value("Initial").toString()).hasMatch());
    EXPECT_TRUE(QRegularExpression("^\\d+\\.\\d{6}$").match(q9.value("DeltaC").toString()).hasMatch());
    EXPECT_FALSE(document.value("Calibrated").toObject().value("Gamma").isNull());

    // Cancel: the settings from before the backup come back byte for byte.
    ASSERT_TRUE(rig.model().RestoreSettingsBackup(false));
    EXPECT_EQ(rig.settingsText(), opened);
    ASSERT_TRUE(rig.model().Close());
    EXPECT_NE(untouched.size(), 0);
}

TEST_P(SessionTest, DisconnectDuringCalibrationFailsCleanly)
{
    SessionRig rig(GetParam());
    ASSERT_FALSE(rig.openAndNeutralise().isEmpty());
    ASSERT_TRUE(rig.model().ApplyInitialColorPatchValues());
    QSignalSpy removed(&rig.model(), &ColorCorrectionModel::cameraRemoved);
    rig.device().disconnect();
    QElapsedTimer clock;
    clock.start();
    QStringList lines;
    {
        Warnings warnings;
        EXPECT_FALSE(rig.model().ExecuteCalibrationAndApply());
        QImage image;
        EXPECT_FALSE(rig.model().GrabImage(image, true));
        EXPECT_FALSE(rig.model().RestoreSettingsBackup(false));
        lines = warnings.take();
    }
    EXPECT_LT(clock.elapsed(), 6000);
    EXPECT_TRUE(removed.count() > 0 || removed.wait(2000));
    ASSERT_FALSE(lines.isEmpty());
    EXPECT_TRUE(lines.first().endsWith(";Calibration failed.")) << lines.first().toStdString();
    EXPECT_TRUE(lines.value(1).contains(";ExecuteCalibrationAndApply: ")) << lines.value(1).toStdString();
    EXPECT_TRUE(rig.model().Close());
}

INSTANTIATE_ON_EMULATED_CAMERAS(SessionTest);

TEST(Session, CancelDuringAutomaticBrightnessStopsTheLoopFirst)
{
    SessionRig rig(SessionRig::kMedical);
    const QString opened = rig.openAndNeutralise();
    ASSERT_FALSE(opened.isEmpty());
    rig.device().nodeMap().setFloat("ExposureTime", 400.0);  // far too dark: the loop runs many rounds
    ASSERT_TRUE(rig.model().AutoAdjustGray80PercentPatch());
    QThread::msleep(300);
    QElapsedTimer clock;
    clock.start();
    // The loop measures through the session: restoring must not wait on it
    // under the session's lock, and nothing may change the camera afterwards.
    ASSERT_TRUE(rig.model().RestoreSettingsBackup(false));
    EXPECT_LT(clock.elapsed(), 6000);
    QThread::msleep(500);
    EXPECT_EQ(rig.settingsText(), opened);
    EXPECT_TRUE(rig.model().Close());
}

// Never opened, then after a session that read the patches and was
// cancelled: every call answers without the camera, nothing of the last
// session is left but its grid.
TEST(Session, ClosedSessionAnswersWithoutTouchingTheCameraAndForgetsTheLastOne)
{
    SessionRig rig(SessionRig::kMedical);
    ColorCorrectionModel& m = rig.model();
    QTemporaryDir out;
    const QString before = rig.settingsText();
    CTrapezoid grid;
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round == 0 ? "never opened" : "closed");
        QImage image;
        double lo = 0, v = 0, hi = 0;
        QVector<QColor> values, initial, current;
        EXPECT_FALSE(m.GrabImage(image, true));
        EXPECT_EQ(m.GetExposureTimeValue(), -1.0);
        EXPECT_EQ(m.GetGainValue(), -1.0);
        EXPECT_FALSE(m.GetExposureTimeRange(lo, v, hi));
        EXPECT_FALSE(m.SetGainValue(3.0));
        EXPECT_EQ(m.GetColorPatchValues(values, true), 0);
        EXPECT_EQ(m.GetColorPatchValues(values, false), 0);
        m.GetColorPatchInitialValues(initial);
        m.GetColorPatchCurrentValues(current);
        EXPECT_TRUE(initial.isEmpty() && current.isEmpty());
        EXPECT_FALSE(m.GetCameraInitialImage(image));
        EXPECT_TRUE(image.isNull());
        EXPECT_FALSE(m.SetNeutralSettings());
        EXPECT_FALSE(m.CreateSettingsBackup(false));
        EXPECT_FALSE(m.RestoreSettingsBackup(false));
        EXPECT_FALSE(m.LoadSettings(QString("Gamma\t1\n")));
        EXPECT_FALSE(m.SaveSettingsToFilePath(out.filePath("out")));
        EXPECT_TRUE(m.GetCalibrationsResultsJson().isEmpty());
        EXPECT_TRUE(m.GetAvailableUserSetsJson().isEmpty());
        EXPECT_FALSE(m.RestoreDetectedExposureAndGain());
        if (round == 0) {
            ASSERT_FALSE(rig.openAndNeutralise().isEmpty());
            ASSERT_TRUE(m.ApplyInitialCameraImageAndPatchValues());
            ASSERT_EQ(m.GetColorPatchValues(values, true), 24);
            ASSERT_TRUE(m.RestoreSettingsBackup(false));
            grid = m.GetGridPosition();
            ASSERT_TRUE(m.Close());
        }
    }
    EXPECT_EQ(m.GetGridPosition().getTopLeft(), grid.getTopLeft());  // kept for the next open
    EXPECT_FALSE(QDir(out.filePath("out")).exists());
    EXPECT_EQ(rig.settingsText(), before);
}

TEST(Session, OpenWithoutExclusiveAccessSharesTheCamera)
{
    SessionRig rig(SessionRig::kMedical);
    const auto other = rig.pool().pool().open(rig.info(), false);  // someone else holds it
    ASSERT_TRUE(other);
    ASSERT_FALSE(rig.pool().pool().canGetExclusiveAccess(rig.info()));
    Warnings warnings;
    ASSERT_TRUE(rig.model().Open(rig.info()));
    EXPECT_GT(rig.model().GetExposureTimeValue(), 0.0);
    ASSERT_TRUE(rig.model().Close());
    // The session gave back its own hold only.
    EXPECT_TRUE(rig.pool().pool().isCameraOpen(rig.info()));
    rig.pool().pool().release(other);

    // A camera that cannot be opened: false, and nothing logged.
    rig.device().disconnect();
    EXPECT_FALSE(rig.model().Open(rig.info()));
    EXPECT_TRUE(warnings.lines.isEmpty()) << warnings.text();
}

TEST(Session, GainRawIsScaledByAHundred)
{
    SessionRig rig(SessionRig::kCustom);
    ASSERT_TRUE(rig.model().Open(rig.info()));
    rig.device().nodeMap().setEnum("GainAuto", "Off");
    QSignalSpy changed(&rig.model(), &ColorCorrectionModel::GainValueChanged);
    ASSERT_TRUE(rig.model().SetGainValue(2.5));
    EXPECT_EQ(rig.device().nodeMap().getInteger("GainRaw"), 250);
    EXPECT_DOUBLE_EQ(rig.model().GetGainValue(), 2.5);
    double lo, v, hi;
    ASSERT_TRUE(rig.model().GetGainRange(lo, v, hi));
    EXPECT_DOUBLE_EQ(v, 2.5);
    EXPECT_DOUBLE_EQ(hi, rig.device().nodeMap().integerMax("GainRaw") / 100.0);
    // The change notification multiplies instead.
    ASSERT_TRUE(changed.count() > 0 || changed.wait(2000));
    EXPECT_DOUBLE_EQ(changed.last().at(0).toDouble(), 25000.0);
    rig.model().Close();
}

TEST(Session, StoredGridFollowsTheImageSize)
{
    SessionRig rig(SessionRig::kMedical, 960, 600);
    ASSERT_TRUE(rig.model().Open(rig.info()));
    // Nothing stored yet: 10 % to 90 % of the image.
    EXPECT_EQ(rig.model().GetGridPosition().getTopLeft(), QPoint(96, 60));
    EXPECT_EQ(rig.model().GetGridPosition().getBottomRight(), QPoint(864, 540));
    rig.model().SetGridPositon(CTrapezoid(QPoint(100, 50), QPoint(700, 60), QPoint(110, 500), QPoint(690, 510)));
    ASSERT_TRUE(rig.model().Close());

    rig.resize(480, 300);
    ASSERT_TRUE(rig.model().Open(rig.info()));
    const CTrapezoid g = rig.model().GetGridPosition();
    EXPECT_EQ(g.getTopLeft(), QPoint(50, 25));
    EXPECT_EQ(g.getTopRight(), QPoint(350, 30));
    EXPECT_EQ(g.getBottomLeft(), QPoint(55, 250));
    EXPECT_EQ(g.getBottomRight(), QPoint(345, 255));
    rig.model().Close();
    QSettings settings;
    EXPECT_TRUE(settings.childGroups().contains("ColCalPlugin"));
}

// A failed operation logs the session's text for it, then the reason, both in
// the session's category, which can be switched off as QT_LOGGING_RULES would.
TEST(Session, FailedOperationLogsItsTextAndTheReason)
{
    struct Failure {
        const char* name;
        std::function<bool(ColorCorrectionModel&)> operation;
        const char* text;
        const char* reason;
    };
    const Failure failures[] = {
        {"white balance without the chart",
         [](ColorCorrectionModel& m) {
             m.SetGridPositon(CTrapezoid(QPoint(0, 0), QPoint(2, 0), QPoint(0, 2), QPoint(2, 2)));  // no patch fits
             return m.ExecuteWhitebalance();
         },
         "};Whitebalance failed!", ";ExecuteWhitebalance: 0 of 24 patches measured"},
        {"settings of which nothing fits",
         [](ColorCorrectionModel& m) { return m.LoadSettings(QString("\x89PNG\r\n")); },
         "};Error: Load settings to camera failed.",
         ";LoadSettings: Camera settings not applied, not one line fits this camera: line 1"},
    };
    for (const Failure& f : failures) {
        SessionRig rig(SessionRig::kMedical);
        ASSERT_TRUE(rig.model().Open(rig.info()));
        Warnings warnings;
        EXPECT_FALSE(f.operation(rig.model())) << f.name;
        ASSERT_EQ(warnings.lines.size(), 2) << f.name << ": " << warnings.text();
        EXPECT_TRUE(warnings.lines[0].startsWith("@{") && warnings.lines[0].endsWith(f.text)) << warnings.text();
        EXPECT_TRUE(warnings.lines[1].contains(f.reason)) << warnings.text();
        EXPECT_EQ(warnings.categories, QStringList({"colcal.session", "colcal.session"})) << f.name;
        warnings.take();
        QLoggingCategory::setFilterRules(QStringLiteral("colcal.session.warning=false"));
        EXPECT_FALSE(f.operation(rig.model())) << f.name;
        QLoggingCategory::setFilterRules(QString());
        EXPECT_TRUE(warnings.lines.isEmpty()) << f.name << ": lines despite the rule: " << warnings.text();
    }
}

TEST(Session, SettingsTextIsAppliedLineByLineWithAWarningPerRejectedLine)
{
    SessionRig rig(SessionRig::kMedical);
    ColorCorrectionModel& m = rig.model();
    ASSERT_TRUE(m.Open(rig.info()));
    Warnings warnings;
    EXPECT_TRUE(m.LoadSettings(QString("BlackLevel\t3\nNoSuchFeature\t1\nGamma\t99\nGamma\t0.8\n")));
    EXPECT_DOUBLE_EQ(rig.device().nodeMap().getFloat("BlackLevel"), 3.0);
    EXPECT_DOUBLE_EQ(rig.device().nodeMap().getFloat("Gamma"), 0.8);
    ASSERT_EQ(warnings.lines.size(), 2) << warnings.text();
    EXPECT_TRUE(warnings.lines[0].endsWith(";LoadSettings: line 2: NoSuchFeature: unknown feature")) << warnings.text();
    EXPECT_TRUE(warnings.lines[1].contains(";LoadSettings: line 3: Gamma: ")) << warnings.text();
}

TEST(Session, ColourConversionsRoundTrip)
{
    QVector<QColor> colours;
    for (int i = 0; i < 24; ++i)
        colours << QColor::fromRgbF(i / 23.0, 1.0 - i / 23.0, 0.5, 1.0);
    const auto linear = ColorCorrectionModelImpl::convertQColorsToMatrix(colours, true);
    const QVector<QColor> back = ColorCorrectionModelImpl::convertMatrixToQColors(linear, true);
    for (int i = 0; i < 24; ++i) {
        EXPECT_NEAR(back[i].redF(), colours[i].redF(), 1e-4);
        EXPECT_NEAR(back[i].greenF(), colours[i].greenF(), 1e-4);
    }
    EXPECT_EQ(ColorCorrectionModelImpl::createRgbFQString(Qt::white), "R: 1.0000 G: 1.0000 B: 1.0000");
    EXPECT_NEAR(ColorCorrectionModelImpl::convertQColorsToMatrix(colours, false)(23, 0), 255.0, 1e-9);
}

TEST(Session, SecondAutoWhileTheFirstStillRunsReplacesItWithoutDeadlock)
{
    SessionRig rig(SessionRig::kMedical);
    ColorCorrectionModel& m = rig.model();
    ASSERT_FALSE(rig.openAndNeutralise().isEmpty());
    rig.device().nodeMap().setFloat("ExposureTime", 400.0);  // far too dark: every loop runs many rounds
    rig.device().setExtraFrameDelayMs(100);                  // the loop spends most of a round measuring
    QSignalSpy finished(&m, &ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished);
    ASSERT_TRUE(m.AutoAdjustGray80PercentPatch());
    // Each new start lands somewhere in the running loop's round: while it waits
    // for a frame under the session lock, or between its calls.
    std::atomic<int> started{0};
    std::atomic<bool> done{false};
    std::thread user([&] {
        for (int i = 0; i < 10; ++i) {
            QThread::msleep(150 + 37 * i);
            started += m.AutoAdjustGray80PercentPatch() ? 1 : 0;
        }
        done = true;
    });
    if (!QTest::qWaitFor([&] { return done.load(); }, 120000)) {
        std::fprintf(stderr, "A second automatic brightness deadlocked the session.\n");
        std::_Exit(1);  // the stuck threads cannot be joined
    }
    user.join();
    EXPECT_EQ(started.load(), 10);
    rig.device().setExtraFrameDelayMs(0);
    // Every replaced loop and the last one report their end.
    EXPECT_TRUE(QTest::qWaitFor([&] { return finished.count() >= 11; }, 60000)) << finished.count();
    EXPECT_NEAR(rig.measureGrey(), 150.0, 15.0);  // the last loop ran to its end
    EXPECT_TRUE(m.Close());
}

// The camera's connection-lost signal stays connected across Close and a new
// Open of the same camera object, but only an open session reports it: a
// disconnect after the calibrator closed must not bring up its message.
TEST(Session, ConnectionLossIsHeardOnceAndOnlyWhileTheCameraIsOpen)
{
    for (const bool openAtLoss : {true, false}) {
        SessionRig rig(SessionRig::kMedical);
        ColorCorrectionModel& m = rig.model();
        QSignalSpy removed(&m, &ColorCorrectionModel::cameraRemoved);
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(m.Open(rig.info()));
            ASSERT_TRUE(m.Close());
        }
        if (openAtLoss) {
            ASSERT_TRUE(m.Open(rig.info()));
        }
        rig.device().disconnect();
        (void)QTest::qWaitFor([&] { return removed.count() > 0; }, openAtLoss ? 2000 : 300);
        QCoreApplication::processEvents();
        EXPECT_EQ(removed.count(), openAtLoss ? 1 : 0) << "open at loss " << openAtLoss;
        m.Close();
    }
}

TEST(Session, UserSetIsSavedAndMadeTheStartUpSetOnlyWhenAsked)
{
    SessionRig rig(SessionRig::kMedical);
    ColorCorrectionModel& m = rig.model();
    Kalto::CNodeMap& map = rig.device().nodeMap();
    ASSERT_TRUE(m.Open(rig.info()));
    // The list leaves out the default set.
    const QJsonArray sets = m.GetAvailableUserSetsJson().value("UserSets").toArray();
    ASSERT_EQ(sets.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(sets[i].toObject().value("userset").toString(), QString("UserSet%1").arg(i + 1));
        EXPECT_FALSE(sets[i].toObject().value("DisplayName").toString().isEmpty());
    }
    for (const bool setAsDefault : {false, true}) {
        SCOPED_TRACE(setAsDefault ? "as default" : "not as default");
        const double gamma = setAsDefault ? 0.6 : 0.8;
        map.setFloat("Gamma", gamma);
        const std::string defaultBefore = map.getEnum("UserSetDefault");
        ASSERT_TRUE(m.StoreSettingsInUserSet("UserSet2", setAsDefault));
        EXPECT_EQ(map.getEnum("UserSetDefault"), setAsDefault ? "UserSet2" : defaultBefore);
        map.setFloat("Gamma", 1.0);
        map.setEnum("UserSetSelector", "UserSet2");
        map.execute("UserSetLoad");
        EXPECT_DOUBLE_EQ(map.getFloat("Gamma"), gamma);
    }
    m.Close();
}

// Cancel and Close pressed while an operation waits for a frame: the grab's
// local event loop delivers them on the same thread, inside the operation.
enum class Interruption { Cancel, Close };

struct LongOperation {
    const char* name;
    std::function<void(ColorCorrectionModel&)> run;
};

const LongOperation kLongOperations[] = {
    {"GrabImage", [](ColorCorrectionModel& m) { QImage image; m.GrabImage(image, true); }},
    {"GetColorPatchValues", [](ColorCorrectionModel& m) { QVector<QColor> v; m.GetColorPatchValues(v, true); }},
    {"ApplyInitialCameraImageAndPatchValues", [](ColorCorrectionModel& m) { m.ApplyInitialCameraImageAndPatchValues(); }},
    {"ExecuteWhitebalance", [](ColorCorrectionModel& m) { m.ExecuteWhitebalance(); }},
    {"ApplyInitialColorPatchValues", [](ColorCorrectionModel& m) { m.ApplyInitialColorPatchValues(); }},
    // Runs on its own thread; the interruption comes from this one.
    {"AutoAdjustGray80PercentPatch", [](ColorCorrectionModel& m) { m.AutoAdjustGray80PercentPatch(); }},
};

class InterruptedOperationTest : public ::testing::TestWithParam<std::tuple<int, Interruption>> {};

TEST_P(InterruptedOperationTest, CancelOrCloseInTheMiddleActsAfterTheOperation)
{
    const LongOperation& operation = kLongOperations[std::get<0>(GetParam())];
    const Interruption interruption = std::get<1>(GetParam());
    SessionRig rig(SessionRig::kMedical);
    ColorCorrectionModel& m = rig.model();
    const QString opened = rig.openAndNeutralise();
    ASSERT_FALSE(opened.isEmpty());
    rig.device().setExtraFrameDelayMs(400);  // every grab now waits in its event loop

    bool interrupted = false, accepted = false;
    QTimer::singleShot(150, &m, [&] {
        accepted = interruption == Interruption::Close ? m.Close() : m.RestoreSettingsBackup(false);
        interrupted = true;
    });
    operation.run(m);
    ASSERT_TRUE(QTest::qWaitFor([&] { return interrupted; }, 10000));
    EXPECT_TRUE(accepted);
    QThread::msleep(500);  // whatever was still to come has come
    QCoreApplication::processEvents();

    if (interruption == Interruption::Cancel) {
        EXPECT_EQ(rig.settingsText(), opened) << operation.name;
        EXPECT_TRUE(m.Close());
    } else {
        EXPECT_EQ(m.GetExposureTimeValue(), -1.0) << operation.name;  // closed
    }
    // The camera is free again for the next session.
    rig.device().setExtraFrameDelayMs(0);
    ASSERT_TRUE(m.Open(rig.info())) << operation.name;
    EXPECT_GT(m.GetExposureTimeValue(), 0.0);
    EXPECT_TRUE(m.Close());
}

INSTANTIATE_TEST_SUITE_P(
    LongOperations, InterruptedOperationTest,
    ::testing::Combine(::testing::Range(0, int(sizeof(kLongOperations) / sizeof(kLongOperations[0]))),
                       ::testing::Values(Interruption::Cancel, Interruption::Close)),
    [](const ::testing::TestParamInfo<std::tuple<int, Interruption>>& info) {
        return std::string(kLongOperations[std::get<0>(info.param)].name) +
               (std::get<1>(info.param) == Interruption::Cancel ? "_Cancel" : "_Close");
    });

}  // namespace
