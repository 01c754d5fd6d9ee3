#include "imagepipeline.h"

#include "coloradjustment.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int kMaxDn = 4095;
constexpr int kToneScale = 4;  // tone table steps per DN
constexpr int kToneSize = (kMaxDn + 1) * kToneScale;
constexpr double kPi = 3.14159265358979323846;

uint64_t splitmix(uint64_t& state)
{
    uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

struct Xorshift {
    uint64_t s;
    uint64_t next()
    {
        s ^= s << 13;
        s ^= s >> 7;
        s ^= s << 17;
        return s;
    }
};

double srgbEncode(double x)
{
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1.0 / 2.4) - 0.055;
}

// Hue rotation and saturation about the BT.709 luma axis, as one matrix.
std::array<float, 9> hsbcMatrix(double hueDeg, double saturation)
{
    const double kr = 0.2126, kg = 0.7152, kb = 0.0722;
    // RGB -> (Y, Cb, Cr) and back.
    const double toY[3][3] = {{kr, kg, kb},
                              {-kr / (2 * (1 - kb)), -kg / (2 * (1 - kb)), 0.5},
                              {0.5, -kg / (2 * (1 - kr)), -kb / (2 * (1 - kr))}};
    const double fromY[3][3] = {{1, 0, 2 * (1 - kr)},
                                {1, -2 * (1 - kb) * kb / kg, -2 * (1 - kr) * kr / kg},
                                {1, 2 * (1 - kb), 0}};
    const double a = hueDeg * kPi / 180.0;
    const double c = std::cos(a) * saturation, s = std::sin(a) * saturation;
    const double rot[3][3] = {{1, 0, 0}, {0, c, -s}, {0, s, c}};
    double tmp[3][3] = {}, out[3][3] = {};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                tmp[i][j] += rot[i][k] * toY[k][j];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                out[i][j] += fromY[i][k] * tmp[k][j];
    std::array<float, 9> m;
    for (int i = 0; i < 9; ++i)
        m[i] = static_cast<float>(out[i / 3][i % 3]);
    return m;
}

// The colour stages between demosaicing and the tone curve, for one pixel.
struct ColorStage {
    float m[9];
    float h[9];
    float p[12];
    bool adjust;
    bool hsbc;
    bool mono;

    // The six-colour operator with the channel order looked up instead of
    // branched on: noisy pixels change sector often, and mispredicted
    // branches would cost more than the arithmetic. Same tests, same result
    // as ColorAdjustment::apply.
    inline void adjustColour(float rgb[3]) const
    {
        // code: which channel is smallest (0 R, 1 G, 2 B) and whether the
        // first candidate of the other two is the largest.
        static const int8_t kOrder[6][6] = {
            // hi, mid, lo, i1, i2, sigma
            {1, 2, 0, 2, 3, 1},   // R smallest, G largest
            {2, 1, 0, 4, 3, -1},  // R smallest, B largest
            {2, 0, 1, 4, 5, 1},   // G smallest, B largest
            {0, 2, 1, 0, 5, -1},  // G smallest, R largest
            {0, 1, 2, 0, 1, 1},   // B smallest, R largest
            {1, 0, 2, 2, 1, -1},  // B smallest, G largest
        };
        const float r = rgb[0], g = rgb[1], b = rgb[2];
        const bool rLow = (b >= r) & (g > r);
        const bool gLow = !rLow & (r >= g) & (b > g);
        const int lo = rLow ? 0 : (gLow ? 1 : 2);
        const bool second = lo == 0 ? (b >= g) : (lo == 1 ? !(r >= b) : (g >= r));
        const int8_t* o = kOrder[2 * lo + (second ? 1 : 0)];
        const float mx = rgb[o[0]], md = rgb[o[1]], mn = rgb[o[2]];
        const float sg = static_cast<float>(o[5]);
        const float h1 = sg * p[o[3]], s1 = p[o[3] + 6], h2 = sg * p[o[4]], s2 = p[o[4] + 6];
        const float d1 = mx - md, d2 = md - mn;
        const float nHi = mx + h2 * d2;
        const float nMid = mx - (h1 + s1) * d1 - h2 * d2;
        const float nLo = mx - (s1 - h1) * d1 - s2 * d2;
        rgb[o[0]] = nHi;
        rgb[o[1]] = nMid;
        rgb[o[2]] = nLo;
    }

