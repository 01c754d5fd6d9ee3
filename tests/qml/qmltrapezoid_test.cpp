#include "qmltrapezoid.h"

#include "ctrapezoid.h"
#include "pointtransformer.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace {

TEST(QmlTrapezoid, WithoutTrapezoidShowsThePlaceholderAndOnlyNotifies)
{
    QmlTrapezoid item;
    EXPECT_EQ(item.upperLeft(), QPoint(0, 0));
    EXPECT_EQ(item.upperRight(), QPoint(2, 0));
    EXPECT_EQ(item.lowerRight(), QPoint(2, 2));
    EXPECT_EQ(item.lowerLeft(), QPoint(0, 2));
    EXPECT_EQ(item.bottomCenter(), QPoint(1, 2));
    EXPECT_EQ(item.center(), QPoint(1, 1));

    QSignalSpy moved(&item, &QmlTrapezoid::upperLeftChanged);
    item.setUpperLeft(QPoint(50, 50));
    EXPECT_EQ(moved.count(), 1);
    EXPECT_EQ(item.upperLeft(), QPoint(0, 0));
}

TEST(QmlTrapezoid, CornersAreViewPixelsOverImagePixels)
{
    PointTransformer transformer;
    transformer.setScale(2.0);
    transformer.setOffset(QPoint(10, 0));
    CTrapezoid shape(QPoint(8, 10), QPoint(40, 10), QPoint(8, 30), QPoint(40, 30));
    QmlTrapezoid item(&shape, &transformer);

    EXPECT_EQ(item.upperLeft(), QPoint(14, 5));
    EXPECT_EQ(item.lowerRight(), QPoint(30, 15));

    QSignalSpy upperRight(&item, &QmlTrapezoid::upperRightChanged);
    QSignalSpy lowerLeft(&item, &QmlTrapezoid::lowerLeftChanged);
    QSignalSpy center(&item, &QmlTrapezoid::centerChanged);
    item.setUpperRight(QPoint(35, 4));
    item.setLowerLeft(QPoint(12, 20));
    EXPECT_EQ(shape.getTopRight(), QPoint(50, 8));
    EXPECT_EQ(shape.getBottomLeft(), QPoint(4, 40));
    EXPECT_EQ(upperRight.count(), 1);
    EXPECT_EQ(lowerLeft.count(), 1);
    EXPECT_EQ(center.count(), 2);
}

struct CentreRow {
    CTrapezoid shape;
    QPoint center;
    QPoint bottomCenter;
};

class QmlTrapezoidCentres : public ::testing::TestWithParam<CentreRow> {};

// The diagonals of the second row cross at (4.12, 2.94): truncated, not rounded.
TEST_P(QmlTrapezoidCentres, CrossingOfDiagonalsAndMiddleOfBottomTruncated)
{
    CentreRow row = GetParam();
    QmlTrapezoid item(&row.shape, nullptr);
    EXPECT_EQ(item.center(), row.center);
    EXPECT_EQ(item.bottomCenter(), row.bottomCenter);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, QmlTrapezoidCentres,
    ::testing::Values(CentreRow{CTrapezoid(QPoint(0, 0), QPoint(10, 0), QPoint(0, 10), QPoint(10, 10)), QPoint(5, 5),
                                QPoint(5, 10)},
                      CentreRow{CTrapezoid(QPoint(0, 0), QPoint(10, 0), QPoint(0, 5), QPoint(7, 5)), QPoint(4, 2),
                                QPoint(3, 5)},
                      CentreRow{CTrapezoid(QPoint(-9, -9), QPoint(-2, -9), QPoint(-9, -2), QPoint(-2, -2)),
                                QPoint(-5, -5), QPoint(-5, -2)}));

}  // namespace
