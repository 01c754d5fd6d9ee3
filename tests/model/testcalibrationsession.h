#pragma once

#include "calibrationinterface.h"
#include "chartdiscriminator.h"
#include "convertingimagecamera.h"

#include <QObject>

#include <atomic>
#include <mutex>

/// The part of the calibration session that the brightness worker and the
/// result writes are tested through: a real camera behind a
/// ConvertingImageCamera, a ChartDiscriminator on the emulated chart, and the
/// session's exposure and gain rules (SFNC 1.x gain as GainRaw / 100). It
/// counts the exposure and gain writes so that tests can tell when the worker
/// last acted. Operations the worker never calls answer false or nothing.
class TestCalibrationSession : public QObject, public CalibrationInterface {
    Q_OBJECT
public:
    TestCalibrationSession(QSharedPointer<Plugin::CameraPool::ICamera> camera, const CTrapezoid& grid);
    ~TestCalibrationSession() override;

    ConvertingImageCamera& wrapper() { return m_wrapper; }
    int exposureWrites() const { return m_exposureWrites.load(); }
    int gainWrites() const { return m_gainWrites.load(); }
    int measurements() const { return m_measurements.load(); }
    /// Brightest channel of the grey patch in a fresh grab, 0..255; -1 on failure.
    double measureGrey();

    bool AutoAdjustGray80PercentPatch() override { return false; }
    CTrapezoid GetGridPosition() override;
    void SetGridPositon(const CTrapezoid& grid) override;
    void GetColorPatchPositions(QVector<CTrapezoid>& positions) override;
    void GetColorPatchInitialValues(QVector<QColor>&) override {}
    void GetColorPatchTargetValues(QVector<QColor>&) override {}
    int GetColorPatchValues(QVector<QColor>& values, bool forceGrab) override;
    void GetColorPatchCurrentValues(QVector<QColor>&) override {}
    bool GetCameraInitialImage(QImage&) override { return false; }
    bool ApplyInitialColorPatchValues() override { return false; }
    bool ApplyInitialCameraImageAndPatchValues() override { return false; }
    bool ExecuteCalibrationAndApply() override { return false; }
    bool GetExposureTimeRange(double& min, double& value, double& max) override;
    bool SetExposureTimeValue(double exposureUs) override;
    double GetExposureTimeValue() override;
    bool GetGainRange(double& min, double& value, double& max) override;
    bool SetGainValue(double gain) override;
    double GetGainValue() override;
    bool ExecuteWhitebalance() override { return false; }
    bool RestoreDetectedExposureAndGain() override { return false; }
    bool StoreDetectedExposureAndGain() override { return false; }

signals:
    void Gray80PercentHitRateChanged(double hitRate);
    void ExposureTimeValueChanged(double exposureUs);
    void GainValueChanged(double gain);
    void GridPositionChanged();
    void CalibrationFinished();
    void AutoAdjustGray80PercentPatchFinished();

private:
    bool grab();

    std::recursive_mutex m_mutex;
    QSharedPointer<Plugin::CameraPool::ICamera> m_camera;
    ConvertingImageCamera m_wrapper;
    ChartDiscriminator m_discriminator{70};
    Plugin::DataProcessing::CImage m_lastImage;
    std::atomic<int> m_exposureWrites{0};
    std::atomic<int> m_gainWrites{0};
    std::atomic<int> m_measurements{0};
};