    // Colour of one pixel from its demosaiced values to `out` (before the tone curve).
    inline void run(float r0, float g0, float b0, float* out) const
    {
        float v[3] = {m[0] * r0 + m[1] * g0 + m[2] * b0, m[3] * r0 + m[4] * g0 + m[5] * b0,
                      m[6] * r0 + m[7] * g0 + m[8] * b0};
        if (adjust)
            adjustColour(v);
        float r = v[0], g = v[1], b = v[2];
        if (hsbc) {
            r = h[0] * v[0] + h[1] * v[1] + h[2] * v[2];
            g = h[3] * v[0] + h[4] * v[1] + h[5] * v[2];
            b = h[6] * v[0] + h[7] * v[1] + h[8] * v[2];
        }
        if (mono)
            r = g = b = 0.2126f * r + 0.7152f * g + 0.0722f * b;
        out[0] = r;
        out[1] = g;
        out[2] = b;
    }
};

inline int toneIndex(float v)
{
    const float i = std::min(std::max(v * kToneScale + 0.5f, 0.0f), static_cast<float>(kToneSize - 1));
    return static_cast<int>(i);
}

}  // namespace

ImagePipeline::ImagePipeline(const SensorProperties& sensor) : m_sensor(sensor)
{
    // A fixed table of standard normal numbers: frames draw indices into it,
    // which is far cheaper than a transform per pixel.
    m_gauss.resize(65536);
    uint64_t state = 0x5eed;
    for (size_t i = 0; i < m_gauss.size(); i += 2) {
        const double u1 = (static_cast<double>(splitmix(state) >> 11) + 1.0) / 9007199254740993.0;
        const double u2 = static_cast<double>(splitmix(state) >> 11) / 9007199254740992.0;
        const double r = std::sqrt(-2.0 * std::log(u1));
        m_gauss[i] = static_cast<float>(r * std::cos(2 * kPi * u2));
        m_gauss[i + 1] = static_cast<float>(r * std::sin(2 * kPi * u2));
    }
    m_sigma.resize(kMaxDn + 1);
    m_tone.resize(kToneSize);
}

bool ImagePipeline::isSupported(Kalto::EPixelType f)
{
    return f == Kalto::PixelType_Mono8 || f == Kalto::PixelType_Mono12 ||
           f == Kalto::PixelType_RGB8packed || f == Kalto::PixelType_BGR8packed ||
           f == Kalto::PixelType_BayerRG8 || f == Kalto::PixelType_BayerRG12;
}

void ImagePipeline::expose(const RenderedScene& scene, const PipelineSettings& s, uint64_t seed)
{
    const double gain = std::pow(10.0, s.gainDb / 20.0);
    const float scale = static_cast<float>(s.exposureUs * gain * m_sensor.dnPerUnitUs);
    const double k = kMaxDn / m_sensor.fullWellElectrons;  // DN per electron at 0 dB
    const double read = m_sensor.readNoiseDn * gain;
    for (int e = 0; e <= kMaxDn; ++e)
        m_sigma[e] = static_cast<float>(std::sqrt(e * k * gain + read * read));

    const float pedestal = static_cast<float>(m_sensor.pedestalDn) + 0.5f;
    const size_t n = scene.response.size();
    const float* in = scene.response.data();
    uint16_t* out = m_raw.data();
    const float* sigma = m_sigma.data();
    const float* gauss = m_gauss.data();
    Xorshift rng{splitmix(seed) | 1};
    size_t i = 0;
    auto one = [&](size_t j, unsigned noiseIndex) {
        const float e = in[j] * scale;
        const int si = e < static_cast<float>(kMaxDn) ? static_cast<int>(e) : kMaxDn;
        float v = e + pedestal + sigma[si] * gauss[noiseIndex];
        v = v < 0.0f ? 0.0f : (v > static_cast<float>(kMaxDn) ? static_cast<float>(kMaxDn) : v);
        out[j] = static_cast<uint16_t>(v);
    };
    for (; i + 4 <= n; i += 4) {
        const uint64_t r = rng.next();
        one(i, static_cast<unsigned>(r & 0xffff));
        one(i + 1, static_cast<unsigned>((r >> 16) & 0xffff));
        one(i + 2, static_cast<unsigned>((r >> 32) & 0xffff));
        one(i + 3, static_cast<unsigned>(r >> 48));
    }
    for (; i < n; ++i)
        one(i, static_cast<unsigned>(rng.next() & 0xffff));
}

