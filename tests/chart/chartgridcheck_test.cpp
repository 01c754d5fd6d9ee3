#include "chartgridcheck.h"
#include "extendedchartsearchparameters.h"

#include "colorchecker.h"
#include "colorspace.h"

#include <QPainter>
#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace {

constexpr int kPitch = 40;
constexpr int kPatch = 32;  // patch side; the rest of the pitch is black gap
const QPoint kOrigin(100, 80);  // centre of patch 1

// An upright chart in its target colours on a mid-grey table.
QImage renderChart()
{
    QImage img(500, 340, QImage::Format_ARGB32);
    img.fill(QColor(120, 118, 115));
    QPainter painter(&img);
    painter.fillRect(QRect(kOrigin - QPoint(kPitch, kPitch) / 2 - QPoint(6, 6), QSize(6 * kPitch + 12, 4 * kPitch + 12)),
                     Qt::black);
    const ColorSpace cs;
    const dlib::matrix<double, 24, 3> t = ColorChecker().GetTargetRgb();
    for (int k = 0; k < 24; ++k) {
        // The encoding gives 0..255 codes.
        const QColor c(qRound(cs.RGB_to_sRGB(t(k, 0))), qRound(cs.RGB_to_sRGB(t(k, 1))), qRound(cs.RGB_to_sRGB(t(k, 2))));
        const QPoint centre = kOrigin + QPoint(k % 6, k / 6) * kPitch;
        painter.fillRect(QRect(centre - QPoint(kPatch, kPatch) / 2, QSize(kPatch, kPatch)), c);
    }
    return img;
}

// Grid centres moved by a fraction of a cell along the rows and columns.
QVector<QPoint> centres(double columns, double rows, double pitchScale = 1.0)
{
    QVector<QPoint> out;
    for (int k = 0; k < 24; ++k)
        out << kOrigin + QPointF((k % 6 + columns) * kPitch * pitchScale, (k / 6 + rows) * kPitch * pitchScale).toPoint();
    return out;
}

QVector<QPointF> centresF(double columns, double rows)
{
    QVector<QPointF> out;
    for (const QPoint& p : centres(columns, rows))
        out << QPointF(p);
    return out;
}

enum class Margin { Distinct, NotDistinct, Unchecked };

struct PlacementRow {
    const char* name;
    double columns, rows, pitchScale;
    bool accepted;
    Margin margin;
};

void PrintTo(const PlacementRow& row, std::ostream* os) { *os << row.name; }

class GridPlacement : public ::testing::TestWithParam<PlacementRow> {};

// Only the grid on the patches passes the checks. The grid beside the chart by
// one column or row still lies on patches; its hues must then agree less with
// the chart's than those of the grid moved back onto it, which the extended
// search requires by a margin.
TEST_P(GridPlacement, AcceptsOnlyTheGridOnThePatches)
{
    const PlacementRow& row = GetParam();
    const ChartGridCheck::Measures m =
        ChartGridCheck::measure(renderChart(), centres(row.columns, row.rows, row.pitchScale));
    EXPECT_EQ(ChartGridCheck::accepts(m), row.accepted)
        << row.name << ": spread " << m.cellSpread << ", grey steps " << m.greyStepsDown << ", grey range "
        << m.greyRange << ", grey chroma " << m.greyChroma << ", hues " << m.hueAgreement;
    if (row.margin != Margin::Unchecked)
        EXPECT_EQ(ChartGridCheck::shiftMargin(renderChart(), centresF(row.columns, row.rows)) >=
                      ExtendedChartSearchParameters().minShiftMargin,
                  row.margin == Margin::Distinct)
            << row.name;
}

const PlacementRow kPlacements[] = {
    {"in place", 0, 0, 1.0, true, Margin::Distinct},
    {"a twentieth of a cell off", 0.05, -0.05, 1.0, true, Margin::Unchecked},
    {"half a column off", 0.5, 0, 1.0, false, Margin::Unchecked},
    {"half a row off", 0, 0.5, 1.0, false, Margin::Unchecked},
    {"one column right", 1, 0, 1.0, false, Margin::NotDistinct},
    {"one column left", -1, 0, 1.0, false, Margin::NotDistinct},
    {"one row up", 0, -1, 1.0, false, Margin::NotDistinct},
    {"one row down", 0, 1, 1.0, false, Margin::NotDistinct},
    {"one row and one column off", 1, 1, 1.0, false, Margin::NotDistinct},
    {"pitch a fifth short", 0, 0, 0.8, false, Margin::Unchecked},
};

INSTANTIATE_TEST_SUITE_P(Rows, GridPlacement, ::testing::ValuesIn(kPlacements));

TEST(ChartGridCheck, InPlaceGridMeasuresAsTheChart)
{
    const ChartGridCheck::Measures m = ChartGridCheck::measure(renderChart(), centres(0, 0));
    EXPECT_LT(m.cellSpread, 0.05);
    EXPECT_EQ(m.greyStepsDown, 5);
    EXPECT_GT(m.hueAgreement, 0.95);
    EXPECT_LT(m.greyChroma, 0.1);
}

