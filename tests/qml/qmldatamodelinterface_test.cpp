#include "qmldatamodelinterface.h"

#include "colorcorrectionmodel.h"
#include "emulatedcamera.h"
#include "emulatedpool.h"
#include "guitestapp.h"
#include "pointtransformer.h"
#include "qmlexposuretime.h"
#include "qmlfiledialog.h"
#include "qmlgainvalue.h"
#include "qmlkaltocamera.h"
#include "qmltrapezoid.h"
#include "qmltrapezoidlist.h"

#include "chartprojection.h"
#include "genicam/nodemap.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlComponent>
#include <QQmlAbstractUrlInterceptor>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>

namespace {

using Log = QPair<QString, int>;

/// Loads a view of the live image and the grid alone where the facade asks for
/// the wizard, so that the facade's own rules are seen without the screens'
/// (the wizard's suite drives those).
class WizardStandIn : public QQmlAbstractUrlInterceptor {
public:
    QUrl intercept(const QUrl& url, DataType) override
    {
        return url == QUrl("qrc:/ColCal/main.qml") ? QUrl("qrc:/test/minimalview.qml") : url;
    }
};

/// The facade over the session of one emulated camera, as the plug-in builds
/// it: the session opened, then the facade with its view loaded.
class FacadeRig {
public:
    explicit FacadeRig(const QString& id) : id(id), model(pool.createModel())
    {
        pool.setFrameSize(id, 480, 300);
        opened = model->Open(pool.info(id));
        facade = std::make_unique<QmlDataModelInterface>(model.get());
        facade->view()->engine()->setUrlInterceptor(&standIn);
        facade->reset();
        QObject::connect(facade.get(), &QmlDataModelInterface::forwardLogMessage,
                         [this](QString text, Core::Logging::ELogLevel level) { logs << Log(text, int(level)); });
    }
    ~FacadeRig()
    {
        facade.reset();
        model->Close();
    }

    EmulatedCamera& device() { return pool.device(id); }

    bool waitForFirstFrame()
    {
        return QTest::qWaitFor([this] { return facade->camera()->originalSize() == QSize(480, 300); }, 10000);
    }

    /// Moves the outline over the emulated chart as a user dragging its corners would.
    void placeGridOnChart()
    {
        const CTrapezoid chart = pool.grid(id);
        PointTransformer* t = facade->transformer();
        QmlTrapezoid* outline = facade->gridOutline();
        outline->setUpperLeft(t->inverseTransform(chart.getTopLeft()));
        outline->setUpperRight(t->inverseTransform(chart.getTopRight()));
        outline->setLowerRight(t->inverseTransform(chart.getBottomRight()));
        outline->setLowerLeft(t->inverseTransform(chart.getBottomLeft()));
        facade->updateTrapezoidList();
    }

    QString file(const QString& name) const { return QDir(GuiTestApp::sandbox()).filePath(name); }

