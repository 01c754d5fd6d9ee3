#include "colorcorrectionautochartfinderimpl.h"

#include "chartgridcheck.h"
#include "chartgridrefiner.h"
#include "chartlayout.h"
#include "colorchecker.h"
#include "colorspace.h"

#include <dlib/matrix.h>

#include <QHash>
#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <vector>

namespace {

using ChartLayout::kColumns;
using ChartLayout::kRows;
using ChartLayout::kPatches;
constexpr int kModelSize = 9;
constexpr double kLnFourThirds = 0.2876820724517809;
constexpr float kAngleStep = 0.2617994f;
constexpr float kAngleLimit = 5.2831855f;
constexpr double kHalfCellDiagonal = 0.35355339059327373;
// Search angle 0 shows the chart turned by this much (clockwise in image
// coordinates). The angle ladder stops three steps short of a full turn, so the
// offset decides which tilts fall into that gap: here 210..240 degrees, away
// from upright, the quarter turns and small tilts around them.
constexpr double kModelBaseAngle = 255.0 * M_PI / 180.0;

// Search score a candidate must exceed to count as a chart (mean of the two
// ratio correlations, 1 = perfect).
constexpr float kMinSearchScore = 0.55f;
// Same figure over all 24 fitted centres; rejects chance matches in clutter.
constexpr float kMinChartScore = 0.6f;
// Ratio variation below this counts as flat: keeps noise in uniform areas
// from correlating after normalisation.
constexpr float kMinRatioVariance = 0.004f;
// How much the settled grid's colour match may fall below the searched one's.
constexpr float kSettleSlack = 0.02f;

// QColor::fromRgbF followed by an 8-bit read-back, without building a QColor.
inline int toByte(float v)
{
    const int c16 = qRound(double(v) * 65535.0);
    return (c16 - (c16 >> 8) + 0x80) >> 8;
}

inline float clampIndexRead(const float* line, int i, int n)
{
    return line[std::min(std::max(i, 0), n - 1)];
}

// One running-sum pass over a line of n samples.
// The seed already holds the sample at +r and the first step adds it again,
// so every output carries that sample once more on top of its window: a pass
// lifts flat areas by (2r+2)/(2r+1) until they saturate, and the resets keep
// the sum from drifting past full scale there.
void boxLine(const float* in, float* out, int n, int radius)
{
    const float scale = 1.0f / float(2 * radius + 1);
    const float fullSum = float(2 * radius + 1);
    float sum = 0.0f;
    for (int k = -radius; k <= radius; ++k)
        sum += clampIndexRead(in, k, n);
    for (int i = 0; i < n; ++i) {
        sum += clampIndexRead(in, i + radius, n);
        float v = sum * scale;
        if (v > 1.0f) {
            v = 1.0f;
            sum = fullSum;
        } else if (v < 0.0f) {
            v = 0.0f;
            sum = 0.0f;
        }
        out[i] = v;
        sum -= clampIndexRead(in, i - radius, n);
    }
}

// The two channel-ratio fields, red over green and blue over green.
struct Ratios {
    const ColorCorrectionAutoChartFinderImpl::FloatMatrix* rg;
    const ColorCorrectionAutoChartFinderImpl::FloatMatrix* bg;
    long width() const { return rg->nr(); }
    long height() const { return rg->nc(); }
};

// Normalised correlation of two series with a floor on the sample series'
// spread, in float as the search keeps its sums.
// The expected series' sums, which the search would otherwise recompute for
// every one of its placements.
struct SeriesSums {
    float s = 0, ss = 0;
};

SeriesSums sumsOf(const float* e, int n)
{
    SeriesSums out;
    for (int i = 0; i < n; ++i) {
        out.s += e[i];
        out.ss += e[i] * e[i];
    }
    return out;
}

// The sums are kept in the order of a single pass over both series, so the
// result does not depend on whether the expected sums were precomputed.
float correlation(const float* x, const float* e, int n, const SeriesSums& es)
{
    float sx = 0, sxx = 0, sxe = 0;
    for (int i = 0; i < n; ++i) {
        sx += x[i];
        sxx += x[i] * x[i];
        sxe += x[i] * e[i];
    }
    const float nf = float(n);
    const float vx = std::max(nf * sxx - sx * sx, nf * nf * kMinRatioVariance);
    const float ve = nf * es.ss - es.s * es.s;
    if (ve <= 0.0f)
        return 0.0f;
    return (nf * sxe - sx * es.s) / std::sqrt(vx * ve);
}

float correlation(const float* x, const float* e, int n)
{
    return correlation(x, e, n, sumsOf(e, n));
}

// Running sums of a sample series and its expected series, from which the
// correlation of any part of them follows: parts can be added and taken away.
struct PairSums {
    float sx = 0, sxx = 0, sxe = 0, se = 0, see = 0;
    void add(float x, float e, float sign = 1.0f)
    {
        sx += sign * x;
        sxx += sign * x * x;
        sxe += sign * x * e;
        se += sign * e;
        see += sign * e * e;
    }
    void add(const PairSums& o, float sign)
    {
        sx += sign * o.sx;
        sxx += sign * o.sxx;
        sxe += sign * o.sxe;
        se += sign * o.se;
        see += sign * o.see;
    }
    float correlation(int m) const
    {
        const float mf = float(m);
        const float vx = std::max(mf * sxx - sx * sx, mf * mf * kMinRatioVariance);
        const float ve = mf * see - se * se;
        return ve > 0.0f ? (mf * sxe - sx * se) / std::sqrt(vx * ve) : 0.0f;
    }
};

// Mean of the two ratio correlations over groups of `size` samples (one group
// per patch), leaving out up to `leaveOut` groups, each only while leaving it
// out raises the score: the patches a finger or a cable covers. Greedy, which
// finds the covered ones because each of them alone drags the score down.
float scoreLeavingGroupsOut(const float* xr, const float* er, const float* xb, const float* eb, int groups, int size,
                            int leaveOut)
{
    if (groups > kPatches)
        return 0.0f;
    std::array<PairSums, kPatches> r{}, b{};
    PairSums rAll, bAll;
    for (int g = 0; g < groups; ++g) {
        for (int i = g * size; i < (g + 1) * size; ++i) {
            r[size_t(g)].add(xr[i], er[i]);
            b[size_t(g)].add(xb[i], eb[i]);
        }
        rAll.add(r[size_t(g)], 1.0f);
        bAll.add(b[size_t(g)], 1.0f);
    }
    int m = groups * size;
    float score = 0.5f * (rAll.correlation(m) + bAll.correlation(m));
    std::array<bool, kPatches> out{};
    for (int round = 0; round < leaveOut; ++round) {
        int drop = -1;
        for (int g = 0; g < groups; ++g) {
            if (out[size_t(g)])
                continue;
            PairSums r1 = rAll, b1 = bAll;
            r1.add(r[size_t(g)], -1.0f);
            b1.add(b[size_t(g)], -1.0f);
            const float s = 0.5f * (r1.correlation(m - size) + b1.correlation(m - size));
            if (s > score) {
                score = s;
                drop = g;
            }
        }
        if (drop < 0)
            break;
        out[size_t(drop)] = true;
        rAll.add(r[size_t(drop)], -1.0f);
        bAll.add(b[size_t(drop)], -1.0f);
        m -= size;
    }
    return score;
}

struct Expected {
    std::array<float, kPatches> rg;
    std::array<float, kPatches> bg;
};

// The chart's target colours through the same ratios the image gives: camera
// images are sRGB-encoded, so the targets are encoded first.
const Expected& expectedRatios()
{
    static const Expected e = [] {
        Expected out{};
        const ColorSpace cs;
        const dlib::matrix<double, 24, 3> t = ColorChecker().GetTargetRgb();
        for (int k = 0; k < kPatches; ++k) {
            const double r = cs.RGB_to_sRGB(t(k, 0)), g = cs.RGB_to_sRGB(t(k, 1)), b = cs.RGB_to_sRGB(t(k, 2));
            out.rg[k] = g > 0 ? float(r / g) : 1.0f;
            out.bg[k] = g > 0 ? float(b / g) : 1.0f;
        }
        return out;
    }();
    return e;
}

// Mean of the two ratio correlations over the given centres (chart indices),
// without up to `leftOut` centres that match worst.
float chartScore(const Ratios& f, const QVector<QPoint>& centres, const QVector<int>& indices, int leftOut)
{
    const Expected& e = expectedRatios();
    std::vector<float> xr, xb, er, eb;
    for (int i = 0; i < centres.size(); ++i) {
        const QPoint p = centres[i];
        if (p.x() < 0 || p.y() < 0 || p.x() >= f.width() || p.y() >= f.height())
            return 0.0f;
        xr.push_back((*f.rg)(p.x(), p.y()));
        xb.push_back((*f.bg)(p.x(), p.y()));
        er.push_back(e.rg[indices[i]]);
        eb.push_back(e.bg[indices[i]]);
    }
    const int n = int(xr.size());
    if (leftOut > 0)
        return scoreLeavingGroupsOut(xr.data(), er.data(), xb.data(), eb.data(), n, 1, leftOut);
    return 0.5f * (correlation(xr.data(), er.data(), n) + correlation(xb.data(), eb.data(), n));
}

// Green of every pixel replaced by its brightest channel: each patch is then
// brighter than the dark gaps around it, whatever its colour.
QImage brightestInGreen(const QImage& image)
{
    QImage out(image.size(), QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        const QRgb* in = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        QRgb* o = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            o[x] = qRgb(0, std::max({qRed(in[x]), qGreen(in[x]), qBlue(in[x])}), 0);
    }
    return out;
}

// Least-squares fit of image positions over grid coordinates.
struct GridFit {
    dlib::matrix<float> coefficients;  // terms x 2
    bool secondOrder = false;
    bool ok = false;
};

}  // namespace

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::modelPatches()
{
    // The inner 4 x 2 block and one grey below it: close to the centre, so that
    // pitch and angle steps of the search move the samples little, and without
    // a symmetry that lets the chart match itself turned.
    return {QPoint(1, 1), QPoint(2, 1), QPoint(3, 1), QPoint(4, 1), QPoint(1, 2),
            QPoint(2, 2), QPoint(3, 2), QPoint(4, 2), QPoint(2, 3)};
}

