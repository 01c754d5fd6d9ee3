#pragma once

#include "core/alocalizedplugin.h"
#include "camerapool/icamerainfo.h"

#include <QPointer>
#include <QSharedPointer>
#include <QTranslator>

class QAction;
class ColorCorrectionModel;
class ColorCorrectionToolDlg;
class QmlDataModelInterface;

namespace Plugin {
namespace ColorCalibration {

/// The calibrator as a plug-in of the camera viewer: offers "Color Calibrator"
/// for compatible cameras and runs the wizard on the selected one.
class CColorCalibrationPlugin : public Core::Plugin::ALocalizedPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID CORE_PLUGIN_IPLUGIN_IID FILE "ColorCalibration.json")
public:
    CColorCalibrationPlugin();
    ~CColorCalibrationPlugin() override;

    bool initialize(QPointer<Core::Plugin::IPluginInitializer> initializer) override;
    void postInitialize() override;
    bool unInitialize(QPointer<Core::Plugin::IPluginInitializer> initializer) override;
    /// Installs both catalogues of `language`, the tool's and the wizard's;
    /// true when at least one of them exists.
    bool setLanguage(const QString& language) override;

    bool isCompatibleCamera(QSharedPointer<Plugin::CameraPool::ICameraInfo> camera);

public slots:
    void onSelectionChanged(QSharedPointer<Plugin::CameraPool::IBaseInfo> info);
    void doAction();

protected:
    QString translationFile(const QString& language) const override;

private:
    template <class T>
    QSharedPointer<T> findService() const;

    QPointer<Core::Plugin::IPluginInitializer> initializer;
    QAction* startAction = nullptr;
    // Parented to the host's window, which may go first.
    QPointer<ColorCorrectionToolDlg> toolDialog;
    ColorCorrectionModel* model = nullptr;
    QmlDataModelInterface* qmlInterface = nullptr;
    QSharedPointer<Plugin::CameraPool::ICameraInfo> currentCamera;
    QTranslator calibrationTranslator;
    bool calibrationTranslatorInstalled = false;
};

}  // namespace ColorCalibration
}  // namespace Plugin
