#include "chartgridcheck.h"

#include "chartlayout.h"
#include "colorchecker.h"
#include "colorspace.h"

#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using ChartLayout::kColumns;
using ChartLayout::kRows;
using ChartLayout::kPatches;
// White and the greys follow the chromatic patches.
constexpr int kFirstGrey = ChartLayout::kChromatic;

// Thresholds, chosen on clean renders, the emulated cameras and real photos
// (printed charts, colour casts, dim light) against grids placed beside them.
constexpr double kMaxCellSpread = 0.45;
constexpr int kMinGreyStepsDown = 3;
constexpr double kMinGreyRange = 1.0;
constexpr double kMaxGreyChroma = 0.6;
constexpr double kMinHueAgreement = 0.5;
constexpr double kMaxBorderStep = 0.5;  // of the median neighbour step
constexpr double kMinBordersOnBackground = 0.6;

struct Rgb {
    double r = 0, g = 0, b = 0;
    double lightness() const { return (r + g + b) / 3.0; }
};

double median(std::vector<double> v)
{
    if (v.empty())
        return 0.0;
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
}

double quantile(std::vector<double> v, double q)
{
    if (v.empty())
        return 0.0;
    const size_t k = std::min(v.size() - 1, size_t(q * v.size()));
    std::nth_element(v.begin(), v.begin() + k, v.end());
    return v[k];
}

double colourStep(const Rgb& a, const Rgb& b)
{
    return (std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b)) / 3.0;
}

// Opponent colour of a balanced cell relative to its lightness, so that
// exposure does not weigh in.
std::array<double, 2> opponent(const Rgb& c, const Rgb& gain)
{
    const double r = c.r * gain.r, g = c.g * gain.g, b = c.b * gain.b;
    const double l = std::max((r + g + b) / 3.0, 1.0);
    return {(r - g) / l, ((r + g) * 0.5 - b) / l};
}

Rgb greyGain(const std::array<Rgb, kPatches>& cells)
{
    // The middle greys: the white may clip and the black is mostly noise.
    // Per channel the median of their shares, so that one grey under a
    // finger or a cable does not tint the balance of the whole chart.
    std::vector<double> shares[3];
    for (int k = kFirstGrey + 1; k <= kFirstGrey + 4; ++k) {
        const Rgb& c = cells[k];
        const double mean = std::max((c.r + c.g + c.b) / 3.0, 1e-6);
        shares[0].push_back(c.r / mean);
        shares[1].push_back(c.g / mean);
        shares[2].push_back(c.b / mean);
    }
    return {1.0 / std::max(median(shares[0]), 1e-6), 1.0 / std::max(median(shares[1]), 1e-6),
            1.0 / std::max(median(shares[2]), 1e-6)};
}

const std::array<Rgb, kPatches>& expectedCells()
{
    static const std::array<Rgb, kPatches> cells = [] {
        std::array<Rgb, kPatches> out;
        const ColorSpace cs;
        const dlib::matrix<double, 24, 3> t = ColorChecker().GetTargetRgb();
        for (int k = 0; k < kPatches; ++k)
            out[k] = {cs.RGB_to_sRGB(t(k, 0)), cs.RGB_to_sRGB(t(k, 1)), cs.RGB_to_sRGB(t(k, 2))};
        return out;
    }();
    return cells;
}

}  // namespace