QImage ColorCorrectionAutoChartFinderImpl::boxFilter(QImage image, int radius)
{
    if (image.isNull() || radius < 0)
        return QImage();
    const QImage src = image.convertToFormat(QImage::Format_ARGB32);
    const int w = src.width(), h = src.height();
    std::vector<float> planes[3];
    for (auto& p : planes)
        p.resize(size_t(w) * h);
    for (int y = 0; y < h; ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(src.constScanLine(y));
        for (int x = 0; x < w; ++x) {
            // redF() of an 8-bit colour is exactly value / 255.
            planes[0][size_t(x) * h + y] = qRed(line[x]) / 255.0f;
            planes[1][size_t(x) * h + y] = qGreen(line[x]) / 255.0f;
            planes[2][size_t(x) * h + y] = qBlue(line[x]) / 255.0f;
        }
    }
    // First pass along each column, quantised to 8 bits as the intermediate image is.
    std::vector<float> column(h), rowIn(w), rowOut(w);
    std::vector<uint8_t> pass1[3];
    for (int c = 0; c < 3; ++c) {
        pass1[c].resize(size_t(w) * h);
        for (int x = 0; x < w; ++x) {
            boxLine(&planes[c][size_t(x) * h], column.data(), h, radius);
            for (int y = 0; y < h; ++y)
                pass1[c][size_t(y) * w + x] = uint8_t(toByte(column[y]));
        }
    }
    QImage out(w, h, QImage::Format_ARGB32);
    std::vector<float> rowsOut[3];
    for (int y = 0; y < h; ++y) {
        QRgb* o = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int c = 0; c < 3; ++c) {
            for (int x = 0; x < w; ++x)
                rowIn[x] = pass1[c][size_t(y) * w + x] / 255.0f;
            boxLine(rowIn.data(), rowOut.data(), w, radius);
            rowsOut[c].assign(rowOut.begin(), rowOut.end());
        }
        for (int x = 0; x < w; ++x)
            o[x] = qRgba(toByte(rowsOut[0][x]), toByte(rowsOut[1][x]), toByte(rowsOut[2][x]), 255);
    }
    return out;
}

