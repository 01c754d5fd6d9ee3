// The plug-in as the host loads it: from the built library through the plug-in
// manager, driven through its menu command, the selector and message boxes.
#include "modalanswer.h"

#include "guitestapp.h"
#include "viewerhost.h"

#include "appcore/icommand.h"
#include "appcore/imenu.h"
#include "appcore/imenuservice.h"
#include "cameramodel.h"
#include "camerapool/camerapool.h"
#include "cameraselector/deviceselectorservice.h"
#include "emulatedcamera.h"
#include "emulatortransportlayer.h"
#include "genicam/nodemap.h"
#include "kalto/transportlayerregistry.h"

#include <QAction>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQuickView>
#include <gtest/gtest.h>

#include <functional>

namespace {

using CameraInfoPtr = QSharedPointer<Plugin::CameraPool::ICameraInfo>;

// Something selectable in the host that is not a camera.
class OtherDevice : public Plugin::CameraPool::IBaseInfo {
public:
    QString deviceId() const override { return QStringLiteral("recorder-0"); }
    QString displayText() const override { return QStringLiteral("Recorder"); }
};

constexpr int kNoPipeline = -1;  // the camera has no DeviceColorPipelineVersion

const struct {
    const char* modelName;
    int pipeline;
    bool compatible;
} kModels[] = {
    {"kA1920-40ucMED Emulator", 2, true},            // medical: no pipeline test
    {"xcMED", kNoPipeline, true},
    {"Endoscope cMED-7", 0, true},                   // "cMED" anywhere
    {"kA1920-40ucmed", 1, false},                    // case-sensitive
    {"abA1920-40ucM", 1, true},                      // custom pattern
    {"abA1920-40ucM", 2, false},
    {"abA1920-40ucM", 0, false},
    {"abA1920-40ucM", kNoPipeline, false},
    {"Series 7 x9L1-123gcRGB mono", 1, true},        // unanchored, L, g
    {"a1A1-1ccZ", 1, true},                          // c then c
    {"abA12345-1ucM", 1, false},                     // five digits
    {"abA12-1ucm", 1, false},                        // no upper-case tail
    {"ABA12-1ucM", 1, false},                        // upper-case head
    {"abA12-1xcM", 1, false},                        // neither c, g nor u
    {"kA1920-40uc Emulation", 1, true},              // "Emulation"
    {"kA1280-30uc Emulation Legacy", 2, false},
    {"my emulation", 1, false},
    {"Generic Camera", 1, false},
};

class PluginTest : public ::testing::Test {
protected:
    void SetUp() override { GuiTestApp::clearPluginSettings(); }

    // A host over `models` with the plug-in loaded from the build.
    void startHost(std::vector<CameraModel> models)
    {
        layer = std::make_shared<EmulatorTransportLayer>(std::move(models));
        registry.add(layer);
        host = std::make_unique<ViewerHost>(registry);
        records = host->loadPlugins({QStringLiteral(COLCAL_PLUGIN_DIR)});
        if (auto* command = host->menus().command(Core::CId("ColorCalibration.Start")))
            action = qobject_cast<QAction*>(command->action());
    }

    void startDefaultHost()
    {
        std::vector<CameraModel> models = CameraModel::defaults();
        for (CameraModel& m : models)
            m.width = 480, m.height = 300;
        startHost(models);
    }

    void TearDown() override
    {
        if (host)
            host->unloadPlugins();
        host.reset();
    }

    CameraInfoPtr camera(const QString& id) { return host->pool().cameraInfo(id); }
    void select(const QString& id) { host->selector().select(camera(id)); }

    // Triggers the command; the calibrator's window, once shown, goes to
    // `whenShown` and is closed. Returns its title.
    QString triggerAndClose(const std::function<void(QWidget*)>& whenShown = {})
    {
        QString title;
        whenWindowAppears(isToolDialog, [&](QWidget* w) {
            title = w->windowTitle();
            if (whenShown)
                whenShown(w);
            w->close();
        });
        action->trigger();
        return title;
    }

