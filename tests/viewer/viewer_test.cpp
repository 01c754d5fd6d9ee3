// kaltoviewer in a real X server, used with mouse and keyboard: the camera
// list, the live view, the features, the log, the plug-in's command in the
// Tools menu and the calibrator window it opens.
#include "gevcameraprocess.h"
#include "guitestapp.h"
#include "loopbackonly.h"
#include "modalanswer.h"
#include "wizardrig.h"

#include "aboutpluginsdialog.h"
#include "cameraselectordock.h"
#include "featureeditor.h"
#include "featuresdock.h"
#include "kaltoviewer.h"
#include "liveview.h"
#include "logdock.h"
#include "mainwindow.h"
#include "viewerhost.h"

#include "arvtransportlayer.h"
#include "emulatortransportlayer.h"

#include "camerapool/camerapool.h"
#include "parametercollection/commandparameter.h"
#include "parametercollection/enumparameter.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QDoubleSpinBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenuBar>
#include <QPainter>
#include <QQmlContext>
#include <QQuickView>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeWidget>
#include <gtest/gtest.h>

#include <cmath>
#include <unistd.h>

namespace {

const char* const kCameras[] = {"emu-cmed-0", "emu-custom-1", "emu-legacy-2"};

void screenshot(const QString& name)
{
    QDir().mkpath(QStringLiteral(COLCAL_SCREENSHOT_DIR));
    QTest::qWait(300);  // let the last frames and the window manager settle
    QPixmap shot = QGuiApplication::primaryScreen()->grabWindow(0);
    ASSERT_FALSE(shot.isNull());
    // The X server's copy of a Qt Quick window can lag behind its scene;
    // each one's own rendering goes on top where it lies on the screen.
    QPainter painter(&shot);
    for (QWindow* window : QGuiApplication::allWindows())
        if (auto* quick = qobject_cast<QQuickWindow*>(window); quick && quick->isExposed())
            painter.drawImage(quick->mapToGlobal(QPoint(0, 0)), quick->grabWindow());
    painter.end();
    ASSERT_TRUE(shot.save(QStringLiteral(COLCAL_SCREENSHOT_DIR "/") + name));
}

class ViewerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        KaltoViewer::Options options;
        options.pluginFolders = QStringList{QStringLiteral(COLCAL_PLUGIN_DIR)};
        viewer = std::make_unique<KaltoViewer>(options);
        for (const char* id : kCameras) {
            auto collection = host().pool().parameterCollection(host().pool().cameraInfo(id));
            collection->parameter(ParameterCollection::IntegerParameterName("Width"))->setValue(960);
            collection->parameter(ParameterCollection::IntegerParameterName("Height"))->setValue(600);
        }
        ASSERT_TRUE(viewer->start());
        window().resize(1500, 950);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
    }
    void TearDown() override { viewer.reset(); }

    MainWindow& window() { return viewer->window(); }
    ViewerHost& host() { return viewer->host(); }
    QTreeWidget* cameraList() { return window().cameraSelector()->tree(); }

    QTreeWidgetItem* cameraItem(const QString& id)
    {
        const QString text = host().pool().cameraInfo(id)->displayText();
        const auto found = cameraList()->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? nullptr : found.front();
    }

    void clickCamera(const QString& id, bool twice = false)
    {
        QTreeWidgetItem* item = cameraItem(id);
        ASSERT_NE(item, nullptr) << id.toStdString();
        const QPoint at = cameraList()->visualItemRect(item).center();
        QTest::mouseClick(cameraList()->viewport(), Qt::LeftButton, {}, at);
        if (twice)
            QTest::mouseDClick(cameraList()->viewport(), Qt::LeftButton, {}, at);
    }

    void clickToolButton(QAction* action)
    {
        QToolButton* button = nullptr;
        for (auto* b : window().liveView()->findChildren<QToolButton*>())
            if (b->defaultAction() == action)
                button = b;
        ASSERT_NE(button, nullptr) << action->text().toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // Opens a menu of the menu bar by its title, as a click would.
    QMenu* openMenu(const QString& title)
    {
        for (QAction* a : window().menuBar()->actions())
            if (a->text().remove('&') == title) {
                QTest::mouseClick(window().menuBar(), Qt::LeftButton, {},
                                  window().menuBar()->actionGeometry(a).center());
                // A menu that never opens fails the caller's next step, which names it.
                return QTest::qWaitFor([a] { return a->menu()->isVisible(); }, 3000) ? a->menu() : nullptr;
            }
        return nullptr;
    }

    QAction* menuEntry(QMenu* menu, const QString& text)
    {
        for (QAction* a : menu->actions())
            if (a->text() == text)
                return a;
        return nullptr;
    }

    std::unique_ptr<KaltoViewer> viewer;
};