QImage ColorCorrectionAutoChartFinderImpl::killAllChannelBut(QColor mask, QImage image)
{
    if (image.isNull())
        return image;
    image = image.convertToFormat(QImage::Format_ARGB32);
    const float mr = float(mask.redF()), mg = float(mask.greenF()), mb = float(mask.blueF());
    // Each channel takes only 256 values: the products are tabled once.
    uint8_t lut[3][256];
    for (int v = 0; v < 256; ++v) {
        lut[0][v] = uint8_t(toByte(v * mr));
        lut[1][v] = uint8_t(toByte(v * mg));
        lut[2][v] = uint8_t(toByte(v * mb));
    }
    const int w = image.width();
    for (int y = 0; y < image.height(); ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const QRgb p = line[x];
            line[x] = qRgba(lut[0][qRed(p)], lut[1][qGreen(p)], lut[2][qBlue(p)], 255);
        }
    }
    return image;
}

ColorCorrectionAutoChartFinderImpl::FloatMatrix ColorCorrectionAutoChartFinderImpl::divideQImage(QImage numerator,
                                                                                               QImage denominator)
{
    if (numerator.width() != denominator.width() || numerator.height() != denominator.height() ||
        numerator.format() != denominator.format() || numerator.isNull()) {
        FloatMatrix zero(1, 1);
        zero = 0;
        return zero;
    }
    const QImage num = numerator.convertToFormat(QImage::Format_ARGB32);
    const QImage den = denominator.convertToFormat(QImage::Format_ARGB32);
    FloatMatrix out(num.width(), num.height());
    for (int y = 0; y < num.height(); ++y) {
        const QRgb* n = reinterpret_cast<const QRgb*>(num.constScanLine(y));
        const QRgb* d = reinterpret_cast<const QRgb*>(den.constScanLine(y));
        for (int x = 0; x < num.width(); ++x) {
            const float ns = (qRed(n[x]) + qGreen(n[x]) + qBlue(n[x])) / 255.0f;
            const float ds = (qRed(d[x]) + qGreen(d[x]) + qBlue(d[x])) / 255.0f;
            out(x, y) = ds > 0.0f ? ns / ds : 1.0f;
        }
    }
    return out;
}

ColorCorrectionAutoChartFinderImpl::RatioFields ColorCorrectionAutoChartFinderImpl::ratioFields(const QImage& image)
{
    const QImage red = killAllChannelBut(QColor(1, 0, 0, 255), image);
    const QImage green = killAllChannelBut(QColor(0, 1, 0, 255), image);
    const QImage blue = killAllChannelBut(QColor(0, 0, 1, 255), image);
    return {divideQImage(red, green), divideQImage(blue, green)};
}

float ColorCorrectionAutoChartFinderImpl::reverseWeightedSum(QImage image, QPoint start, int stepY, int stepX,
                                                              int count)
{
    float sum = 0.0f;
    for (int k = 0; k < count; ++k) {
        const int x = start.x() + k * stepX, y = start.y() + k * stepY;
        if (!image.valid(x, y))
            continue;  // off the image counts as black
        sum += qGreen(image.pixel(x, y)) / 255.0f * float(count - k);
    }
    return sum;
}

