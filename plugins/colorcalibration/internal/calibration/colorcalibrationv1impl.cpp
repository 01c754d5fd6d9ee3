#include "colorcalibrationv1impl.h"

#include "bc6x2.h"
#include "colorchecker.h"
#include "digitalgain.h"
#include "matrix3x3.h"
#include "original.h"
#include "whitebalance.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace {

// The steps' formulas turn a NaN or an infinity into NaN parameters, or into
// the 255 that clipping makes of them, which would reach the camera looking
// like a result: such a chart is refused before any step runs.
void requireFinite(const ColorCalibrationV1Impl::Step::Chart& chart)
{
    static const char kChannels[] = "RGB";
    for (long k = 0; k < chart.nr(); ++k)
        for (long c = 0; c < 3; ++c)
            if (!std::isfinite(chart(k, c)))
                throw std::runtime_error("Chart value is not a finite number: patch " + std::to_string(k + 1) +
                                         ", channel " + kChannels[c]);
}

}  // namespace

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

ColorCalibrationV1Impl::Step* ColorCalibrationV1Impl::find(int step) const
{
    const auto it = m_steps.find(step);
    return it == m_steps.end() ? nullptr : it->second;
}

double ColorCalibrationV1Impl::meanError(Step* step, bool chromaOnly, bool afterStep) const
{
    double sum = 0.0;
    for (int k = 0; k < ChartLayout::kPatches; ++k) {
        const double e = step->GetError(k, chromaOnly, afterStep);
        if (e < 0.0)
            return -1.0;  // one patch without a difference leaves the mean unknown
        sum += e;
    }
    return sum / ChartLayout::kPatches;
}

double ColorCalibrationV1Impl::Run()
{
    requireFinite(m_original->GetInputChart());
    m_original->Run();
    Step* previous = m_original;
    for (Step* step :
         {static_cast<Step*>(m_digitalGain), static_cast<Step*>(m_whiteBalance),
          static_cast<Step*>(m_matrix), static_cast<Step*>(m_bc6x2)}) {
        step->SetInputChart(previous->GetOutputChart());
        step->SetOutputChart(previous->GetOutputChart());
        step->Run();
        previous = step;
    }
    return meanError(m_bc6x2, false, true);
}

double ColorCalibrationV1Impl::Run(COLORCALIBRATION_STEP_TYPE step, COLORCALIBRATION_STEP_TYPE source)
{
    Step* target = find(step);
    Step* from = find(source);
    if (!target || !from)
        return -1.0;
    requireFinite(step == COLORCALIBRATION_STEP_ORIGINAL ? target->GetInputChart() : from->GetOutputChart());
    if (step != COLORCALIBRATION_STEP_ORIGINAL) {
        target->SetInputChart(from->GetOutputChart());
        target->SetOutputChart(from->GetOutputChart());
    }
    target->Run();
    return meanError(target, false, true);
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

dlib::matrix<double, ChartLayout::kPatches, 3> ColorCalibrationV1Impl::GetChart(COLORCALIBRATION_STEP_TYPE step)
{
    const Step* s = find(step);
    if (!s)
        return dlib::zeros_matrix<double>(ChartLayout::kPatches, 3);
    return s->GetOutputChart();
}

void ColorCalibrationV1Impl::SetChart(COLORCALIBRATION_STEP_TYPE step,
                                      const dlib::matrix<double, ChartLayout::kPatches, 3>& chart)
{
    if (Step* s = find(step)) {
        s->SetInputChart(chart);
        s->SetOutputChart(chart);
    }
}

dlib::matrix<double, ChartLayout::kPatches, 3> ColorCalibrationV1Impl::GetTargetChart()
{
    return m_checker->GetTargetRgb();
}

double ColorCalibrationV1Impl::GetError(COLORCALIBRATION_STEP_TYPE step, bool chromaOnly, bool afterStep)
{
    Step* s = find(step);
    return s ? meanError(s, chromaOnly, afterStep) : -1.0;
}

double ColorCalibrationV1Impl::GetError(COLORCALIBRATION_STEP_TYPE step, int patch, bool chromaOnly,
                                        bool afterStep)
{
    Step* s = find(step);
    return s ? s->GetError(patch, chromaOnly, afterStep) : -1.0;
}

void ColorCalibrationV1Impl::GetDigitalGain(double& gain)
{
    m_digitalGain->GetDigitalGain(gain);
}