    QString id;
    WizardStandIn standIn;
    EmulatedPool pool;
    std::unique_ptr<ColorCorrectionModel> model;
    std::unique_ptr<QmlDataModelInterface> facade;
    QList<Log> logs;
    bool opened = false;
};

int maxCornerDistance(const CTrapezoid& a, const CTrapezoid& b)
{
    auto d = [](QPoint p, QPoint q) { return (p - q).manhattanLength(); };
    return std::max({d(a.getTopLeft(), b.getTopLeft()), d(a.getTopRight(), b.getTopRight()),
                     d(a.getBottomLeft(), b.getBottomLeft()), d(a.getBottomRight(), b.getBottomRight())});
}

TEST(QmlDataModelInterface, PublishesItsObjectsAndTypesToTheLoadedView)
{
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    QQuickView* view = rig.facade->view();
    EXPECT_EQ(view->status(), QQuickView::Ready) << view->errors().value(0).toString().toStdString();
    EXPECT_EQ(view->source(), QUrl("qrc:/ColCal/main.qml"));
    QQmlContext* context = view->rootContext();
    const QList<QPair<const char*, QObject*>> published = {
        {"qmlModelInterface", rig.facade.get()},       {"gridOutline", rig.facade->gridOutline()},
        {"camera", rig.facade->camera()},              {"grid", rig.facade->grid()},
        {"exposureTime", rig.facade->exposureTime()},  {"gainValue", rig.facade->gainValue()},
        {"transformer", rig.facade->transformer()}};
    for (const auto& p : published)
        EXPECT_EQ(context->contextProperty(p.first).value<QObject*>(), p.second) << p.first;

    QQmlComponent trapezoid(view->engine());
    trapezoid.setData("import com.ostrel.trapezoid 1.0\nTrapezoid {}", QUrl());
    std::unique_ptr<QObject> t(trapezoid.create());
    EXPECT_NE(qobject_cast<QmlTrapezoid*>(t.get()), nullptr);
    QQmlComponent dialog(view->engine());
    dialog.setData("import com.ostrel.filedialog 1.0\nQMLFileDialog { title: \"x\" }", QUrl());
    std::unique_ptr<QObject> d(dialog.create());
    EXPECT_NE(qobject_cast<QMLFileDialog*>(d.get()), nullptr);
    EXPECT_NE(view->engine()->imageProvider("cameraImageOriginal"), nullptr);
}

// Steps re-notify always, so that the wizard re-evaluates the step; the rest only on a change.
// reset() restarts the wizard without a signal and keeps the single-shot choice.
TEST(QmlDataModelInterface, PropertyNotificationAndResetRules)
{
    FacadeRig rig(EmulatedPool::kMedical);
    QmlDataModelInterface& f = *rig.facade;
    QSignalSpy step(&f, &QmlDataModelInterface::activeStepChanged);
    QSignalSpy grid(&f, &QmlDataModelInterface::showGridChanged);
    QSignalSpy single(&f, &QmlDataModelInterface::singleShotEnabledChanged);
    QSignalSpy file(&f, &QmlDataModelInterface::calibrationFileToSaveChanged);
    EXPECT_EQ(f.activeStep(), 1);
    f.setActiveStep(1);
    f.setActiveStep(1);
    f.forceReload();
    EXPECT_EQ(step.count(), 3);
    EXPECT_EQ(f.activeStep(), 1);
    for (int i = 0; i < 2; ++i) {
        f.setShowGrid(false);
        f.setSingleShotEnabled(true);
        f.setCalibrationFileToSave("a.pfs");
    }
    EXPECT_EQ(grid.count(), 1);
    EXPECT_EQ(single.count(), 1);
    EXPECT_EQ(file.count(), 1);
    EXPECT_EQ(f.gray80PercentHitRate(), 1000.0);
    EXPECT_EQ(f.kaltoStandardLocation(), "file:///" + QDir(GuiTestApp::sandbox()).filePath("home/Documents"));
    EXPECT_EQ(f.originalImageUrl(), "image://cameraImageOriginal/0_0");

    f.setActiveStep(3);
    f.setInitial(false);
    f.setPreviousCalibrationFile("p.pfs");
    f.setSummaryFileToSave("s");
    step.clear();
    grid.clear();
    f.reset();
    EXPECT_EQ(f.activeStep(), 1);
    EXPECT_TRUE(f.showGrid());
    EXPECT_TRUE(f.initial());
    EXPECT_TRUE(f.singleShotEnabled());
    EXPECT_TRUE(f.previousCalibrationFile().isEmpty());
    EXPECT_TRUE(f.summaryFileToSave().isEmpty());
    EXPECT_EQ(step.count(), 0);
    EXPECT_EQ(grid.count(), 0);
    EXPECT_EQ(f.view()->status(), QQuickView::Ready);
    EXPECT_EQ(f.exposureTime()->value(), -1);
}

struct DemoRow {
    QVariant demoMode;
    bool expected;
};

class QmlDataModelInterfaceDemo : public ::testing::TestWithParam<DemoRow> {};

TEST_P(QmlDataModelInterfaceDemo, AutoCalibrationFollowsDemoMode)
{
    FacadeRig rig(EmulatedPool::kMedical);
    GuiTestApp::clearPluginSettings();
    if (GetParam().demoMode.isValid())
        GuiTestApp::setPluginSetting("EnableDemoMode", GetParam().demoMode);
    EXPECT_EQ(rig.facade->hasAutoCalibration(), GetParam().expected);
    EXPECT_EQ(rig.facade->property("useAutoCalibration").toBool(), GetParam().expected);
    GuiTestApp::clearPluginSettings();
}

INSTANTIATE_TEST_SUITE_P(Rows, QmlDataModelInterfaceDemo,
                         ::testing::Values(DemoRow{QVariant(), false}, DemoRow{false, false}, DemoRow{true, true}));

TEST(QmlDataModelInterface, ForwardsTheSessionsAndCamerasNotifications)
{
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    QSignalSpy grabFailed(rig.facade.get(), &QmlDataModelInterface::forwardImageGrabFailed);
    QSignalSpy removed(rig.facade.get(), &QmlDataModelInterface::forwardCameraRemoved);
    emit rig.model->LogMessage("Camera is warm", Core::Logging::LogLevelWarning);
    QMetaObject::invokeMethod(rig.facade->camera(), "imageFailed");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !rig.logs.isEmpty(); }, 2000));
    EXPECT_EQ(rig.logs.first(), Log("Camera is warm", 2));
    EXPECT_EQ(grabFailed.count(), 1);

    rig.device().disconnect();
    ASSERT_TRUE(QTest::qWaitFor([&] { return removed.count() == 1; }, 5000));
}