    // Triggers the command with the message box that comes answered by
    // `button`; returns the box's text. No calibrator window may show.
    QString triggerAnsweringBox(QMessageBox::StandardButton button)
    {
        QString text;
        bool dialogShown = false;
        answerMessageBox(button, &text);
        whenWindowAppears(isToolDialog, [&](QWidget* w) {
            dialogShown = true;
            w->close();
        }, 3000);
        action->trigger();
        QTest::qWait(3100);  // the watcher has given up by now
        EXPECT_FALSE(dialogShown);
        return text;
    }

    Kalto::CTransportLayerRegistry registry;
    std::shared_ptr<EmulatorTransportLayer> layer;
    std::unique_ptr<ViewerHost> host;
    QList<Core::Plugin::PluginRecord> records;
    QPointer<QAction> action;
};

TEST_F(PluginTest, LoadsFromTheBuiltLibraryWithItsMetadataAndRegistersOneHiddenCommandInBothMenus)
{
    startDefaultHost();
    ASSERT_EQ(records.size(), 1);
    const Core::Plugin::PluginRecord& r = records.front();
    EXPECT_TRUE(r.running) << r.error.toStdString();
    EXPECT_EQ(r.name, "ColorCalibration");
    EXPECT_EQ(r.version, QVersionNumber(6, 2, 4));
    EXPECT_EQ(r.vendor, "Ostrel AG");
    EXPECT_EQ(r.description, "The color calibration plugin for the Ostrel medical cameras.");
    QStringList dependencies;
    for (const auto& d : r.dependencies)
        dependencies << d.first + " " + d.second.toString();
    EXPECT_EQ(dependencies, QStringList({"AppCore 1.2.4", "CameraPool 1.2.4", "CameraSelector 6.2.4",
                                         "DataProcessing 1.2.4", "DataProcessingCore 1.2.4", "ImageView 6.2.4",
                                         "KaltoViewer 6.2.4", "VideoRecording 6.2.4"}));

    Plugin::AppCore::ICommand* command = host->menus().command(Core::CId("ColorCalibration.Start"));
    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->contexts(), QList<Core::CId>({Core::CId("AppCore.Global.Context")}));
    EXPECT_TRUE(host->menus()
                    .menu(Core::CId("KaltoViewer.Menu.Tools"))
                    ->commands(Core::CId("KaltoViewer.Group.Tools.Tools"))
                    .contains(command));
    EXPECT_TRUE(host->menus()
                    .menu(Core::CId("KaltoViewer.CameraSelectorContextMenu"))
                    ->commands(Core::CId("KaltoViewer.Group.CameraSelectorContextMenu.Misc"))
                    .contains(command));
    ASSERT_TRUE(action);
    EXPECT_EQ(action->text(), "Color Calibrator");
    EXPECT_FALSE(action->icon().isNull());
    EXPECT_FALSE(action->isVisible());

    select("emu-cmed-0");
    EXPECT_TRUE(action->isVisible());
}

TEST_F(PluginTest, TheCommandIsShownExactlyForCompatibleModelNamesAndPipelineVersions)
{
    std::vector<CameraModel> models;
    for (size_t i = 0; i < std::size(kModels); ++i) {
        CameraModel m = CameraModel::defaults().front();
        m.id = "case-" + std::to_string(i);
        m.serialNumber = std::to_string(1000 + i);
        m.modelName = kModels[i].modelName;
        m.colorPipelineVersion = kModels[i].pipeline == kNoPipeline ? 1 : kModels[i].pipeline;
        m.width = 320, m.height = 200;
        models.push_back(m);
    }
    startHost(models);
    ASSERT_TRUE(action);
    for (size_t i = 0; i < std::size(kModels); ++i) {
        if (kModels[i].pipeline == kNoPipeline)
            layer->camera("case-" + std::to_string(i))
                ->nodeMap()
                .setAccessMode("DeviceColorPipelineVersion", Kalto::EAccessMode::NA);
    }
    for (size_t i = 0; i < std::size(kModels); ++i) {
        const QString id = QString::fromStdString("case-" + std::to_string(i));
        SCOPED_TRACE(std::string(kModels[i].modelName) + ", pipeline " + std::to_string(kModels[i].pipeline));
        select(id);
        EXPECT_EQ(action->isVisible(), kModels[i].compatible);
        // A device opened by anyone is judged again, hidden or shown as its model says.
        host->selector().select({});
        EXPECT_FALSE(action->isVisible());
        auto opened = host->pool().open(camera(id), false);
        ASSERT_TRUE(opened);
        EXPECT_EQ(action->isVisible(), kModels[i].compatible) << "opened";
        host->pool().release(opened);
    }
}

