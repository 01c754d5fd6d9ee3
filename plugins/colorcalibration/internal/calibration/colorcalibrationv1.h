#pragma once

#include "chartlayout.h"
#include "colorcalibrationsteptype.h"

#include <dlib/matrix.h>

class ColorCalibrationV1Impl;

/// The calibration engine. Call SetChart(ORIGINAL, measured) with the 24
/// measured patches (linear RGB, 0..255, chart order), then Run(), then the
/// getters. Not thread-safe: one thread at a time.
class ColorCalibrationV1 {
public:
    ColorCalibrationV1();
    virtual ~ColorCalibrationV1();
    ColorCalibrationV1(const ColorCalibrationV1&) = delete;
    ColorCalibrationV1& operator=(const ColorCalibrationV1&) = delete;

    /// Runs the whole chain; returns the mean CIEDE2000 of the final chart.
    /// Throws std::runtime_error, before any step runs, when the measured chart
    /// holds NaN or an infinity, and when a chromatic patch is grey.
    virtual double Run();
    /// Runs one step on the output of `source`; -1.0 when either key is unknown.
    /// Throws as Run() does when the chart it starts from is not finite.
    virtual double Run(COLORCALIBRATION_STEP_TYPE step, COLORCALIBRATION_STEP_TYPE source);
    virtual void GetWhiteBalance(double& r, double& g, double& b);
    virtual void GetMatrix(dlib::matrix<double, 3, 3>& m);
    virtual void GetBc6x2(dlib::matrix<double, 12, 1>& p);
    /// Always 0.45.
    virtual void GetGamma(double& gamma);
    /// The chart after that step; 24x3 zeros for an unknown key.
    virtual dlib::matrix<double, ChartLayout::kPatches, 3> GetChart(COLORCALIBRATION_STEP_TYPE step);
    /// Sets input and output chart of that step; ignored for an unknown key.
    virtual void SetChart(COLORCALIBRATION_STEP_TYPE step, const dlib::matrix<double, ChartLayout::kPatches, 3>& chart);
    virtual dlib::matrix<double, ChartLayout::kPatches, 3> GetTargetChart();
    /// Mean over the 24 patches; -1.0 for an unknown key and when a patch has no
    /// difference (GetError of a patch is -1.0 for a NaN or infinite value).
    virtual double GetError(COLORCALIBRATION_STEP_TYPE step, bool chromaOnly, bool afterStep);
    /// One patch (0..23); -1.0 for an unknown key or a chart value that is not finite.
    virtual double GetError(COLORCALIBRATION_STEP_TYPE step, int patch, bool chromaOnly, bool afterStep);
    /// The exposure gain of the last run (not written to cameras; shown by tools).
    virtual void GetDigitalGain(double& gain);

private:
    ColorCalibrationV1Impl* m_impl;
};