TEST(QmlDataModelInterface, LoadSettingsReadsTheFileAndRefusesBadPaths)
{
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    rig.facade->camera()->stopGrab();
    Kalto::CNodeMap& map = rig.device().nodeMap();
    map.setEnum("ExposureAuto", "Off");
    map.setFloat("ExposureTime", 8000.0);
    const QString saved = rig.file("load.pfs");
    {
        QFile out(saved);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Text));
        out.write(rig.pool.settingsText(rig.id).toUtf8());
    }
    map.setFloat("ExposureTime", 2000.0);
    const QString changed = rig.pool.settingsText(rig.id);

    EXPECT_FALSE(rig.facade->loadSettings(rig.file("missing.pfs")));
    EXPECT_FALSE(rig.facade->loadSettings(GuiTestApp::sandbox()));  // a folder cannot be read as text
    EXPECT_EQ(rig.pool.settingsText(rig.id), changed);

    EXPECT_TRUE(rig.facade->loadSettings(saved));
    EXPECT_DOUBLE_EQ(map.getFloat("ExposureTime"), 8000.0);
}

TEST(QmlDataModelInterface, FailedSavesAreLoggedAsErrors)
{
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    rig.facade->camera()->stopGrab();
    const QString nowhere = "/proc/no/such/folder/settings.pfs";
    rig.facade->setCalibrationFileToSave(nowhere);
    rig.facade->setSummaryFileToSave("/proc/no/such/folder");
    EXPECT_FALSE(rig.facade->saveSettingsToFilePath());
    EXPECT_FALSE(rig.facade->saveSummaryToFilePath());
    rig.device().disconnect();  // the camera is gone when the user set is to be written
    EXPECT_FALSE(rig.facade->storeSettingsInUserSet("UserSet2"));
    ASSERT_EQ(rig.logs.size(), 3);
    EXPECT_EQ(rig.logs[0], Log(QString::fromUtf8("Settings couldn\u2019t be saved in ") + nowhere, 3));
    EXPECT_EQ(rig.logs[1], Log(QString::fromUtf8("Summary couldn\u2019t be saved in /proc/no/such/folder"), 3));
    EXPECT_EQ(rig.logs[2], Log(QString::fromUtf8("Settings couldn\u2019t be saved in UserSet2"), 3));
}

