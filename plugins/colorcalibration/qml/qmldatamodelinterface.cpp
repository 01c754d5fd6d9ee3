#include "qmldatamodelinterface.h"

#include "colorcorrectionautochartfinder.h"
#include "colorcorrectionmodel.h"
#include "originalimageprovider.h"
#include "pointtransformer.h"
#include "propertyvalue.h"
#include "qmlexposuretime.h"
#include "qmlfiledialog.h"
#include "qmlgainvalue.h"
#include "qmlkaltocamera.h"
#include "qmltrapezoid.h"
#include "qmltrapezoidlist.h"
#include "uiresources.h"

#include <QFile>
#include <QFutureSynchronizer>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QMutexLocker>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickView>
#include <QSettings>
#include <QStandardPaths>
#include <QTextStream>
#include <QtConcurrent>

#include <optional>

namespace {

const QUrl kMainQml("qrc:/ColCal/main.qml");

/// Busy cursor for the lifetime of a save or search.
class BusyCursor {
public:
    BusyCursor() { QGuiApplication::setOverrideCursor(Qt::BusyCursor); }
    ~BusyCursor() { QGuiApplication::restoreOverrideCursor(); }
};

}  // namespace

struct QmlDataModelInterface::Impl {
    explicit Impl(ColorCorrectionModel* m)
        : model(m), camera(m), imageProvider(new OriginalImageProvider(m)), grid(m, &transformer),
          gridOutline(grid.outline(), &transformer), exposureTime(m), gainValue(m)
    {
    }

    /// Grabs and searches; nothing when the grab fails. Any thread.
    std::optional<ColorCorrectionAutoChartFinderResult> locateChart()
    {
        QImage image;
        if (!model->GrabImage(image, false))
            return std::nullopt;
        return chartFinder.GetChartPosition(image);
    }

    ColorCorrectionModel* model;
    QMLKaltoCamera camera;
    OriginalImageProvider* imageProvider;
    PointTransformer transformer;
    QmlTrapezoidList grid;
    QmlTrapezoid gridOutline;
    QMLExposureTime exposureTime;
    QMLGainvalue gainValue;
    int activeStep = 1;
    bool showGrid = true;
    bool singleShotEnabled = false;
    bool initial = true;
    double gray80PercentHitRate = 1000.0;
    QMutex mutex;
    QJsonObject calibrationResults;
    QString previousCalibrationFile;
    QString calibrationFileToSave;
    QString summaryFileToSave;
    ColorCorrectionAutoChartFinder chartFinder;
    /// Kept only so that destruction waits for searches still running.
    QFutureSynchronizer<void> searches;
    // Last, so that the QML goes before the objects it binds to.
    std::unique_ptr<QQuickView> view;
};

QmlDataModelInterface::QmlDataModelInterface(ColorCorrectionModel* model) : d(new Impl(model))
{
    initUiResources();
    d->view = std::make_unique<QQuickView>();
    d->view->setResizeMode(QQuickView::SizeRootObjectToView);
    QQmlEngine* engine = d->view->engine();
    engine->clearComponentCache();
    qmlRegisterType<QmlTrapezoid>("com.ostrel.trapezoid", 1, 0, "Trapezoid");
    qmlRegisterType<QMLFileDialog>("com.ostrel.filedialog", 1, 0, "QMLFileDialog");
    engine->addImageProvider("cameraImageOriginal", d->imageProvider);
    QQmlContext* context = engine->rootContext();
    context->setContextProperty("qmlModelInterface", this);
    context->setContextProperty("gridOutline", &d->gridOutline);
    context->setContextProperty("camera", &d->camera);
    context->setContextProperty("grid", &d->grid);
    context->setContextProperty("exposureTime", &d->exposureTime);
    context->setContextProperty("gainValue", &d->gainValue);
    context->setContextProperty("transformer", &d->transformer);
    d->view->setSource(kMainQml);

    connect(model, SIGNAL(ExposureTimeValueChanged(double)), &d->exposureTime, SLOT(onChangedValue(double)));
    connect(model, SIGNAL(GainValueChanged(double)), &d->gainValue, SLOT(onChangedValue(double)));
    connect(model, SIGNAL(Gray80PercentHitRateChanged(double)), this, SLOT(onGray80PercentHitRateChanged(double)));
    connect(model, SIGNAL(CalibrationFinished()), this, SLOT(onCalibrationFinished()));
    connect(model, SIGNAL(AutoAdjustGray80PercentPatchFinished()), this,
            SLOT(onAutoAdjustGray80PercentPatchFinished()));
    connect(model, SIGNAL(cameraRemoved()), this, SLOT(onCameraRemoved()));
    connect(&d->camera, SIGNAL(imageFailed()), this, SIGNAL(forwardImageGrabFailed()));
    connect(model, SIGNAL(LogMessage(QString, Core::Logging::ELogLevel)), this,
            SIGNAL(forwardLogMessage(QString, Core::Logging::ELogLevel)));
}

