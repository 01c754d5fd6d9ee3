#pragma once

#include "chartlayout.h"
#include "colorcalibrationstep.h"
#include "colorcalibrationsteptype.h"

#include <map>

class ColorChecker;
class Original;
class DigitalGain;
class WhiteBalance;
class Matrix3x3;
class Bc6x2;

class ColorCalibrationV1Impl {
public:
    using Step = ColorCalibrationStep<ChartLayout::kPatches>;

    ColorCalibrationV1Impl();
    virtual ~ColorCalibrationV1Impl();
    ColorCalibrationV1Impl(const ColorCalibrationV1Impl&) = delete;
    ColorCalibrationV1Impl& operator=(const ColorCalibrationV1Impl&) = delete;

    virtual double Run();
    virtual double Run(COLORCALIBRATION_STEP_TYPE step, COLORCALIBRATION_STEP_TYPE source);
    virtual void GetWhiteBalance(double& r, double& g, double& b);
    virtual void GetMatrix(dlib::matrix<double, 3, 3>& m);
    virtual void GetBc6x2(dlib::matrix<double, 12, 1>& p);
    virtual void GetGamma(double& gamma);
    virtual dlib::matrix<double, ChartLayout::kPatches, 3> GetChart(COLORCALIBRATION_STEP_TYPE step);
    virtual void SetChart(COLORCALIBRATION_STEP_TYPE step, const dlib::matrix<double, ChartLayout::kPatches, 3>& chart);
    virtual dlib::matrix<double, ChartLayout::kPatches, 3> GetTargetChart();
    virtual double GetError(COLORCALIBRATION_STEP_TYPE step, bool chromaOnly, bool afterStep);
    virtual double GetError(COLORCALIBRATION_STEP_TYPE step, int patch, bool chromaOnly, bool afterStep);
    virtual void GetDigitalGain(double& gain);

private:
    Step* find(int step) const;
    double meanError(Step* step, bool chromaOnly, bool afterStep) const;

    ColorChecker* m_checker;
    std::map<int, Step*> m_steps;
    Original* m_original;
    DigitalGain* m_digitalGain;
    WhiteBalance* m_whiteBalance;
    Matrix3x3* m_matrix;
    Bc6x2* m_bc6x2;
};