QPoint ColorCorrectionAutoChartFinderImpl::findPatchCenter(QImage image, QPoint start, double maxRadius,
                                                           int direction, int startRadius)
{
    QPoint p = start;
    const int limit = qRound(maxRadius);
    for (int r = std::max(startRadius, 1); r <= limit; ++r) {
        const float left = reverseWeightedSum(image, p, 0, -1, r);
        const float right = reverseWeightedSum(image, p, 0, 1, r);
        if (left != right)
            p.rx() += (left * direction > right * direction) ? -1 : 1;
        const float up = reverseWeightedSum(image, p, -1, 0, r);
        const float down = reverseWeightedSum(image, p, 1, 0, r);
        if (up != down)
            p.ry() += (up * direction > down * direction) ? -1 : 1;
    }
    return p;
}

namespace {

// The search model's nine patches in polar form around the chart centre (in
// pitches, at search angle 0) and their expected ratios.
struct SearchModel {
    double angle[kModelSize];
    double radius[kModelSize];
    float rg[kModelSize];
    float bg[kModelSize];
};

const SearchModel& searchModel()
{
    static const SearchModel m = [] {
        SearchModel out{};
        const QVector<QPoint> model = ColorCorrectionAutoChartFinderImpl::modelPatches();
        const Expected& ex = expectedRatios();
        for (int i = 0; i < kModelSize; ++i) {
            const double u = model[i].x() - 2.5, v = model[i].y() - 1.5;
            out.angle[i] = std::atan2(v, u) + kModelBaseAngle;
            out.radius[i] = std::hypot(u, v);
            out.rg[i] = ex.rg[model[i].y() * kColumns + model[i].x()];
            out.bg[i] = ex.bg[model[i].y() * kColumns + model[i].x()];
        }
        return out;
    }();
    return m;
}

// Both ratio fields at the n points `at(i)` gives; false as soon as one lies
// outside the fields.
template <class Position>
bool sampleRatios(const ColorCorrectionAutoChartFinderImpl::FloatMatrix& rg,
                  const ColorCorrectionAutoChartFinderImpl::FloatMatrix& bg, int n, const Position& at, float* xr,
                  float* xb)
{
    for (int i = 0; i < n; ++i) {
        const QPoint p = at(i);
        if (p.x() < 0 || p.y() < 0 || p.x() >= rg.nr() || p.y() >= rg.nc())
            return false;
        xr[i] = rg(p.x(), p.y());
        xb[i] = bg(p.x(), p.y());
    }
    return true;
}

// Keeps the best `keep` candidates that lie apart: a candidate near a kept one
// (within two of the larger pitch) only replaces it when it scores higher.
void offer(std::vector<ColorCorrectionAutoChartFinderImpl::Candidate>& kept, size_t keep,
           const ColorCorrectionAutoChartFinderImpl::Candidate& c)
{
    for (auto& k : kept) {
        const QPoint d = k.centre - c.centre;
        const double reach = 2.0 * std::max(k.pitch, c.pitch);
        if (double(d.x()) * d.x() + double(d.y()) * d.y() < reach * reach) {
            if (c.score > k.score)
                k = c;
            return;
        }
    }
    if (kept.size() < keep) {
        kept.push_back(c);
        return;
    }
    auto worst = std::min_element(kept.begin(), kept.end(), [](const auto& a, const auto& b) { return a.score < b.score; });
    if (c.score > worst->score)
        *worst = c;
}

}  // namespace