QmlDataModelInterface::~QmlDataModelInterface()
{
    d->camera.stopGrab();
    d->searches.waitForFinished();
    d->view.reset();
}

int QmlDataModelInterface::activeStep() const
{
    return d->activeStep;
}

void QmlDataModelInterface::setActiveStep(int step)
{
    d->activeStep = step;
    emit activeStepChanged();
}

QString QmlDataModelInterface::originalImageUrl() const
{
    return QStringLiteral("image://cameraImageOriginal/%1_%2")
        .arg(d->imageProvider->generation())
        .arg(d->imageProvider->counter());
}

double QmlDataModelInterface::gray80PercentHitRate() const
{
    return d->gray80PercentHitRate;
}

QString QmlDataModelInterface::previousCalibrationFile() const
{
    return d->previousCalibrationFile;
}

void QmlDataModelInterface::setPreviousCalibrationFile(const QString& path)
{
    if (assignChanged(d->previousCalibrationFile, path))
        emit previousCalibrationFileChanged();
}

QString QmlDataModelInterface::calibrationFileToSave() const
{
    return d->calibrationFileToSave;
}

void QmlDataModelInterface::setCalibrationFileToSave(const QString& path)
{
    if (assignChanged(d->calibrationFileToSave, path))
        emit calibrationFileToSaveChanged();
}

QString QmlDataModelInterface::summaryFileToSave() const
{
    return d->summaryFileToSave;
}

void QmlDataModelInterface::setSummaryFileToSave(const QString& path)
{
    if (assignChanged(d->summaryFileToSave, path))
        emit summaryFileToSaveChanged();
}

bool QmlDataModelInterface::showGrid() const
{
    return d->showGrid;
}

void QmlDataModelInterface::setShowGrid(bool show)
{
    if (assignChanged(d->showGrid, show))
        emit showGridChanged();
}

bool QmlDataModelInterface::initial() const
{
    return d->initial;
}

void QmlDataModelInterface::setInitial(bool initial)
{
    if (assignChanged(d->initial, initial))
        emit initialChanged();
}

