#include "chartgridcheck.h"
#include "extendedchartsearchparameters.h"

#include "colorchecker.h"
#include "colorspace.h"

#include <QPainter>

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

struct PlacementRow {
    const char* name;
    double columns, rows, pitchScale;
    bool accepted;
};

class GridPlacement : public ::testing::TestWithParam<PlacementRow> {};

TEST_P(GridPlacement, AcceptsOnlyTheGridOnThePatches)
{
    const PlacementRow& row = GetParam();
    const ChartGridCheck::Measures m =
        ChartGridCheck::measure(renderChart(), centres(row.columns, row.rows, row.pitchScale));
    EXPECT_EQ(ChartGridCheck::accepts(m), row.accepted)
        << row.name << ": spread " << m.cellSpread << ", grey steps " << m.greyStepsDown << ", grey range "
        << m.greyRange << ", grey chroma " << m.greyChroma << ", hues " << m.hueAgreement;
}

const PlacementRow kPlacements[] = {
    {"in place", 0, 0, 1.0, true},
    {"a twentieth of a cell off", 0.05, -0.05, 1.0, true},
    {"half a column off", 0.5, 0, 1.0, false},
    {"half a row off", 0, 0.5, 1.0, false},
    {"one column right", 1, 0, 1.0, false},
    {"one column left", -1, 0, 1.0, false},
    {"one row up", 0, -1, 1.0, false},
    {"one row down", 0, 1, 1.0, false},
    {"pitch a fifth short", 0, 0, 0.8, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, GridPlacement, ::testing::ValuesIn(kPlacements));

struct ShiftRow {
    const char* name;
    double columns, rows;
    bool distinct;
};

class GridShift : public ::testing::TestWithParam<ShiftRow> {};

// The grid beside the chart by one column or row still lies on patches; its
// hues must then agree less with the chart's than those of the grid moved
// back onto it, which the extended search requires by a margin.
TEST_P(GridShift, OnlyTheGridInPlaceBeatsItsNeighbours)
{
    const ShiftRow& row = GetParam();
    QVector<QPointF> grid;
    for (const QPoint& p : centres(row.columns, row.rows))
        grid << QPointF(p);
    const double margin = ChartGridCheck::shiftMargin(renderChart(), grid);
    const double required = ExtendedChartSearchParameters().minShiftMargin;
    if (row.distinct)
        EXPECT_GE(margin, required) << row.name;
    else
        EXPECT_LT(margin, required) << row.name;
}

const ShiftRow kShifts[] = {
    {"in place", 0, 0, true},
    {"one column right", 1, 0, false},
    {"one column left", -1, 0, false},
    {"one row up", 0, -1, false},
    {"one row down", 0, 1, false},
    {"one row and one column off", 1, 1, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, GridShift, ::testing::ValuesIn(kShifts));

TEST(ChartGridCheck, ShiftMarginOfAGridLeavingTheImageIsLowest)
{
    QVector<QPointF> grid;
    for (const QPoint& p : centres(-3, 0))
        grid << QPointF(p);
    EXPECT_EQ(ChartGridCheck::shiftMargin(renderChart(), grid), -2.0);
    EXPECT_EQ(ChartGridCheck::shiftMargin(renderChart(), grid.mid(0, 23)), -2.0);
}

TEST(ChartGridCheck, InPlaceGridMeasuresAsTheChart)
{
    const ChartGridCheck::Measures m = ChartGridCheck::measure(renderChart(), centres(0, 0));
    EXPECT_LT(m.cellSpread, 0.05);
    EXPECT_EQ(m.greyStepsDown, 5);
    EXPECT_GT(m.hueAgreement, 0.95);
    EXPECT_LT(m.greyChroma, 0.1);
}

TEST(ChartGridCheck, GridLeavingTheImageOrShortListFails)
{
    const QImage img = renderChart();
    EXPECT_FALSE(ChartGridCheck::accepts(ChartGridCheck::measure(img, centres(-3, 0))));
    EXPECT_FALSE(ChartGridCheck::accepts(ChartGridCheck::measure(img, centres(0, 0).mid(0, 23))));
    EXPECT_FALSE(ChartGridCheck::accepts(ChartGridCheck::measure(QImage(), centres(0, 0))));
}

}  // namespace
