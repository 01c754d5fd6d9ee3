#pragma once

#include <array>
#include <functional>

/// What a sensor of the emulated camera is made of. Wavelengths in nm,
/// temperatures in kelvin.
struct SensorDesign {
    double sceneKelvin = 5000.0;      ///< colour temperature of the light on the scene
    double referenceKelvin = 6500.0;  ///< light the channel gains are balanced for at the factory
    std::array<double, 3> peakNm{{600.0, 540.0, 455.0}};
    std::array<double, 3> widthNm{{38.0, 42.0, 30.0}};  ///< Gaussian sigma of each channel
    double irCutNm = 660.0;                             ///< half-transmission of the IR-cut filter
    /// Electrical and optical crosstalk, rows sum to 1 (grey stays grey).
    std::array<std::array<double, 3>, 3> crosstalk{
        {{{0.86, 0.10, 0.04}}, {{0.07, 0.86, 0.07}}, {{0.03, 0.11, 0.86}}}};
    /// Strength of the saturation-dependent compression per channel; see SensorModel.
    std::array<double, 3> nonlinear{{0.25, 0.10, 0.20}};
};

using Rgb = std::array<double, 3>;

/// The spectral sensor: reflectance x illuminant x channel sensitivity,
/// integrated over 380..780 nm, then crosstalk and a non-linear term.
///
/// Responses are relative: a perfect white reflector under the reference light
/// gives 1.0 in every channel. The non-linear term compresses each channel's
/// distance from the mean by k_c * (max - min) / max: it leaves greys alone and
/// is homogeneous of degree one, so the response still scales exactly with
/// exposure, but no 3x3 matrix undoes it.
class SensorModel {
public:
    explicit SensorModel(const SensorDesign& design = SensorDesign());

    const SensorDesign& design() const { return m_design; }
    /// Response to a reflectance spectrum given as a function of wavelength (nm).
    Rgb response(const std::function<double(double)>& reflectance) const;
    /// Response to chart patch 0..23.
    Rgb patchResponse(int patch) const;
    /// Response to a spectrally flat surface of the given reflectance 0..1.
    Rgb flatResponse(double reflectance) const;

    /// Spectral radiance of a black body, relative (peak scale irrelevant).
    static double planck(double nm, double kelvin);
    /// Relative sensitivity of one channel (0 R, 1 G, 2 B) at a wavelength.
    double sensitivity(int channel, double nm) const;

private:
    Rgb integrate(const std::function<double(double)>& reflectance) const;
    Rgb crosstalkAndNonlinear(const Rgb& raw) const;

    SensorDesign m_design;
    Rgb m_channelGain{{1.0, 1.0, 1.0}};
    double m_sceneScale = 1.0;
};
