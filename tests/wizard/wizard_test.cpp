// The calibrator window used as a person uses it: clicks and keys on the
// wizard's items, answers to its message boxes, and what the camera holds
// afterwards.
#include "wizardrig.h"

#include "../plugin/modalanswer.h"

#include "colorcorrectiontooldlg.h"
#include "chartprojection.h"
#include "emulatedcamera.h"
#include "emulatedpool.h"
#include "nonvolatilememory.h"
#include "guitestapp.h"
#include "qmldatamodelinterface.h"
#include "qmltrapezoidlist.h"

#include "genicam/nodemap.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QSettings>
#include <QUrl>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kTooBright =
    "The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.<br>";
const QString kTooBrightFailed =
    "The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve "
    "optimum brightness.<br>";

int filesUnder(const QString& dir, const QString& pattern)
{
    int n = 0;
    QDirIterator it(dir, {pattern}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        ++n;
    }
    return n;
}

// Steps 1 and 2 as a person does them: automatic grid, Next, Auto until the
// gauge reads just right.
void reachBrightnessStep(WizardRig& rig, bool autoBrightness)
{
    ASSERT_TRUE(rig.positionGridAutomatically());
    ASSERT_EQ(rig.messageText(), "");
    ASSERT_TRUE(rig.next());
    ASSERT_EQ(rig.messageText(), "");
    ASSERT_TRUE(rig.waitForStep(2));
    if (autoBrightness) {
        ASSERT_TRUE(rig.autoBrightness());
        EXPECT_EQ(rig.property("verdict", "text").toString(), "Just right");
    }
}

// Next, past the brightness warning if there is one, until `step` shows.
void nextTo(WizardRig& rig, int step)
{
    ASSERT_TRUE(rig.next());
    while (!rig.messageText().isEmpty())
        rig.answerMessage();
    ASSERT_TRUE(rig.waitForStep(step));
}

}  // namespace

class WholeCalibration : public ::testing::TestWithParam<const char*> {};

TEST_P(WholeCalibration, ThroughTheFourScreensSavesEverythingAndLeavesTheCameraCalibrated)
{
    const QString camera = GetParam();
    const bool screenshots = camera == EmulatedPool::kMedical;
    // The custom camera runs in demo mode, which offers an automatic recalibration on step 3.
    const bool demo = camera == EmulatedPool::kCustom;
    GuiTestApp::setPluginSetting("EnableDemoMode", demo);
    WizardRig rig(camera);
    const QString before = rig.settingsText();

    if (screenshots)
        rig.screenshot("wizard_step1");
    reachBrightnessStep(rig, true);
    if (screenshots)
        rig.screenshot("wizard_step2");

    ASSERT_TRUE(rig.next());
    ASSERT_EQ(rig.messageText(), "");
    ASSERT_TRUE(rig.waitForStep(3));
    ASSERT_TRUE(rig.waitFor([&] { return rig.property("reportRows", "count").toInt() == 24; }, 10000))
        << "the Colors report lists every patch";
    for (int i = 0; i < 24; ++i)
        EXPECT_TRUE(rig.facade().grid()->calibratedColorAt(i).isValid()) << i;
    ASSERT_TRUE(rig.item("recalibrateButton"));
    EXPECT_EQ(rig.item("recalibrateButton")->isVisible(), demo);
    if (demo) {
        rig.click("recalibrateButton");
        ASSERT_TRUE(rig.waitFor([&] { return rig.controlsEnabled(); }, 120000));
        EXPECT_EQ(rig.messageText(), "");
        EXPECT_EQ(rig.activeStep(), 3);
    }
    const QJsonObject results =
        QJsonDocument::fromJson(rig.facade().getCalibrationsResultsJson().toUtf8()).object();
    if (screenshots) {
        rig.hoverPatch(6);
        EXPECT_TRUE(rig.property("hoverText", "text").toString().startsWith("Patch07 R: "));
        rig.screenshot("wizard_step3");
        // The same screen on a full HD monitor.
        rig.dialog().resize(1920, 1080);
        QTest::qWait(300);
        rig.screenshot("wizard_step3_fullhd");
        rig.dialog().resize(800, 750);
    }

    rig.key(Qt::Key_Return);  // Next, by keyboard
    ASSERT_TRUE(rig.waitForStep(4));
    QTemporaryDir out;
    ASSERT_TRUE(rig.saveToFoldersAndFirstUserSet(out.path())) << rig.messageText().toStdString();
    if (screenshots)
        rig.screenshot("wizard_step4");
    EXPECT_EQ(filesUnder(out.filePath("settings"), "Calibrated.pfs"), 1);
    EXPECT_EQ(filesUnder(out.filePath("summary"), "calibration_report.html"), 1);
    const QString logged = rig.logLines().join("\n");
    EXPECT_TRUE(logged.contains("Settings have been saved successfully in " + out.filePath("settings"))) << logged.toStdString();
    EXPECT_TRUE(logged.contains("Summary has been saved successfully in " + out.filePath("summary"))) << logged.toStdString();
    EXPECT_TRUE(rig.logLines().contains("Settings were saved successfully in UserSet1")) << logged.toStdString();
    // The comparison shows the camera's image from before the calibration.
    EXPECT_EQ(rig.property("beforeImage", "sourceSize").toSize(), QSize(WizardRig::kFrameWidth, WizardRig::kFrameHeight));

    rig.click("nextButton");  // Finish
    ASSERT_TRUE(rig.waitForWindowClosed());
    EXPECT_EQ(rig.ended(), "finish");

    // The camera keeps what the results screen showed as its new settings.
    QString after = rig.settingsText();
    EXPECT_NE(after, before);
    GuiTestApp::setPluginSetting("EnableDemoMode", false);
    EXPECT_EQ(colourSettings(after), results.value("Calibrated").toObject());
    EXPECT_NE(results.value("Calibrated"), results.value("Original"));
}

