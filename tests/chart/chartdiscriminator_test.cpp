#include "chartdiscriminator.h"

#include "kalto/kaltoimage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>

namespace {

using Kalto::CKaltoImage;

// An RGB8 image whose pixels come from `colour(x, y)` as {r, g, b}.
CKaltoImage rgb8Image(int w, int h, const std::function<QColor(int, int)>& colour)
{
    CKaltoImage img;
    img.Reset(Kalto::PixelType_RGB8packed, w, h);
    auto* bytes = static_cast<uint8_t*>(img.GetBuffer());
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const QColor c = colour(x, y);
            uint8_t* p = bytes + img.GetStride() * y + 3 * x;
            p[0] = uint8_t(c.red());
            p[1] = uint8_t(c.green());
            p[2] = uint8_t(c.blue());
        }
    return img;
}

CKaltoImage uniform8(int w, int h, int r, int g, int b)
{
    return rgb8Image(w, h, [=](int, int) { return QColor(r, g, b); });
}

CTrapezoid rect(int x0, int y0, int x1, int y1)
{
    return CTrapezoid(QPoint(x0, y0), QPoint(x1, y0), QPoint(x0, y1), QPoint(x1, y1));
}

// A distinct colour per grid cell of a 6x4 grid with `cellW` x `cellH` cells.
QColor cellColour(int x, int y, int cellW, int cellH)
{
    const int index = (y / cellH) * 6 + x / cellW;
    return QColor(10 + index * 10, 20 + index, 200 - index * 5);
}

TEST(CTrapezoid, KeepsConstructorOrderAndClosesOutlineClockwise)
{
    const CTrapezoid t(QPoint(1, 2), QPoint(10, 3), QPoint(0, 8), QPoint(11, 9));
    EXPECT_EQ(t.getTopLeft(), QPoint(1, 2));
    EXPECT_EQ(t.getTopRight(), QPoint(10, 3));
    EXPECT_EQ(t.getBottomLeft(), QPoint(0, 8));
    EXPECT_EQ(t.getBottomRight(), QPoint(11, 9));
    const QPolygon p = t.toPolygon();
    ASSERT_EQ(p.size(), 5);
    EXPECT_EQ(p[0], QPoint(1, 2));
    EXPECT_EQ(p[1], QPoint(10, 3));
    EXPECT_EQ(p[2], QPoint(11, 9));
    EXPECT_EQ(p[3], QPoint(0, 8));
    EXPECT_EQ(p[4], QPoint(1, 2));
}

TEST(CTrapezoid, SettersReplaceOneCornerEach)
{
    CTrapezoid t;
    t.setTopLeft(QPoint(1, 1));
    t.setTopRight(QPoint(2, 1));
    t.setBottomLeft(QPoint(1, 3));
    t.setBottomRight(QPoint(2, 4));
    EXPECT_EQ(t, CTrapezoid(QPoint(1, 1), QPoint(2, 1), QPoint(1, 3), QPoint(2, 4)));
}

TEST(ChartDiscriminator, NewDiscriminatorHasDegenerateGridAndNothingStored)
{
    ChartDiscriminator d(70);
    EXPECT_EQ(d.getGridPosition(), CTrapezoid(QPoint(0, 0), QPoint(2, 0), QPoint(2, 0), QPoint(2, 2)));
    QVector<QColor> colours;
    d.getColorPatchValues(colours);
    EXPECT_TRUE(colours.isEmpty());
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 0);
    EXPECT_DOUBLE_EQ(d.get80PercentGrayPatch150DnHitRate(), 0.0);
}

class PatchSize : public ::testing::TestWithParam<int> {};

// Each patch covers its share of a 100-pixel cell, centred in it, in row-major
// order: shrunk (70 %), tiling the grid (100 %), collapsed to the centre (0 %).
TEST_P(PatchSize, PatchesAreCentredInTheirCellsInRowMajorOrder)
{
    const int percent = GetParam();
    ChartDiscriminator d(percent);
    d.setGridPosition(rect(0, 0, 600, 400));
    QVector<CTrapezoid> patches;
    d.getChartPositions(patches);
    ASSERT_EQ(patches.size(), 24);
    const int m = (100 - percent) / 2;
    for (int k = 0; k < 24; ++k) {
        const int x = k % 6 * 100, y = k / 6 * 100;
        EXPECT_EQ(patches[k], rect(x + m, y + m, x + 100 - m, y + 100 - m)) << percent << " %, patch " << k;
    }
}

