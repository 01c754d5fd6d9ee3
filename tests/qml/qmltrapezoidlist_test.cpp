#include "qmltrapezoidlist.h"

#include "colorcorrectionmodel.h"
#include "emulatedpool.h"
#include "guitestapp.h"
#include "pointtransformer.h"
#include "qmltrapezoid.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace {

QStringList g_debugLines;
void captureDebug(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtDebugMsg)
        g_debugLines << message;
}

/// A grid list over a session that has not opened a camera: the grid arithmetic needs none.
class QmlTrapezoidListTest : public ::testing::Test {
protected:
    QmlTrapezoidListTest() : model(pool.createModel()), list(model.get(), &transformer)
    {
        transformer.setScale(2.0);
        transformer.setOffset(QPoint(5, 3));
        *list.outline() = CTrapezoid(QPoint(40, 40), QPoint(640, 40), QPoint(40, 440), QPoint(640, 440));
    }

    QPoint centreOf(int index) const { return list.trapezoidAt(index)->center(); }

    EmulatedPool pool;
    std::unique_ptr<ColorCorrectionModel> model;
    PointTransformer transformer;
    QmlTrapezoidList list;
};

TEST_F(QmlTrapezoidListTest, UpdateBuildsTheSessionsPatchesInItsOrder)
{
    QSignalSpy changed(&list, &QmlTrapezoidList::listChanged);
    list.update();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(model->GetGridPosition(), *list.outline());

    QVector<CTrapezoid> patches;
    model->GetColorPatchPositions(patches);
    ASSERT_EQ(patches.size(), 24);
    ASSERT_EQ(list.count(), 24);
    for (int i = 0; i < 24; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(list.trapezoidAt(i)->upperLeft(), transformer.inverseTransform(patches[i].getTopLeft()));
        EXPECT_EQ(list.trapezoidAt(i)->lowerRight(), transformer.inverseTransform(patches[i].getBottomRight()));
    }
    // Row-major: patch 6 opens the second row, under patch 0.
    EXPECT_GT(centreOf(6).y(), centreOf(0).y());
    EXPECT_NEAR(centreOf(6).x(), centreOf(0).x(), 2);

    list.update();
    EXPECT_EQ(list.count(), 24);
    EXPECT_EQ(changed.count(), 2);
}

TEST_F(QmlTrapezoidListTest, HitTestFindsEachPatchAndNothingBesideThem)
{
    EXPECT_EQ(list.patchIndexAtPoint(100, 100), -1);  // no items yet
    list.update();
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(list.patchIndexAtPoint(centreOf(i).x(), centreOf(i).y()), i);
    const QPoint farOutside = transformer.inverseTransform(QPoint(700, 500));
    EXPECT_EQ(list.patchIndexAtPoint(farOutside.x(), farOutside.y()), -1);
    // Between patch 0 and patch 1 lies the chart's gap.
    const QPoint gap((list.trapezoidAt(0)->upperRight().x() + list.trapezoidAt(1)->upperLeft().x()) / 2,
                     centreOf(0).y());
    EXPECT_EQ(list.patchIndexAtPoint(gap.x(), gap.y()), -1);
}

TEST_F(QmlTrapezoidListTest, SharedBorderBelongsToTheFirstPatchInOrder)
{
    // A chart shrunk to a single pixel a patch puts every patch onto the same few pixels.
    *list.outline() = CTrapezoid(QPoint(0, 0), QPoint(6, 0), QPoint(0, 4), QPoint(6, 4));
    transformer.setScale(0.01);
    transformer.setOffset(QPoint(0, 0));
    list.update();
    ASSERT_EQ(list.count(), 24);
    const QPoint c = centreOf(7);
    const int hit = list.patchIndexAtPoint(c.x(), c.y());
    ASSERT_GE(hit, 0);
    for (int i = 0; i < hit; ++i) {
        const QmlTrapezoid* item = list.trapezoidAt(i);
        const QPolygon p({item->upperLeft(), item->upperRight(), item->lowerRight(), item->lowerLeft()});
        EXPECT_FALSE(p.containsPoint(c, Qt::OddEvenFill)) << "patch " << i << " holds it too";
    }
}

