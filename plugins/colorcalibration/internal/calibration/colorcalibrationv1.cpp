#include "colorcalibrationv1.h"

#include "colorcalibrationv1impl.h"

ColorCalibrationV1::ColorCalibrationV1() : m_impl(new ColorCalibrationV1Impl) {}

ColorCalibrationV1::~ColorCalibrationV1()
{
    delete m_impl;
}

double ColorCalibrationV1::Run()
{
    return m_impl->Run();
}

double ColorCalibrationV1::Run(COLORCALIBRATION_STEP_TYPE step, COLORCALIBRATION_STEP_TYPE source)
{
    return m_impl->Run(step, source);
}

void ColorCalibrationV1::GetWhiteBalance(double& r, double& g, double& b)
{
    m_impl->GetWhiteBalance(r, g, b);
}

void ColorCalibrationV1::GetMatrix(dlib::matrix<double, 3, 3>& m)
{
    m_impl->GetMatrix(m);
}

void ColorCalibrationV1::GetBc6x2(dlib::matrix<double, 12, 1>& p)
{
    m_impl->GetBc6x2(p);
}

void ColorCalibrationV1::GetGamma(double& gamma)
{
    m_impl->GetGamma(gamma);
}

dlib::matrix<double, ChartLayout::kPatches, 3> ColorCalibrationV1::GetChart(COLORCALIBRATION_STEP_TYPE step)
{
    return m_impl->GetChart(step);
}

void ColorCalibrationV1::SetChart(COLORCALIBRATION_STEP_TYPE step,
                                  const dlib::matrix<double, ChartLayout::kPatches, 3>& chart)
{
    m_impl->SetChart(step, chart);
}

dlib::matrix<double, ChartLayout::kPatches, 3> ColorCalibrationV1::GetTargetChart()
{
    return m_impl->GetTargetChart();
}

double ColorCalibrationV1::GetError(COLORCALIBRATION_STEP_TYPE step, bool chromaOnly, bool afterStep)
{
    return m_impl->GetError(step, chromaOnly, afterStep);
}

double ColorCalibrationV1::GetError(COLORCALIBRATION_STEP_TYPE step, int patch, bool chromaOnly, bool afterStep)
{
    return m_impl->GetError(step, patch, chromaOnly, afterStep);
}

void ColorCalibrationV1::GetDigitalGain(double& gain)
{
    m_impl->GetDigitalGain(gain);
}