TEST_F(ViewerTest, ListsTheEmulatedCamerasAndShowsALiveImageOfTheOpenedOne)
{
    for (const char* id : kCameras)
        EXPECT_NE(cameraItem(id), nullptr) << id;

    QSignalSpy frames(window().liveView(), &LiveView::frameShown);
    clickCamera("emu-cmed-0", true);
    ASSERT_TRUE(window().liveView()->camera());
    ASSERT_TRUE(frames.wait(10000));  // opening shows a first frame
    ASSERT_TRUE(QTest::qWaitFor([&] { return window().liveView()->singleShotAction()->isEnabled(); }, 5000));
    clickToolButton(window().liveView()->singleShotAction());
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames.count() >= 2; }, 10000));
    const QImage image = window().liveView()->lastImage();
    EXPECT_EQ(image.size(), QSize(960, 600));
    // A real picture of the chart scene, not a flat buffer.
    EXPECT_NE(image.pixel(image.width() / 2, image.height() / 2), image.pixel(5, 5));

    // The single frame's acquisition ends on its own a moment after the frame.
    ASSERT_TRUE(QTest::qWaitFor([&] { return window().liveView()->continuousShotAction()->isEnabled(); }, 5000));
    clickToolButton(window().liveView()->continuousShotAction());
    EXPECT_TRUE(QTest::qWaitFor([&] { return frames.count() >= 4; }, 20000));
    EXPECT_TRUE(window().liveView()->camera()->isGrabbing());
    EXPECT_FALSE(window().liveView()->continuousShotAction()->isEnabled());
    screenshot(QStringLiteral("viewer_main.png"));
    clickToolButton(window().liveView()->stopAction());
    EXPECT_FALSE(window().liveView()->camera()->isGrabbing());
}

TEST_F(ViewerTest, TheFeaturesDockEditsTheSelectedCamerasFeatures)
{
    clickCamera("emu-custom-1");
    QTreeWidget* tree = window().features()->tree();
    QStringList kinds;
    QTreeWidgetItem* floatItem = nullptr;
    FeatureEditor* floatEditor = nullptr;
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if (auto* editor = qobject_cast<FeatureEditor*>(tree->itemWidget(*it, 1))) {
            kinds << editor->kind();
            auto* box = editor->findChild<QDoubleSpinBox*>();
            if (!floatEditor && editor->kind() == "Float" && box && box->isEnabled() &&
                box->maximum() - box->minimum() > 2.0) {
                floatEditor = editor;
                floatItem = *it;
            }
        }
    for (const char* kind : {"Float", "Integer", "Enumeration", "Boolean", "Command"})
        EXPECT_TRUE(kinds.contains(kind)) << kind;
    ASSERT_NE(floatEditor, nullptr);

    // Type a value in the middle of the range shown, as a user would.
    auto* box = floatEditor->findChild<QDoubleSpinBox*>();
    const double wanted = std::floor((box->minimum() + box->maximum()) / 2.0);
    tree->scrollToItem(floatItem);
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, QString::number(wanted, 'f', 0));
    QTest::keyClick(box, Qt::Key_Return);
    auto parameter = host().pool().parameterCollection(host().pool().cameraInfo("emu-custom-1"))
                         ->parameter(ParameterCollection::FloatParameterName(floatEditor->featureName()));
    EXPECT_NEAR(parameter->value(), wanted, parameter->increment() + 1e-9) << floatEditor->featureName().toStdString();
}

TEST_F(ViewerTest, TheLogDockShowsTaggedLinesWithTheirSource)
{
    qWarning("@{Test source};first<br>second");
    qWarning("untagged");
    QTreeWidget* log = window().log()->list();
    ASSERT_TRUE(QTest::qWaitFor([&] { return log->topLevelItemCount() > 0; }, 3000));
    QTreeWidgetItem* last = log->topLevelItem(log->topLevelItemCount() - 1);
    EXPECT_EQ(last->text(2), "Test source");
    EXPECT_EQ(last->text(3), "first second");
    EXPECT_EQ(last->text(1), "Warning");
}

TEST_F(ViewerTest, AboutPluginsListsTheCalibratorAsRunning)
{
    QStringList row;
    whenWindowAppears([](QWidget* w) { return qobject_cast<AboutPluginsDialog*>(w) != nullptr; },
                      [&](QWidget* w) {
                          QTreeWidgetItem* item = static_cast<AboutPluginsDialog*>(w)->list()->topLevelItem(0);
                          for (int c = 0; item && c < 4; ++c)
                              row << item->text(c);
                          w->close();
                      });
    QMenu* help = openMenu("Help");
    ASSERT_NE(help, nullptr);
    QAction* about = menuEntry(help, "About &Plug-ins...");
    ASSERT_NE(about, nullptr);
    QTest::mouseClick(help, Qt::LeftButton, {}, help->actionGeometry(about).center());
    EXPECT_EQ(row, QStringList({"ColorCalibration", "6.2.4", "Ostrel AG", "Running"}));
}

