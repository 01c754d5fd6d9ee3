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

    // The colour stages for a row held as three planes (overwritten), in
    // passes that the compiler can vectorise; results go to `out` as R G B every `step` floats.
    void runRow(float* __restrict R, float* __restrict G, float* __restrict B, int n, float* out, int step) const
    {
        for (int i = 0; i < n; ++i) {
            const float r = R[i], g = G[i], b = B[i];
            R[i] = m[0] * r + m[1] * g + m[2] * b;
            G[i] = m[3] * r + m[4] * g + m[5] * b;
            B[i] = m[6] * r + m[7] * g + m[8] * b;
        }
        if (adjust) {
            // The six-colour operator written with selects instead of branches
            // or indexing: noisy pixels change sector often, and the loop can
            // vectorise. Same tests and results as ColorAdjustment::apply.
            for (int i = 0; i < n; ++i) {
                const float r = R[i], g = G[i], b = B[i];
                const bool rLow = (b >= r) & (g > r);
                const bool gLow = !rLow & (r >= g) & (b > g);
                const bool bLow = !rLow & !gLow;
                const bool rHi = (gLow & (r >= b)) | (bLow & !(g >= r));
                const bool gHi = (rLow & !(b >= g)) | (bLow & (g >= r));
                const bool bHi = !rHi & !gHi;
                const float mx = rHi ? r : (gHi ? g : b);
                const float mn = rLow ? r : (gLow ? g : b);
                const float md = r + g + b - mx - mn;
                // Primary of the largest channel, secondary opposite the smallest.
                const float hue1 = rHi ? p[0] : (gHi ? p[2] : p[4]);
                const float sat1 = rHi ? p[6] : (gHi ? p[8] : p[10]);
                const float hue2 = bLow ? p[1] : (rLow ? p[3] : p[5]);
                const float sat2 = bLow ? p[7] : (rLow ? p[9] : p[11]);
                // +1 for largest/middle R/G, G/B, B/R.
                const bool plus = (rHi & bLow) | (gHi & rLow) | (bHi & gLow);
                const float sg = plus ? 1.0f : -1.0f;
                const float h1 = sg * hue1, h2 = sg * hue2;
                const float d1 = mx - md, d2 = md - mn;
                const float nHi = mx + h2 * d2;
                const float nMid = mx - (h1 + sat1) * d1 - h2 * d2;
                const float nLo = mx - (sat1 - h1) * d1 - sat2 * d2;
                R[i] = rHi ? nHi : (rLow ? nLo : nMid);
                G[i] = gHi ? nHi : (gLow ? nLo : nMid);
                B[i] = bHi ? nHi : (bLow ? nLo : nMid);
            }
        }
        if (hsbc) {
            for (int i = 0; i < n; ++i) {
                const float r = R[i], g = G[i], b = B[i];
                R[i] = h[0] * r + h[1] * g + h[2] * b;
                G[i] = h[3] * r + h[4] * g + h[5] * b;
                B[i] = h[6] * r + h[7] * g + h[8] * b;
            }
        }
        if (mono)
            for (int i = 0; i < n; ++i)
                R[i] = G[i] = B[i] = 0.2126f * R[i] + 0.7152f * G[i] + 0.0722f * B[i];
        for (int i = 0; i < n; ++i) {
            out[step * i] = R[i];
            out[step * i + 1] = G[i];
            out[step * i + 2] = B[i];
        }
    }
};

inline int toneIndex(float v)
{
    const float i = std::min(std::max(v * kToneScale + 0.5f, 0.0f), static_cast<float>(kToneSize - 1));
    return static_cast<int>(i);
}


// The sensor's values with the pedestal removed and the black level added.
// Removing the pedestal also restores the full range, so that a saturated
// pixel reads full scale.
struct RawScale {
    RawScale(const uint16_t* r, int s, const SensorProperties& sensor, const PipelineSettings& settings)
        : raw(r), stride(s), ped(static_cast<float>(sensor.pedestalDn)),
          rescale(static_cast<float>(kMaxDn) / static_cast<float>(kMaxDn - sensor.pedestalDn)),
          black(static_cast<float>(settings.blackLevelDn)),
          wb{static_cast<float>(settings.balance[0]), static_cast<float>(settings.balance[1]),
             static_cast<float>(settings.balance[2])}
    {
    }

