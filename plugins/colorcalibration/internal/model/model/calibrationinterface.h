#pragma once

#include "ctrapezoid.h"

#include <QColor>
#include <QImage>
#include <QVector>

/// What the wizard and the automatic-brightness worker need of the session's
/// calibration. Colours are 8-bit (0..255), light-linear, in chart order.
/// The implementer is a QObject and declares the six trailing operations
/// among its signals.
class CalibrationInterface {
public:
    virtual ~CalibrationInterface() = default;

    /// Starts the brightness loop; completion comes as AutoAdjustGray80PercentPatchFinished().
    virtual bool AutoAdjustGray80PercentPatch() = 0;
    virtual CTrapezoid GetGridPosition() = 0;
    virtual void SetGridPositon(const CTrapezoid& grid) = 0;
    virtual void GetColorPatchPositions(QVector<CTrapezoid>& positions) = 0;
    virtual void GetColorPatchInitialValues(QVector<QColor>& values) = 0;
    virtual void GetColorPatchTargetValues(QVector<QColor>& values) = 0;
    /// Returns the number of values appended.
    virtual int GetColorPatchValues(QVector<QColor>& values, bool forceGrab) = 0;
    virtual void GetColorPatchCurrentValues(QVector<QColor>& values) = 0;
    virtual bool GetCameraInitialImage(QImage& image) = 0;
    virtual bool ApplyInitialColorPatchValues() = 0;
    virtual bool ApplyInitialCameraImageAndPatchValues() = 0;
    virtual bool ExecuteCalibrationAndApply() = 0;
    /// Exposure time in microseconds.
    virtual bool GetExposureTimeRange(double& min, double& value, double& max) = 0;
    virtual bool SetExposureTimeValue(double exposureUs) = 0;
    /// -1.0 when unknown.
    virtual double GetExposureTimeValue() = 0;
    virtual bool GetGainRange(double& min, double& value, double& max) = 0;
    virtual bool SetGainValue(double gain) = 0;
    /// -1.0 when unknown.
    virtual double GetGainValue() = 0;
    virtual bool ExecuteWhitebalance() = 0;
    virtual bool RestoreDetectedExposureAndGain() = 0;
    virtual bool StoreDetectedExposureAndGain() = 0;

    // signals
    /// Brightest channel of the 80 % grey patch in percent of 150 DN.
    virtual void Gray80PercentHitRateChanged(double hitRate) = 0;
    virtual void ExposureTimeValueChanged(double exposureUs) = 0;
    virtual void GainValueChanged(double gain) = 0;
    virtual void GridPositionChanged() = 0;
    virtual void CalibrationFinished() = 0;
    virtual void AutoAdjustGray80PercentPatchFinished() = 0;
};