TEST_F(ViewerTest, TheToolsMenuOffersTheCalibratorOnlyForCompatibleCamerasAndOpensIt)
{
    clickCamera("emu-legacy-2");
    QMenu* tools = openMenu("Tools");
    ASSERT_NE(tools, nullptr);
    QAction* calibrator = menuEntry(tools, "Color Calibrator");
    ASSERT_NE(calibrator, nullptr);
    EXPECT_FALSE(calibrator->isVisible());
    QTest::keyClick(tools, Qt::Key_Escape);

    // The camera's own context menu offers it as soon as a supported camera is under the mouse.
    QStringList contextEntries;
    whenWindowAppears([](QWidget* w) { return qobject_cast<QMenu*>(w) != nullptr; }, [&](QWidget* w) {
        for (QAction* a : w->actions())
            if (a->isVisible() && !a->isSeparator())
                contextEntries << a->text();
        w->close();
    });
    const QPoint at = cameraList()->visualItemRect(cameraItem("emu-cmed-0")).center();
    QContextMenuEvent rightClick(QContextMenuEvent::Mouse, at, cameraList()->viewport()->mapToGlobal(at));
    QApplication::sendEvent(cameraList()->viewport(), &rightClick);
    EXPECT_TRUE(contextEntries.contains("Color Calibrator")) << contextEntries.join(", ").toStdString();

    clickCamera("emu-cmed-0", true);
    // Opening takes one frame first; Continuous Shot is offered once it is in.
    ASSERT_TRUE(QTest::qWaitFor([&] { return window().liveView()->continuousShotAction()->isEnabled(); }, 10000));
    clickToolButton(window().liveView()->continuousShotAction());
    QSignalSpy frames(window().liveView(), &LiveView::frameShown);
    ASSERT_TRUE(frames.wait(10000));

    tools = openMenu("Tools");
    ASSERT_NE(tools, nullptr);
    EXPECT_TRUE(calibrator->isVisible());
    QString question, title;
    int outlineWidth = 0;
    answerMessageBox(QMessageBox::Yes, &question);
    whenWindowAppears(isToolDialog, [&](QWidget* w) {
        title = w->windowTitle();
        w->resize(1000, 800);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(w));
        // Until the wizard's live image has its first frame.
        QObject* liveCamera = nullptr;
        for (QWindow* window : QGuiApplication::allWindows())
            if (auto* view = qobject_cast<QQuickView*>(window))
                liveCamera = view->rootContext()->contextProperty("camera").value<QObject*>();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return liveCamera && !liveCamera->property("originalSize").toSize().isEmpty(); }, 20000));
        QTest::qWait(1500);
        screenshot(QStringLiteral("viewer_calibrator.png"));
        // The wizard was made before the camera was open; its first step still
        // shows the grid of the camera just opened, not a point.
        for (QWindow* window : QGuiApplication::allWindows())
            if (auto* view = qobject_cast<QQuickView*>(window))
                if (QObject* outline = view->rootContext()->contextProperty("gridOutline").value<QObject*>())
                    outlineWidth = outline->property("lowerRight").toPoint().x() -
                                   outline->property("upperLeft").toPoint().x();
        w->close();
    });
    QTest::mouseClick(tools, Qt::LeftButton, {}, tools->actionGeometry(calibrator).center());
    EXPECT_TRUE(question.contains("stop continuous image acquisition"));
    EXPECT_EQ(title, "Color Calibrator - " + host().pool().cameraInfo("emu-cmed-0")->displayText());
    EXPECT_GT(outlineWidth, 100);
    // Closed again: the calibrator gave its hold back, the viewer keeps its own.
    EXPECT_TRUE(host().pool().isCameraOpen(host().pool().cameraInfo("emu-cmed-0")));
    EXPECT_FALSE(window().liveView()->camera()->isGrabbing());
}