INSTANTIATE_TEST_SUITE_P(Cameras, WholeCalibration,
                         ::testing::Values(EmulatedPool::kMedical, EmulatedPool::kCustom),
                         [](const auto& info) { return QString(info.param).remove('-').toStdString(); });

// Step 4's user set, as a person keeps a calibration in the camera: stored
// whether or not "Save settings as default" is ticked, and made the set the
// camera starts with only when it is.
TEST(SaveStep, UserSetIsStoredAndMadeTheStartUpSetOnlyWhenTicked)
{
    WizardRig rig(EmulatedPool::kMedical);
    reachBrightnessStep(rig, false);
    nextTo(rig, 3);
    nextTo(rig, 4);

    // Both files too: the wizard calls both writers on every Save and reports an empty path as a failure.
    QTemporaryDir out;
    rig.chooseFolder("saveSettings", out.filePath("settings"));
    rig.chooseFolder("saveSummary", out.filePath("summary"));
    EmulatedCamera& camera = rig.pool().device(EmulatedPool::kMedical);
    NonVolatileMemory memory(EmulatedPool::kMedical);  // the camera's flash, read as the next power-up reads it
    ASSERT_EQ(memory.path(), camera.memoryPath());
    memory.load();
    const std::string startupBefore = memory.startupSet();
    ASSERT_NE(startupBefore, "UserSet1");
    ASSERT_NE(startupBefore, "UserSet2");
    struct Case {
        int entry;  // in the list: None, UserSet1, UserSet2, UserSet3
        const char* set;
        bool asDefault;
    };
    for (const Case& c : {Case{1, "UserSet1", false}, Case{2, "UserSet2", true}}) {
        SCOPED_TRACE(c.set);
        // The entry by keyboard, the check box by Space.
        rig.click("userSetChoice");
        for (int i = rig.property("userSetChoice", "currentIndex").toInt(); i < c.entry; ++i)
            rig.key(Qt::Key_Down);
        rig.key(Qt::Key_Return);
        ASSERT_TRUE(rig.waitFor([&] { return rig.property("userSetChoice", "currentIndex").toInt() == c.entry; }, 5000));
        ASSERT_TRUE(rig.item("saveAsDefaultCheck")->isEnabled());
        if (rig.property("saveAsDefaultCheck", "checked").toBool() != c.asDefault) {
            rig.item("saveAsDefaultCheck")->forceActiveFocus();
            rig.key(Qt::Key_Space);
        }
        ASSERT_EQ(rig.property("saveAsDefaultCheck", "checked").toBool(), c.asDefault);
        rig.click("saveButton");
        ASSERT_TRUE(rig.waitFor(
            [&] {
                memory.load();
                return memory.hasSet(c.set);
            },
            30000))
            << rig.messageText().toStdString();
        EXPECT_EQ(rig.messageText(), "");
        EXPECT_TRUE(rig.property("saveStatus", "visible").toBool());
        EXPECT_TRUE(rig.logLines().contains(QString("Settings were saved successfully in %1").arg(c.set)))
            << rig.logLines().join("\n").toStdString();
        // The set holds the calibrated camera's colour settings; the start-up set changes only when ticked.
        EXPECT_EQ(colourSettings(QString::fromStdString(memory.set(c.set))), colourSettings(rig.settingsText()));
        EXPECT_EQ(memory.startupSet(), c.asDefault ? std::string(c.set) : startupBefore);
        EXPECT_EQ(camera.nodeMap().getEnum("UserSetDefault"), memory.startupSet());
        if (c.asDefault)
            rig.screenshot("wizard_step4_userset_default");
    }
    rig.click("nextButton");  // Finish
    ASSERT_TRUE(rig.waitForWindowClosed());
    EXPECT_EQ(rig.ended(), "finish");
}