    float operator()(int x, int y) const
    {
        const float v = static_cast<float>(raw[static_cast<size_t>(y) * stride + x]) - ped;
        return (v > 0.0f ? v * rescale : 0.0f) + black;
    }

    const uint16_t* raw;
    int stride;
    float ped, rescale, black;
    float wb[3];
};

// A sparse grid of 2x2 cells is plenty for exposure and balance control.
void measure(const RawScale& lin, int w, int h, FrameStats& stats)
{
    const float* wb = lin.wb;
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
    if (count == 0)
        return;
    for (int c = 0; c < 3; ++c)
        stats.meanRaw[c] = sum[c] / count;
    stats.meanLevel = levelSum / count;
    int acc = 0;
    stats.lowLevel = -1;
    for (int i = 0; i < 256; ++i) {
        acc += hist[i];
        if (stats.lowLevel < 0 && acc >= count / 100)
            stats.lowLevel = i / 255.0;
        if (acc >= count * 99 / 100) {
            stats.highLevel = (i + 1) / 255.0;
            break;
        }
    }
}

void writeRawBayer(const RawScale& lin, bool eight, int w, int h, uint8_t* dst)
{
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float l = std::min(static_cast<float>(kMaxDn), lin(x, y));
            const int v = eight ? static_cast<int>(l) >> 4 : static_cast<int>(l);
            const size_t i = static_cast<size_t>(y) * w + x;
            if (eight) {
                dst[i] = static_cast<uint8_t>(v);
            } else {
                dst[2 * i] = static_cast<uint8_t>(v & 0xff);
                dst[2 * i + 1] = static_cast<uint8_t>(v >> 8);
            }
        }
    }
}

ColorStage colorStage(const PipelineSettings& s, bool mono)
{
    ColorStage cs;
    for (int i = 0; i < 9; ++i)
        cs.m[i] = static_cast<float>(s.matrix[i]);
    cs.adjust = s.colorAdjustEnable && s.colorAdjust != ColorAdjustment::neutral();
    for (int i = 0; i < 12; ++i)
        cs.p[i] = static_cast<float>(s.colorAdjust[i]);
    cs.hsbc = s.hueDeg != 0.0 || s.saturation != 1.0;
    const auto hm = hsbcMatrix(s.hueDeg, s.saturation);
    std::copy(hm.begin(), hm.end(), cs.h);
    cs.mono = mono;
    return cs;
}

// Black level and white balance once per sensor pixel: every neighbour a
// demosaicing step averages carries the same filter colour, so balancing
// before interpolating is the same as after.
void balance(const RawScale& scale, int w, int h, float* lin)
{
    const float ped = scale.ped, rescale = scale.rescale, black = scale.black;
    const float* wb = scale.wb;
    for (int y = 0; y < h; ++y) {
        const uint16_t* in = scale.raw + static_cast<size_t>(y) * scale.stride;
        float* out = lin + static_cast<size_t>(y) * w;
        const float g0 = wb[(y & 1) ? 1 : 0] * rescale, g1 = wb[(y & 1) ? 2 : 1] * rescale;
        const float b0 = black * wb[(y & 1) ? 1 : 0], b1 = black * wb[(y & 1) ? 2 : 1];
        for (int x = 0; x < w; x += 2) {
            const float v0 = static_cast<float>(in[x]) - ped, v1 = static_cast<float>(in[x + 1]) - ped;
            out[x] = (v0 > 0.0f ? v0 * g0 : 0.0f) + b0;
            out[x + 1] = (v1 > 0.0f ? v1 * g1 : 0.0f) + b1;
        }
    }
}

// One colour per 2x2 cell, delivered on both of its rows; `write(y)` takes
// the processed `row`.
template <class Write>
void demosaicSimple(const float* L, int w, int h, const ColorStage& cs, float* planes, float* row, Write write)
{
    float* R = planes;
    float* G = R + w;
    float* B = G + w;
    const int blocks = w / 2;
    for (int y = 0; y < h; y += 2) {
        const float* r0 = L + static_cast<size_t>(y) * w;
        const float* r1 = r0 + w;
        for (int i = 0; i < blocks; ++i) {
            R[i] = r0[2 * i];
            G[i] = 0.5f * (r0[2 * i + 1] + r1[2 * i]);
            B[i] = r1[2 * i + 1];
        }
        cs.runRow(R, G, B, blocks, row, 6);
        for (int i = 0; i < blocks; ++i) {
            float* px = row + 6 * i;
            px[3] = px[0];
            px[4] = px[1];
            px[5] = px[2];
        }
        write(y);
        write(y + 1);
    }
}