namespace {

using Cells = std::array<Rgb, kPatches>;

// Grid axes from the corner cells: one pitch along a row and down a column.
struct Axes {
    QPointF row, column;
};

Axes axesOf(const QVector<QPoint>& c)
{
    return {QPointF(c[5] - c[0] + c[23] - c[18]) / 10.0, QPointF(c[18] - c[0] + c[23] - c[5]) / 6.0};
}

// Mean colour and spread (mean channel standard deviation) of each cell over
// the middle 40 % of a pitch along both axes; false when a cell leaves the image.
bool sampleCells(const QImage& image, const QVector<QPoint>& c, const Axes& axes, Cells& cells,
                 std::vector<double>& spreads)
{
    constexpr int kSide = 5;
    for (int k = 0; k < kPatches; ++k) {
        Rgb sum, sq;
        for (int i = 0; i < kSide; ++i) {
            for (int j = 0; j < kSide; ++j) {
                const double u = 0.4 * (i / double(kSide - 1) - 0.5), v = 0.4 * (j / double(kSide - 1) - 0.5);
                const QPointF p = QPointF(c[k]) + axes.row * u + axes.column * v;
                const int x = int(std::lround(p.x())), y = int(std::lround(p.y()));
                if (!image.valid(x, y))
                    return false;
                const QRgb px = image.pixel(x, y);
                sum.r += qRed(px);
                sum.g += qGreen(px);
                sum.b += qBlue(px);
                sq.r += qRed(px) * qRed(px);
                sq.g += qGreen(px) * qGreen(px);
                sq.b += qBlue(px) * qBlue(px);
            }
        }
        const double n = kSide * kSide;
        cells[k] = {sum.r / n, sum.g / n, sum.b / n};
        auto sd = [n](double s, double q) { return std::sqrt(std::max(0.0, q / n - (s / n) * (s / n))); };
        spreads.push_back((sd(sum.r, sq.r) + sd(sum.g, sq.g) + sd(sum.b, sq.b)) / 3.0);
    }
    return true;
}

// Median colour step between neighbouring cells, at least 1.
double neighbourStep(const Cells& cells)
{
    std::vector<double> steps;
    for (int k = 0; k < kPatches; ++k) {
        if (k % kColumns + 1 < kColumns)
            steps.push_back(colourStep(cells[k], cells[k + 1]));
        if (k / kColumns + 1 < kRows)
            steps.push_back(colourStep(cells[k], cells[k + kColumns]));
    }
    return std::max(median(steps), 1.0);
}

// Share of the shared cell edges whose middle (a short stretch across it) has
// the median border colour, the chart's background; -1 when a stretch leaves the image.
double bordersOnBackground(const QImage& image, const QVector<QPoint>& c, const Axes& axes, double step)
{
    std::vector<Rgb> borders;
    for (int k = 0; k < kPatches; ++k) {
        const int col = k % kColumns, r = k / kColumns;
        for (int dir = 0; dir < 2; ++dir) {
            if ((dir == 0 && col + 1 >= kColumns) || (dir == 1 && r + 1 >= kRows))
                continue;
            const QPointF mid = 0.5 * QPointF(c[k] + c[dir == 0 ? k + 1 : k + kColumns]);
            const QPointF along = dir == 0 ? axes.column : axes.row;
            Rgb sum;
            for (int i = -2; i <= 2; ++i) {
                const QPointF p = mid + along * (0.1 * i);
                const int x = int(std::lround(p.x())), y = int(std::lround(p.y()));
                if (!image.valid(x, y))
                    return -1.0;
                const QRgb px = image.pixel(x, y);
                sum.r += qRed(px) / 5.0;
                sum.g += qGreen(px) / 5.0;
                sum.b += qBlue(px) / 5.0;
            }
            borders.push_back(sum);
        }
    }
    std::vector<double> br, bgr, bb;
    for (const Rgb& b : borders) {
        br.push_back(b.r);
        bgr.push_back(b.g);
        bb.push_back(b.b);
    }
    const Rgb background{median(br), median(bgr), median(bb)};
    int onBackground = 0;
    for (const Rgb& b : borders)
        onBackground += colourStep(b, background) <= kMaxBorderStep * step;
    return double(onBackground) / borders.size();
}

void measureGreyRow(const Cells& cells, double step, ChartGridCheck::Measures& m)
{
    m.greyStepsDown = 0;
    for (int k = kFirstGrey; k < kPatches - 1; ++k)
        m.greyStepsDown += cells[k].lightness() > cells[k + 1].lightness();
    m.greyRange = (cells[kFirstGrey].lightness() - cells[kPatches - 1].lightness()) / step;
    double drop = -INFINITY;
    for (int i = kFirstGrey; i < kPatches; ++i)
        for (int j = i + 1; j < kPatches; ++j)
            drop = std::max(drop, cells[i].lightness() - cells[j].lightness());
    m.greyDrop = drop / step;
}

void measureHues(const Cells& cells, ChartGridCheck::Measures& m)
{
    const Rgb gain = greyGain(cells);
    const Rgb expectedGain = greyGain(expectedCells());
    std::vector<double> greyChroma, colourChroma;
    double dot = 0, measuredSq = 0, expectedSq = 0;
    for (int k = 0; k < kPatches; ++k) {
        const auto o = opponent(cells[k], gain);
        const double chroma = std::hypot(o[0], o[1]);
        if (k >= kFirstGrey) {
            greyChroma.push_back(chroma);
            continue;
        }
        colourChroma.push_back(chroma);
        const auto e = opponent(expectedCells()[k], expectedGain);
        dot += o[0] * e[0] + o[1] * e[1];
        measuredSq += o[0] * o[0] + o[1] * o[1];
        expectedSq += e[0] * e[0] + e[1] * e[1];
    }
    // The third most neutral grey: up to three of the six may lie under
    // something coloured and the row still reads as grey.
    m.greyChroma = quantile(greyChroma, 2.0 / 6.0) / std::max(median(colourChroma), 1e-6);
    m.hueAgreement = measuredSq > 0 && expectedSq > 0 ? dot / std::sqrt(measuredSq * expectedSq) : -1.0;
}

}  // namespace

