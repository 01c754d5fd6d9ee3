#include "digitalgain.h"

#include "colorchecker.h"

DigitalGain::DigitalGain(ColorChecker* checker) : ColorCalibrationStepV1(checker) {}

void DigitalGain::Run()
{
    Calculate();
    Apply();
}

void DigitalGain::Calculate()
{
    const long k = m_checker->GetIndex80percent();
    const double m = dlib::max(dlib::rowm(m_input, k));
    gain = m == 0.0 ? 1.0 : m_checker->GetBrightness80percent(false) / m;
}

void DigitalGain::Apply()
{
    dlib::matrix<double, 3, 3> g = dlib::identity_matrix<double>(3) * gain;
    m_output = m_input * g;
    ClipResult();
}

void DigitalGain::GetDigitalGain(double& out) const
{
    out = gain;
}
