#include "chartgridrefiner.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double kPitch = 30.0;
const QPointF kOrigin(120.5, 90.5);  // centre of patch 1

// Patches of distinct colours 24 px wide on a 30 px pitch, black between them.
QImage renderChart()
{
    QImage img(420, 300, QImage::Format_RGB32);
    img.fill(QColor(90, 90, 90));
    QPainter painter(&img);
    painter.fillRect(QRectF(kOrigin - QPointF(kPitch, kPitch) * 0.6, QSizeF(6.2 * kPitch, 4.2 * kPitch)), Qt::black);
    for (int k = 0; k < 24; ++k) {
        const QPointF c = kOrigin + QPointF(k % 6, k / 6) * kPitch;
        painter.fillRect(QRectF(c - QPointF(12, 12), QSizeF(24, 24)),
                         QColor::fromHsv(k * 15 % 360, 80 + k * 7, 120 + k * 5));
    }
    return img;
}

QVector<QPointF> grid(QPointF shift, double pitch)
{
    QVector<QPointF> out;
    for (int k = 0; k < 24; ++k)
        out << kOrigin + shift + QPointF(k % 6, k / 6) * pitch;
    return out;
}

double worstError(const QVector<QPointF>& found)
{
    const QVector<QPointF> truth = grid(QPointF(0, 0), kPitch);
    double worst = 0.0;
    for (int k = 0; k < 24; ++k)
        worst = std::max(worst, std::hypot(found[k].x() - truth[k].x(), found[k].y() - truth[k].y()));
    return worst;
}

struct StartRow {
    const char* name;
    QPointF shift;
    double pitch;
    double squeeze;    // top row lowered by this share of a pitch, the rows below following proportionally
    double tolerance;  // px
};

void PrintTo(const StartRow& row, std::ostream* os) { *os << row.name; }

class RefinerStart : public ::testing::TestWithParam<StartRow> {};

TEST_P(RefinerStart, SettlesOnThePatches)
{
    const StartRow& row = GetParam();
    QVector<QPointF> start = grid(row.shift, row.pitch);
    for (int k = 0; k < 24; ++k)
        start[k].ry() += (3 - k / 6) * kPitch * row.squeeze / 3;
    ASSERT_GT(worstError(start), 3.0) << row.name;
    EXPECT_LE(worstError(ChartGridRefiner::refine(renderChart(), start)), row.tolerance) << row.name;
}

// Squeezed rows still overlap their patches, so only moving the whole top side
// brings the grid back.
const StartRow kStarts[] = {
    {"a fifth of a pitch right and down", {6, 6}, kPitch, 0, 2.0},
    {"a sixth of a pitch up", {0, -5}, kPitch, 0, 2.0},
    {"pitch 5 % short", {0, 0}, kPitch * 0.95, 0, 2.0},
    {"pitch 5 % long, shifted", {-3, 2}, kPitch * 1.05, 0, 2.0},
    {"rows squeezed together", {0, 0}, kPitch, 1.0 / 7, 1.5},
};

INSTANTIATE_TEST_SUITE_P(Rows, RefinerStart, ::testing::ValuesIn(kStarts));

TEST(ChartGridRefiner, SmallChartSettlesWithinATenthOfAPitch)
{
    // Pitch 12 px at a fractional origin, edges antialiased: the final
    // placement of a chart far from the camera, started at the reduced
    // image's pitch error; a fifth of a pitch off puts a cell's middle on the frame.
    const double pitch = 12.0;
    const QPointF origin(40.3, 30.6);
    QImage img(160, 110, QImage::Format_RGB32);
    img.fill(QColor(90, 90, 90));
    QPainter painter(&img);
    painter.setRenderHint(QPainter::Antialiasing);
    // Painted coordinates cover pixels, the refiner's address pixel centres.
    painter.translate(0.5, 0.5);
    painter.fillRect(QRectF(origin - QPointF(0.8, 0.8) * pitch, QSizeF(6.6, 4.6) * pitch), Qt::black);
    QVector<QPointF> truth;
    for (int k = 0; k < 24; ++k) {
        truth << origin + QPointF(k % 6, k / 6) * pitch;
        painter.fillRect(QRectF(truth.back() - QPointF(0.4, 0.4) * pitch, QSizeF(0.8, 0.8) * pitch),
                         QColor::fromHsv(k * 15 % 360, 80 + k * 7, 120 + k * 5));
    }
    painter.end();
    const QPointF middle = origin + QPointF(2.5, 1.5) * pitch;
    for (double scale : {1.1, 0.92}) {
        for (const QPointF& off : {QPointF(0, 0), QPointF(2.4, -1.2), QPointF(-1.8, 1.8)}) {
            // A grid of the wrong pitch about the chart's middle, its top-right patch moved.
            QVector<QPointF> start;
            for (int k = 0; k < 24; ++k)
                start << middle + (truth[k] - middle) * scale + off * (k % 6 / 5.0) * (1.0 - k / 6 / 3.0);
            const QVector<QPointF> found = ChartGridRefiner::refine(img, start);
            double worst = 0.0;
            for (int k = 0; k < 24; ++k)
                worst = std::max(worst, std::hypot(found[k].x() - truth[k].x(), found[k].y() - truth[k].y()));
            EXPECT_LE(worst, 0.1 * pitch) << "pitch x " << scale << ", top-right patch moved by " << off.x() << ","
                                          << off.y();
        }
    }
}

// A grid in place, a short list, no image or a grid off the image come back unchanged.
TEST(ChartGridRefiner, NothingToImproveComesBackUnchanged)
{
    const QVector<QPointF> inPlace = grid(QPointF(0, 0), kPitch), outside = grid(QPointF(-200, 0), kPitch);
    EXPECT_EQ(ChartGridRefiner::refine(renderChart(), inPlace), inPlace);
    EXPECT_EQ(ChartGridRefiner::refine(renderChart(), inPlace.mid(0, 20)), inPlace.mid(0, 20));
    EXPECT_EQ(ChartGridRefiner::refine(QImage(), inPlace), inPlace);
    EXPECT_EQ(ChartGridRefiner::refine(renderChart(), outside), outside);
}

}  // namespace
