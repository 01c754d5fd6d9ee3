#include "chartdiscriminator.h"

#include "chartlayout.h"
#include "kalto/kaltoimage.h"

#include <QLineF>
#include <QRect>

#include <algorithm>
#include <cmath>

namespace {

using ChartLayout::kColumns;
using ChartLayout::kRows;
// A patch needs this many inside pixels for its median to mean anything.
constexpr size_t kMinSamples = 24;

QPointF toF(const QPoint& p)
{
    return QPointF(p.x(), p.y());
}

// Intersection of the infinite lines through a and b; parallel lines leave (0, 0).
QPoint crossing(const QLineF& a, const QLineF& b)
{
    QPointF p;
    a.intersects(b, &p);
    return QPoint(qRound(p.x()), qRound(p.y()));
}

int fullScaleOf(const Kalto::CKaltoImage* image)
{
    const Kalto::SPixelData p = image->GetPixelData(0, 0);
    return static_cast<int>(std::pow(2.0, static_cast<double>(p.BitDepth)));
}

// Inside runs [first, last] of row y under the odd-even rule, computed the way
// QPolygon::containsPoint decides each point: an edge counts when y lies in
// [y1, y2) of its lower and upper end, at the crossing x it computes;
// horizontal edges never count.
void insideRuns(const QPolygon& outline, int y, std::vector<std::pair<int, int>>& runs)
{
    runs.clear();
    double crossings[8];
    int n = 0;
    const double py = y;
    for (int i = 1; i < outline.size() && n < 8; ++i) {
        double x1 = outline[i - 1].x(), y1 = outline[i - 1].y();
        double x2 = outline[i].x(), y2 = outline[i].y();
        if (qFuzzyCompare(y1, y2))
            continue;
        if (y2 < y1) {
            std::swap(x1, x2);
            std::swap(y1, y2);
        }
        if (py >= y1 && py < y2)
            crossings[n++] = x1 + ((x2 - x1) / (y2 - y1)) * (py - y1);
    }
    std::sort(crossings, crossings + n);
    // A point at px is inside when an odd number of crossings lie at or left of it.
    for (int k = 0; k + 1 < n; k += 2) {
        const int first = static_cast<int>(std::ceil(crossings[k]));
        const int last = static_cast<int>(std::ceil(crossings[k + 1])) - 1;
        if (first <= last)
            runs.emplace_back(first, last);
    }
}

bool hasPixels(const Kalto::CKaltoImage* image)
{
    return image && image->IsValid();
}

}  // namespace

namespace {

inline double brightest(const ChartDiscriminator::rgb16& s)
{
    const double rg = s.red > s.green ? s.red : s.green;
    return rg > s.blue ? rg : s.blue;
}

}  // namespace

bool ChartDiscriminator::rgb16::operator<(const rgb16& o) const
{
    return brightest(*this) < brightest(o);
}

ChartDiscriminator::ChartDiscriminator(int patchSizePercent)
    : m_gridPosition(QPoint(0, 0), QPoint(2, 0), QPoint(2, 0), QPoint(2, 2)),
      m_patchSizePercent(patchSizePercent)
{
}

ChartDiscriminator::~ChartDiscriminator() = default;

void ChartDiscriminator::setGridPosition(const CTrapezoid& grid)
{
    m_gridPosition = grid;
    m_positionsStale = true;
    m_colorsInvalid = true;
}

CTrapezoid ChartDiscriminator::getGridPosition() const
{
    return m_gridPosition;
}

bool ChartDiscriminator::updateChartPositions()
{
    const QPointF tl = toF(m_gridPosition.getTopLeft());
    const QPointF tr = toF(m_gridPosition.getTopRight());
    const QPointF bl = toF(m_gridPosition.getBottomLeft());
    const QPointF br = toF(m_gridPosition.getBottomRight());
    auto top = [&](double u) { return tl + u * (tr - tl); };
    auto bottom = [&](double u) { return bl + u * (br - bl); };
    auto left = [&](double s) { return tl + s * (bl - tl); };
    auto right = [&](double s) { return tr + s * (br - tr); };

    const double m = (100 - m_patchSizePercent) / 100.0 * 0.5;
    m_chartPositions.clear();
    m_chartPositions.reserve(kColumns * kRows);
    for (int r = 0; r < kRows; ++r) {
        for (int c = 0; c < kColumns; ++c) {
            const double u1 = double(c) / kColumns + m / kColumns;
            const double u2 = double(c + 1) / kColumns - m / kColumns;
            const double s1 = double(r) / kRows + m / kRows;
            const double s2 = double(r + 1) / kRows - m / kRows;
            const QLineF a(top(u1), bottom(u1));
            const QLineF cLine(top(u2), bottom(u2));
            const QLineF d1(left(s1), right(s1));
            const QLineF d2(left(s2), right(s2));
            m_chartPositions.append(CTrapezoid(crossing(d1, a), crossing(d1, cLine), crossing(d2, a),
                                               crossing(d2, cLine)));
        }
    }
    m_positionsStale = false;
    return true;
}

void ChartDiscriminator::getChartPositions(QVector<CTrapezoid>& out)
{
    if (m_positionsStale)
        updateChartPositions();
    out.append(m_chartPositions);
}

