#pragma once

#include "calibrationinterface.h"
#include "calibrationresultsinterface.h"
#include "camerainterface.h"

#include "dataprocessing/image.h"
#include "publishedchartedition.h"

#include <QPointer>
#include <QSharedPointer>
#include <QThread>
#include <QVariant>

#include <dlib/matrix.h>

#include <functional>
#include <memory>
#include <mutex>

class CalibrationResult;
class CameraJustify;
class ChartDiscriminator;
class ColorCalibrationV1;
class ConvertingImageCamera;
class ExposureGainControl;

namespace Plugin {
namespace CameraPool {
class ICamera;
class ICameraControlService;
class ICameraStatusService;
}  // namespace CameraPool
}  // namespace Plugin

/// The calibration session of one camera. Its thread runs only an event loop;
/// every operation runs in the caller's thread under one recursive lock held
/// for the whole operation, so the wizard and the brightness worker can both
/// call in. No exception leaves an operation: failures are logged and give
/// false, -1.0 or an empty object.
///
/// A grab waits in a local event loop, which on the GUI thread delivers clicks
/// while the grabbing operation is still on the stack. Calls arriving that way
/// are not run inside it: Close, RestoreSettingsBackup (cancel) and StopGrab
/// are queued, return true and run in order as soon as the running operation
/// returns; reads and the exposure, gain and grid setters are served; every
/// other operation is refused (false, 0 or an empty object, with a warning).
class ColorCorrectionModelImpl : public QThread,
                                 public CameraInterface,
                                 public CalibrationInterface,
                                 public CalibrationResultsInterface {
    Q_OBJECT
public:
    ColorCorrectionModelImpl();
    ~ColorCorrectionModelImpl() override;

    void run() override;

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

public:
    bool Open(QSharedPointer<Plugin::CameraPool::ICameraInfo> cameraInfo) override;
    bool Close() override;
    bool GrabImage(QImage& image, bool grabNew) override;
    bool StopGrab() override;
    bool LoadSettings(const QFile& file) override;
    /// `settings` is the feature-persistence text itself, not a path.
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
    /// Ends a running brightness loop after its current round and waits for it;
    /// Close and RestoreSettingsBackup do this first. Not from the loop's own thread.
    /// Gives up with false after CameraJustify::kAutoBrightnessStopTimeoutMs.
    bool StopAutoAdjustGray80PercentPatch();
    void SetPublishedChartEdition(PublishedChartEdition edition);
    /// The grab behind GrabImage(QImage&): the shared image with both pixel buffers.
    bool GrabImage(Plugin::DataProcessing::CImage& image, bool grabNew);

    /// The engine chart of `colors`, as chartFromColors makes it for every reader.
    static dlib::matrix<double, 24, 3> convertQColorsToMatrix(QVector<QColor>& colors, bool linearise);
    /// The inverse: each row (0..255) as a colour, sRGB-encoded first when `toSRGB` is set.
    static QVector<QColor> convertMatrixToQColors(const dlib::matrix<double, 24, 3>& matrix, bool toSRGB);
    /// "R: 0.4521 G: 0.3180 B: 0.2655".
    static QString createRgbFQString(const QColor& color);

private slots:
    void onConnectionLost();
    void onExposureTimeValueChanged(QVariant data);
    void onGainValueChanged(QVariant data);

private:
    class Call;
    bool isCameraOpen();
    void forgetMeasurements();
    void initializeNodemapConnections();
    void storeLastGridPosition();
    void restoreLastGridPosition();
    void deleteCameraObjects();
    QString cameraText() const;

    QPointer<ConvertingImageCamera> m_camera;
    bool m_exclusiveAccess = false;
    bool m_connectionLost = false;
    CameraJustify* m_cameraJustify = nullptr;
    ColorCalibrationV1* m_engine;
    std::unique_ptr<ExposureGainControl> m_exposureGain;
    ChartDiscriminator* m_discriminator;
    QVector<QColor> m_calibrationInput;
    QVector<QColor> m_currentValues;
    QVector<QColor> m_initialValues;
    double m_whiteBalance[3] = {1.0, 1.0, 1.0};
    dlib::matrix<double, 3, 3> m_matrix;
    dlib::matrix<double, 12, 1> m_bc6x2;
    double m_gamma = 1.0;
    bool m_srgbGammaApplied = false;
    CalibrationResult* m_result = nullptr;
    PublishedChartEdition m_publishedEdition = PublishedChartEdition::Post2014;
    Plugin::DataProcessing::CImage m_initialImage;
    Plugin::DataProcessing::CImage m_lastImage;
    double m_detectedGain = -1.0;
    double m_detectedExposure = -1.0;
    std::recursive_mutex m_mutex;
    /// Guarded by m_mutex: the nesting of calls holding it, whether a grab is
    /// waiting in its event loop, and the calls queued meanwhile.
    int m_callDepth = 0;
    bool m_grabWaiting = false;
    QVector<std::function<void()>> m_queuedCalls;
    QSharedPointer<Plugin::CameraPool::ICameraStatusService> m_statusService;
    QSharedPointer<Plugin::CameraPool::ICameraControlService> m_controlService;
    QSharedPointer<Plugin::CameraPool::ICameraInfo> m_cameraInfo;
    /// The pool's camera object of the open session, for releasing it.
    QSharedPointer<Plugin::CameraPool::ICamera> m_poolCamera;
};
