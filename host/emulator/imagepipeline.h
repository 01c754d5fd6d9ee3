#pragma once

#include "scenerenderer.h"

#include "kalto/pixeltype.h"

#include <array>
#include <cstdint>
#include <vector>

/// Physical constants of the sensor and its 12-bit converter.
struct SensorProperties {
    double dnPerUnitUs = 0.35;          ///< DN per unit response per microsecond at 0 dB
    double fullWellElectrons = 30000.0; ///< electrons at 4095 DN and 0 dB
    double readNoiseDn = 1.5;           ///< read noise at 0 dB
    int pedestalDn = 64;                ///< dark level the converter adds
};

enum class GammaCurve { User, SRGB };
enum class Demosaicing { Simple, Bilinear };
enum class ContrastMode { Linear, SCurve };
enum class TestPattern { Off, GreyRamp, ColorBars };

/// Everything one frame depends on, resolved from the camera's features.
struct PipelineSettings {
    double exposureUs = 10000.0;
    double gainDb = 0.0;
    double blackLevelDn = 0.0;  ///< offset on the 12-bit scale, added after the pedestal is removed
    std::array<double, 3> balance{{1, 1, 1}};
    std::array<double, 9> matrix{{1, 0, 0, 0, 1, 0, 0, 0, 1}};  ///< row-major, active colour matrix
    bool colorAdjustEnable = true;
    std::array<double, 12> colorAdjust{{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}};
    double hueDeg = 0.0;       ///< -180..180
    double saturation = 1.0;   ///< 0..2
    double brightness = 0.0;   ///< -1..1, offset of half the range per unit
    double contrast = 0.0;     ///< -1..1
    ContrastMode contrastMode = ContrastMode::Linear;
    bool tonalRange = false;   ///< stretch [tonalLow, tonalHigh] to the full range
    double tonalLow = 0.0;
    double tonalHigh = 1.0;
    bool gammaEnable = false;
    GammaCurve gammaCurve = GammaCurve::User;
    double gamma = 1.0;        ///< out = in^gamma on 0..1
    bool lutEnable = false;
    std::vector<uint16_t> lut; ///< 4096 entries, 12-bit in and out
    Kalto::EPixelType format = Kalto::PixelType_RGB8packed;
    Demosaicing demosaicing = Demosaicing::Simple;
    bool processedRaw = false; ///< Bayer output through balance and tone curve
    TestPattern testPattern = TestPattern::Off;
};

/// One delivered image.
struct Frame {
    int width = 0;
    int height = 0;
    Kalto::EPixelType format = Kalto::PixelType_Undefined;
    std::vector<uint8_t> data;
};

/// Figures the auto functions steer by, from a sparse sample of the frame.
struct FrameStats {
    std::array<double, 3> meanRaw{{0, 0, 0}};  ///< black-corrected sensor values, 12-bit DN
    double meanLevel = 0.0;   ///< mean balanced luma, 0..1 of full scale
    double highLevel = 0.0;   ///< 99th percentile of balanced luma, 0..1
    double lowLevel = 0.0;    ///< 1st percentile of balanced luma, 0..1
};

/// The sensor and the in-camera pipeline, in camera order: exposure x gain,
/// shot and read noise, pedestal, 12-bit quantisation and saturation; then
/// black level, white balance, demosaicing, colour matrix, six-colour
/// hue/saturation, HSBC, tone curve (tonal range, contrast, brightness, gamma,
/// LUT) and the output pixel format.
class ImagePipeline {
public:
    explicit ImagePipeline(const SensorProperties& sensor = SensorProperties());

    const SensorProperties& sensor() const { return m_sensor; }
    /// Runs one frame on `scene`; `seed` drives the noise.
    void process(const RenderedScene& scene, const PipelineSettings& settings, uint64_t seed,
                 Frame& out, FrameStats* stats = nullptr);
    static bool isSupported(Kalto::EPixelType format);

private:
    void expose(const RenderedScene& scene, const PipelineSettings& s, uint64_t seed);
    void testPattern(const PipelineSettings& s);
    void buildTone(const PipelineSettings& s, int outMax);
    void writeRow(Kalto::EPixelType format, const float* row, int width, uint8_t* dst, int y) const;

    SensorProperties m_sensor;
    std::vector<float> m_gauss;
    std::vector<uint16_t> m_raw;
    std::vector<float> m_sigma;
    std::vector<uint16_t> m_tone;  ///< linear value x 4 -> output value
    std::vector<float> m_lin;      ///< balanced linear value per sensor pixel
    std::vector<float> m_row;      ///< one processed row, R G B per pixel
    std::vector<float> m_planes;   ///< one demosaiced row as R, G and B planes
    int m_width = 0;
    int m_height = 0;
};