QString QmlDataModelInterface::kaltoStandardLocation() const
{
    return "file:///" + QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

bool QmlDataModelInterface::singleShotEnabled() const
{
    return d->singleShotEnabled;
}

void QmlDataModelInterface::setSingleShotEnabled(bool enabled)
{
    if (assignChanged(d->singleShotEnabled, enabled))
        emit singleShotEnabledChanged();
}

bool QmlDataModelInterface::hasAutoCalibration() const
{
    QSettings settings;
    settings.beginGroup("ColCalPlugin");
    return settings.value("EnableDemoMode", false).toBool();
}

void QmlDataModelInterface::reset()
{
    d->view->setSource(QUrl());
    d->view->engine()->clearComponentCache();
    d->imageProvider->reset();
    d->grid.reset();
    d->exposureTime.reset();
    d->gainValue.reset();
    d->showGrid = true;
    d->initial = true;
    d->activeStep = 1;
    d->previousCalibrationFile.clear();
    d->calibrationFileToSave.clear();
    d->summaryFileToSave.clear();
    d->view->setSource(kMainQml);
}

QQuickView* QmlDataModelInterface::view() const
{
    return d->view.get();
}

ColorCorrectionModel* QmlDataModelInterface::model() const
{
    return d->model;
}

QMLKaltoCamera* QmlDataModelInterface::camera() const
{
    return &d->camera;
}

QmlTrapezoidList* QmlDataModelInterface::grid() const
{
    return &d->grid;
}

QmlTrapezoid* QmlDataModelInterface::gridOutline() const
{
    return &d->gridOutline;
}

PointTransformer* QmlDataModelInterface::transformer() const
{
    return &d->transformer;
}

QMLExposureTime* QmlDataModelInterface::exposureTime() const
{
    return &d->exposureTime;
}

QMLGainvalue* QmlDataModelInterface::gainValue() const
{
    return &d->gainValue;
}

OriginalImageProvider* QmlDataModelInterface::imageProvider() const
{
    return d->imageProvider;
}

void QmlDataModelInterface::updateTrapezoidList()
{
    QMutexLocker lock(&d->mutex);
    d->grid.update();
}

void QmlDataModelInterface::grabOriginalImage()
{
    d->imageProvider->grabOriginalImage();
    emit originalImageUrlChanged();
}

bool QmlDataModelInterface::loadSettings(const QString& pfsString)
{
    QFile file(pfsString);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QTextStream in(&file);
    return d->model->LoadSettings(in.readAll());
}

void QmlDataModelInterface::cancel()
{
    d->model->StopGrab();
    d->model->RestoreSettingsBackup(false);
    emit signalCancel();
}

void QmlDataModelInterface::finish()
{
    d->model->StopGrab();
    emit signalFinished();
}

bool QmlDataModelInterface::setNeutralSettings()
{
    d->calibrationResults = QJsonObject();
    return d->model->SetNeutralSettings();
}

bool QmlDataModelInterface::saveSettingsToFilePath()
{
    BusyCursor busy;
    const QString& path = d->calibrationFileToSave;
    const bool saved = d->model->SaveSettingsToFilePath(path);
    if (saved)
        emit forwardLogMessage(tr("Settings have been saved successfully in ") + path, Core::Logging::LogLevelInfo);
    else
        emit forwardLogMessage(tr("Settings couldn\u2019t be saved in ") + path, Core::Logging::LogLevelError);
    return saved;
}

bool QmlDataModelInterface::storeSettingsInUserSet(const QString& userSetSelectorName, bool setAsDefault)
{
    BusyCursor busy;
    const bool stored = d->model->StoreSettingsInUserSet(userSetSelectorName, setAsDefault);
    if (stored)
        emit forwardLogMessage(tr("Settings were saved successfully in ") + userSetSelectorName,
                               Core::Logging::LogLevelInfo);
    else
        emit forwardLogMessage(tr("Settings couldn\u2019t be saved in ") + userSetSelectorName,
                               Core::Logging::LogLevelError);
    return stored;
}

bool QmlDataModelInterface::storeSettingsInUserSet(const QString& userSetSelectorName)
{
    return storeSettingsInUserSet(userSetSelectorName, false);
}

bool QmlDataModelInterface::saveSummaryToFilePath()
{
    BusyCursor busy;
    const QString& path = d->summaryFileToSave;
    const bool saved = d->model->SaveSummaryToFilePath(path);
    if (saved)
        emit forwardLogMessage(tr("Summary has been saved successfully in ") + path, Core::Logging::LogLevelInfo);
    else
        emit forwardLogMessage(tr("Summary couldn\u2019t be saved in ") + path, Core::Logging::LogLevelError);
    return saved;
}

void QmlDataModelInterface::getGridPosition()
{
    *d->grid.outline() = d->model->GetGridPosition();
}

bool QmlDataModelInterface::restoreSettingsBackup(bool intialImage)
{
    return d->model->RestoreSettingsBackup(intialImage);
}

bool QmlDataModelInterface::restoreSettingsBackup()
{
    return restoreSettingsBackup(false);
}

bool QmlDataModelInterface::createSettingsBackup(bool intialImage)
{
    return d->model->CreateSettingsBackup(intialImage);
}

bool QmlDataModelInterface::createSettingsBackup()
{
    return createSettingsBackup(false);
}

bool QmlDataModelInterface::restoreDetectedExposureAndGain()
{
    return d->model->RestoreDetectedExposureAndGain();
}

bool QmlDataModelInterface::storeDetectedExposureAndGain()
{
    return d->model->StoreDetectedExposureAndGain();
}

QString QmlDataModelInterface::getAvailableUserSets()
{
    return QString::fromUtf8(QJsonDocument(d->model->GetAvailableUserSetsJson()).toJson(QJsonDocument::Compact));
}

QString QmlDataModelInterface::getCalibrationsResultsJson() const
{
    return QString::fromUtf8(QJsonDocument(d->calibrationResults).toJson(QJsonDocument::Compact));
}

bool QmlDataModelInterface::autoAdjustGray80PercentPatch()
{
    return d->model->AutoAdjustGray80PercentPatch();
}

bool QmlDataModelInterface::executeCalibrationAndApply()
{
    return d->model->ExecuteCalibrationAndApply();
}

bool QmlDataModelInterface::executeWhitebalance()
{
    return d->model->ExecuteWhitebalance();
}

void QmlDataModelInterface::activateMonoImage()
{
    d->model->ActivateMonoImage();
}

bool QmlDataModelInterface::applyInitialColorPatchValues()
{
    return d->model->ApplyInitialColorPatchValues();
}

bool QmlDataModelInterface::applyInitialCameraImageAndPatchValues()
{
    return d->model->ApplyInitialCameraImageAndPatchValues();
}

void QmlDataModelInterface::disableAutoFunctions()
{
    d->model->DisableAutoFunctions();
}

void QmlDataModelInterface::forceReload()
{
    emit activeStepChanged();
}

void QmlDataModelInterface::findChart()
{
    BusyCursor busy;
    const auto found = d->locateChart();
    if (found)
        applyFoundChart(*found);
    d->camera.setForceShowBusyIndicator(false);
}

void QmlDataModelInterface::findChartAsync()
{
    d->camera.setForceShowBusyIndicator(true);
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    // The search runs on the pool; moving the outline and telling QML happens back on
    // this object's thread, because QML bindings on the outline must not run elsewhere.
    d->searches.addFuture(QtConcurrent::run([this] {
        const auto found = d->locateChart();
        QMetaObject::invokeMethod(
            this,
            [this, found] {
                if (found)
                    applyFoundChart(*found);
                d->camera.setForceShowBusyIndicator(false);
                QGuiApplication::restoreOverrideCursor();
            },
            Qt::QueuedConnection);
    }));
}

void QmlDataModelInterface::applyFoundChart(const ColorCorrectionAutoChartFinderResult& found)
{
    if (found.valid) {
        d->gridOutline.setUpperLeft(d->transformer.inverseTransform(found.topLeft));
        d->gridOutline.setUpperRight(d->transformer.inverseTransform(found.topRight));
        d->gridOutline.setLowerLeft(d->transformer.inverseTransform(found.bottomLeft));
        d->gridOutline.setLowerRight(d->transformer.inverseTransform(found.bottomRight));
        QMutexLocker lock(&d->mutex);
        d->grid.update();
    }
    emit autoChartFindFinished(found.valid);
}

void QmlDataModelInterface::onCameraRemoved()
{
    d->camera.stopGrab();
    emit forwardCameraRemoved();
}

void QmlDataModelInterface::onCalibrationFinished()
{
    d->grid.fetchColorPatchValues();
    d->calibrationResults = d->model->GetCalibrationsResultsJson();
    emit calibrationFinished();
}

void QmlDataModelInterface::onGray80PercentHitRateChanged(double hitRate)
{
    d->gray80PercentHitRate = hitRate;
    emit gray80PercentHitRateChanged(hitRate);
}

void QmlDataModelInterface::onAutoAdjustGray80PercentPatchFinished()
{
    emit autoAdjustGray80PercentPatchFinished();
}

void QmlDataModelInterface::LogMessage(QString message, Core::Logging::ELogLevel logLevel)
{
    emit forwardLogMessage(message, logLevel);
}