class QmlDataModelInterfaceCalibration : public ::testing::TestWithParam<const char*> {};

// The wizard's forward path through the facade alone, its searches and calibration
// threads included (this suite also runs under ThreadSanitizer).
TEST_P(QmlDataModelInterfaceCalibration, WholeCalibrationThroughTheInvokables)
{
    FacadeRig rig(GetParam());
    ASSERT_TRUE(rig.opened);
    QmlDataModelInterface& f = *rig.facade;

    // Step 1: the grid over the chart.
    ASSERT_TRUE(rig.waitForFirstFrame());
    rig.placeGridOnChart();
    ASSERT_EQ(f.grid()->count(), 24);
    EXPECT_LE(maxCornerDistance(rig.model->GetGridPosition(), rig.pool.grid(rig.id)), 4);

    // Step 1 to 2.
    f.camera()->stopGrab();
    // Step 1 to 2 as the wizard goes: backups, neutral settings, white balance, mono, no auto functions.
    ASSERT_TRUE(f.createSettingsBackup() && f.createSettingsBackup(true) && f.setNeutralSettings() &&
                f.executeWhitebalance());
    f.activateMonoImage();
    f.disableAutoFunctions();
    ASSERT_TRUE(f.exposureTime()->initialize());
    ASSERT_TRUE(f.gainValue()->initialize());

    // Step 2: automatic brightness.
    QSignalSpy adjusted(&f, &QmlDataModelInterface::autoAdjustGray80PercentPatchFinished);
    QSignalSpy hitRate(&f, &QmlDataModelInterface::gray80PercentHitRateChanged);
    QSignalSpy exposure(f.exposureTime(), &QMLExposureTime::signalValueChanged);
    ASSERT_TRUE(f.autoAdjustGray80PercentPatch());
    ASSERT_TRUE(adjusted.wait(180000));
    EXPECT_GT(hitRate.count(), 0);
    EXPECT_NEAR(f.gray80PercentHitRate(), 100.0, 10.0);
    EXPECT_GT(exposure.count(), 0);  // the slider followed the camera

    // Step 2 to 3.
    ASSERT_TRUE(f.storeDetectedExposureAndGain());
    ASSERT_TRUE(f.restoreSettingsBackup(true));
    ASSERT_TRUE(f.restoreDetectedExposureAndGain());
    ASSERT_TRUE(f.applyInitialCameraImageAndPatchValues());
    ASSERT_TRUE(f.setNeutralSettings());
    ASSERT_TRUE(f.restoreDetectedExposureAndGain());
    ASSERT_TRUE(f.applyInitialColorPatchValues());
    QSignalSpy calibrated(&f, &QmlDataModelInterface::calibrationFinished);
    ASSERT_TRUE(f.executeCalibrationAndApply());
    ASSERT_TRUE(calibrated.count() > 0 || calibrated.wait(10000));

    // Step 3: results; the wizard's suite drives the rest through the screens.
    const QJsonDocument results = QJsonDocument::fromJson(f.getCalibrationsResultsJson().toUtf8());
    ASSERT_TRUE(results.isObject());
    EXPECT_EQ(results.object(), rig.model->GetCalibrationsResultsJson());
    EXPECT_FALSE(results.object().isEmpty());
    EXPECT_EQ(f.property("calibrationsResultsJson").toString(), f.getCalibrationsResultsJson());
    EXPECT_TRUE(f.grid()->lastError().isEmpty());
    QSignalSpy finished(&f, &QmlDataModelInterface::signalFinished);
    f.finish();
    EXPECT_EQ(finished.count(), 1);
}

INSTANTIATE_TEST_SUITE_P(Cameras, QmlDataModelInterfaceCalibration,
                         ::testing::Values(EmulatedPool::kMedical, EmulatedPool::kCustom));

// With the chart in view the finder moves the outline onto it; with the chart out of the
// picture it says so and leaves the outline where the user had it.
class QmlDataModelInterfaceFinder : public ::testing::TestWithParam<bool> {};