bool ChartDiscriminator::getColorPatchValue(const CTrapezoid& patch, const Kalto::CKaltoImage* image,
                                            int fullScale, QColor& result)
{
    if (!hasPixels(image) || fullScale <= 0)
        return false;
    const QPolygon outline = patch.toPolygon();
    const QRect box = outline.boundingRect();
    // The last row and column of the bounding rectangle are never visited;
    // pixels outside the image are not part of the patch.
    const int yEnd = std::min(box.bottom(), static_cast<int>(image->GetHeight()));
    const int xEnd = std::min(box.right(), static_cast<int>(image->GetWidth()));
    m_samples.clear();
    const int xStart = std::max(box.left(), 0);
    auto sample = [&](int x, int y) {
        const Kalto::SPixelData p = image->GetPixelData(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
        m_samples.push_back({double(p.Red), double(p.Green), double(p.Blue)});
    };
    std::vector<std::pair<int, int>> runs;
    for (int y = std::max(box.top(), 0); y < yEnd; ++y) {
        // The odd-even test is a parity count of edge crossings left of the
        // point, so along a row it changes only at the crossings: find the
        // inside runs once per row and let containsPoint confirm each run's
        // ends; a row where it disagrees is tested pixel by pixel.
        insideRuns(outline, y, runs);
        bool confirmed = true;
        for (const auto& [first, last] : runs)
            confirmed = confirmed && outline.containsPoint(QPoint(first, y), Qt::OddEvenFill) &&
                        outline.containsPoint(QPoint(last, y), Qt::OddEvenFill) &&
                        !outline.containsPoint(QPoint(first - 1, y), Qt::OddEvenFill) &&
                        !outline.containsPoint(QPoint(last + 1, y), Qt::OddEvenFill);
        if (!confirmed) {
            for (int x = xStart; x < xEnd; ++x)
                if (outline.containsPoint(QPoint(x, y), Qt::OddEvenFill))
                    sample(x, y);
            continue;
        }
        for (const auto& [first, last] : runs)
            for (int x = std::max(first, xStart); x <= std::min(last, xEnd - 1); ++x)
                sample(x, y);
    }
    if (m_samples.size() < kMinSamples)
        return false;
    // Selection on packed (brightest channel, sample index) keys orders the
    // samples exactly as rgb16's operator< does, on plain integers. The read-out
    // gives integer channels, so the brightest one fits the upper 32 bits.
    m_keys.resize(m_samples.size());
    for (size_t i = 0; i < m_samples.size(); ++i)
        m_keys[i] = (static_cast<uint64_t>(brightest(m_samples[i])) << 32) | i;
    const auto middle = m_keys.begin() + static_cast<std::ptrdiff_t>(m_keys.size() / 2);
    std::nth_element(m_keys.begin(), middle, m_keys.end());
    const rgb16* median = &m_samples[static_cast<size_t>(*middle & 0xffffffffu)];
    result.setRedF(median->red / fullScale);
    result.setGreenF(median->green / fullScale);
    result.setBlueF(median->blue / fullScale);
    return true;
}

bool ChartDiscriminator::updateColorPatchValues(Kalto::CKaltoImage* image)
{
    if (!hasPixels(image))
        return !m_colorsInvalid;
    const int fullScale = fullScaleOf(image);
    if (m_positionsStale)
        updateChartPositions();
    m_colorPatchValues.clear();
    for (const CTrapezoid& patch : qAsConst(m_chartPositions)) {
        QColor colour;
        if (getColorPatchValue(patch, image, fullScale, colour))
            m_colorPatchValues.append(colour);
    }
    if (!m_colorPatchValues.isEmpty()) {
        m_colorsInvalid = false;
        return true;
    }
    return !m_colorsInvalid;
}

void ChartDiscriminator::getColorPatchValues(QVector<QColor>& out)
{
    if (!m_colorsInvalid)
        out.append(m_colorPatchValues);
}

bool ChartDiscriminator::update80PercentGrayPatchValue(Kalto::CKaltoImage* image)
{
    if (m_colorPatchValues.isEmpty() && !updateColorPatchValues(image)) {
        m_colorsInvalid = true;
        m_grayInvalid = true;
        return false;
    }
    if (!hasPixels(image)) {
        m_colorsInvalid = true;
        m_grayInvalid = true;
        return false;
    }
    const int fullScale = fullScaleOf(image);
    if (m_colorPatchValues.size() == kColumns * kRows) {
        if (m_positionsStale)
            updateChartPositions();
        QColor grey;
        if (!getColorPatchValue(m_chartPositions[kGray80PercentIndex], image, fullScale, grey)) {
            m_colorsInvalid = true;
            m_grayInvalid = true;
            return false;
        }
        m_colorPatchValues[kGray80PercentIndex] = grey;
    }
    // Only the grey patch is current now; the full set waits for the next pass.
    m_colorsInvalid = true;
    m_grayInvalid = false;
    return true;
}

int ChartDiscriminator::get80PercentGrayPatchBrightness()
{
    if (m_grayInvalid || m_colorPatchValues.size() <= kGray80PercentIndex)
        return 0;
    const QColor& c = m_colorPatchValues[kGray80PercentIndex];
    return static_cast<int>(std::max({c.redF(), c.greenF(), c.blueF()}) * 255.0);
}

double ChartDiscriminator::get80PercentGrayPatch150DnHitRate()
{
    if (m_grayInvalid)
        return 0.0;
    return get80PercentGrayPatchBrightness() * 100.0 / 150.0;
}