void ImagePipeline::testPattern(const PipelineSettings& s)
{
    const int ped = m_sensor.pedestalDn;
    // Colour bars at 75 %: white, yellow, cyan, green, magenta, red, blue, black.
    static const int kBars[8][3] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0},
                                    {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            int v;
            if (s.testPattern == TestPattern::GreyRamp) {
                v = ped + static_cast<int>(static_cast<long>(x) * (kMaxDn - ped) / std::max(1, m_width - 1));
            } else {
                const int bar = std::min(7, x * 8 / m_width);
                v = ped + kBars[bar][SceneRenderer::channelAt(x, y)] * (kMaxDn - ped) * 3 / 4;
            }
            m_raw[static_cast<size_t>(y) * m_width + x] = static_cast<uint16_t>(v);
        }
    }
}

void ImagePipeline::buildTone(const PipelineSettings& s, int outMax)
{
    const bool lut = s.lutEnable && s.lut.size() == static_cast<size_t>(kMaxDn + 1);
    const double span = std::max(1e-6, s.tonalHigh - s.tonalLow);
    for (int i = 0; i < kToneSize; ++i) {
        double x = static_cast<double>(i) / kToneScale / kMaxDn;
        if (s.tonalRange)
            x = (x - s.tonalLow) / span;
        if (s.contrast != 0.0) {
            if (s.contrastMode == ContrastMode::Linear) {
                x = (x - 0.5) * (1.0 + s.contrast) + 0.5;
            } else {
                const double c = std::min(1.0, std::max(0.0, x));
                const double smooth = c * c * (3.0 - 2.0 * c);
                x = c + s.contrast * (smooth - c);
            }
        }
        x += 0.5 * s.brightness;
        x = std::min(1.0, std::max(0.0, x));
        if (s.gammaEnable)
            x = s.gammaCurve == GammaCurve::SRGB ? srgbEncode(x) : std::pow(x, s.gamma);
        if (lut)
            x = s.lut[static_cast<size_t>(std::lround(x * kMaxDn))] / static_cast<double>(kMaxDn);
        m_tone[i] = static_cast<uint16_t>(std::lround(std::min(1.0, std::max(0.0, x)) * outMax));
    }
}

