#include "chartgridrefiner.h"

#include "chartlayout.h"

#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

using ChartLayout::kColumns;
using ChartLayout::kRows;
using ChartLayout::kPatches;
// Cells are sampled over +-0.35 of a pitch: the patches of the chart fill
// about 0.8 of it, so a cell stays uniform only within a few hundredths of
// a pitch of its patch.
constexpr int kSide = 7;
constexpr double kHalfCell = 0.35;
// The cells fit inside the patches with a margin of a few hundredths of a
// pitch, so any grid within that margin scores alike. A last, short descent
// samples nearly the whole patch, which only the centred grid keeps uniform.
constexpr double kPolishHalfCell = 0.375;
// Pitch in pixels below which the cells are sampled between pixels.
constexpr double kBilinearPitch = 24.0;
// Share of the spread the refined grid must shed to replace the fitted one.
constexpr double kMinGain = 0.8;

using Corners = std::array<QPointF, 4>;  // centres of patches 0, 5, 23, 18

bool gridMap(const Corners& c, QTransform& t)
{
    // Grid coordinates (column, row) of the corner patches onto their centres.
    QPolygonF from, to;
    from << QPointF(0, 0) << QPointF(kColumns - 1, 0) << QPointF(kColumns - 1, kRows - 1) << QPointF(0, kRows - 1);
    to << c[0] << c[1] << c[2] << c[3];
    return QTransform::quadToQuad(from, to, t);
}

// Mean over the cells of the per-channel standard deviation inside them;
// infinite when a cell leaves the image. Gives up, returning infinity, as soon
// as the mean can no longer come out below `bound`: most trial moves lose.
// Bilinear samples cost about three times the nearest pixel's, and they are
// needed only at a pitch of a few pixels (`kBilinearPitch`): there nearest-pixel
// samples make the spread a staircase in the corners' positions, and the
// descent stops on a step with a corner a fifth of a pitch off.
double spread(const QImage& image, const Corners& c, double halfCell, bool bilinear, double bound = INFINITY)
{
    QTransform t;
    if (!gridMap(c, t))
        return INFINITY;
    // The descent calls this some thousand times per image: the projective
    // map is spelt out rather than going through QTransform::map per sample.
    const double m11 = t.m11(), m12 = t.m12(), m13 = t.m13(), m21 = t.m21(), m22 = t.m22(), m23 = t.m23();
    const double m31 = t.m31(), m32 = t.m32(), m33 = t.m33();
    const uchar* bits = image.constBits();
    const qsizetype stride = image.bytesPerLine();
    const int width = image.width(), height = image.height();
    double offsets[kSide];
    for (int i = 0; i < kSide; ++i)
        offsets[i] = halfCell * (2.0 * i / (kSide - 1) - 1.0);
    double total = 0.0;
    for (int k = 0; k < kPatches; ++k) {
        const double col = k % kColumns, row = k / kColumns;
        double s[3] = {0, 0, 0}, q[3] = {0, 0, 0};
        for (int i = 0; i < kSide; ++i) {
            const double gx = col + offsets[i];
            for (int j = 0; j < kSide; ++j) {
                const double gy = row + offsets[j];
                const double w = m13 * gx + m23 * gy + m33;
                if (!(std::abs(w) > 1e-12))
                    return INFINITY;
                const double px0 = (m11 * gx + m21 * gy + m31) / w, py0 = (m12 * gx + m22 * gy + m32) / w;
                if (!(px0 > -0.5 && py0 > -0.5 && px0 < width - 0.5 && py0 < height - 0.5))
                    return INFINITY;
                double ch[3];
                if (bilinear) {
                    const int x0 = std::clamp(int(px0), 0, std::max(0, width - 2));
                    const int y0 = std::clamp(int(py0), 0, std::max(0, height - 2));
                    const int x1 = std::min(x0 + 1, width - 1), y1 = std::min(y0 + 1, height - 1);
                    const double fx = std::clamp(px0 - x0, 0.0, 1.0), fy = std::clamp(py0 - y0, 0.0, 1.0);
                    const QRgb* top = reinterpret_cast<const QRgb*>(bits + y0 * stride);
                    const QRgb* bottom = reinterpret_cast<const QRgb*>(bits + y1 * stride);
                    auto mix = [&](int (*channel)(QRgb)) {
                        return (1 - fy) * ((1 - fx) * channel(top[x0]) + fx * channel(top[x1])) +
                               fy * ((1 - fx) * channel(bottom[x0]) + fx * channel(bottom[x1]));
                    };
                    ch[0] = mix(qRed);
                    ch[1] = mix(qGreen);
                    ch[2] = mix(qBlue);
                } else {
                    const int x = std::clamp(int(std::lround(px0)), 0, width - 1);
                    const int y = std::clamp(int(std::lround(py0)), 0, height - 1);
                    const QRgb px = reinterpret_cast<const QRgb*>(bits + y * stride)[x];
                    ch[0] = qRed(px);
                    ch[1] = qGreen(px);
                    ch[2] = qBlue(px);
                }
                for (int n = 0; n < 3; ++n) {
                    s[n] += ch[n];
                    q[n] += ch[n] * ch[n];
                }
            }
        }
        const double count = kSide * kSide;
        for (int n = 0; n < 3; ++n)
            total += std::sqrt(std::max(0.0, q[n] / count - (s[n] / count) * (s[n] / count)));
        if (total / kPatches >= bound)
            return INFINITY;
    }
    return total / kPatches;
}