INSTANTIATE_TEST_SUITE_P(Percent, PatchSize, ::testing::Values(70, 100, 0));

TEST(ChartDiscriminator, GetChartPositionsAppendsToCallersVector)
{
    ChartDiscriminator d(70);
    d.setGridPosition(rect(0, 0, 600, 400));
    QVector<CTrapezoid> patches{CTrapezoid()};
    d.getChartPositions(patches);
    EXPECT_EQ(patches.size(), 25);
    EXPECT_EQ(patches[1].getTopLeft(), QPoint(15, 15));
}

TEST(ChartDiscriminator, ZeroSizePatchesSampleNothing)
{
    ChartDiscriminator d(0);
    d.setGridPosition(rect(0, 0, 600, 400));
    CKaltoImage img = uniform8(600, 400, 100, 100, 100);
    EXPECT_FALSE(d.updateColorPatchValues(&img));
    QVector<QColor> colours;
    d.getColorPatchValues(colours);
    EXPECT_TRUE(colours.isEmpty());
}

TEST(ChartDiscriminator, PerspectiveGridUsesLinesThroughEqualEdgeFractions)
{
    ChartDiscriminator d(100);
    // Top edge 600 wide, bottom edge 300 wide, centred: cell boundaries are
    // lines joining equal fractions of the top and bottom edges.
    d.setGridPosition(CTrapezoid(QPoint(0, 0), QPoint(600, 0), QPoint(150, 400), QPoint(450, 400)));
    QVector<CTrapezoid> p;
    d.getChartPositions(p);
    ASSERT_EQ(p.size(), 24);
    EXPECT_EQ(p[0].getTopLeft(), QPoint(0, 0));
    EXPECT_EQ(p[0].getTopRight(), QPoint(100, 0));
    // Left line x = 0.375 y at y = 100; vertical line from (100,0) to (200,400): x = 100 + y/4.
    EXPECT_EQ(p[0].getBottomLeft(), QPoint(38, 100));  // 37.5 rounds up
    EXPECT_EQ(p[0].getBottomRight(), QPoint(125, 100));
    EXPECT_EQ(p[23].getBottomRight(), QPoint(450, 400));
}

// 24 pixels give a value, 23 do not. The bounding rectangle's last row and
// column are not visited, so corners (0,0)-(W,H) cover W x H pixels.
TEST(ChartDiscriminator, PatchNeedsTwentyFourInsidePixels)
{
    ChartDiscriminator d(70);
    CKaltoImage img = uniform8(40, 10, 90, 60, 30);
    QColor c;
    EXPECT_TRUE(d.getColorPatchValue(rect(0, 0, 6, 4), &img, 256, c));  // 6 x 4 visited pixels
    EXPECT_DOUBLE_EQ(c.redF(), QColor::fromRgbF(90 / 256.0, 0, 0).redF());
    QColor untouched(1, 2, 3);
    EXPECT_FALSE(d.getColorPatchValue(rect(0, 0, 23, 1), &img, 256, untouched));  // 23 x 1
    EXPECT_EQ(untouched, QColor(1, 2, 3));
    EXPECT_TRUE(d.getColorPatchValue(rect(0, 0, 24, 1), &img, 256, untouched));  // 24 x 1
}

TEST(ChartDiscriminator, LastRowAndColumnOfBoundingRectangleAreNeverSampled)
{
    ChartDiscriminator d(70);
    // Bright last row (y = 4) and last column (x = 6): the median must stay dark
    // even though they hold 11 of the 35 pixels in the closed rectangle.
    CKaltoImage img = rgb8Image(10, 10, [](int x, int y) {
        return (x == 6 || y == 4) ? QColor(250, 250, 250) : QColor(20, 20, 20);
    });
    QColor c;
    ASSERT_TRUE(d.getColorPatchValue(rect(0, 0, 6, 4), &img, 256, c));
    EXPECT_NEAR(c.redF(), 20 / 256.0, 1e-4);
}