ChartGridCheck::Measures ChartGridCheck::measure(const QImage& source, const QVector<QPoint>& c)
{
    Measures m;
    if (c.size() != kPatches || source.isNull())
        return m;
    const QImage image = source.convertToFormat(QImage::Format_ARGB32);
    const Axes axes = axesOf(c);
    Cells cells;
    std::vector<double> spreads;
    if (!sampleCells(image, c, axes, cells, spreads))
        return m;
    const double step = neighbourStep(cells);
    m.cellSpread = quantile(spreads, 0.75) / step;
    const double borders = bordersOnBackground(image, c, axes, step);
    if (borders < 0.0)
        return m;
    m.bordersOnBackground = borders;
    measureGreyRow(cells, step, m);
    measureHues(cells, m);
    return m;
}

bool ChartGridCheck::accepts(const Measures& m)
{
    return m.cellSpread <= kMaxCellSpread && m.bordersOnBackground >= kMinBordersOnBackground && m.greyStepsDown >= kMinGreyStepsDown && m.greyRange >= kMinGreyRange &&
           m.greyChroma <= kMaxGreyChroma && m.hueAgreement >= kMinHueAgreement;
}

namespace {

// The grid through the corner cells' centres, projectively, moved by whole or
// part cells; empty when the corner cells do not span a quadrilateral.
QVector<QPoint> movedGrid(const QVector<QPointF>& c, double dc, double dr)
{
    QPolygonF from, to;
    from << QPointF(0, 0) << QPointF(kColumns - 1, 0) << QPointF(kColumns - 1, kRows - 1) << QPointF(0, kRows - 1);
    to << c[0] << c[kColumns - 1] << c[kPatches - 1] << c[kPatches - kColumns];
    QTransform t;
    QVector<QPoint> moved;
    if (!QTransform::quadToQuad(from, to, t))
        return moved;
    for (int k = 0; k < kPatches; ++k)
        moved << t.map(QPointF(k % kColumns + dc, k / kColumns + dr)).toPoint();
    return moved;
}

QVector<QPoint> rounded(const QVector<QPointF>& c)
{
    QVector<QPoint> out;
    for (const QPointF& p : c)
        out << p.toPoint();
    return out;
}

}  // namespace

double ChartGridCheck::shiftMargin(const QImage& image, const QVector<QPointF>& c)
{
    if (c.size() != kPatches || movedGrid(c, 0, 0).isEmpty())
        return -2.0;
    const double own = measure(image, rounded(c)).hueAgreement;
    if (own <= -1.0)
        return -2.0;
    double rival = -1.0;
    for (int dr = -1; dr <= 1; ++dr)
        for (int dc = -1; dc <= 1; ++dc)
            if (dc != 0 || dr != 0)
                rival = std::max(rival, measure(image, movedGrid(c, dc, dr)).hueAgreement);
    return own - rival;
}

double ChartGridCheck::halfShiftContrast(const QImage& image, const QVector<QPointF>& c)
{
    if (c.size() != kPatches || movedGrid(c, 0, 0).isEmpty())
        return 0.0;
    const double own = measure(image, rounded(c)).cellSpread;
    double lowest = INFINITY;
    const double moves[4][2] = {{0.5, 0}, {-0.5, 0}, {0, 0.5}, {0, -0.5}};
    for (const auto& m : moves) {
        const QVector<QPoint> moved = movedGrid(c, m[0], m[1]);
        // A move that leaves the image tells nothing.
        if (measure(image, moved).hueAgreement > -1.0)
            lowest = std::min(lowest, measure(image, moved).cellSpread);
    }
    if (!std::isfinite(lowest))
        return 0.0;
    return lowest / std::max(own, 1e-3);
}

bool ChartGridCheck::acceptsWithoutBorders(const Measures& m)
{
    return m.cellSpread <= kMaxCellSpread && m.greyStepsDown >= kMinGreyStepsDown && m.greyDrop >= kMinGreyRange &&
           m.greyChroma <= kMaxGreyChroma && m.hueAgreement >= kMinHueAgreement;
}