// How the spread is sampled during one descent.
struct Sampling {
    double halfCell;
    double pitch;
    bool bilinear;
};

// Moves the corners in steps halving from `firstStep` while that lowers the
// spread below `best`; returns the lowest spread reached.
double descend(const QImage& image, Corners& c, const Sampling& sampling, double firstStep, double best,
               const std::vector<int>& moves)
{
    // Diagonals too: next to the black patch, which shows nothing on the
    // black frame, a corner can sit where every move along one axis alone
    // makes things worse.
    const double r = std::sqrt(0.5);
    const QPointF directions[8] = {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1),  QPointF(0, -1),
                                   QPointF(r, r), QPointF(-r, -r), QPointF(r, -r), QPointF(-r, r)};
    // Each move shifts the corner patches whose bits are set: all four first,
    // so that single corners only trim the shape. Moving all four also
    // grows and shrinks the grid about its middle: the reduced image's pitch
    // can be a tenth off, which single corners mend only through detours.
    for (double step = firstStep; step >= std::max(0.01 * sampling.pitch, 0.5); step *= 0.5) {
        for (int pass = 0; pass < 4; ++pass) {
            bool moved = false;
            for (int mask : moves) {
                // The best of the moves, not the first that helps: a grid a
                // fifth of a pitch off can also gain by moving on across the
                // gap, partly onto the next patch.
                const Corners from = c;
                std::vector<Corners> trials;
                for (const QPointF& d : directions) {
                    Corners trial = from;
                    for (int n = 0; n < 4; ++n)
                        if (mask & (1 << n))
                            trial[n] += d * step;
                    trials.push_back(trial);
                }
                if (mask == 15) {
                    const QPointF middle = (from[0] + from[1] + from[2] + from[3]) / 4.0;
                    for (const double sign : {1.0, -1.0}) {
                        Corners trial = from;
                        for (QPointF& p : trial) {
                            const QPointF out = p - middle;
                            p += out * (sign * step / std::max(1.0, std::hypot(out.x(), out.y())));
                        }
                        trials.push_back(trial);
                    }
                }
                for (const Corners& trial : trials) {
                    const double s = spread(image, trial, sampling.halfCell, sampling.bilinear, best);
                    if (s < best) {
                        best = s;
                        c = trial;
                        moved = true;
                    }
                }
            }
            if (!moved)
                break;
        }
    }
    return best;
}

}  // namespace

QVector<QPointF> ChartGridRefiner::refine(const QImage& source, const QVector<QPointF>& centres)
{
    if (centres.size() != kPatches || source.isNull())
        return centres;
    const QImage image = source.format() == QImage::Format_ARGB32 || source.format() == QImage::Format_RGB32
                             ? source
                             : source.convertToFormat(QImage::Format_RGB32);
    Corners c = {centres[0], centres[kColumns - 1], centres[kPatches - 1], centres[kPatches - kColumns]};
    const QPointF rowStep = (c[1] - c[0]) / double(kColumns - 1);
    const double pitch = std::hypot(rowStep.x(), rowStep.y());
    if (!(pitch >= kMinPitch))
        return centres;
    const bool bilinear = pitch < kBilinearPitch;
    double best = spread(image, c, kHalfCell, bilinear);
    const double initial = best;
    if (!std::isfinite(best))
        return centres;
    best = descend(image, c, {kHalfCell, pitch, bilinear}, 0.16 * pitch, best, {15, 1, 2, 4, 8});
    const double polished = spread(image, c, kPolishHalfCell, bilinear);
    if (std::isfinite(polished)) {
        // Near the edges of the patches a whole row or column can be off
        // while every single corner move makes things worse: the polish also
        // moves the sides.
        descend(image, c, {kPolishHalfCell, pitch, bilinear}, 0.04 * pitch, polished, {15, 3, 6, 12, 9, 1, 2, 4, 8});
        best = spread(image, c, kHalfCell, bilinear);
    }
    // A grid already inside its patches gains only a few per cent by sliding
    // around on noise and shading; that is no evidence for a better place.
    if (best > kMinGain * initial)
        return centres;
    QTransform t;
    if (!gridMap(c, t))
        return centres;
    QVector<QPointF> out;
    for (int k = 0; k < kPatches; ++k)
        out << t.map(QPointF(k % kColumns, k / kColumns));
    return out;
}