TEST(ChartDiscriminator, EvenCountMedianTakesUpperMiddleByBrightestChannel)
{
    ChartDiscriminator d(70);
    // 24 pixels, brightest channel 10 + index; channels differ so that the
    // chosen sample's own triple is checked, not per-channel medians.
    CKaltoImage img = rgb8Image(6, 4, [](int x, int y) {
        const int i = y * 6 + x;
        const int order = (i * 7) % 24;  // a permutation of 0..23
        if (order % 3 == 0)
            return QColor(10 + order, 0, 5);
        if (order % 3 == 1)
            return QColor(1, 10 + order, 2);
        return QColor(3, 4, 10 + order);
    });
    CKaltoImage wider = uniform8(7, 5, 0, 0, 0);
    std::memset(wider.GetBuffer(), 0, wider.GetImageSize());
    for (int y = 0; y < 4; ++y)
        std::memcpy(static_cast<uint8_t*>(wider.GetBuffer()) + wider.GetStride() * y,
                    static_cast<uint8_t*>(img.GetBuffer()) + img.GetStride() * y, 18);
    QColor c;
    ASSERT_TRUE(d.getColorPatchValue(rect(0, 0, 6, 4), &wider, 256, c));
    // Sorted brightest channels are 10..33; index 12 holds 22 (order 12: red).
    EXPECT_NEAR(c.redF(), 22 / 256.0, 1e-4);
    EXPECT_NEAR(c.greenF(), 0.0, 1e-4);
    EXPECT_NEAR(c.blueF(), 5 / 256.0, 1e-4);
}

TEST(ChartDiscriminator, SixteenBitImagesAreScaledByTwoToTheBitDepth)
{
    CKaltoImage img;
    img.Reset(Kalto::PixelType_RGB16packed, 8, 8);
    auto* px = static_cast<uint16_t*>(img.GetBuffer());
    for (int i = 0; i < 64; ++i) {
        px[3 * i] = 65535;
        px[3 * i + 1] = 32768;
        px[3 * i + 2] = 0;
    }
    ChartDiscriminator d(70);
    QColor c;
    ASSERT_TRUE(d.getColorPatchValue(rect(0, 0, 7, 7), &img, 65536, c));
    EXPECT_NEAR(c.redF(), 65535 / 65536.0, 1e-4);
    EXPECT_NEAR(c.greenF(), 0.5, 1e-4);
    EXPECT_DOUBLE_EQ(c.blueF(), 0.0);
}

// Cells of 12 x 8 px at 50 %: every patch is exactly 6 x 4 = 24 pixels.
constexpr int kCellW = 12, kCellH = 8;

TEST(ChartDiscriminator, SamplesEveryPatchInChartOrder)
{
    CKaltoImage img = rgb8Image(72, 32, [](int x, int y) { return cellColour(x, y, kCellW, kCellH); });
    ChartDiscriminator d(50);
    d.setGridPosition(rect(0, 0, 72, 32));
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    QVector<QColor> colours;
    d.getColorPatchValues(colours);
    ASSERT_EQ(colours.size(), 24);
    for (int i = 0; i < 24; ++i) {
        const QColor expected = cellColour((i % 6) * kCellW, (i / 6) * kCellH, kCellW, kCellH);
        EXPECT_NEAR(colours[i].redF(), expected.red() / 256.0, 1e-4) << i;
        EXPECT_NEAR(colours[i].blueF(), expected.blue() / 256.0, 1e-4) << i;
    }
}

