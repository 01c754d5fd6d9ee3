#include "colorcalibrationplugin.h"

#include "colorcorrectionmodel.h"
#include "colorcorrectiontooldlg.h"
#include "kaltocompatibilityhelper.h"
#include "qmldatamodelinterface.h"

#include "appcore/imenu.h"
#include "appcore/imenuservice.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icameraenumerationservice.h"
#include "camerapool/icamerastatusservice.h"
#include "camerapool/icamerastreamcontrolservice.h"
#include "camerapool/ideviceparameterservice.h"
#include "camerapool/idevicestatusservice.h"
#include "cameraselector/ideviceselectorservice.h"
#include "core/ipluginitializer.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QIcon>
#include <QMessageBox>
#include <QPixmap>

namespace Plugin {
namespace ColorCalibration {

namespace {

const char* const kStartCommand = "ColorCalibration.Start";

QString catalogue(const char* name, const QString& language)
{
    return QStringLiteral(":/ColCal/translations/%1_%2.qm").arg(QLatin1String(name), language);
}

}  // namespace

}  // namespace ColorCalibration
}  // namespace Plugin

// Outside any namespace, as the resource initialiser must be; the action's
// icon and the catalogues setLanguage loads are needed before the wizard's
// objects, which register the first too, exist.
static void initResources()
{
    Q_INIT_RESOURCE(colcal_ui);
    Q_INIT_RESOURCE(colcal_translations);
}