TEST_P(QmlDataModelInterfaceFinder, MovesTheOutlineOnlyOntoAChartItFinds)
{
    const bool inView = GetParam();
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    QmlDataModelInterface& f = *rig.facade;
    ASSERT_TRUE(rig.waitForFirstFrame());
    if (!inView) {
        SceneGeometry away = rig.device().sceneGeometry();
        away.centreX = 5.0;
        rig.device().setSceneGeometry(away);
    }
    *f.grid()->outline() = CTrapezoid(QPoint(10, 10), QPoint(100, 12), QPoint(11, 80), QPoint(98, 79));
    const CTrapezoid before = *f.grid()->outline();
    QSignalSpy found(&f, &QmlDataModelInterface::autoChartFindFinished);
    QSignalSpy listed(f.grid(), &QmlTrapezoidList::listChanged);
    f.findChartAsync();
    ASSERT_TRUE(found.wait(60000));
    EXPECT_EQ(found.first().first().toBool(), inView);
    if (!inView) {
        EXPECT_EQ(*f.grid()->outline(), before);
        return;
    }
    EXPECT_LE(maxCornerDistance(*f.grid()->outline(), rig.pool.grid(rig.id)), 6);
    EXPECT_GE(listed.count(), 1);
    EXPECT_EQ(f.grid()->count(), 24);
}

INSTANTIATE_TEST_SUITE_P(ChartInView, QmlDataModelInterfaceFinder, ::testing::Bool());

TEST(QmlDataModelInterface, ChartFinderSaysNothingAfterAFailedGrab)
{
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    QmlDataModelInterface& f = *rig.facade;
    f.camera()->stopGrab();
    const CTrapezoid before = *f.grid()->outline();
    rig.model->Close();  // every grab fails now
    QSignalSpy found(&f, &QmlDataModelInterface::autoChartFindFinished);
    f.findChartAsync();
    f.findChart();
    EXPECT_FALSE(found.wait(1500));
    EXPECT_EQ(*f.grid()->outline(), before);
}

// Registered only as qml_minimal_view_screenshot, under xvfb-run: offscreen windows
// hand back no pixels and the software scene graph draws no video.
TEST(QmlDataModelInterface, MinimalViewShowsTheLiveImageAndTheGrid)
{
    FacadeRig rig(EmulatedPool::kMedical);
    ASSERT_TRUE(rig.opened);
    QmlDataModelInterface& f = *rig.facade;
    QQuickView* view = f.view();
    view->resize(640, 400);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view));
    ASSERT_TRUE(rig.waitForFirstFrame());
    ASSERT_TRUE(QTest::qWaitFor([&] { return f.camera()->size() == QSize(640, 400); }, 5000));
    rig.placeGridOnChart();
    QTest::qWait(1000);  // a few live frames at the view's size
    const QImage shot = view->grabWindow();
    ASSERT_FALSE(shot.isNull());
    const QString dir = COLCAL_SCREENSHOT_DIR;
    QDir().mkpath(dir);
    ASSERT_TRUE(shot.save(dir + "/qml_minimal_view.png"));

    // The outline is painted where the chart's corner lies; the live image fills the rest.
    const QPoint corner = f.transformer()->inverseTransform(rig.pool.grid(rig.id).getTopLeft());
    bool outlineSeen = false;
    for (int dy = -2; dy <= 2; ++dy)
        for (int dx = -2; dx <= 2; ++dx) {
            const QColor c = shot.pixelColor(corner + QPoint(dx, dy));
            outlineSeen |= c.red() > 200 && c.green() > 180 && c.blue() < 80;
        }
    EXPECT_TRUE(outlineSeen);
    const QColor red = shot.pixelColor(f.grid()->trapezoidAt(14)->center());  // the chart's red patch, live
    EXPECT_GT(red.red(), red.green() + 60);
    EXPECT_GT(red.red(), red.blue() + 60);
}

}  // namespace
