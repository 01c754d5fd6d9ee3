#include "pointtransformer.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace {

struct MappingRow {
    double scale;
    QPoint offset;
    QPoint view;
    QPoint image;
    enum { Both, ToView, ToImage } way;  // one way only where truncation loses the way back
};

class PointTransformerMapping : public ::testing::TestWithParam<MappingRow> {};

// Truncation toward zero is what makes the odd rows come out as they do
// (rounding would give 14/4, -2 and 13/4 in the first rows).
TEST_P(PointTransformerMapping, MapsWithTruncationTowardZero)
{
    const MappingRow row = GetParam();
    PointTransformer t;
    t.setScale(row.scale);
    t.setOffset(row.offset);
    if (row.way != MappingRow::ToImage) {
        EXPECT_EQ(t.inverseTransform(row.image), row.view);
    }
    if (row.way != MappingRow::ToView) {
        EXPECT_EQ(t.transform(row.view), row.image);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PointTransformerMapping,
    ::testing::Values(MappingRow{2.0, QPoint(10, 0), QPoint(14, 5), QPoint(8, 10), MappingRow::Both},
                      MappingRow{3.0, QPoint(10, 0), QPoint(40, 30), QPoint(90, 90), MappingRow::Both},
                      MappingRow{1.0, QPoint(0, 0), QPoint(7, 9), QPoint(7, 9), MappingRow::Both},
                      // 13.33, 3.33 and 13.67, 3.67
                      MappingRow{3.0, QPoint(10, 0), QPoint(13, 3), QPoint(10, 10), MappingRow::ToView},
                      MappingRow{3.0, QPoint(10, 0), QPoint(13, 3), QPoint(11, 11), MappingRow::ToView},
                      // -1.5, 1.5: toward zero, not down
                      MappingRow{0.5, QPoint(0, 0), QPoint(-3, 3), QPoint(-1, 1), MappingRow::ToImage}));

TEST(PointTransformer, NotifiesOnlyRealChanges)
{
    PointTransformer t;
    QSignalSpy offset(&t, &PointTransformer::offsetChanged);
    QSignalSpy scale(&t, &PointTransformer::scaleChanged);
    t.setOffset(QPoint(0, 0));
    t.setX(5.9);
    t.setX(5.2);
    t.setY(-2.0);
    t.setScale(1.0);
    t.setScale(2.5);
    EXPECT_EQ(offset.count(), 2);
    EXPECT_EQ(t.offset(), QPoint(5, -2));
    EXPECT_EQ(scale.count(), 1);
}

}  // namespace
