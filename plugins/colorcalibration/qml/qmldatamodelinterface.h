#pragma once

#include "core/eloglevel.h"

#include <QObject>
#include <QString>

#include <memory>

class ColorCorrectionModel;
struct ColorCorrectionAutoChartFinderResult;
class OriginalImageProvider;
class PointTransformer;
class QMLExposureTime;
class QMLGainvalue;
class QMLKaltoCamera;
class QmlTrapezoid;
class QmlTrapezoidList;
class QQuickView;

/// The one object through which the wizard reaches the calibration session:
/// owns the QML view and the objects published to it, turns the session's
/// operations into invokables with log texts and forwards its notifications.
class QmlDataModelInterface : public QObject {
    Q_OBJECT
    /// 1 to 4. Writing always notifies, even the same value, so the wizard re-evaluates the step.
    Q_PROPERTY(int activeStep READ activeStep WRITE setActiveStep NOTIFY activeStepChanged)
    Q_PROPERTY(QString originalImageUrl READ originalImageUrl NOTIFY originalImageUrlChanged)
    /// Brightest channel of the 80 % grey patch in percent of its target; 1000 until measured.
    Q_PROPERTY(double gray80PercentHitRate READ gray80PercentHitRate NOTIFY gray80PercentHitRateChanged)
    Q_PROPERTY(QString previousCalibrationFile READ previousCalibrationFile WRITE setPreviousCalibrationFile NOTIFY
                   previousCalibrationFileChanged)
    Q_PROPERTY(QString calibrationFileToSave READ calibrationFileToSave WRITE setCalibrationFileToSave NOTIFY
                   calibrationFileToSaveChanged)
    Q_PROPERTY(QString summaryFileToSave READ summaryFileToSave WRITE setSummaryFileToSave NOTIFY
                   summaryFileToSaveChanged)
    Q_PROPERTY(bool showGrid READ showGrid WRITE setShowGrid NOTIFY showGridChanged)
    Q_PROPERTY(bool initial READ initial WRITE setInitial NOTIFY initialChanged)
    Q_PROPERTY(QString calibrationsResultsJson READ getCalibrationsResultsJson NOTIFY calibrationsResultsJsonChanged)
    Q_PROPERTY(bool useAutoCalibration READ hasAutoCalibration NOTIFY useAutoCalibrationChanged)
    Q_PROPERTY(QString kaltoStandardLocation READ kaltoStandardLocation NOTIFY kaltoStandardLocationChanged)
    Q_PROPERTY(bool singleShotEnabled READ singleShotEnabled WRITE setSingleShotEnabled NOTIFY
                   singleShotEnabledChanged)
public:
    /// `model` is not owned and must outlive this object.
    explicit QmlDataModelInterface(ColorCorrectionModel* model);
    ~QmlDataModelInterface() override;

    int activeStep() const;
    void setActiveStep(int step);
    QString originalImageUrl() const;
    double gray80PercentHitRate() const;
    QString previousCalibrationFile() const;
    void setPreviousCalibrationFile(const QString& path);
    QString calibrationFileToSave() const;
    void setCalibrationFileToSave(const QString& path);
    QString summaryFileToSave() const;
    void setSummaryFileToSave(const QString& path);
    bool showGrid() const;
    void setShowGrid(bool show);
    bool initial() const;
    void setInitial(bool initial);
    QString kaltoStandardLocation() const;
    bool singleShotEnabled() const;
    void setSingleShotEnabled(bool enabled);
    /// The persistent demo-mode switch.
    bool hasAutoCalibration() const;
    /// Back to step 1 with a freshly loaded wizard, for the next camera.
    void reset();

    QQuickView* view() const;
    /// The session the wizard drives (not owned).
    ColorCorrectionModel* model() const;
    QMLKaltoCamera* camera() const;
    QmlTrapezoidList* grid() const;
    QmlTrapezoid* gridOutline() const;
    PointTransformer* transformer() const;
    QMLExposureTime* exposureTime() const;
    QMLGainvalue* gainValue() const;
    OriginalImageProvider* imageProvider() const;

    Q_INVOKABLE void updateTrapezoidList();
    Q_INVOKABLE void grabOriginalImage();
    /// `pfsString` is the path of a camera settings file.
    Q_INVOKABLE bool loadSettings(const QString& pfsString);
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void finish();
    Q_INVOKABLE bool setNeutralSettings();
    Q_INVOKABLE bool saveSettingsToFilePath();
    Q_INVOKABLE bool storeSettingsInUserSet(const QString& userSetSelectorName, bool setAsDefault);
    Q_INVOKABLE bool storeSettingsInUserSet(const QString& userSetSelectorName);
    Q_INVOKABLE bool saveSummaryToFilePath();
    Q_INVOKABLE void getGridPosition();
    Q_INVOKABLE bool restoreSettingsBackup(bool intialImage);
    Q_INVOKABLE bool restoreSettingsBackup();
    Q_INVOKABLE bool createSettingsBackup(bool intialImage);
    Q_INVOKABLE bool createSettingsBackup();
    Q_INVOKABLE bool restoreDetectedExposureAndGain();
    Q_INVOKABLE bool storeDetectedExposureAndGain();
    Q_INVOKABLE QString getAvailableUserSets();
    Q_INVOKABLE QString getCalibrationsResultsJson() const;
    Q_INVOKABLE bool autoAdjustGray80PercentPatch();
    Q_INVOKABLE bool executeCalibrationAndApply();
    Q_INVOKABLE bool executeWhitebalance();
    Q_INVOKABLE void activateMonoImage();
    Q_INVOKABLE bool applyInitialColorPatchValues();
    Q_INVOKABLE bool applyInitialCameraImageAndPatchValues();
    Q_INVOKABLE void disableAutoFunctions();
    Q_INVOKABLE void forceReload();
    /// Grabs, finds the chart and moves the outline there; blocks.
    Q_INVOKABLE void findChart();
    /// findChart() on the global thread pool, with the busy indicator forced on meanwhile.
    Q_INVOKABLE void findChartAsync();

public slots:
    void onCameraRemoved();
    void onCalibrationFinished();
    void onGray80PercentHitRateChanged(double hitRate);
    void onAutoAdjustGray80PercentPatchFinished();
    void LogMessage(QString message, Core::Logging::ELogLevel logLevel);

signals:
    void activeStepChanged();
    void originalImageUrlChanged();
    void gray80PercentHitRateChanged(double hitRate);
    void previousCalibrationFileChanged();
    void calibrationFileToSaveChanged();
    void summaryFileToSaveChanged();
    void showGridChanged();
    void initialChanged();
    void calibrationsResultsJsonChanged();
    void useAutoCalibrationChanged();
    void kaltoStandardLocationChanged();
    void singleShotEnabledChanged();

    void signalCancel();
    void signalFinished();
    void cleanupQML();
    void autoAdjustGray80PercentPatchFinished();
    void autoChartFindFinished(bool valid);
    void calibrationFinished();
    void forwardCameraRemoved();
    void forwardImageGrabFailed();
    void forwardLogMessage(QString message, Core::Logging::ELogLevel logLevel);

private:
    void applyFoundChart(const ColorCorrectionAutoChartFinderResult& found);

    struct Impl;
    std::unique_ptr<Impl> d;
};
