#include "sensormodel.h"

#include "chartspectra.h"

#include <algorithm>
#include <cmath>

SensorModel::SensorModel(const SensorDesign& design) : m_design(design)
{
    const auto white = [](double) { return 1.0; };
    // Factory balance: unit response to white under the reference light.
    const double sceneKelvin = m_design.sceneKelvin;
    m_design.sceneKelvin = m_design.referenceKelvin;
    const Rgb ref = integrate(white);
    for (int c = 0; c < 3; ++c)
        m_channelGain[c] = 1.0 / ref[c];
    // The scene light is scaled so that the green channel sees white at 1.0;
    // the other channels then carry the cast of the scene light.
    m_design.sceneKelvin = sceneKelvin;
    m_sceneScale = 1.0;
    m_sceneScale = 1.0 / integrate(white)[1];
}

double SensorModel::planck(double nm, double kelvin)
{
    constexpr double c2 = 1.4387769e7;  // second radiation constant in nm K
    const double x = nm / 1000.0;      // micrometres keep the numbers tame
    return 1.0 / (x * x * x * x * x * (std::exp(c2 / (nm * kelvin)) - 1.0));
}

double SensorModel::sensitivity(int channel, double nm) const
{
    const double d = (nm - m_design.peakNm[channel]) / m_design.widthNm[channel];
    double s = std::exp(-0.5 * d * d);
    // Silicon's long tail towards the red is what the IR-cut filter removes;
    // the blue channel also leaks a little in the red, as dyes do.
    if (channel == 2)
        s += 0.04 * std::exp(-0.5 * std::pow((nm - 620.0) / 40.0, 2));
    if (channel == 0)
        s += 0.03 * std::exp(-0.5 * std::pow((nm - 470.0) / 30.0, 2));
    const double cut = 1.0 / (1.0 + std::exp((nm - m_design.irCutNm) / 8.0));
    return s * cut;
}

Rgb SensorModel::integrate(const std::function<double(double)>& reflectance) const
{
    Rgb sum{{0.0, 0.0, 0.0}};
    for (int i = 0; i < ChartSpectra::kSamples; ++i) {
        const double nm = ChartSpectra::wavelengthNm(i);
        const double light = planck(nm, m_design.sceneKelvin) * reflectance(nm);
        for (int c = 0; c < 3; ++c)
            sum[c] += light * sensitivity(c, nm);
    }
    for (int c = 0; c < 3; ++c)
        sum[c] *= m_channelGain[c] * m_sceneScale;
    return sum;
}

Rgb SensorModel::crosstalkAndNonlinear(const Rgb& raw) const
{
    Rgb mixed{{0.0, 0.0, 0.0}};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            mixed[r] += m_design.crosstalk[r][c] * raw[c];
    const double mx = std::max({mixed[0], mixed[1], mixed[2]});
    const double mn = std::min({mixed[0], mixed[1], mixed[2]});
    if (mx <= 0.0)
        return mixed;
    // Strongly coloured light is compressed more than pale light (the pixel's
    // response to a narrow spectrum saturates differently per channel).
    const double saturation = (mx - mn) / mx;
    const double mean = (mixed[0] + mixed[1] + mixed[2]) / 3.0;
    Rgb out;
    for (int c = 0; c < 3; ++c)
        out[c] = mean + (mixed[c] - mean) * (1.0 - m_design.nonlinear[c] * saturation);
    return out;
}

Rgb SensorModel::response(const std::function<double(double)>& reflectance) const
{
    return crosstalkAndNonlinear(integrate(reflectance));
}

Rgb SensorModel::patchResponse(int patch) const
{
    return response([patch](double nm) {
        const int i = static_cast<int>(std::lround((nm - ChartSpectra::kFirstNm) / ChartSpectra::kStepNm));
        return ChartSpectra::reflectance(patch, i);
    });
}

Rgb SensorModel::flatResponse(double reflectance) const
{
    return response([reflectance](double) { return reflectance; });
}
