#include "pointtransformer.h"

#include "guitestapp.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace {

struct MappingRow {
    double scale;
    QPoint offset;
    QPoint view;
    QPoint image;
};

class PointTransformerMapping : public ::testing::TestWithParam<MappingRow> {};

// Each row holds in both directions; truncation toward zero is what makes the
// odd rows come out as they do (rounding would give 14/4, -2 and 13/4).
TEST_P(PointTransformerMapping, MapsBothWaysWithTruncation)
{
    GuiTestApp::instance();
    const MappingRow row = GetParam();
    PointTransformer t;
    t.setScale(row.scale);
    t.setOffset(row.offset);
    EXPECT_EQ(t.transform(row.view), row.image);
    EXPECT_EQ(t.inverseTransform(row.image), row.view);
}

INSTANTIATE_TEST_SUITE_P(Rows, PointTransformerMapping,
                         ::testing::Values(MappingRow{2.0, QPoint(10, 0), QPoint(14, 5), QPoint(8, 10)},
                                           MappingRow{3.0, QPoint(10, 0), QPoint(40, 30), QPoint(90, 90)},
                                           MappingRow{1.0, QPoint(0, 0), QPoint(7, 9), QPoint(7, 9)}));

TEST(PointTransformer, TruncatesInsteadOfRounding)
{
    GuiTestApp::instance();
    PointTransformer t;
    t.setScale(3.0);
    t.setOffset(QPoint(10, 0));
    EXPECT_EQ(t.inverseTransform(QPoint(10, 10)), QPoint(13, 3));  // 13.33, 3.33
    EXPECT_EQ(t.inverseTransform(QPoint(11, 11)), QPoint(13, 3));  // 13.67, 3.67
    t.setScale(0.5);
    t.setOffset(QPoint(0, 0));
    EXPECT_EQ(t.transform(QPoint(-3, 3)), QPoint(-1, 1));  // toward zero, not down
}

TEST(PointTransformer, NotifiesOnlyRealChanges)
{
    GuiTestApp::instance();
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