TEST_F(PluginTest, SelectingSomethingElseHidesTheCommandButTheCalibratorStillOpensOnTheLastCamera)
{
    startDefaultHost();
    select("emu-cmed-0");
    ASSERT_TRUE(action->isVisible());
    host->selector().select(QSharedPointer<Plugin::CameraPool::IBaseInfo>(new OtherDevice));
    EXPECT_FALSE(action->isVisible());

    EXPECT_EQ(triggerAndClose(), "Color Calibrator - " + camera("emu-cmed-0")->displayText());
    EXPECT_TRUE(host->pool().canGetExclusiveAccess(camera("emu-cmed-0")));
}

TEST_F(PluginTest, ABusyCameraIsStoppedOnlyWhenTheUserSaysYes)
{
    startDefaultHost();
    auto live = host->pool().open(camera("emu-custom-1"), false);
    ASSERT_TRUE(live);
    live->startGrabbing();
    select("emu-cmed-0");

    const QString question = triggerAnsweringBox(QMessageBox::No);
    EXPECT_TRUE(question.contains("you have to stop continuous image acquisition")) << question.toStdString();
    EXPECT_TRUE(live->isGrabbing());
    EXPECT_FALSE(host->pool().isCameraOpen(camera("emu-cmed-0")));

    answerMessageBox(QMessageBox::Yes);
    bool grabbingWhileShown = true;
    EXPECT_EQ(triggerAndClose([&](QWidget*) { grabbingWhileShown = live->isGrabbing(); }),
              "Color Calibrator - " + camera("emu-cmed-0")->displayText());
    EXPECT_FALSE(grabbingWhileShown);
    host->pool().release(live);
}

TEST_F(PluginTest, ACameraThatCannotBeOpenedGivesTheErrorBoxAndNoDialog)
{
    startDefaultHost();
    select("emu-cmed-0");
    layer->camera("emu-cmed-0")->disconnect();

    const QString text = triggerAnsweringBox(QMessageBox::Ok);
    EXPECT_FALSE(text.isEmpty());
    EXPECT_EQ(text, camera("emu-cmed-0")->errorDescription());
}

TEST_F(PluginTest, ASecondActivationReusesTheDialogAndRestartsTheWizardAtStepOne)
{
    startDefaultHost();
    auto facadeOf = [] {
        for (QWindow* w : QGuiApplication::allWindows())
            if (auto* view = qobject_cast<QQuickView*>(w))
                if (auto* facade = view->rootContext()->contextProperty("qmlModelInterface").value<QObject*>())
                    return facade;
        return static_cast<QObject*>(nullptr);
    };

    select("emu-cmed-0");
    QPointer<QWidget> first;
    triggerAndClose([&](QWidget* w) {
        first = w;
        facadeOf()->setProperty("activeStep", 3);
    });
    ASSERT_TRUE(first);

    select("emu-custom-1");
    QPointer<QWidget> second;
    int stepShown = 0;
    const QString title = triggerAndClose([&](QWidget* w) {
        second = w;
        stepShown = facadeOf()->property("activeStep").toInt();
    });
    EXPECT_EQ(second, first);
    EXPECT_EQ(stepShown, 1);
    EXPECT_EQ(title, "Color Calibrator - " + camera("emu-custom-1")->displayText());
    int dialogs = 0;
    for (QWidget* w : QApplication::topLevelWidgets())
        dialogs += isToolDialog(w);
    EXPECT_EQ(dialogs, 1);
    EXPECT_TRUE(host->pool().canGetExclusiveAccess(camera("emu-custom-1")));
}

}  // namespace
