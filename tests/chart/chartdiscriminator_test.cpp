#include "chartdiscriminator.h"

#include "kalto/kaltoimage.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

using Kalto::CKaltoImage;

// An RGB8 image whose pixels come from `colour(x, y)`.
CKaltoImage rgb8Image(int w, int h, const std::function<QColor(int, int)>& colour)
{
    CKaltoImage img;
    img.Reset(Kalto::PixelType_RGB8packed, w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const QColor c = colour(x, y);
            uint8_t* p = static_cast<uint8_t*>(img.GetBuffer()) + img.GetStride() * y + 3 * x;
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

// A distinct colour per cell of a 6 x 4 grid of 12 x 8 px cells; at 50 % every
// patch is exactly 6 x 4 = 24 pixels.
constexpr int kCellW = 12, kCellH = 8;
QColor cellColour(int x, int y)
{
    const int index = (y / kCellH) * 6 + x / kCellW;
    return QColor(10 + index * 10, 20 + index, 200 - index * 5);
}

QVector<QColor> colours(ChartDiscriminator& d)
{
    QVector<QColor> c;
    d.getColorPatchValues(c);
    return c;
}

// The outline runs clockwise from the top left and closes, so the odd-even
// test sees the quadrilateral, not a bow tie.
TEST(CTrapezoid, OutlineRunsClockwiseAndCloses)
{
    const CTrapezoid t(QPoint(1, 2), QPoint(10, 3), QPoint(0, 8), QPoint(11, 9));
    EXPECT_EQ(t.toPolygon(), QPolygon({QPoint(1, 2), QPoint(10, 3), QPoint(11, 9), QPoint(0, 8), QPoint(1, 2)}));
}

class PatchSize : public ::testing::TestWithParam<int> {};

// Each patch covers its share of a 100-pixel cell, centred in it, in row-major
// order: shrunk (70 %), tiling the grid (100 %), collapsed to the centre (0 %);
// they are appended to what the caller's vector holds.
TEST_P(PatchSize, PatchesAreCentredInTheirCellsInRowMajorOrder)
{
    const int percent = GetParam();
    ChartDiscriminator d(percent);
    d.setGridPosition(rect(0, 0, 600, 400));
    QVector<CTrapezoid> patches{CTrapezoid()};
    d.getChartPositions(patches);
    ASSERT_EQ(patches.size(), 25);
    const int m = (100 - percent) / 2;
    for (int k = 0; k < 24; ++k) {
        const int x = k % 6 * 100, y = k / 6 * 100;
        EXPECT_EQ(patches[k + 1], rect(x + m, y + m, x + 100 - m, y + 100 - m)) << percent << " %, patch " << k;
    }
}

INSTANTIATE_TEST_SUITE_P(Percent, PatchSize, ::testing::Values(70, 100, 0));

TEST(ChartDiscriminator, PerspectiveGridUsesLinesThroughEqualEdgeFractions)
{
    ChartDiscriminator d(100);
    // Top edge 600 wide, bottom edge 300 wide, centred: cell boundaries are
    // lines joining equal fractions of the top and bottom edges.
    d.setGridPosition(CTrapezoid(QPoint(0, 0), QPoint(600, 0), QPoint(150, 400), QPoint(450, 400)));
    QVector<CTrapezoid> p;
    d.getChartPositions(p);
    ASSERT_EQ(p.size(), 24);
    // Left line x = 0.375 y at y = 100 (37.5 rounds up); vertical line from (100,0) to (200,400): x = 100 + y/4.
    EXPECT_EQ(p[0], CTrapezoid(QPoint(0, 0), QPoint(100, 0), QPoint(38, 100), QPoint(125, 100)));
    EXPECT_EQ(p[23].getBottomRight(), QPoint(450, 400));
}

// 24 pixels give a value, 23 do not and leave the colour alone. The bounding
// rectangle's last row and column are not visited, so corners (0,0)-(W,H) cover W x H pixels.
TEST(ChartDiscriminator, PatchNeedsTwentyFourInsidePixels)
{
    ChartDiscriminator d(70);
    CKaltoImage img = uniform8(40, 10, 90, 60, 30);
    QColor c(1, 2, 3);
    EXPECT_FALSE(d.getColorPatchValue(rect(0, 0, 23, 1), &img, 256, c));
    EXPECT_EQ(c, QColor(1, 2, 3));
    EXPECT_TRUE(d.getColorPatchValue(rect(0, 0, 24, 1), &img, 256, c));
    EXPECT_DOUBLE_EQ(c.redF(), QColor::fromRgbF(90 / 256.0, 0, 0).redF());
}

TEST(ChartDiscriminator, EvenCountMedianTakesUpperMiddleByBrightestChannel)
{
    ChartDiscriminator d(70);
    // 24 pixels, brightest channel 10 + order in a different channel each time,
    // so that the chosen sample's own triple is checked, not per-channel medians.
    CKaltoImage img = rgb8Image(7, 5, [](int x, int y) {
        const int order = ((y * 6 + x) * 7) % 24;  // a permutation of 0..23
        if (x == 6 || y == 4)
            return QColor(0, 0, 0);
        if (order % 3 == 0)
            return QColor(10 + order, 0, 5);
        return order % 3 == 1 ? QColor(1, 10 + order, 2) : QColor(3, 4, 10 + order);
    });
    QColor c;
    ASSERT_TRUE(d.getColorPatchValue(rect(0, 0, 6, 4), &img, 256, c));
    // Sorted brightest channels are 10..33; index 12 holds 22 (order 12: red).
    EXPECT_NEAR(c.redF(), 22 / 256.0, 1e-4);
    EXPECT_NEAR(c.greenF(), 0.0, 1e-4);
    EXPECT_NEAR(c.blueF(), 5 / 256.0, 1e-4);
}

// Pixel-by-pixel reference: the median sample of every pixel the odd-even
// test puts inside, scanning the bounding rectangle without its last row and column.
bool referenceMedian(const CTrapezoid& t, const CKaltoImage& img, Kalto::SPixelData& median)
{
    const QPolygon poly = t.toPolygon();
    const QRect box = poly.boundingRect();
    std::vector<std::pair<int, Kalto::SPixelData>> samples;  // (brightest, pixel)
    for (int y = std::max(box.top(), 0); y < std::min(box.bottom(), int(img.GetHeight())); ++y)
        for (int x = std::max(box.left(), 0); x < std::min(box.right(), int(img.GetWidth())); ++x)
            if (poly.containsPoint(QPoint(x, y), Qt::OddEvenFill)) {
                const Kalto::SPixelData p = img.GetPixelData(x, y);
                samples.emplace_back(std::max({p.Red, p.Green, p.Blue}), p);
            }
    if (samples.size() < 24)
        return false;
    std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    median = samples[samples.size() / 2].second;
    return true;
}

// 16-bit pixels, scaled by two to the bit depth, over random quadrilaterals:
// convex, concave, crossed and partly off the image.
TEST(ChartDiscriminator, RowRunsSampleExactlyThePixelsThePolygonTestAccepts)
{
    // Every pixel distinct, so a different pixel set almost surely moves the median.
    CKaltoImage img;
    img.Reset(Kalto::PixelType_RGB16packed, 300, 200);
    auto* px = static_cast<uint16_t*>(img.GetBuffer());
    for (int i = 0; i < 300 * 200; ++i) {
        const int v = (i % 300 * 7919 + i / 300 * 104729) % 65536;
        px[3 * i] = uint16_t(v);
        px[3 * i + 1] = uint16_t(v / 2);
        px[3 * i + 2] = uint16_t(v / 3);
    }
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> coord(-30, 330);
    ChartDiscriminator d(70);
    int compared = 0;
    for (int i = 0; i < 400; ++i) {
        const CTrapezoid t(QPoint(coord(rng), coord(rng) * 2 / 3), QPoint(coord(rng), coord(rng) * 2 / 3),
                           QPoint(coord(rng), coord(rng) * 2 / 3), QPoint(coord(rng), coord(rng) * 2 / 3));
        Kalto::SPixelData expected{};
        const bool sampled = referenceMedian(t, img, expected);
        QColor c;
        ASSERT_EQ(d.getColorPatchValue(t, &img, 65536, c), sampled) << i;
        if (sampled) {
            EXPECT_NEAR(c.redF(), expected.Red / 65536.0, 1e-5) << i;
            EXPECT_NEAR(c.greenF(), expected.Green / 65536.0, 1e-5) << i;
            EXPECT_NEAR(c.blueF(), expected.Blue / 65536.0, 1e-5) << i;
            ++compared;
        }
    }
    EXPECT_GT(compared, 200);
}

// A grid reaching three pixels above the image leaves the top row's patches
// 6 x 3 = 18 pixels: they are skipped and later ones move up. The grey pass
// then reports success but has no stored colour 19 to measure.
TEST(ChartDiscriminator, SamplesEveryPatchInChartOrderSkippingThoseCutOff)
{
    const struct {
        const char* name;
        int top;
        int count;
    } rows[] = {{"whole grid", 0, 24}, {"top row cut off", -3, 18}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CKaltoImage img = rgb8Image(72, 32 + row.top, [&](int x, int y) { return cellColour(x, y - row.top); });
        ChartDiscriminator d(50);
        d.setGridPosition(rect(0, row.top, 72, 32 + row.top));
        ASSERT_TRUE(d.updateColorPatchValues(&img));
        const QVector<QColor> c = colours(d);
        ASSERT_EQ(c.size(), row.count);
        for (int i = 0; i < row.count; ++i) {
            const int k = i + 24 - row.count;
            const QColor expected = cellColour(k % 6 * kCellW, k / 6 * kCellH);
            EXPECT_NEAR(c[i].redF(), expected.red() / 256.0, 1e-4) << k;
            EXPECT_NEAR(c[i].blueF(), expected.blue() / 256.0, 1e-4) << k;
        }
        EXPECT_TRUE(d.update80PercentGrayPatchValue(&img));
        EXPECT_EQ(d.get80PercentGrayPatchBrightness() > 0, row.count == 24);
    }
}

struct HitRateRow {
    int pixel;         // 8-bit value of the brightest channel
    int brightness;    // truncated brightness
    double hitRate;
};

void PrintTo(const HitRateRow& row, std::ostream* os) { *os << "pixel " << row.pixel; }

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

// pixel v gives (int)(v / 256 * 255): 151 -> 150, 76 -> 75, 150 -> 149, full scale 255 -> 254.
INSTANTIATE_TEST_SUITE_P(Rows, GreyHitRate,
                         ::testing::Values(HitRateRow{151, 150, 100.0}, HitRateRow{76, 75, 50.0},
                                           HitRateRow{150, 149, 149 * 100.0 / 150.0},
                                           HitRateRow{255, 254, 254 * 100.0 / 150.0}, HitRateRow{0, 0, 0.0}));

TEST(ChartDiscriminator, FlagTransitions)
{
    CKaltoImage img = uniform8(600, 400, 120, 151, 90);
    ChartDiscriminator d(70);
    d.setGridPosition(rect(0, 0, 600, 400));

    ASSERT_TRUE(d.updateColorPatchValues(&img));
    EXPECT_EQ(colours(d).size(), 24);
    // Colours alone do not make a grey measurement.
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 0);

    ASSERT_TRUE(d.update80PercentGrayPatchValue(&img));
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 150);
    EXPECT_TRUE(colours(d).isEmpty()) << "the full set is stale after a grey-only pass";

    // Moving the grid invalidates colours but keeps the grey figure.
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    d.setGridPosition(rect(0, 0, 600, 400));
    EXPECT_TRUE(colours(d).isEmpty());
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 150);

    // A grid whose grey patch is off the image fails the grey pass: both figures go.
    ASSERT_TRUE(d.updateColorPatchValues(&img));
    CKaltoImage small = uniform8(100, 100, 120, 151, 90);
    EXPECT_FALSE(d.update80PercentGrayPatchValue(&small));
    EXPECT_EQ(d.get80PercentGrayPatchBrightness(), 0);
    EXPECT_TRUE(colours(d).isEmpty());
}

// Missing images and patches too small to sample fail both passes; nothing is
// stored and nothing crashes.
TEST(ChartDiscriminator, NothingToSampleIsAFailure)
{
    CKaltoImage img = uniform8(600, 400, 120, 151, 90), empty;
    const struct {
        int percent;
        CKaltoImage* image;
    } cases[] = {{0, &img}, {70, &empty}, {70, nullptr}};
    for (const auto& c : cases) {
        ChartDiscriminator d(c.percent);
        d.setGridPosition(rect(0, 0, 600, 400));
        EXPECT_FALSE(d.updateColorPatchValues(c.image)) << c.percent;
        if (c.image)
            EXPECT_FALSE(d.update80PercentGrayPatchValue(c.image)) << c.percent;
        EXPECT_TRUE(colours(d).isEmpty());
        EXPECT_DOUBLE_EQ(d.get80PercentGrayPatch150DnHitRate(), 0.0);
    }
    QColor c;
    EXPECT_FALSE(ChartDiscriminator(70).getColorPatchValue(rect(0, 0, 10, 10), nullptr, 256, c));
}

}  // namespace
