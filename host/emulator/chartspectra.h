#pragma once

/// Measured spectral reflectance of the 24-patch chart (chart order: 18
/// chromatic patches, white, five greys from light to dark), 0..1.
class ChartSpectra {
public:
    static constexpr int kPatches = 24;
    static constexpr int kSamples = 81;  ///< 380..780 nm
    static constexpr double kFirstNm = 380.0;
    static constexpr double kStepNm = 5.0;

    static double reflectance(int patch, int sample);
    static double wavelengthNm(int sample);
};
