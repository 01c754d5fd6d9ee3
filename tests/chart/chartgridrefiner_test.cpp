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
};

class RefinerStart : public ::testing::TestWithParam<StartRow> {};

TEST_P(RefinerStart, SettlesOnThePatches)
{
    const StartRow& row = GetParam();
    const QVector<QPointF> start = grid(row.shift, row.pitch);
    ASSERT_GT(worstError(start), 3.0) << row.name;
    EXPECT_LE(worstError(ChartGridRefiner::refine(renderChart(), start)), 2.0) << row.name;
}

const StartRow kStarts[] = {
    {"a fifth of a pitch right and down", {6, 6}, kPitch},
    {"a sixth of a pitch up", {0, -5}, kPitch},
    {"pitch 5 % short", {0, 0}, kPitch * 0.95},
    {"pitch 5 % long, shifted", {-3, 2}, kPitch * 1.05},
};

INSTANTIATE_TEST_SUITE_P(Rows, RefinerStart, ::testing::ValuesIn(kStarts));

TEST(ChartGridRefiner, RowsSqueezedTogetherSpreadBackOntoThePatches)
{
    // The top row starts a seventh of a pitch low and the rows below follow
    // proportionally: every cell still overlaps its patch, so only moving the
    // whole top side brings the grid back.
    QVector<QPointF> start = grid(QPointF(0, 0), kPitch);
    for (int k = 0; k < 24; ++k)
        start[k].ry() += (3 - k / 6) * kPitch / 21.0;
    ASSERT_GT(worstError(start), 4.0);
    EXPECT_LE(worstError(ChartGridRefiner::refine(renderChart(), start)), 1.5);
}

TEST(ChartGridRefiner, GridInPlaceStays)
{
    const QVector<QPointF> start = grid(QPointF(0, 0), kPitch);
    EXPECT_EQ(ChartGridRefiner::refine(renderChart(), start), start);
}

TEST(ChartGridRefiner, WrongInputComesBackUnchanged)
{
    const QVector<QPointF> shortList = grid(QPointF(0, 0), kPitch).mid(0, 20);
    EXPECT_EQ(ChartGridRefiner::refine(renderChart(), shortList), shortList);
    const QVector<QPointF> start = grid(QPointF(0, 0), kPitch);
    EXPECT_EQ(ChartGridRefiner::refine(QImage(), start), start);
    const QVector<QPointF> outside = grid(QPointF(-200, 0), kPitch);
    EXPECT_EQ(ChartGridRefiner::refine(renderChart(), outside), outside);
}

}  // namespace
