#include "mainwindow.h"

#include "aboutpluginsdialog.h"
#include "cameraselectordock.h"
#include "featuresdock.h"
#include "liveview.h"
#include "logdock.h"
#include "menuids.h"
#include "menurenderer.h"
#include "viewerhost.h"

#include "appcore/imenu.h"
#include "appcore/imenuservice.h"
#include "camerapool/camerapool.h"
#include "cameraselector/deviceselectorservice.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>
#include <QStatusBar>

MainWindow::MainWindow(ViewerHost& host, QWidget* parent)
    : QMainWindow(parent),
      m_host(host),
      m_cameras(new CameraSelectorDock(host, this)),
      m_live(new LiveView(host, this)),
      m_features(new FeaturesDock(host, this)),
      m_log(new LogDock(this))
{
    setObjectName(QStringLiteral("kaltoViewerMainWindow"));
    setWindowTitle(tr("kalto Viewer"));
    setCentralWidget(m_live);
    addDockWidget(Qt::LeftDockWidgetArea, m_cameras);
    addDockWidget(Qt::RightDockWidgetArea, m_features);
    addDockWidget(Qt::BottomDockWidgetArea, m_log);
    resize(1400, 900);

    auto* exit = new QAction(tr("E&xit"), this);
    exit->setShortcut(QKeySequence::Quit);
    connect(exit, &QAction::triggered, this, &QWidget::close);
    registerCommand(exit, "KaltoViewer.Exit", MenuIds::File, MenuIds::FileExit);

    auto* open = new QAction(tr("&Open Camera"), this);
    connect(open, &QAction::triggered, this, [this] {
        auto camera = m_host.selector().selectedDevice().dynamicCast<Plugin::CameraPool::ICameraInfo>();
        m_live->openCamera(camera);
    });
    registerCommand(open, "KaltoViewer.OpenCamera", MenuIds::Camera, MenuIds::CameraOpen);
    m_host.menus().menu(Core::CId(MenuIds::CameraContext))
        ->addCommand(m_host.menus().command(Core::CId("KaltoViewer.OpenCamera")),
                     Core::CId(MenuIds::ContextOpen));
    auto* close = new QAction(tr("&Close Camera"), this);
    connect(close, &QAction::triggered, m_live, &LiveView::closeCamera);
    registerCommand(close, "KaltoViewer.CloseCamera", MenuIds::Camera, MenuIds::CameraOpen);
    registerCommand(m_live->singleShotAction(), "KaltoViewer.SingleShot", MenuIds::Camera,
                    MenuIds::CameraAcquisition);
    registerCommand(m_live->continuousShotAction(), "KaltoViewer.ContinuousShot", MenuIds::Camera,
                    MenuIds::CameraAcquisition);
    registerCommand(m_live->stopAction(), "KaltoViewer.Stop", MenuIds::Camera, MenuIds::CameraAcquisition);

    auto* about = new QAction(tr("About &Plug-ins..."), this);
    connect(about, &QAction::triggered, this, &MainWindow::showAboutPlugins);
    registerCommand(about, "KaltoViewer.AboutPlugins", MenuIds::Help, MenuIds::HelpAbout);

    addMenu(tr("&File"), MenuIds::File);
    addMenu(tr("&Camera"), MenuIds::Camera);
    addMenu(tr("&Tools"), MenuIds::Tools);
    addMenu(tr("&Help"), MenuIds::Help);

    connect(&m_host.selector(), &Plugin::CameraSelector::IDeviceSelectorService::selectionChanged, this,
            [this](QSharedPointer<Plugin::CameraPool::IBaseInfo> device) {
                // A non-camera item leaves the last camera's features in view.
                if (auto camera = device.dynamicCast<Plugin::CameraPool::ICameraInfo>())
                    m_features->showCamera(camera);
            });
    connect(m_cameras, &CameraSelectorDock::openRequested, m_live, &LiveView::openCamera);
    int cameras = 0;
    for (const QString& layer : m_host.pool().transportLayers())
        cameras += m_host.pool().cameras(layer).size();
    statusBar()->showMessage(tr("%n camera(s) found", nullptr, cameras));
}

MainWindow::~MainWindow() = default;

void MainWindow::registerCommand(QAction* action, const char* id, const char* menu, const char* group)
{
    auto* command = m_host.menus().registerAction(action, Core::CId(id), {Core::CId(MenuIds::GlobalContext)});
    m_host.menus().menu(Core::CId(menu))->addCommand(command, Core::CId(group));
}

void MainWindow::addMenu(const QString& title, const char* id)
{
    QMenu* menu = menuBar()->addMenu(title);
    menu->setObjectName(QString::fromLatin1(id));
    MenuRenderer::bind(menu, m_host.menus(), Core::CId(id));
}

bool MainWindow::openCameraById(const QString& deviceId)
{
    if (!m_cameras->selectCamera(deviceId))
        return false;
    return m_live->openCamera(m_host.pool().cameraInfo(deviceId));
}

void MainWindow::showAboutPlugins()
{
    AboutPluginsDialog dialog(m_host.plugins(), this);
    dialog.exec();
}