std::vector<ColorCorrectionAutoChartFinderImpl::Candidate> ColorCorrectionAutoChartFinderImpl::searchPlacements(
    const FloatMatrix& rg, const FloatMatrix& bg, const SearchLadder& ladder, int keep)
{
    std::vector<Candidate> kept;
    const int W = int(rg.nr()), H = int(rg.nc());
    if (bg.nr() != W || bg.nc() != H || keep < 1)
        return kept;
    const SearchModel& m = searchModel();
    const SeriesSums rgSums = sumsOf(m.rg, kModelSize), bgSums = sumsOf(m.bg, kModelSize);
    // The running best starts at the smallest positive float: a candidate must score above it.
    kept.push_back(Candidate{QPoint(), 0, 0.0f, FLT_MIN});
    for (const int p : ladder.pitches) {
        const int step = std::max(1, int(std::lround(p / 3.0)));
        const int xMargin = int(std::lround(ladder.xMargin * p)), yMargin = int(std::lround(ladder.yMargin * p));
        if (!(xMargin < W - xMargin))
            break;
        std::vector<std::array<QPoint, kModelSize>> offsets;
        for (const float a : ladder.angles) {
            std::array<QPoint, kModelSize> o;
            for (int i = 0; i < kModelSize; ++i)
                o[i] = QPoint(int(std::lround(std::cos(m.angle[i] + a) * m.radius[i] * p)),
                              int(std::lround(std::sin(m.angle[i] + a) * m.radius[i] * p)));
            offsets.push_back(o);
        }
        for (int y = yMargin; y <= H - yMargin; y += step) {
            for (int x = xMargin; x <= W - xMargin; x += step) {
                for (size_t a = 0; a < offsets.size(); ++a) {
                    float xr[kModelSize], xb[kModelSize];
                    const QPoint centre(x, y);
                    if (!sampleRatios(rg, bg, kModelSize, [&](int i) { return centre + offsets[a][i]; }, xr, xb))
                        continue;
                    // A correlation cannot exceed 1 (the slack covers rounding): when
                    // the first one leaves no chance to beat the bar, skip the second.
                    const float first = correlation(xr, m.rg, kModelSize, rgSums);
                    const float bar = keep == 1 ? kept[0].score : ladder.minScore;
                    if (0.5f * (first + 1.01f) <= bar - ladder.leaveOutSlack)
                        continue;
                    float score = 0.5f * (first + correlation(xb, m.bg, kModelSize, bgSums));
                    if (ladder.leaveOutSlack > 0.0f && score > bar - ladder.leaveOutSlack)
                        score = scoreLeavingGroupsOut(xr, m.rg, xb, m.bg, kModelSize, 1, ladder.samplesLeftOut);
                    if (keep == 1) {
                        if (score > kept[0].score)
                            kept[0] = Candidate{QPoint(x, y), p, ladder.angles[a], score};
                    } else if (score > ladder.minScore) {
                        offer(kept, size_t(keep), Candidate{QPoint(x, y), p, ladder.angles[a], score});
                    }
                }
            }
        }
    }
    kept.erase(std::remove_if(kept.begin(), kept.end(), [](const Candidate& c) { return c.pitch == 0; }), kept.end());
    std::sort(kept.begin(), kept.end(), [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
    return kept;
}

namespace {

// The standard search's pitches on a working copy of `size`: from the largest
// the copy holds down by quarters to a floor of 20 pixels, an eighth of the
// largest or `minPitch`, whichever is highest.
std::vector<int> standardPitches(const QSize& size, double minPitch)
{
    const double largest = std::min(size.width() / 6, size.height() / 4);
    const double smallest = std::max({20.0, largest / 8.0, minPitch});
    std::vector<int> pitches;
    if (largest <= 0.0)
        return pitches;
    const int scales = int(std::ceil(std::log(largest / smallest) / kLnFourThirds));
    for (int s = 0; s < scales; ++s)
        pitches.push_back(int(std::lround(largest * std::pow(0.75, s))));
    return pitches;
}

}  // namespace

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::getInitialRegressionPatches(QImage image, double minPitch)
{
    if (image.isNull())
        return {};
    const int W = image.width(), H = image.height();
    SearchLadder ladder;
    ladder.pitches = standardPitches(image.size(), minPitch);
    if (ladder.pitches.empty())
        return {};

    const RatioFields fields = ratioFields(image);
    const FloatMatrix& rg = fields.rg;
    const FloatMatrix& bg = fields.bg;
    if (rg.nr() != W || rg.nc() != H)
        return {};

    for (float a = 0.0f; a < kAngleLimit; a += kAngleStep)
        ladder.angles.push_back(a);
    ladder.xMargin = 2.0;
    ladder.yMargin = 1.5;
    const std::vector<Candidate> best = searchPlacements(rg, bg, ladder, 1);
    if (best.empty() || best[0].score < kMinSearchScore)
        return {};
    return refinePlacement(rg, bg, best[0]);
}

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::refinePlacement(const FloatMatrix& rg, const FloatMatrix& bg,
                                                                    const Candidate& candidate, float* score,
                                                                    int patchesLeftOut)
{
    const SearchModel& m = searchModel();
    const Expected& ex = expectedRatios();
    const QPoint bestCentre = candidate.centre;
    const int bestPitch = candidate.pitch;
    const float bestAngle = candidate.angle;
    const double* modelAngle = m.angle;
    const double* modelRadius = m.radius;
    // The ladder's steps (a quarter in pitch, 15 degrees in angle, a third of
    // a pitch in position) leave the outer patches up to half a cell off. A
    // finer search around the winner, scored on all 24 patches, closes that gap.
    QPointF fineCentre = bestCentre;
    double finePitch = bestPitch, fineAngle = bestAngle;
    // Each patch is sampled at its centre and 0.3 pitch to either side along
    // both chart axes: a placement scores high only when all five points of
    // every patch stay on it, which pins the grid to well under a patch.
    constexpr int kSpots = 5;
    constexpr int kSamples = kPatches * kSpots;
    float expectedRg[kSamples], expectedBg[kSamples], xr[kSamples], xb[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        expectedRg[k] = ex.rg[k / kSpots];
        expectedBg[k] = ex.bg[k / kSpots];
    }
    float fineScore = FLT_MIN;
    const double spot[kSpots][2] = {{0, 0}, {-0.3, 0}, {0.3, 0}, {0, -0.3}, {0, 0.3}};
    const double shift = std::max(1.0, bestPitch / 10.0);
    for (double scale = 0.85; scale <= 1.151; scale += 0.0375) {
        for (double da = -8.0; da <= 8.01; da += 2.0) {
            const double pitch = bestPitch * scale, angle = bestAngle + da * M_PI / 180.0;
            const double ca = std::cos(angle + kModelBaseAngle), sa = std::sin(angle + kModelBaseAngle);
            QPointF offsets[kSamples];
            for (int k = 0; k < kSamples; ++k) {
                const double u = (k / kSpots % kColumns - 2.5 + spot[k % kSpots][0]) * pitch;
                const double v = (k / kSpots / kColumns - 1.5 + spot[k % kSpots][1]) * pitch;
                offsets[k] = QPointF(ca * u - sa * v, sa * u + ca * v);
            }
            for (int dy = -3; dy <= 3; ++dy) {
                for (int dx = -3; dx <= 3; ++dx) {
                    const QPointF c = QPointF(bestCentre) + QPointF(dx, dy) * shift;
                    const auto at = [&](int k) {
                        return QPoint(int(std::lround(c.x() + offsets[k].x())), int(std::lround(c.y() + offsets[k].y())));
                    };
                    if (!sampleRatios(rg, bg, kSamples, at, xr, xb))
                        continue;
                    const float score =
                        patchesLeftOut > 0
                            ? scoreLeavingGroupsOut(xr, expectedRg, xb, expectedBg, kPatches, kSpots, patchesLeftOut)
                            : 0.5f * (correlation(xr, expectedRg, kSamples) + correlation(xb, expectedBg, kSamples));
                    if (score > fineScore) {
                        fineScore = score;
                        fineCentre = c;
                        finePitch = pitch;
                        fineAngle = angle;
                    }
                }
            }
        }
    }
    if (score)
        *score = fineScore;
    QVector<QPoint> centres;
    for (int i = 0; i < kModelSize; ++i)
        centres << (fineCentre + QPointF(std::cos(modelAngle[i] + fineAngle), std::sin(modelAngle[i] + fineAngle)) *
                                     modelRadius[i] * finePitch)
                       .toPoint();
    return centres;
}

ColorCorrectionAutoChartFinderImpl::FloatMatrix ColorCorrectionAutoChartFinderImpl::buildPatchMatrix(
    QVector<QPoint> gridCoordinates, bool secondOrder)
{
    const long terms = secondOrder ? 6 : 3;
    FloatMatrix m(gridCoordinates.size(), terms);
    for (int i = 0; i < gridCoordinates.size(); ++i) {
        const float c = float(gridCoordinates[i].x()), r = float(gridCoordinates[i].y());
        m(i, 0) = 1.0f;
        m(i, 1) = c;
        m(i, 2) = r;
        if (secondOrder) {
            m(i, 3) = c * r;
            m(i, 4) = c * c;
            m(i, 5) = r * r;
        }
    }
    return m;
}

namespace {

GridFit fitGrid(ColorCorrectionAutoChartFinderImpl& impl, const QVector<QPoint>& grid, const QVector<QPoint>& pos,
                bool secondOrder)
{
    GridFit fit;
    const long terms = secondOrder ? 6 : 3;
    if (grid.size() < terms + 1 || grid.size() != pos.size())
        return fit;
    const dlib::matrix<float> X = impl.buildPatchMatrix(grid, secondOrder);
    dlib::matrix<float> Y(pos.size(), 2);
    for (int i = 0; i < pos.size(); ++i) {
        Y(i, 0) = float(pos[i].x());
        Y(i, 1) = float(pos[i].y());
    }
    fit.coefficients = dlib::pinv(X) * Y;
    fit.secondOrder = secondOrder;
    fit.ok = dlib::is_finite(fit.coefficients);
    return fit;
}

QPointF predict(const GridFit& fit, double c, double r)
{
    const double t[6] = {1.0, c, r, c * r, c * c, r * r};
    double x = 0, y = 0;
    for (long k = 0; k < fit.coefficients.nr(); ++k) {
        x += t[k] * fit.coefficients(k, 0);
        y += t[k] * fit.coefficients(k, 1);
    }
    return QPointF(x, y);
}

// The 24 centres a fit predicts, in chart order, moved by whole cells.
QVector<QPoint> centresOf(const GridFit& fit, int dc = 0, int dr = 0)
{
    QVector<QPoint> out;
    for (int k = 0; k < kPatches; ++k) {
        const QPointF pf = predict(fit, k % kColumns + dc, k / kColumns + dr);
        out << QPoint(qRound(pf.x()), qRound(pf.y()));
    }
    return out;
}

// Predict, refine, refit: each refinement moves a centre only a few pixels,
// so a few rounds let the grid settle from the search's coarse pitch and
// angle. The first rounds fit an affine grid, the last ones add the
// second-order terms that foreshortening needs.
class GridSettler {
public:
    GridSettler(ColorCorrectionAutoChartFinderImpl& impl, const QImage& image)
        : m_impl(impl), m_image(image), m_bright(brightestInGreen(image))
    {
    }

    // An empty fit when the grid collapses or a fit fails.
    GridFit settle(GridFit fit, int rounds)
    {
        for (int round = 0; round < rounds && fit.ok; ++round)
            fit = settleOnce(fit, round, rounds);
        return fit;
    }

private:
    GridFit settleOnce(const GridFit& fit, int round, int rounds)
    {
        const QPointF o = predict(fit, 2.5, 1.5);
        const QPointF alongRow = predict(fit, 3.5, 1.5) - o, alongColumn = predict(fit, 2.5, 2.5) - o;
        const double d = 0.5 * (std::hypot(alongRow.x(), alongRow.y()) + std::hypot(alongColumn.x(), alongColumn.y()));
        if (!(d >= 4.0) || !std::isfinite(d))
            return GridFit();
        const double maxRadius = float(d * kHalfCellDiagonal) * 0.5;
        const int secondStart = int(std::lround(0.4 * kHalfCellDiagonal * d));
        const QImage& peaks = peaksFor(d);
        QVector<QPoint> grid, refined;
        for (int k = 0; k < kPatches; ++k) {
            const QPoint g(k % kColumns, k / kColumns);
            // The search places the middle of the chart best; its scale error
            // grows outward, so the first round settles the inner block only.
            if (round == 0 && rounds > 2 && (g.x() == 0 || g.x() == kColumns - 1))
                continue;
            const QPointF pf = predict(fit, g.x(), g.y());
            QPoint p(qRound(pf.x()), qRound(pf.y()));
            if (!m_image.valid(p))
                continue;
            // The black patch is as dark as the gaps around it: nothing to climb.
            if (g != QPoint(5, 3)) {
                p = m_impl.findPatchCenter(peaks, p, maxRadius, 1, 1);
                p = m_impl.findPatchCenter(peaks, p, maxRadius, 1, secondStart);
            }
            grid << g;
            refined << p;
        }
        const bool secondOrder = round >= rounds - 2 && refined.size() >= 12;
        const GridFit next = fitGrid(m_impl, grid, refined, secondOrder);
        return next.ok ? withoutStrays(next, grid, refined, d) : GridFit();
    }

    // A second blur about one patch wide turns each patch's plateau into a
    // peak at its centre, which the climb then finds from anywhere on the patch.
    const QImage& peaksFor(double pitch)
    {
        const int radius = std::max(1, int(std::lround(kHalfCellDiagonal * pitch)));
        if (!m_peaksByRadius.contains(radius))
            m_peaksByRadius.insert(radius, m_impl.boxFilter(m_bright, radius));
        return m_peaksByRadius[radius];
    }

    // One trimming pass: drop centres that strayed onto a neighbour or the frame.
    GridFit withoutStrays(const GridFit& fit, const QVector<QPoint>& grid, const QVector<QPoint>& refined,
                          double pitch)
    {
        QVector<QPoint> keptGrid, kept;
        for (int i = 0; i < refined.size(); ++i) {
            const QPointF q = predict(fit, grid[i].x(), grid[i].y());
            if (std::hypot(q.x() - refined[i].x(), q.y() - refined[i].y()) <= 0.15 * pitch) {
                keptGrid << grid[i];
                kept << refined[i];
            }
        }
        if (kept.size() >= 12 && kept.size() < refined.size()) {
            const GridFit trimmed = fitGrid(m_impl, keptGrid, kept, fit.secondOrder);
            if (trimmed.ok)
                return trimmed;
        }
        return fit;
    }

    ColorCorrectionAutoChartFinderImpl& m_impl;
    const QImage& m_image;
    const QImage m_bright;
    QHash<int, QImage> m_peaksByRadius;
};

}  // namespace

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::getAllPatchCenter(QImage image, QVector<QPoint> initialCenters,
                                                                      int patchesLeftOut)
{
    const QVector<QPoint> model = modelPatches();
    if (initialCenters.size() < 4 || initialCenters.size() > model.size() || image.isNull())
        return {};
    GridFit fit = fitGrid(*this, model.mid(0, initialCenters.size()), initialCenters, false);
    if (!fit.ok)
        return {};
    GridSettler settler(*this, image);
    const RatioFields fields = ratioFields(image);
    const Ratios ratios{&fields.rg, &fields.bg};
    QVector<int> indices;
    for (int k = 0; k < kPatches; ++k)
        indices << k;
    auto score = [&](const GridFit& f, int dc, int dr) {
        return chartScore(ratios, centresOf(f, dc, dr), indices, patchesLeftOut);
    };

    // Settling can be led astray where the surroundings are as bright as the
    // patches; it must not leave the grid looking less like the chart than the
    // search's own placement did.
    const GridFit settled = settler.settle(fit, 3);
    if (settled.ok && score(settled, 0, 0) >= score(fit, 0, 0) - kSettleSlack)
        fit = settled;
    // A start more than half a cell off lets the whole grid settle one cell
    // beside the chart, where it still sits on patches. The colours tell the
    // true place: try the neighbouring placements and settle again if one fits better.
    float bestScore = score(fit, 0, 0);
    int bestDc = 0, bestDr = 0;
    for (int dr = -1; dr <= 1; ++dr)
        for (int dc = -1; dc <= 1; ++dc) {
            if (dc == 0 && dr == 0)
                continue;
            const float s = score(fit, dc, dr);
            if (s > bestScore) {
                bestScore = s;
                bestDc = dc;
                bestDr = dr;
            }
        }
    if (bestDc != 0 || bestDr != 0) {
        QVector<QPoint> allGrid;
        for (int k = 0; k < kPatches; ++k)
            allGrid << QPoint(k % kColumns, k / kColumns);
        fit = settler.settle(fitGrid(*this, allGrid, centresOf(fit, bestDc, bestDr), fit.secondOrder), 3);
        if (!fit.ok)
            return {};
    }

    const QVector<QPoint> centres = centresOf(fit);
    // The whole chart must look like the chart, not only the nine search samples.
    if (score(fit, 0, 0) < kMinChartScore)
        return {};
    return centres;
}

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::getColorCheckerCorners(QVector<QPoint> c)
{
    if (c.size() != kPatches)
        return {};
    // Each corner patch centre pushed outward by half a cell along both grid
    // axes, the axes measured to its row and column neighbours. For an upright
    // chart this is the centre moved by half the horizontal gap in x and half
    // the vertical gap in y; measured along the grid it also holds for a
    // tilted or quarter-turned chart.
    auto corner = [](QPoint centre, QPoint alongRow, QPoint alongColumn) {
        const double x = centre.x() + (centre.x() - alongRow.x()) * 0.5 + (centre.x() - alongColumn.x()) * 0.5;
        const double y = centre.y() + (centre.y() - alongRow.y()) * 0.5 + (centre.y() - alongColumn.y()) * 0.5;
        return QPoint(int(x), int(y));
    };
    return {corner(c[0], c[1], c[6]), corner(c[5], c[4], c[11]), corner(c[18], c[19], c[12]),
            corner(c[23], c[22], c[17])};
}

void ColorCorrectionAutoChartFinderImpl::checkError(float& value, float, int limit)
{
    if (value > float(limit))
        value = float(limit);
    else if (value < 0.0f)
        value = 0.0f;
}

int ColorCorrectionAutoChartFinderImpl::calculateHGap(QPoint a, QPoint b)
{
    return std::abs(a.x() - b.x());
}

int ColorCorrectionAutoChartFinderImpl::calculateVGap(QPoint a, QPoint b)
{
    return std::abs(a.y() - b.y());
}

bool ColorCorrectionAutoChartFinderImpl::worthSearching(const QSize& imageSize)
{
    const int longer = std::max(imageSize.width(), imageSize.height());
    const int shorter = std::min(imageSize.width(), imageSize.height());
    return longer >= kColumns * ChartGridRefiner::kMinPitch && shorter >= kRows * ChartGridRefiner::kMinPitch &&
           qint64(imageSize.height()) <= qint64(kMaxHeightPerWidth) * imageSize.width();
}

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::GetChartPosition(QImage image)
{
    if (image.isNull() || !worthSearching(image.size()))
        return {};
    const double f = image.width() / double(kWorkingWidth);
    const QImage small = image.scaledToWidth(kWorkingWidth, Qt::FastTransformation);
    // An image enlarged to the working width holds pitches no grid can be placed at.
    const double minPitch = ChartGridRefiner::kMinPitch / f;
    if (small.isNull() || standardPitches(small.size(), minPitch).empty())
        return {};
    const QImage blurred = boxFilter(small, 5);
    const QVector<QPoint> initial = getInitialRegressionPatches(blurred, minPitch);
    // A grid beside the chart can still match its colour ratios; a wrong grid
    // is worse than none, since calibration would measure the wrong patches.
    return placeGrid(image, blurred, initial, f, [&small](const QVector<QPoint>& centres, const QVector<QPointF>&) {
        return ChartGridCheck::accepts(ChartGridCheck::measure(small, centres));
    });
}

QVector<QPoint> ColorCorrectionAutoChartFinderImpl::placeGrid(const QImage& image, const QImage& blurred,
                                                             const QVector<QPoint>& initial, double f,
                                                             const GridAcceptance& accept, bool workingPixelCorners,
                                                             int patchesLeftOut)
{
    QVector<QPoint> centres = getAllPatchCenter(blurred, initial, patchesLeftOut);
    // The reduced, blurred image places the grid to a pixel or two of its
    // 640 columns, which for a small chart is a good part of a patch; the
    // final placement works on the full-size image.
    QVector<QPointF> refined;
    if (centres.size() == kPatches) {
        QVector<QPointF> full;
        for (const QPoint& p : qAsConst(centres))
            full << QPointF(p) * f;
        refined = ChartGridRefiner::refine(image, full);
        for (int k = 0; k < centres.size(); ++k)
            centres[k] = (refined[k] / f).toPoint();
    }
    if (centres.size() == kPatches && !accept(centres, refined))
        return {};
    QVector<QPoint> corners = getColorCheckerCorners(centres);
    // Rounding the centres to working pixels before extrapolating doubles the
    // rounding error at the corners, and the half-cell step along the grid
    // axes ignores foreshortening. Where the corner patches map the grid
    // projectively, the corners come from the unrounded centres instead and
    // are rounded once, at the working scale.
    if (corners.size() == 4) {
        QPolygonF from, to;
        from << QPointF(0, 0) << QPointF(kColumns - 1, 0) << QPointF(kColumns - 1, kRows - 1) << QPointF(0, kRows - 1);
        const double unit = workingPixelCorners ? f : 1.0;
        to << refined[0] / unit << refined[kColumns - 1] / unit << refined[kPatches - 1] / unit
           << refined[kPatches - kColumns] / unit;
        QTransform t;
        if (QTransform::quadToQuad(from, to, t)) {
            const QPointF outer[4] = {QPointF(-0.5, -0.5), QPointF(kColumns - 0.5, -0.5), QPointF(-0.5, kRows - 0.5),
                                      QPointF(kColumns - 0.5, kRows - 0.5)};
            for (int i = 0; i < 4; ++i)
                corners[i] = t.map(outer[i]).toPoint();
            if (!workingPixelCorners)
                return corners;
        }
    }
    for (QPoint& p : corners)
        p = QPoint(int(p.x() * f), int(p.y() * f));
    return corners;
}