namespace {

constexpr double kMiddleHalfWidth = 0.25;  // of a pitch
constexpr int kMiddleSide = 6;            // samples along each axis, even: two halves
constexpr double kMaxHalfStep = 0.3;      // of the median neighbour step
constexpr double kTextureFactor = 3.0;    // over the lower quartile of the cells' half steps

// Bilinear, so that a cell of a few pixels still sees a fraction of a pixel's move.
bool sampleBilinear(const QImage& image, const QPointF& p, Rgb& out)
{
    const double x = p.x(), y = p.y();
    if (!(x >= 0.0 && y >= 0.0 && x <= image.width() - 1.0 && y <= image.height() - 1.0))
        return false;
    const int x0 = std::min(int(x), std::max(0, image.width() - 2));
    const int y0 = std::min(int(y), std::max(0, image.height() - 2));
    const int x1 = std::min(x0 + 1, image.width() - 1), y1 = std::min(y0 + 1, image.height() - 1);
    const double fx = x - x0, fy = y - y0;
    const QRgb* top = reinterpret_cast<const QRgb*>(image.constScanLine(y0));
    const QRgb* bottom = reinterpret_cast<const QRgb*>(image.constScanLine(y1));
    auto mix = [&](int (*channel)(QRgb)) {
        return (1 - fy) * ((1 - fx) * channel(top[x0]) + fx * channel(top[x1])) +
               fy * ((1 - fx) * channel(bottom[x0]) + fx * channel(bottom[x1]));
    };
    out = {mix(qRed), mix(qGreen), mix(qBlue)};
    return true;
}

}  // namespace

int ChartGridCheck::cellsOffPatches(const QImage& source, const QVector<QPointF>& c)
{
    if (c.size() != kPatches || source.isNull())
        return kPatches;
    QPolygonF from, to;
    from << QPointF(0, 0) << QPointF(kColumns - 1, 0) << QPointF(kColumns - 1, kRows - 1) << QPointF(0, kRows - 1);
    to << c[0] << c[kColumns - 1] << c[kPatches - 1] << c[kPatches - kColumns];
    QTransform t;
    if (!QTransform::quadToQuad(from, to, t))
        return kPatches;
    const QImage image = source.format() == QImage::Format_ARGB32 || source.format() == QImage::Format_RGB32
                             ? source
                             : source.convertToFormat(QImage::Format_RGB32);
    Cells cells;
    std::array<double, kPatches> halfSteps;
    for (int k = 0; k < kPatches; ++k) {
        // Sums of the left, right, upper and lower halves of the cell's middle.
        Rgb half[4];
        for (int i = 0; i < kMiddleSide; ++i) {
            for (int j = 0; j < kMiddleSide; ++j) {
                const double u = kMiddleHalfWidth * (2.0 * i / (kMiddleSide - 1) - 1.0);
                const double v = kMiddleHalfWidth * (2.0 * j / (kMiddleSide - 1) - 1.0);
                Rgb s;
                if (!sampleBilinear(image, t.map(QPointF(k % kColumns + u, k / kColumns + v)), s))
                    return kPatches;
                for (int h : {i < kMiddleSide / 2 ? 0 : 1, j < kMiddleSide / 2 ? 2 : 3}) {
                    half[h].r += s.r;
                    half[h].g += s.g;
                    half[h].b += s.b;
                }
            }
        }
        const double n = kMiddleSide * kMiddleSide / 2.0;
        for (Rgb& h : half)
            h = {h.r / n, h.g / n, h.b / n};
        cells[k] = {(half[0].r + half[1].r) / 2, (half[0].g + half[1].g) / 2, (half[0].b + half[1].b) / 2};
        halfSteps[k] = std::max(colourStep(half[0], half[1]), colourStep(half[2], half[3]));
    }
    const double step = neighbourStep(cells);
    // Printed or textured patches differ between halves even in place; the
    // quietest quarter of the cells shows how much. A grid off its patches
    // everywhere raises that quarter too, so texture may at most double the bar.
    const double texture = kTextureFactor * quantile({halfSteps.begin(), halfSteps.end()}, 0.25);
    const double bar = std::clamp(texture, kMaxHalfStep * step, 2.0 * kMaxHalfStep * step);
    return int(std::count_if(halfSteps.begin(), halfSteps.end(), [bar](double h) { return h > bar; }));
}

QVector<QPointF> ChartGridCheck::centresOfCorners(const QVector<QPoint>& corners)
{
    if (corners.size() != 4)
        return {};
    QPolygonF from, to;
    from << QPointF(-0.5, -0.5) << QPointF(kColumns - 0.5, -0.5) << QPointF(kColumns - 0.5, kRows - 0.5)
         << QPointF(-0.5, kRows - 0.5);
    to << QPointF(corners[0]) << QPointF(corners[1]) << QPointF(corners[3]) << QPointF(corners[2]);
    QTransform t;
    if (!QTransform::quadToQuad(from, to, t))
        return {};
    QVector<QPointF> out;
    for (int k = 0; k < kPatches; ++k)
        out << t.map(QPointF(k % kColumns, k / kColumns));
    return out;
}