// kaltoviewer --genicam beside kalto-gev-camera on loopback: the GigE Vision
// camera picked in the camera selector and calibrated through the wizard's
// four steps. Only in a loopback-only network namespace (ctest label genicam).
class GevViewerTest : public ViewerTest {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        GuiTestApp::instance();
        ASSERT_TRUE(m_server.start("V" + std::to_string(::getpid())))
            << m_server.error();
        m_id = QString::fromStdString(m_server.id());
        // What --genicam does.
        EmulatorTransportLayer::registerDefault();
        ArvTransportLayer::registerDefault();
        ViewerTest::SetUp();
    }

    // The calibrator window, from step 1 to Finish, as a person goes through it;
    // the results screen's JSON and how the wizard ended go to m_results and m_ended.
    void goThroughTheWizard(QWidget* window)
    {
        window->resize(1000, 800);
        QQuickView* view = nullptr;
        for (QWindow* w : QGuiApplication::allWindows())
            if (auto* v = qobject_cast<QQuickView*>(w); v && v->rootContext()->contextProperty("qmlModelInterface").isValid())
                view = v;
        ASSERT_NE(view, nullptr);
        WizardRig rig(*view, *qobject_cast<QDialog*>(window));
        EXPECT_TRUE(rig.waitForLiveImage());
        rig.screenshot("gev_wizard_step1");
        ASSERT_TRUE(rig.positionGridAutomatically());
        ASSERT_EQ(rig.messageText(), "");
        ASSERT_TRUE(rig.next());
        ASSERT_TRUE(rig.waitForStep(2)) << rig.messageText().toStdString();
        ASSERT_TRUE(rig.autoBrightness());
        EXPECT_EQ(rig.property("verdict", "text").toString(), "Just right");
        EXPECT_TRUE(rig.waitForLiveImage());
        rig.screenshot("gev_wizard_step2");
        ASSERT_TRUE(rig.next());
        ASSERT_EQ(rig.messageText(), "");
        ASSERT_TRUE(rig.waitForStep(3));
        ASSERT_TRUE(rig.waitFor([&] { return rig.property("reportRows", "count").toInt() == 24; }, 10000));
        EXPECT_TRUE(rig.waitForLiveImage());
        rig.screenshot("gev_wizard_step3");
        QObject* facade = view->rootContext()->contextProperty("qmlModelInterface").value<QObject*>();
        m_results = QJsonDocument::fromJson(facade->property("calibrationsResultsJson").toString().toUtf8()).object();
        rig.key(Qt::Key_Return);  // Next, by keyboard
        ASSERT_TRUE(rig.waitForStep(4));
        // Kept in the camera's first user set, and in files.
        QTemporaryDir out;
        ASSERT_TRUE(rig.saveToFoldersAndFirstUserSet(out.path())) << rig.messageText().toStdString();
        EXPECT_EQ(rig.messageText(), "");
        rig.screenshot("gev_wizard_step4");
        rig.click("nextButton");  // Finish
        ASSERT_TRUE(rig.waitForWindowClosed());
        m_ended = rig.ended();
    }

    GevCameraProcess m_server;
    QString m_id;
    QJsonObject m_results;
    QString m_ended;
};

TEST_F(GevViewerTest, TheWizardCalibratesTheGigEVisionCameraThroughItsFourSteps)
{
    auto parameters = host().pool().parameterCollection(host().pool().cameraInfo(m_id));
    ASSERT_TRUE(parameters) << "the selector's pool does not list " << m_id.toStdString();
    // Frames the sanitizer build renders and sends in a reasonable time.
    parameters->parameter(ParameterCollection::IntegerParameterName("Width"))->setValue(960);
    parameters->parameter(ParameterCollection::IntegerParameterName("Height"))->setValue(600);
    clickCamera(m_id, true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window().liveView()->continuousShotAction()->isEnabled(); }, 60000));
    const auto camera = window().liveView()->camera();
    const QString before = camera->saveSettings();

    QMenu* tools = openMenu("Tools");
    ASSERT_NE(tools, nullptr);
    QAction* calibrator = menuEntry(tools, "Color Calibrator");
    ASSERT_TRUE(calibrator && calibrator->isVisible());
    whenWindowAppears(isToolDialog, [this](QWidget* w) { goThroughTheWizard(w); });
    QTest::mouseClick(tools, Qt::LeftButton, {}, tools->actionGeometry(calibrator).center());
    EXPECT_EQ(m_ended, "finish");

    // The camera, still the viewer's, holds what the results screen showed.
    const QString after = camera->saveSettings();
    EXPECT_NE(after, before);
    EXPECT_EQ(colourSettings(after), m_results.value("Calibrated").toObject());
    EXPECT_NE(m_results.value("Calibrated"), m_results.value("Original"));
    // ... and so does its first user set: loaded over a changed gamma, the same colour settings.
    parameters->parameter(ParameterCollection::FloatParameterName("Gamma"))->setValue(1.0);
    parameters->parameter(ParameterCollection::EnumParameterName("UserSetSelector"))->setValue("UserSet1");
    parameters->parameter(ParameterCollection::CommandParameterName("UserSetLoad"))->execute();
    EXPECT_EQ(colourSettings(camera->saveSettings()), m_results.value("Calibrated").toObject());
}

}  // namespace