// Bilinear, with mirrored borders that keep the colour-filter parity.
template <class Write>
void demosaicBilinear(const float* L, int w, int h, const ColorStage& cs, float* planes, float* row, Write write)
{
    float* R = planes;
    float* G = R + w;
    float* B = G + w;
    for (int y = 0; y < h; ++y) {
        const float* up = L + static_cast<size_t>(y == 0 ? 1 : y - 1) * w;
        const float* mid = L + static_cast<size_t>(y) * w;
        const float* dn = L + static_cast<size_t>(y + 1 >= h ? h - 2 : y + 1) * w;
        const bool blueRow = (y & 1) != 0;
        // Pairs of pixels: the first of a pair sits on red (even rows) or
        // green (odd rows), the second on green or blue.
        for (int x = 0; x < w; x += 2) {
            const int xm = x == 0 ? 1 : x - 1, xp = x + 1, xpp = x + 2 >= w ? w - 2 : x + 2;
            if (!blueRow) {
                R[x] = mid[x];
                G[x] = 0.25f * (mid[xm] + mid[xp] + up[x] + dn[x]);
                B[x] = 0.25f * (up[xm] + up[xp] + dn[xm] + dn[xp]);
                R[xp] = 0.5f * (mid[x] + mid[xpp]);
                G[xp] = mid[xp];
                B[xp] = 0.5f * (up[xp] + dn[xp]);
            } else {
                R[x] = 0.5f * (up[x] + dn[x]);
                G[x] = mid[x];
                B[x] = 0.5f * (mid[xm] + mid[xp]);
                R[xp] = 0.25f * (up[x] + up[xpp] + dn[x] + dn[xpp]);
                G[xp] = 0.25f * (mid[x] + mid[xpp] + up[xp] + dn[xp]);
                B[xp] = mid[xp];
            }
        }
        cs.runRow(R, G, B, w, row, 3);
        write(y);
    }
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
    const Kalto::EPixelType format = isSupported(s.format) ? s.format : Kalto::PixelType_RGB8packed;
    out.width = w;
    out.height = h;
    out.format = format;
    const int bits = static_cast<int>(Kalto::BitPerPixel(format));
    out.data.resize(static_cast<size_t>(w) * h * bits / 8);

    const RawScale scale(m_raw.data(), scene.width, m_sensor, s);
    if (stats)
        measure(scale, w, h, *stats);
    uint8_t* dst = out.data.data();
    // Raw Bayer output skips the colour pipeline; processed raw runs it and
    // mosaics the result again (writeRow keeps each pixel's own channel).
    if (Kalto::IsBayer(format) && !s.processedRaw) {
        writeRawBayer(scale, Kalto::BitDepth(format) == 8, w, h, dst);
        return;
    }

    buildTone(s, Kalto::BitDepth(format) == 8 ? 255 : kMaxDn);
    const ColorStage cs = colorStage(s, Kalto::IsMono(format));
    m_lin.resize(static_cast<size_t>(w) * h);
    balance(scale, w, h, m_lin.data());
    m_row.resize(static_cast<size_t>(3) * w);
    m_planes.resize(static_cast<size_t>(3) * w);
    const auto write = [&](int y) { writeRow(format, m_row.data(), w, dst, y); };
    if (s.demosaicing == Demosaicing::Simple)
        demosaicSimple(m_lin.data(), w, h, cs, m_planes.data(), m_row.data(), write);
    else
        demosaicBilinear(m_lin.data(), w, h, cs, m_planes.data(), m_row.data(), write);
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
    case Kalto::PixelType_BayerRG8:
    case Kalto::PixelType_BayerRG12: {
        // R G / G B: even rows alternate red and green, odd rows green and blue.
        const int first = (y & 1) ? 1 : 0;
        const bool eight = format == Kalto::PixelType_BayerRG8;
        for (int x = 0; x < width; ++x) {
            const uint16_t v = tone[toneIndex(row[3 * x + first + (x & 1)])];
            if (eight) {
                dst[base + x] = static_cast<uint8_t>(v);
            } else {
                dst[2 * (base + x)] = static_cast<uint8_t>(v & 0xff);
                dst[2 * (base + x) + 1] = static_cast<uint8_t>(v >> 8);
            }
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