// Leaving the wizard early: from step 2, 3 or 4 after confirming, or by the
// window's frame. Each also shows its screens in another language.
struct CancelCase {
    int step;
    const char* how;  // "escape", "button" or "frame"
    const char* language;
};

void PrintTo(const CancelCase& c, std::ostream* os)
{
    *os << "step " << c.step << " by " << c.how << " in " << c.language;
}

class Cancel : public ::testing::TestWithParam<CancelCase> {};

TEST_P(Cancel, LeavesTheCameraSettingsByteIdentical)
{
    const CancelCase c = GetParam();
    WizardRig rig(EmulatedPool::kMedical, c.language);
    const QString before = rig.settingsText();
    const QString suffix = QString("_") + c.language;

    reachBrightnessStep(rig, false);
    if (c.language != QString("en"))
        rig.screenshot("wizard_step2" + suffix);
    for (int step = 3; step <= c.step; ++step) {
        nextTo(rig, step);
        if (step == 3 && c.language != QString("en")) {
            rig.hoverPatch(6);
            rig.screenshot("wizard_step3" + suffix);
        }
    }
    ASSERT_NE(rig.settingsText(), before);

    if (QString(c.how) == "frame") {
        rig.closeByFrame();
    } else {
        if (QString(c.how) == "escape")
            rig.key(Qt::Key_Escape);
        else
            rig.click("cancelButton");
        ASSERT_TRUE(rig.waitForMessage(5000));
        EXPECT_EQ(rig.messageText(),
                  QCoreApplication::translate("functions", "If you cancel the color calibration, any changes you "
                                                           "made will be lost. The original settings will be "
                                                           "restored. ") +
                      "<br>" + QCoreApplication::translate("functions", "Do you really want to cancel?"));
        rig.screenshot(QString("wizard_cancel_question") + suffix);
        rig.answerMessage("messageBoxYes");
        EXPECT_EQ(rig.ended(), "cancel");
    }
    ASSERT_TRUE(rig.waitForWindowClosed());
    EXPECT_EQ(rig.settingsText().toStdString(), before.toStdString());
}

INSTANTIATE_TEST_SUITE_P(Steps, Cancel,
                         ::testing::Values(CancelCase{2, "escape", "en"}, CancelCase{3, "button", "ja"},
                                           CancelCase{4, "escape", "de"}, CancelCase{3, "frame", "en"}),
                         [](const auto& info) {
                             return QString("Step%1_%2_%3")
                                 .arg(info.param.step)
                                 .arg(info.param.how, info.param.language)
                                 .toStdString();
                         });

TEST(CancelOnStep1, AsksNothingAndChangesNothing)
{
    WizardRig rig(EmulatedPool::kCustom);
    const QString before = rig.settingsText();
    rig.key(Qt::Key_Escape);
    EXPECT_EQ(rig.ended(), "cancel");
    EXPECT_EQ(rig.messageText(), "");
    ASSERT_TRUE(rig.waitForWindowClosed());
    EXPECT_EQ(rig.settingsText().toStdString(), before.toStdString());
}

TEST(WizardFailures, ChartOutOfViewCannotBePositionedAutomatically)
{
    WizardRig rig(EmulatedPool::kMedical);
    SceneGeometry away = rig.pool().device(EmulatedPool::kMedical).sceneGeometry();
    away.centreX = 4.0;
    rig.pool().device(EmulatedPool::kMedical).setSceneGeometry(away);
    ASSERT_TRUE(rig.positionGridAutomatically());
    ASSERT_TRUE(rig.waitForMessage());
    EXPECT_EQ(rig.messageText(), "Grid could not be positioned automatically.");
    EXPECT_EQ(rig.messageTitle(), "Color Calibrator");
    rig.screenshot("wizard_message_warning");
    rig.answerMessage();
    EXPECT_TRUE(rig.waitForStep(1));
    EXPECT_TRUE(rig.item("nextButton")->isEnabled());
}

// A camera set so bright that the grey patches clip: no white balance can be
// computed from them.
TEST(WizardFailures, FailedWhiteBalanceEndsTheToolWithTheCameraRestored)
{
    WizardRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.positionGridAutomatically());
    ASSERT_EQ(rig.messageText(), "");
    Kalto::CNodeMap& features = rig.pool().device(EmulatedPool::kMedical).nodeMap();
    features.setEnum("ExposureAuto", "Off");
    features.setFloat("ExposureTime", 1000000.0);
    const QString before = rig.settingsText();
    rig.click("nextButton");
    ASSERT_TRUE(rig.waitForMessage());
    EXPECT_EQ(rig.messageText(),
              "The calibration process failed because the image is either too bright or too dark. Adjust the "
              "brightness and try again.");
    rig.answerMessage();
    ASSERT_TRUE(rig.waitForWindowClosed());
    EXPECT_EQ(rig.ended(), "cancel");
    EXPECT_EQ(rig.settingsText().toStdString(), before.toStdString());
}

