#pragma once

#include <dlib/matrix.h>

/// Abstract step of the calibration chain: an N-patch chart in, a corrected
/// chart out. Charts are Nx3 linear RGB on 0..255, one row per patch.
template <long N>
class ColorCalibrationStep {
public:
    using Chart = dlib::matrix<double, N, 3>;

    virtual ~ColorCalibrationStep() = default;
    /// Colour difference of one patch against its target; afterStep picks the
    /// output chart instead of the input chart.
    virtual double GetError(int patch, bool chromaOnly, bool afterStep) = 0;
    virtual void Run() = 0;

    const Chart& GetInputChart() const { return m_input; }
    const Chart& GetOutputChart() const { return m_output; }
    void SetInputChart(const Chart& chart) { m_input = chart; }
    void SetOutputChart(const Chart& chart) { m_output = chart; }

protected:
    Chart m_input;
    Chart m_output;
};