void ImagePipeline::process(const RenderedScene& scene, const PipelineSettings& s, uint64_t seed,
                            Frame& out, FrameStats* stats)
{
    m_width = scene.width;
    m_height = scene.height;
    // Colour cells are 2x2: an odd last row or column is not delivered.
    const int w = m_width & ~1, h = m_height & ~1;
    m_raw.resize(static_cast<size_t>(m_width) * m_height);
    if (s.testPattern == TestPattern::Off)
        expose(scene, s, seed);
    else
        testPattern(s);
    const int stride = scene.width;
    const Kalto::EPixelType format = isSupported(s.format) ? s.format : Kalto::PixelType_RGB8packed;
    out.width = w;
    out.height = h;
    out.format = format;
    const int bits = static_cast<int>(Kalto::BitPerPixel(format));
    out.data.resize(static_cast<size_t>(w) * h * bits / 8);

    const float ped = static_cast<float>(m_sensor.pedestalDn);
    // Removing the pedestal also restores the full range, so that a saturated
    // pixel reads full scale.
    const float rescale = static_cast<float>(kMaxDn) / static_cast<float>(kMaxDn - m_sensor.pedestalDn);
    const float black = static_cast<float>(s.blackLevelDn);
    const float wb[3] = {static_cast<float>(s.balance[0]), static_cast<float>(s.balance[1]),
                         static_cast<float>(s.balance[2])};
    const uint16_t* raw = m_raw.data();
    // Black level then white balance: one value per sensor pixel.
    auto lin = [&](int x, int y) {
        const float v = static_cast<float>(raw[static_cast<size_t>(y) * stride + x]) - ped;
        return (v > 0.0f ? v * rescale : 0.0f) + black;
    };
    auto balanced = [&](int x, int y) { return lin(x, y) * wb[SceneRenderer::channelAt(x, y)]; };

    if (stats) {
        // A sparse grid of 2x2 cells is plenty for exposure and balance control.
        std::array<double, 3> sum{{0, 0, 0}};
        double levelSum = 0.0;
        int hist[256] = {0};
        int count = 0;
        for (int y = 0; y + 1 < h; y += 16) {
            for (int x = 0; x + 1 < w; x += 16) {
                const double r = lin(x, y), g = 0.5 * (lin(x + 1, y) + lin(x, y + 1)), b = lin(x + 1, y + 1);
                sum[0] += r;
                sum[1] += g;
                sum[2] += b;
                const double level = std::min(1.0, (0.2126 * r * wb[0] + 0.7152 * g * wb[1] + 0.0722 * b * wb[2]) / kMaxDn);
                levelSum += level;
                ++hist[std::min(255, static_cast<int>(level * 255.0))];
                ++count;
            }
        }
        if (count > 0) {
            for (int c = 0; c < 3; ++c)
                stats->meanRaw[c] = sum[c] / count;
            stats->meanLevel = levelSum / count;
            int acc = 0;
            stats->lowLevel = -1;
            for (int i = 0; i < 256; ++i) {
                acc += hist[i];
                if (stats->lowLevel < 0 && acc >= count / 100)
                    stats->lowLevel = i / 255.0;
                if (acc >= count * 99 / 100) {
                    stats->highLevel = (i + 1) / 255.0;
                    break;
                }
            }
        }
    }

    uint8_t* dst = out.data.data();
    if (Kalto::IsBayer(format)) {
        const bool eight = Kalto::BitDepth(format) == 8;
        if (s.processedRaw)
            buildTone(s, eight ? 255 : kMaxDn);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                int v;
                if (s.processedRaw) {
                    v = m_tone[toneIndex(balanced(x, y))];
                } else {
                    const float l = std::min(static_cast<float>(kMaxDn), lin(x, y));
                    v = eight ? static_cast<int>(l) >> 4 : static_cast<int>(l);
                }
                const size_t i = static_cast<size_t>(y) * w + x;
                if (eight) {
                    dst[i] = static_cast<uint8_t>(v);
                } else {
                    dst[2 * i] = static_cast<uint8_t>(v & 0xff);
                    dst[2 * i + 1] = static_cast<uint8_t>(v >> 8);
                }
            }
        }
        return;
    }

    buildTone(s, Kalto::BitDepth(format) == 8 ? 255 : kMaxDn);
    ColorStage cs;
    for (int i = 0; i < 9; ++i)
        cs.m[i] = static_cast<float>(s.matrix[i]);
    cs.adjust = s.colorAdjustEnable && s.colorAdjust != ColorAdjustment::neutral();
    for (int i = 0; i < 12; ++i)
        cs.p[i] = static_cast<float>(s.colorAdjust[i]);
    cs.hsbc = s.hueDeg != 0.0 || s.saturation != 1.0;
    const auto hm = hsbcMatrix(s.hueDeg, s.saturation);
    std::copy(hm.begin(), hm.end(), cs.h);
    cs.mono = Kalto::IsMono(format);

    // Black level and white balance once per sensor pixel: every neighbour a
    // demosaicing step averages carries the same filter colour, so balancing
    // before interpolating is the same as after.
    m_lin.resize(static_cast<size_t>(w) * h);
    for (int y = 0; y < h; ++y) {
        const uint16_t* in = raw + static_cast<size_t>(y) * stride;
        float* out = m_lin.data() + static_cast<size_t>(y) * w;
        const float g0 = wb[(y & 1) ? 1 : 0] * rescale, g1 = wb[(y & 1) ? 2 : 1] * rescale;
        const float b0 = black * wb[(y & 1) ? 1 : 0], b1 = black * wb[(y & 1) ? 2 : 1];
        for (int x = 0; x < w; x += 2) {
            const float v0 = static_cast<float>(in[x]) - ped, v1 = static_cast<float>(in[x + 1]) - ped;
            out[x] = (v0 > 0.0f ? v0 * g0 : 0.0f) + b0;
            out[x + 1] = (v1 > 0.0f ? v1 * g1 : 0.0f) + b1;
        }
    }
    m_row.resize(static_cast<size_t>(3) * w);
    float* row = m_row.data();
    const float* L = m_lin.data();

    if (s.demosaicing == Demosaicing::Simple) {
        for (int y = 0; y < h; y += 2) {
            const float* r0 = L + static_cast<size_t>(y) * w;
            const float* r1 = r0 + w;
            for (int x = 0; x < w; x += 2) {
                float* px = row + 3 * x;
                cs.run(r0[x], 0.5f * (r0[x + 1] + r1[x]), r1[x + 1], px);
                px[3] = px[0];
                px[4] = px[1];
                px[5] = px[2];
            }
            writeRow(format, row, w, dst, y);
            writeRow(format, row, w, dst, y + 1);
        }
        return;
    }

    // Bilinear, with mirrored borders that keep the colour-filter parity.
    for (int y = 0; y < h; ++y) {
        const float* up = L + static_cast<size_t>(y == 0 ? 1 : y - 1) * w;
        const float* mid = L + static_cast<size_t>(y) * w;
        const float* dn = L + static_cast<size_t>(y + 1 >= h ? h - 2 : y + 1) * w;
        const bool blueRow = (y & 1) != 0;
        // Pairs of pixels: the first of a pair sits on red (even rows) or
        // green (odd rows), the second on green or blue.
        for (int x = 0; x < w; x += 2) {
            const int xm = x == 0 ? 1 : x - 1, xp = x + 1, xpp = x + 2 >= w ? w - 2 : x + 2;
            float* a = row + 3 * x;
            if (!blueRow) {
                cs.run(mid[x], 0.25f * (mid[xm] + mid[xp] + up[x] + dn[x]),
                       0.25f * (up[xm] + up[xp] + dn[xm] + dn[xp]), a);
                cs.run(0.5f * (mid[x] + mid[xpp]), mid[xp], 0.5f * (up[xp] + dn[xp]), a + 3);
            } else {
                cs.run(0.5f * (up[x] + dn[x]), mid[x], 0.5f * (mid[xm] + mid[xp]), a);
                cs.run(0.25f * (up[x] + up[xpp] + dn[x] + dn[xpp]), 0.25f * (mid[x] + mid[xpp] + up[xp] + dn[xp]),
                       mid[xp], a + 3);
            }
        }
        writeRow(format, row, w, dst, y);
    }
}