namespace Plugin {
namespace ColorCalibration {

CColorCalibrationPlugin::CColorCalibrationPlugin()
{
    initResources();
}

CColorCalibrationPlugin::~CColorCalibrationPlugin()
{
    // The host unloads this library after deleting us; nothing of ours may
    // outlive it. The facade goes before the dialog, whose window container
    // would otherwise delete the facade's view under it.
    delete qmlInterface;
    delete toolDialog.data();
    if (calibrationTranslatorInstalled)
        QCoreApplication::removeTranslator(&calibrationTranslator);
    currentCamera.clear();
    initializer.clear();
}

bool CColorCalibrationPlugin::initialize(QPointer<Core::Plugin::IPluginInitializer> init)
{
    initializer = init;
    return true;
}

bool CColorCalibrationPlugin::unInitialize(QPointer<Core::Plugin::IPluginInitializer>)
{
    return true;
}

QString CColorCalibrationPlugin::translationFile(const QString& language) const
{
    return catalogue("ColorCorrectionToolPlugin", language);
}

bool CColorCalibrationPlugin::setLanguage(const QString& language)
{
    const bool tool = ALocalizedPlugin::setLanguage(language);
    if (calibrationTranslatorInstalled) {
        QCoreApplication::removeTranslator(&calibrationTranslator);
        calibrationTranslatorInstalled = false;
    }
    if (calibrationTranslator.load(catalogue("ColorCalibration", language)))
        calibrationTranslatorInstalled = QCoreApplication::installTranslator(&calibrationTranslator);
    // The action exists since postInitialize; actions do not retranslate themselves.
    if (startAction)
        startAction->setText(tr("Color Calibrator"));
    return tool || calibrationTranslatorInstalled;
}

template <class T>
QSharedPointer<T> CColorCalibrationPlugin::findService() const
{
    if (!initializer)
        return {};
    QList<QSharedPointer<Core::Service::IService>> services;
    {
        QReadLocker lock(&initializer->serviceLock());
        services = initializer->serviceList();
    }
    for (const auto& service : services)
        if (auto wanted = service.template dynamicCast<T>())
            return wanted;
    return {};
}

void CColorCalibrationPlugin::postInitialize()
{
    auto menuService = findService<Plugin::AppCore::IMenuService>();
    if (!menuService)
        return;
    Plugin::AppCore::IMenu* contextMenu =
        menuService->menu(Core::CId("KaltoViewer.CameraSelectorContextMenu"));
    Plugin::AppCore::IMenu* toolsMenu = menuService->menu(Core::CId("KaltoViewer.Menu.Tools"));

    startAction = new QAction(tr("Color Calibrator"), this);
    startAction->setVisible(false);
    startAction->setIcon(QIcon(QStringLiteral(":/ColCal/icons/cct_icon_22x22.png")));
    Plugin::AppCore::ICommand* command = menuService->registerAction(
        startAction, Core::CId(kStartCommand), {Core::CId("AppCore.Global.Context")});
    connect(startAction, &QAction::triggered, this, &CColorCalibrationPlugin::doAction);

    if (contextMenu)
        contextMenu->addCommand(command, Core::CId("KaltoViewer.Group.CameraSelectorContextMenu.Misc"));
    if (toolsMenu)
        toolsMenu->addCommand(command, Core::CId("KaltoViewer.Group.Tools.Tools"));

    if (auto selector = findService<Plugin::CameraSelector::IDeviceSelectorService>())
        connect(selector.data(), &Plugin::CameraSelector::IDeviceSelectorService::selectionChanged,
                this, &CColorCalibrationPlugin::onSelectionChanged);
    if (auto status = findService<Plugin::CameraPool::IDeviceStatusService>())
        connect(status.data(), &Plugin::CameraPool::IDeviceStatusService::deviceOpened, this,
                &CColorCalibrationPlugin::onSelectionChanged);
}

bool CColorCalibrationPlugin::isCompatibleCamera(QSharedPointer<Plugin::CameraPool::ICameraInfo> camera)
{
    if (!camera)
        return false;
    const QString modelName = camera->modelName();
    if (KaltoCompatibilityHelper::isMedicalCamera(modelName))
        return true;
    if (!KaltoCompatibilityHelper::isCustomCamera(modelName))
        return false;
    auto parameters = findService<Plugin::CameraPool::IDeviceParameterService>();
    if (!parameters)
        return false;
    try {
        auto collection = parameters->parameterCollection(camera);
        if (!collection)
            return false;
        auto version = collection->parameter(
            ParameterCollection::IntegerParameterName("DeviceColorPipelineVersion"));
        return !version->isNull() && version->isAvailable() && version->value() == 1;
    } catch (...) {
        // An unreadable version counts as an unknown pipeline.
        return false;
    }
}

void CColorCalibrationPlugin::onSelectionChanged(QSharedPointer<Plugin::CameraPool::IBaseInfo> info)
{
    auto camera = info.dynamicCast<Plugin::CameraPool::ICameraInfo>();
    if (startAction)
        startAction->setVisible(isCompatibleCamera(camera));
    if (camera)
        currentCamera = camera;
}

void CColorCalibrationPlugin::doAction()
{
    auto statusService = findService<Plugin::CameraPool::ICameraStatusService>();
    auto enumeration = findService<Plugin::CameraPool::ICameraEnumerationService>();
    auto streamControl = findService<Plugin::CameraPool::ICameraStreamControlService>();

    int busy = 0;
    if (enumeration && streamControl)
        for (const QString& layer : enumeration->transportLayers())
            for (const auto& camera : enumeration->cameras(layer))
                if (streamControl->isCameraInUse(camera))
                    ++busy;
    if (busy > 0) {
        QMessageBox question(QMessageBox::NoIcon, tr("Color Calibrator"),
                             tr("<p>To use the Color Calibrator, you have to stop continuous image "
                                "acquisition as well as any recordings.<p/>Do you want to stop the "
                                "camera and start using the Color Calibrator?"),
                             QMessageBox::Yes | QMessageBox::No, QApplication::activeWindow());
        question.setDefaultButton(QMessageBox::No);
        question.setIconPixmap(QPixmap(QStringLiteral(":/kaltoviewercomponents/Resources/Question_32.png")));
        if (question.exec() != QMessageBox::Yes)
            return;
        streamControl->stopAll();
    }

    if (!model) {
        model = new ColorCorrectionModel(this);
        model->injectCameraStatusService(statusService);
        if (initializer)
            model->injectCameraControlService(
                initializer->getService<Plugin::CameraPool::ICameraControlService>());
    }
    if (!qmlInterface)
        qmlInterface = new QmlDataModelInterface(model);

    if (!model->Open(currentCamera)) {
        QMessageBox error(QMessageBox::NoIcon, tr("Color Calibrator"),
                          currentCamera ? currentCamera->errorDescription() : QString(),
                          QMessageBox::Ok, QApplication::activeWindow());
        error.setIconPixmap(QPixmap(QStringLiteral(":/kaltoviewercomponents/Resources/Error_32.png")));
        error.exec();
        return;
    }

    // The facade loads the wizard when it is made, before any camera is open,
    // so even the first use starts it over: its first step reads the grid
    // position and the live image of the camera just opened.
    qmlInterface->reset();
    if (!toolDialog)
        toolDialog = new ColorCorrectionToolDlg(qmlInterface, QApplication::activeWindow());
    toolDialog->setWindowTitle(QStringLiteral("%1 - %2").arg(tr("Color Calibrator"),
                                                              currentCamera->displayText()));
    toolDialog->exec();
}

}  // namespace ColorCalibration
}  // namespace Plugin
