// The calibrator's window over a real session and facade on the emulated
// medical camera: log lines by level, the grab warning, the removed camera
// and every way of closing it releasing the camera.
#include "modalanswer.h"

#include "colorcorrectionmodel.h"
#include "colorcorrectiontooldlg.h"
#include "emulatedcamera.h"
#include "emulatedpool.h"
#include "qmldatamodelinterface.h"

#include "camerapool/camerapool.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

struct LogLine {
    QtMsgType type;
    QString category;
    QString text;
};

QList<LogLine>* g_lines = nullptr;

void capture(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (g_lines && text.startsWith("@{"))
        g_lines->append({type, QString::fromLatin1(context.category), text});
}

class ToolDialogTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        pool.setFrameSize(EmulatedPool::kMedical, 480, 300);
        model = pool.createModel();
        facade = std::make_unique<QmlDataModelInterface>(model.get());
        dialog = std::make_unique<ColorCorrectionToolDlg>(facade.get(), nullptr);
        g_lines = &lines;
        previous = qInstallMessageHandler(capture);
    }
    void TearDown() override
    {
        qInstallMessageHandler(previous);
        g_lines = nullptr;
        facade.reset();  // its view first, as the plug-in does
        dialog.reset();
        model->Close();
    }

    bool cameraReleased() { return pool.pool().canGetExclusiveAccess(pool.info(EmulatedPool::kMedical)); }

    void openAndShow()
    {
        ASSERT_TRUE(model->Open(pool.info(EmulatedPool::kMedical)));
        ASSERT_FALSE(cameraReleased());
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    }

    EmulatedPool pool;
    std::unique_ptr<ColorCorrectionModel> model;
    std::unique_ptr<QmlDataModelInterface> facade;
    std::unique_ptr<ColorCorrectionToolDlg> dialog;
    QList<LogLine> lines;
    QtMessageHandler previous = nullptr;
};

TEST_F(ToolDialogTest, LogMessagesGoOutByLevelAndOutOfRangeLevelsAreDroppedAndASlowGrabOnlyWarns)
{
    struct Case {
        int level;
        bool written;
        QtMsgType type;
    };
    const Case cases[] = {{0, true, QtDebugMsg},     {1, true, QtInfoMsg},     {2, true, QtWarningMsg},
                          {3, true, QtCriticalMsg},  {4, true, QtCriticalMsg},
                          // The enumeration's other representable values.
                          {5, false, QtDebugMsg},    {7, false, QtDebugMsg}};
    for (const Case& c : cases) {
        lines.clear();
        const QString text = QStringLiteral("Gain set to %1<br>dB ✓").arg(c.level);
        emit facade->forwardLogMessage(text, Core::Logging::ELogLevel(c.level));
        if (!c.written) {
            EXPECT_TRUE(lines.isEmpty()) << "level " << c.level;
            continue;
        }
        ASSERT_EQ(lines.size(), 1) << "level " << c.level;
        EXPECT_EQ(lines[0].type, c.type) << "level " << c.level;
        EXPECT_EQ(lines[0].category, "default");
        EXPECT_EQ(lines[0].text, "@{kalto Color Calibrator};" + text);
    }
    lines.clear();
    dialog->addLogMessage("plain");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0].type, QtInfoMsg);

    // A slow grab is only a warning in the log.
    lines.clear();
    emit facade->forwardImageGrabFailed();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0].type, QtWarningMsg);
    EXPECT_EQ(lines[0].text, "@{kalto Color Calibrator};Image acquisition is slowed down by certain parameter "
                             "settings in the camera, e.g., exposure time.");
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(ToolDialogTest, EveryWayOfClosingCleansUpTheWizardAndReleasesTheCamera)
{
    const std::vector<std::pair<const char*, std::function<void()>>> ways = {
        {"window frame", [this] { dialog->close(); }},
        {"Escape", [this] { QTest::keyClick(dialog.get(), Qt::Key_Escape); }},
        {"wizard cancel", [this] { facade->cancel(); }},
        {"wizard finish", [this] { facade->finish(); }},
    };
    for (const auto& way : ways) {
        openAndShow();
        QSignalSpy cleanups(facade.get(), &QmlDataModelInterface::cleanupQML);
        QSignalSpy finished(dialog.get(), &QDialog::finished);
        way.second();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog->isVisible(); }, 5000)) << way.first;
        EXPECT_EQ(finished.count(), 1) << way.first;
        EXPECT_EQ(cleanups.count(), 1) << way.first;
        EXPECT_TRUE(cameraReleased()) << way.first;
    }
}

TEST_F(ToolDialogTest, ADisconnectedCameraIsReportedAndTheWindowCloses)
{
    openAndShow();
    QString text;
    answerMessageBox(QMessageBox::Ok, &text);
    pool.device(EmulatedPool::kMedical).disconnect();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog->isVisible(); }, 20000));
    EXPECT_EQ(text, "<p>The camera has been disconnected.<br/>Reconnect the camera to the computer and open it "
                    "to continue using the Color Calibrator.</p>");
    EXPECT_FALSE(pool.pool().isCameraOpen(pool.info(EmulatedPool::kMedical)));
}

}  // namespace