void ImagePipeline::writeRow(Kalto::EPixelType format, const float* row, int width, uint8_t* dst, int y) const
{
    const uint16_t* tone = m_tone.data();
    const size_t base = static_cast<size_t>(y) * width;
    switch (format) {
    case Kalto::PixelType_RGB8packed: {
        uint8_t* out = dst + 3 * base;
        for (int i = 0; i < 3 * width; ++i)
            out[i] = static_cast<uint8_t>(tone[toneIndex(row[i])]);
        break;
    }
    case Kalto::PixelType_BGR8packed: {
        uint8_t* out = dst + 3 * base;
        for (int x = 0; x < width; ++x) {
            out[3 * x] = static_cast<uint8_t>(tone[toneIndex(row[3 * x + 2])]);
            out[3 * x + 1] = static_cast<uint8_t>(tone[toneIndex(row[3 * x + 1])]);
            out[3 * x + 2] = static_cast<uint8_t>(tone[toneIndex(row[3 * x])]);
        }
        break;
    }
    case Kalto::PixelType_Mono8: {
        uint8_t* out = dst + base;
        for (int x = 0; x < width; ++x)
            out[x] = static_cast<uint8_t>(tone[toneIndex(row[3 * x])]);
        break;
    }
    default: {  // Mono12 in 16-bit little-endian words
        uint8_t* out = dst + 2 * base;
        for (int x = 0; x < width; ++x) {
            const uint16_t v = tone[toneIndex(row[3 * x])];
            out[2 * x] = static_cast<uint8_t>(v & 0xff);
            out[2 * x + 1] = static_cast<uint8_t>(v >> 8);
        }
    }
    }
}