TEST_F(QmlTrapezoidListTest, ThreePartitionsOfAPatch)
{
    list.update();
    const QmlTrapezoid& p = *list.trapezoidAt(10);
    const QPoint ul = p.upperLeft(), ur = p.upperRight(), ll = p.lowerLeft(), lr = p.lowerRight();
    const QPoint top((ul.x() + ur.x()) / 2, ul.y() + 2);
    const QPoint lowerLeftArea(ll.x() + 3, ll.y() - 3);
    const QPoint lowerRightArea(lr.x() - 3, lr.y() - 3);
    EXPECT_EQ(list.patchPartitionAtPoint(10, top.x(), top.y()), 1);
    EXPECT_EQ(list.patchPartitionAtPoint(10, lowerLeftArea.x(), lowerLeftArea.y()), 2);
    EXPECT_EQ(list.patchPartitionAtPoint(10, lowerRightArea.x(), lowerRightArea.y()), 3);
    EXPECT_EQ(list.patchPartitionAtPoint(10, lr.x() + 40, lr.y() + 40), -1);
    EXPECT_EQ(list.patchPartitionAtPoint(-1, top.x(), top.y()), -1);
}

struct PrefixRow {
    int patch;  // -1: a point outside every patch
    QString text;
};

class QmlTrapezoidListPrefix : public QmlTrapezoidListTest, public ::testing::WithParamInterface<PrefixRow> {};

TEST_P(QmlTrapezoidListPrefix, TextOfColorNamesTheSelectedPatch)
{
    list.update();
    const PrefixRow row = GetParam();
    const QPoint at = row.patch < 0 ? transformer.inverseTransform(QPoint(900, 900)) : centreOf(row.patch);
    QSignalSpy selected(&list, &QmlTrapezoidList::selectedPatchChanged);
    list.colorAtPoint(at.x(), at.y());
    list.colorAtPoint(at.x(), at.y());
    EXPECT_EQ(list.selectedPatch(), row.patch);
    EXPECT_LE(selected.count(), 1);
    EXPECT_EQ(list.textOfColor(QColor(120, 64, 33)), row.text);
}

INSTANTIATE_TEST_SUITE_P(Rows, QmlTrapezoidListPrefix,
                         ::testing::Values(PrefixRow{6, "Patch07 R: 120 G: 64 B: 33"},
                                           PrefixRow{8, "Patch09 R: 120 G: 64 B: 33"},
                                           PrefixRow{9, "Patch10 R: 120 G: 64 B: 33"},
                                           PrefixRow{23, "Patch24 R: 120 G: 64 B: 33"},
                                           PrefixRow{-1, "Patch00 R: 120 G: 64 B: 33"}));

TEST_F(QmlTrapezoidListTest, ColourAccessorsOutOfRangeLogAndGiveInvalid)
{
    g_debugLines.clear();
    const QtMessageHandler previous = qInstallMessageHandler(captureDebug);
    const QColor target = list.targetColorAt(30);
    const QColor original = list.originalColorAt(24);
    const QColor calibrated = list.calibratedColorAt(0);
    qInstallMessageHandler(previous);
    EXPECT_FALSE(target.isValid());
    EXPECT_FALSE(original.isValid());
    EXPECT_FALSE(calibrated.isValid());
    EXPECT_EQ(g_debugLines, QStringList({"Unable to get original color patch at index 30",
                                         "Unable to get original color patch at index 24",
                                         "Unable to get calibrated color patch at index 0"}));
    list.update();
    const QPoint outside = transformer.inverseTransform(QPoint(900, 900));
    EXPECT_EQ(list.colorAtPoint(outside.x(), outside.y()), QColor("transparent"));
}

TEST_F(QmlTrapezoidListTest, FetchStopsAtTheFirstMissingSetWithoutNotifying)
{
    QSignalSpy error(&list, &QmlTrapezoidList::lastErrorChanged);
    list.fetchColorPatchValues();  // no camera: nothing measured
    EXPECT_EQ(list.lastError(), "Unable to fetch color patch values! <br> ");

    pool.setFrameSize(EmulatedPool::kMedical, 320, 200);
    ASSERT_TRUE(model->Open(pool.info(EmulatedPool::kMedical)));
    QImage first;  // the session's first grab waits only briefly for the camera
    for (int i = 0; i < 3 && !model->GrabImage(first, true); ++i) {
    }
    *list.outline() = pool.grid(EmulatedPool::kMedical);
    list.update();
    list.fetchColorPatchValues();  // measured now, but no initial colours yet
    EXPECT_EQ(list.lastError(), "Unable to fetch original color patch values! <br> ");
    EXPECT_TRUE(list.calibratedColorAt(23).isValid());
    EXPECT_EQ(error.count(), 0);
    model->Close();
}

TEST_F(QmlTrapezoidListTest, ResetTakesTheSessionsStoredGrid)
{
    const CTrapezoid stored(QPoint(11, 12), QPoint(300, 14), QPoint(13, 200), QPoint(310, 210));
    model->SetGridPositon(stored);
    list.reset();
    EXPECT_EQ(*list.outline(), stored);
    EXPECT_EQ(model->GetGridPosition(), stored);
}

}  // namespace
