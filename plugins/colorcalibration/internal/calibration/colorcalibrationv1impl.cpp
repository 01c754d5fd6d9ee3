#include "colorcalibrationv1impl.h"

#include "bc6x2.h"
#include "colorchecker.h"
#include "digitalgain.h"
#include "matrix3x3.h"
#include "original.h"
#include "whitebalance.h"

ColorCalibrationV1Impl::ColorCalibrationV1Impl()
    : m_checker(new ColorChecker),
      m_original(new Original(m_checker, 1.0)),
      m_digitalGain(new DigitalGain(m_checker)),
      m_whiteBalance(new WhiteBalance(m_checker)),
      m_matrix(new Matrix3x3(m_checker)),
      m_bc6x2(new Bc6x2(m_checker))
{
    m_steps[COLORCALIBRATION_STEP_ORIGINAL] = m_original;
    m_steps[COLORCALIBRATION_STEP_DIGITALGAIN] = m_digitalGain;
    m_steps[COLORCALIBRATION_STEP_WHITEBALANCE] = m_whiteBalance;
    m_steps[COLORCALIBRATION_STEP_MATRIX3X3] = m_matrix;
    m_steps[COLORCALIBRATION_STEP_BC6X2] = m_bc6x2;
}

ColorCalibrationV1Impl::~ColorCalibrationV1Impl()
{
    // The digital-gain step is deliberately not deleted: it stays with the process.
    delete m_bc6x2;
    delete m_matrix;
    delete m_whiteBalance;
    delete m_original;
    delete m_checker;
    m_steps.clear();
}

ColorCalibrationStep<24>* ColorCalibrationV1Impl::find(int step) const
{
    const auto it = m_steps.find(step);
    return it == m_steps.end() ? nullptr : it->second;
}

double ColorCalibrationV1Impl::meanFinalError(ColorCalibrationStep<24>* step) const
{
    double sum = 0.0;
    for (int k = 0; k < 24; ++k)
        sum += step->GetError(k, false, true);
    return sum / 24.0;
}

double ColorCalibrationV1Impl::Run()
{
    m_original->Run();
    ColorCalibrationStep<24>* previous = m_original;
    for (ColorCalibrationStep<24>* step :
         {static_cast<ColorCalibrationStep<24>*>(m_digitalGain), static_cast<ColorCalibrationStep<24>*>(m_whiteBalance),
          static_cast<ColorCalibrationStep<24>*>(m_matrix), static_cast<ColorCalibrationStep<24>*>(m_bc6x2)}) {
        step->SetInputChart(previous->GetOutputChart());
        step->SetOutputChart(previous->GetOutputChart());
        step->Run();
        previous = step;
    }
    return meanFinalError(m_bc6x2);
}

double ColorCalibrationV1Impl::Run(COLORCALIBRATION_STEP_TYPE step, COLORCALIBRATION_STEP_TYPE source)
{
    ColorCalibrationStep<24>* target = find(step);
    ColorCalibrationStep<24>* from = find(source);
    if (!target || !from)
        return -1.0;
    if (step != COLORCALIBRATION_STEP_ORIGINAL) {
        target->SetInputChart(from->GetOutputChart());
        target->SetOutputChart(from->GetOutputChart());
    }
    target->Run();
    return meanFinalError(target);
}

void ColorCalibrationV1Impl::GetWhiteBalance(double& r, double& g, double& b)
{
    m_whiteBalance->GetWhiteBalance(r, g, b);
}

void ColorCalibrationV1Impl::GetMatrix(dlib::matrix<double, 3, 3>& m)
{
    m_matrix->GetMatrix(m);
}

void ColorCalibrationV1Impl::GetBc6x2(dlib::matrix<double, 12, 1>& p)
{
    m_bc6x2->GetBc6x2(p);
}

void ColorCalibrationV1Impl::GetGamma(double& gamma)
{
    gamma = 0.45;
}

dlib::matrix<double, 24, 3> ColorCalibrationV1Impl::GetChart(COLORCALIBRATION_STEP_TYPE step)
{
    const ColorCalibrationStep<24>* s = find(step);
    if (!s)
        return dlib::zeros_matrix<double>(24, 3);
    return s->GetOutputChart();
}

void ColorCalibrationV1Impl::SetChart(COLORCALIBRATION_STEP_TYPE step, const dlib::matrix<double, 24, 3>& chart)
{
    if (ColorCalibrationStep<24>* s = find(step)) {
        s->SetInputChart(chart);
        s->SetOutputChart(chart);
    }
}

dlib::matrix<double, 24, 3> ColorCalibrationV1Impl::GetTargetChart()
{
    return m_checker->GetTargetRgb();
}

double ColorCalibrationV1Impl::GetError(COLORCALIBRATION_STEP_TYPE step, bool chromaOnly, bool afterStep)
{
    ColorCalibrationStep<24>* s = find(step);
    if (!s)
        return -1.0;
    double sum = 0.0;
    for (int k = 0; k < 24; ++k)
        sum += s->GetError(k, chromaOnly, afterStep);
    return sum / 24.0;
}

double ColorCalibrationV1Impl::GetError(COLORCALIBRATION_STEP_TYPE step, int patch, bool chromaOnly,
                                        bool afterStep)
{
    ColorCalibrationStep<24>* s = find(step);
    return s ? s->GetError(patch, chromaOnly, afterStep) : -1.0;
}

void ColorCalibrationV1Impl::GetDigitalGain(double& gain)
{
    m_digitalGain->GetDigitalGain(gain);
}