TEST(ChartDiscriminator, PatchesWithTooFewPixelsAreSkippedAndLaterOnesMoveUp)
{
    // The grid reaches three pixels above the image: the top row's patches keep
    // 6 x 3 = 18 pixels and are skipped, so stored colour 0 is patch 6.
    CKaltoImage img = rgb8Image(72, 29, [](int x, int y) { return cellColour(x, y + 3, kCellW, kCellH); });
    ChartDiscriminator d(50);
    d.setGridPosition(rect(0, -3, 72, 29));
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    QVector<QColor> colours;
    d.getColorPatchValues(colours);
    ASSERT_EQ(colours.size(), 18);
    const QColor patch6 = cellColour(0, kCellH, kCellW, kCellH);
    EXPECT_NEAR(colours[0].redF(), patch6.red() / 256.0, 1e-4);
}

TEST(ChartDiscriminator, FullScalePixelGivesBrightness254)
{
    CKaltoImage img = uniform8(600, 400, 255, 10, 10);
    ChartDiscriminator d(70);
    d.setGridPosition(rect(0, 0, 600, 400));
    ASSERT_TRUE(d.update80PercentGrayPatchValue(&img));
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 254);
}

struct HitRateRow {
    int pixel;         // 8-bit value of the brightest channel
    int brightness;    // truncated brightness
    double hitRate;
};

class GreyHitRate : public ::testing::TestWithParam<HitRateRow> {};

TEST_P(GreyHitRate, BrightnessIsTruncatedBeforeThePercentage)
{
    const HitRateRow row = GetParam();
    CKaltoImage img = uniform8(600, 400, row.pixel / 2, row.pixel, row.pixel / 3);
    ChartDiscriminator d(70);
    d.setGridPosition(rect(0, 0, 600, 400));
    ASSERT_TRUE(d.update80PercentGrayPatchValue(&img));
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), row.brightness);
    EXPECT_NEAR(d.get80PercentGrayPatch150DnHitRate(), row.hitRate, 1e-9);
}

// pixel v gives (int)(v / 256 * 255): 151 -> 150, 76 -> 75, 150 -> 149.
INSTANTIATE_TEST_SUITE_P(Rows, GreyHitRate,
                         ::testing::Values(HitRateRow{151, 150, 100.0}, HitRateRow{76, 75, 50.0},
                                           HitRateRow{150, 149, 149 * 100.0 / 150.0},
                                           HitRateRow{0, 0, 0.0}));

TEST(ChartDiscriminator, FlagTransitions)
{
    CKaltoImage img = uniform8(600, 400, 120, 151, 90);
    ChartDiscriminator d(70);
    d.setGridPosition(rect(0, 0, 600, 400));
    QVector<QColor> colours;

    ASSERT_TRUE(d.updateColorPatchValues(&img));
    d.getColorPatchValues(colours);
    EXPECT_EQ(colours.size(), 24);
    // Colours alone do not make a grey measurement.
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 0);

    ASSERT_TRUE(d.update80PercentGrayPatchValue(&img));
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 150);
    colours.clear();
    d.getColorPatchValues(colours);
    EXPECT_TRUE(colours.isEmpty()) << "the full set is stale after a grey-only pass";

    // Moving the grid invalidates colours but keeps the grey figure.
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    d.setGridPosition(rect(0, 0, 600, 400));
    colours.clear();
    d.getColorPatchValues(colours);
    EXPECT_TRUE(colours.isEmpty());
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 150);

    // A grid whose grey patch is off the image fails the grey pass: both figures go.
    d.setGridPosition(rect(0, 0, 600, 400));
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    CKaltoImage small = uniform8(100, 100, 120, 151, 90);
    EXPECT_FALSE(d.update80PercentGrayPatchValue(&small));
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 0);
    colours.clear();
    d.getColorPatchValues(colours);
    EXPECT_TRUE(colours.isEmpty());
}

TEST(ChartDiscriminator, GreyPassWithoutAnyColoursFailsWhenNothingCanBeSampled)
{
    ChartDiscriminator d(0);
    d.setGridPosition(rect(0, 0, 600, 400));
    CKaltoImage img = uniform8(600, 400, 120, 151, 90);
    EXPECT_FALSE(d.update80PercentGrayPatchValue(&img));
    EXPECT_DOUBLE_EQ(d.get80PercentGrayPatch150DnHitRate(), 0.0);
}