// A camera settings file chosen on step 1 that is gone when Next is pressed:
// the wizard says so, stays on step 1 and the camera keeps its settings; the
// file's folder is remembered for the next choice.
TEST(WizardFailures, VanishedSettingsFileIsReportedAndChangesNothing)
{
    WizardRig rig(EmulatedPool::kMedical);
    const QString before = rig.settingsText();
    QTemporaryDir dir;
    const QString file = dir.filePath("previous.pfs");
    {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(before.toUtf8());
    }
    whenWindowAppears([](QWidget* w) { return qobject_cast<QFileDialog*>(w) != nullptr; },
                      [file](QWidget* w) {
                          w->activateWindow();
                          EXPECT_TRUE(QTest::qWaitForWindowActive(w));
                          auto* name = w->findChild<QLineEdit*>("fileNameEdit");
                          name->setFocus();
                          QTest::keyClicks(name, file);
                          QTest::keyClick(name, Qt::Key_Return);
                      });
    rig.click("loadSettingsButton");
    ASSERT_TRUE(rig.waitFor([&] { return rig.property("previousCalibrationFile", "text") == file; }, 20000));
    ASSERT_TRUE(QFile::remove(file));

    rig.click("nextButton");
    ASSERT_TRUE(rig.waitForMessage());
    EXPECT_EQ(rig.messageText(), "Could not load previous settings.");
    rig.answerMessage();
    EXPECT_TRUE(rig.waitForStep(1));
    EXPECT_EQ(rig.settingsText().toStdString(), before.toStdString());
    EXPECT_TRUE(rig.waitFor(
        [&] {
            return QSettings().value("ColCalPlugin/Paths/PreviousCalibration/folder").toUrl() ==
                   QUrl::fromLocalFile(dir.path());
        },
        5000));
}

TEST(WizardFailures, CameraUnpluggedOnStep2ShowsTheBoxAndClosesTheWindow)
{
    WizardRig rig(EmulatedPool::kCustom);
    reachBrightnessStep(rig, false);
    QString text;
    answerMessageBox(QMessageBox::Ok, &text);
    rig.pool().device(EmulatedPool::kCustom).disconnect();
    ASSERT_TRUE(rig.waitForWindowClosed(60000));
    EXPECT_EQ(text, "<p>The camera has been disconnected.<br/>Reconnect the camera to the computer and open it to "
                    "continue using the Color Calibrator.</p>");
}

// The gauge as the camera reports the grey patch's hit rate; the flags decide
// the warning on the way to step 3.
TEST(BrightnessGauge, NeedleVerdictAndFlagsFollowTheHitRate)
{
    WizardRig rig(EmulatedPool::kMedical);
    reachBrightnessStep(rig, false);
    rig.click("continuousShotCheck");  // no live measurement between the reported rates
    QTest::qWait(1500);                // but the one image the step still fetches
    QObject* wizard = rig.view().rootObject();
    struct Row {
        double rate;
        double angle;
        const char* verdict;
        bool dark, bright;
    };
    const Row rows[] = {
        {79, -42, "Too dark", true, false},
        {80, -40, "Too dark", false, false},  // exactly 20 away: a verdict but no flag
        {100, 0, "Just right", false, false},
        {160, 90, "Too bright", false, true},  // 120 degrees, clamped
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.rate);
        QMetaObject::invokeMethod(&rig.facade(), "onGray80PercentHitRateChanged", Q_ARG(double, r.rate));
        QCoreApplication::processEvents();
        EXPECT_DOUBLE_EQ(rig.property("gauge", "needleAngle").toDouble(), r.angle);
        EXPECT_TRUE(rig.item("needle")->isVisible());
        EXPECT_EQ(rig.property("verdict", "text").toString(), r.verdict);
        EXPECT_EQ(wizard->property("bImageToDark").toBool(), r.dark);
        EXPECT_EQ(wizard->property("bImageToBright").toBool(), r.bright);
    }

    // The longest exposure, by keyboard: too bright, and said so on the way to step 3.
    rig.click("exposureSlider");
    rig.key(Qt::Key_End);
    ASSERT_TRUE(rig.waitFor([&] { return rig.property("verdict", "text") == "Too bright"; }, 30000));
    ASSERT_TRUE(wizard->property("bImageToBright").toBool());
    ASSERT_TRUE(rig.next());
    ASSERT_TRUE(rig.waitForMessage());
    EXPECT_TRUE(rig.messageText() == kTooBright || rig.messageText() == kTooBrightFailed)
        << rig.messageText().toStdString();
    while (!rig.messageText().isEmpty())
        rig.answerMessage();
    EXPECT_FALSE(wizard->property("bImageToBright").toBool());
}