// A grid leaving the image, a short list or no image get every check's worst answer.
TEST(ChartGridCheck, GridLeavingTheImageOrShortListFailsEveryCheck)
{
    const QImage img = renderChart();
    for (const QVector<QPointF>& grid : {centresF(-3, 0), centresF(0, 0).mid(0, 23)}) {
        QVector<QPoint> whole;
        for (const QPointF& p : grid)
            whole << p.toPoint();
        EXPECT_FALSE(ChartGridCheck::accepts(ChartGridCheck::measure(img, whole))) << grid.size();
        EXPECT_EQ(ChartGridCheck::shiftMargin(img, grid), -2.0) << grid.size();
        EXPECT_EQ(ChartGridCheck::cellsOffPatches(img, grid), 24) << grid.size();
    }
    EXPECT_FALSE(ChartGridCheck::accepts(ChartGridCheck::measure(QImage(), centres(0, 0))));
}

struct OffPatchRow {
    const char* name;
    double columns, rows;  // whole grid moved, in cells
    double lastColumn;     // the right column alone moved further along the rows, in cells
    int covered;           // patches hidden behind a disc in a colour of its own
    double noise;          // 8-bit code values
    int fewest, most;      // cells off their patches
};

void PrintTo(const OffPatchRow& row, std::ostream* os) { *os << row.name; }

class CellsOffPatches : public ::testing::TestWithParam<OffPatchRow> {};

// A grid in place reads one colour in the middle of every cell, however noisy
// the image or covered a few patches; one off by about a third of a pitch
// reaches the gaps in its light cells.
TEST_P(CellsOffPatches, CountsTheCellsReachingTheGaps)
{
    const OffPatchRow& row = GetParam();
    QImage img = renderChart();
    QPainter painter(&img);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor covers[] = {QColor(200, 40, 160), QColor(30, 200, 220), QColor(240, 240, 10)};
    for (int i = 0; i < row.covered; ++i) {
        const int k = 4 + 7 * i;
        painter.setBrush(covers[i]);
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(kOrigin + QPoint(k % 6, k / 6) * kPitch) + QPointF(3, -2), 0.55 * kPitch, 0.55 * kPitch);
    }
    painter.end();
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0.0, row.noise);
    for (int y = 0; row.noise > 0 && y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            const QRgb p = img.pixel(x, y);
            auto n = [&](int v) { return std::clamp(int(std::lround(v + noise(rng))), 0, 255); };
            img.setPixel(x, y, qRgb(n(qRed(p)), n(qGreen(p)), n(qBlue(p))));
        }
    QVector<QPointF> grid;
    for (int k = 0; k < 24; ++k)
        grid << QPointF(kOrigin) +
                    QPointF(k % 6 + row.columns + (k % 6 == 5 ? row.lastColumn : 0.0), k / 6 + row.rows) * kPitch;
    const int off = ChartGridCheck::cellsOffPatches(img, grid);
    EXPECT_GE(off, row.fewest) << row.name;
    EXPECT_LE(off, row.most) << row.name;
}

const OffPatchRow kOffPatchRows[] = {
    {"in place", 0, 0, 0, 0, 0, 0, 0},
    {"in place, noisy", 0, 0, 0, 0, 8, 0, 0},
    {"in place, three patches covered", 0, 0, 0, 3, 2, 0, 3},
    {"a tenth of a cell off", 0.1, -0.1, 0, 0, 2, 0, 0},
    {"a third of a column off", 0.33, 0, 0, 0, 2, 12, 24},
    {"a third of a row off", 0, -0.33, 0, 0, 2, 12, 24},
    {"a third of a cell off, three covered", 0.33, 0.33, 0, 3, 2, 10, 24},
    {"right column a third off, stretching the grid", 0, 0, 0.33, 0, 2, 2, 24},
};

INSTANTIATE_TEST_SUITE_P(Rows, CellsOffPatches, ::testing::ValuesIn(kOffPatchRows));

// The outer corners lie half a cell beyond the corner patches' centres; the
// centres come back from them, also under perspective.
TEST(ChartGridCheck, CentresOfCornersInvertTheOuterCorners)
{
    QPolygonF from, to;
    from << QPointF(-0.5, -0.5) << QPointF(5.5, -0.5) << QPointF(5.5, 3.5) << QPointF(-0.5, 3.5);
    to << QPointF(100, 50) << QPointF(700, 90) << QPointF(680, 470) << QPointF(130, 420);
    QTransform t;
    ASSERT_TRUE(QTransform::quadToQuad(from, to, t));
    const QVector<QPointF> c = ChartGridCheck::centresOfCorners({QPoint(100, 50), QPoint(700, 90), QPoint(130, 420), QPoint(680, 470)});
    ASSERT_EQ(c.size(), 24);
    for (int k = 0; k < 24; ++k) {
        const QPointF e = t.map(QPointF(k % 6, k / 6));
        EXPECT_NEAR(c[k].x(), e.x(), 1e-6) << k;
        EXPECT_NEAR(c[k].y(), e.y(), 1e-6) << k;
    }
    EXPECT_TRUE(ChartGridCheck::centresOfCorners({QPoint(1, 1), QPoint(2, 2), QPoint(3, 3)}).isEmpty());
}

}  // namespace