TEST(ChartDiscriminator, GreyPassWithIncompleteSetSucceedsWithoutMeasuring)
{
    // 18 of 24 patches sampled: the grey pass reports success and measures nothing.
    CKaltoImage img = rgb8Image(72, 29, [](int x, int y) { return cellColour(x, y + 3, kCellW, kCellH); });
    ChartDiscriminator d(50);
    d.setGridPosition(rect(0, -3, 72, 29));
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    EXPECT_TRUE(d.update80PercentGrayPatchValue(&img));
    QVector<QColor> colours;
    d.getColorPatchValues(colours);
    EXPECT_TRUE(colours.isEmpty());
    // Only 18 colours exist, so there is no stored colour 19 to report.
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 0);
}

TEST(ChartDiscriminator, NullOrEmptyImageIsAFailureNotACrash)
{
    ChartDiscriminator d(70);
    d.setGridPosition(rect(0, 0, 600, 400));
    EXPECT_FALSE(d.updateColorPatchValues(nullptr));
    CKaltoImage empty;
    EXPECT_FALSE(d.updateColorPatchValues(&empty));
    EXPECT_FALSE(d.update80PercentGrayPatchValue(&empty));
    QColor c;
    EXPECT_FALSE(d.getColorPatchValue(rect(0, 0, 10, 10), nullptr, 256, c));
}

}  // namespace

namespace {

// Pixel-by-pixel reference: the median sample of every pixel the odd-even
// test puts inside, scanning the bounding rectangle without its last row and column.
bool referenceMedian(const CTrapezoid& t, const CKaltoImage& img, int& red)
{
    const QPolygon poly = t.toPolygon();
    const QRect box = poly.boundingRect();
    std::vector<std::pair<int, int>> samples;  // (brightest, red)
    for (int y = std::max(box.top(), 0); y < std::min(box.bottom(), int(img.GetHeight())); ++y)
        for (int x = std::max(box.left(), 0); x < std::min(box.right(), int(img.GetWidth())); ++x)
            if (poly.containsPoint(QPoint(x, y), Qt::OddEvenFill)) {
                const Kalto::SPixelData p = img.GetPixelData(x, y);
                samples.emplace_back(std::max({p.Red, p.Green, p.Blue}), p.Red);
            }
    if (samples.size() < 24)
        return false;
    std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end());
    red = samples[samples.size() / 2].second;
    return true;
}

}  // namespace

TEST(ChartDiscriminator, RowRunsSampleExactlyThePixelsThePolygonTestAccepts)
{
    // Every pixel distinct, so a different pixel set almost surely moves the median.
    CKaltoImage img;
    img.Reset(Kalto::PixelType_RGB16packed, 300, 200);
    auto* px = static_cast<uint16_t*>(img.GetBuffer());
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x) {
            const int v = (x * 7919 + y * 104729) % 65536;
            px[3 * (y * 300 + x)] = uint16_t(v);
            px[3 * (y * 300 + x) + 1] = uint16_t(v / 2);
            px[3 * (y * 300 + x) + 2] = uint16_t(v / 3);
        }
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> coord(-30, 330);
    ChartDiscriminator d(70);
    int compared = 0;
    for (int i = 0; i < 400; ++i) {
        // Random quadrilaterals: convex, concave, crossed and partly off the image.
        const CTrapezoid t(QPoint(coord(rng), coord(rng) * 2 / 3), QPoint(coord(rng), coord(rng) * 2 / 3),
                           QPoint(coord(rng), coord(rng) * 2 / 3), QPoint(coord(rng), coord(rng) * 2 / 3));
        int expectedRed = 0;
        const bool expected = referenceMedian(t, img, expectedRed);
        QColor c;
        ASSERT_EQ(d.getColorPatchValue(t, &img, 65536, c), expected) << i;
        if (expected) {
            EXPECT_NEAR(c.redF(), expectedRed / 65536.0, 1e-5) << i;
            ++compared;
        }
    }
    EXPECT_GT(compared, 200);
}
