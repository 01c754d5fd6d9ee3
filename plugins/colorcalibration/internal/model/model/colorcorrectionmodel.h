#pragma once

#include "calibrationinterface.h"
#include "calibrationresultsinterface.h"
#include "camerainterface.h"

#include "core/eloglevel.h"
#include "publishedchartedition.h"

#include <QObject>
#include <QSharedPointer>

class ColorCorrectionModelImpl;

namespace Plugin {
namespace CameraPool {
class ICameraControlService;
class ICameraStatusService;
}  // namespace CameraPool
}  // namespace Plugin

/// The calibration session of one camera: forwards every operation to its
/// implementation and re-emits its signals, so listeners may live in any thread.
class ColorCorrectionModel : public QObject,
                             public CameraInterface,
                             public CalibrationInterface,
                             public CalibrationResultsInterface {
    Q_OBJECT
public:
    explicit ColorCorrectionModel(QObject* parent = nullptr);
    ~ColorCorrectionModel() override;

    QJsonObject GetCalibrationsResultsJson() override;
    QJsonObject GetAvailableUserSetsJson() override;
    bool StoreSettingsInUserSet(const QString& userSet, bool setAsDefault) override;
    bool SaveSettingsToFilePath(const QString& path) override;
    bool SaveSummaryToFilePath(const QString& path) override;
    bool AutoAdjustGray80PercentPatch() override;
    CTrapezoid GetGridPosition() override;
    void SetGridPositon(const CTrapezoid& grid) override;
    void GetColorPatchPositions(QVector<CTrapezoid>& positions) override;
    void GetColorPatchInitialValues(QVector<QColor>& values) override;
    void GetColorPatchTargetValues(QVector<QColor>& values) override;
    int GetColorPatchValues(QVector<QColor>& values, bool forceGrab) override;
    void GetColorPatchCurrentValues(QVector<QColor>& values) override;
    bool GetCameraInitialImage(QImage& image) override;
    bool ApplyInitialColorPatchValues() override;
    bool ApplyInitialCameraImageAndPatchValues() override;
    bool ExecuteCalibrationAndApply() override;
    bool GetExposureTimeRange(double& min, double& value, double& max) override;
    bool SetExposureTimeValue(double exposureUs) override;
    double GetExposureTimeValue() override;
    bool GetGainRange(double& min, double& value, double& max) override;
    bool SetGainValue(double gain) override;
    double GetGainValue() override;
    bool ExecuteWhitebalance() override;
    bool RestoreDetectedExposureAndGain() override;
    bool StoreDetectedExposureAndGain() override;
signals:
    void Gray80PercentHitRateChanged(double hitRate);
    void ExposureTimeValueChanged(double exposureUs);
    void GainValueChanged(double gain);
    void GridPositionChanged();
    void CalibrationFinished();
    void AutoAdjustGray80PercentPatchFinished();
    /// A line for the host's log window; the session's own lines still go to the Qt logger.
    void LogMessage(QString message, Core::Logging::ELogLevel logLevel);

public:
    bool Open(QSharedPointer<Plugin::CameraPool::ICameraInfo> cameraInfo) override;
    bool Close() override;
    bool GrabImage(QImage& image, bool grabNew) override;
    bool StopGrab() override;
    bool LoadSettings(const QFile& file) override;
    bool LoadSettings(const QString& settings) override;
    bool SetNeutralSettings() override;
    bool CreateSettingsBackup(bool flag) override;
    bool RestoreSettingsBackup(bool flag) override;
    bool ActivateMonoImage() override;

signals:
    void cameraRemoved();

public:
    void injectCameraControlService(QSharedPointer<Plugin::CameraPool::ICameraControlService> service);
    void injectCameraStatusService(QSharedPointer<Plugin::CameraPool::ICameraStatusService> service);
    bool DisableAutoFunctions();
    /// Ends a running brightness loop after its current round and waits for it.
    bool StopAutoAdjustGray80PercentPatch();
    /// Which published chart values the report's extra error picture compares
    /// with (post-2014 unless set); the report's tables keep the engine's targets.
    void SetPublishedChartEdition(PublishedChartEdition edition);

private:
    ColorCorrectionModelImpl* m_impl;
};

