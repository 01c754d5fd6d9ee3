#include "colorcorrectionautochartfinder.h"
#include "colorcorrectionautochartfinderimpl.h"

#include <QImageReader>
#include <QLoggingCategory>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cmath>

namespace {

QImage photo(const char* name)
{
    QImageReader reader(QString(COLCAL_TESTDATA_DIR "/charts/") + name);
    return reader.read();
}

struct ValidationRow {
    const char* name;
    QVector<QPoint> corners;  // top-left, top-right, bottom-left, bottom-right
    bool valid;
};

void PrintTo(const ValidationRow& row, std::ostream* os) { *os << row.name; }

class FinderValidation : public ::testing::TestWithParam<ValidationRow> {};

TEST_P(FinderValidation, AppliesThePlausibilityRules)
{
    const ValidationRow& row = GetParam();
    const ColorCorrectionAutoChartFinderResult r = ColorCorrectionAutoChartFinder::validate(row.corners, QSize(640, 480));
    EXPECT_EQ(r.valid, row.valid) << row.name;
    if (row.corners.size() == 4) {
        // Corners are handed back in the order given, valid or not.
        EXPECT_EQ(r.topLeft, row.corners[0]);
        EXPECT_EQ(r.topRight, row.corners[1]);
        EXPECT_EQ(r.bottomLeft, row.corners[2]);
        EXPECT_EQ(r.bottomRight, row.corners[3]);
    } else {
        EXPECT_EQ(r.topLeft, QPoint(0, 0));
        EXPECT_EQ(r.bottomRight, QPoint(0, 0));
    }
}

const ValidationRow kValidationRows[] = {
    {"upright", {{100, 100}, {400, 100}, {100, 300}, {400, 300}}, true},
    {"on the border x = W, y = H", {{0, 0}, {640, 0}, {0, 480}, {640, 480}}, true},
    {"right edge past W", {{100, 100}, {641, 100}, {100, 300}, {400, 300}}, false},
    {"bottom-left y = 0", {{100, -20}, {400, 10}, {100, 0}, {400, 300}}, false},
    {"bottom-left below H", {{100, 100}, {400, 100}, {100, 481}, {400, 300}}, false},
    {"negative x", {{-1, 100}, {400, 100}, {100, 300}, {400, 300}}, false},
    {"left and right swapped (mirror)", {{400, 100}, {100, 100}, {400, 300}, {100, 300}}, false},
    {"top and bottom swapped (mirror)", {{100, 300}, {400, 300}, {100, 100}, {400, 100}}, false},
    {"top-left right of top-right", {{500, 100}, {400, 100}, {100, 300}, {450, 300}}, false},
    {"crossed bottom corners", {{100, 100}, {400, 100}, {400, 300}, {100, 300}}, false},
    {"all corners equal", {{100, 100}, {100, 100}, {100, 100}, {100, 100}}, false},
    // Chart turned by quarter turns: corners name the chart's own corners.
    {"chart turned clockwise", {{400, 100}, {400, 400}, {200, 100}, {200, 400}}, true},
    {"chart upside down", {{400, 300}, {100, 300}, {400, 100}, {100, 100}}, true},
    {"chart turned anticlockwise", {{200, 400}, {200, 100}, {400, 400}, {400, 100}}, true},
    {"turned clockwise and mirrored", {{200, 100}, {200, 400}, {400, 100}, {400, 400}}, false},
    {"three corners", {{100, 100}, {400, 100}, {100, 300}}, false},
    {"five corners", {{100, 100}, {400, 100}, {100, 300}, {400, 300}, {1, 1}}, false},
    {"no corners", {}, false},
};

INSTANTIATE_TEST_SUITE_P(Rows, FinderValidation, ::testing::ValuesIn(kValidationRows));

TEST(ColorCorrectionAutoChartFinder, UniformImageGivesNoValidResultAndEmitsOnce)
{
    qRegisterMetaType<ColorCorrectionAutoChartFinderResult>();
    ColorCorrectionAutoChartFinder finder;
    QSignalSpy spy(&finder, &ColorCorrectionAutoChartFinder::autoChartFinderFinished);
    QImage uniform(1280, 720, QImage::Format_RGB32);
    uniform.fill(QColor(128, 120, 110));
    const ColorCorrectionAutoChartFinderResult r = finder.GetChartPosition(uniform);
    EXPECT_FALSE(r.valid);
    EXPECT_EQ(r.topLeft, QPoint(0, 0));
    ASSERT_EQ(spy.count(), 1);
    EXPECT_FALSE(spy.at(0).at(0).value<ColorCorrectionAutoChartFinderResult>().valid);
}

struct SizeRow {
    QSize size;
    bool searched;
};

void PrintTo(const SizeRow& row, std::ostream* os)
{
    *os << row.size.width() << "x" << row.size.height();
}

class FinderImageSize : public ::testing::TestWithParam<SizeRow> {};

// The grid needs 6 x 4 pitches of 2 pixels, either way up; frames over four
// times as tall as wide would be enlarged into millions of working pixels.
TEST_P(FinderImageSize, OnlyImagesThatCanHoldTheGridAreSearched)
{
    const SizeRow& row = GetParam();
    EXPECT_EQ(ColorCorrectionAutoChartFinderImpl::worthSearching(row.size), row.searched);
    if (row.searched)
        return;
    // Refused images get the ordinary answer: not found, announced once.
    ColorCorrectionAutoChartFinder finder;
    QSignalSpy spy(&finder, &ColorCorrectionAutoChartFinder::autoChartFinderFinished);
    QImage image(row.size, QImage::Format_RGB32);
    image.fill(Qt::red);
    EXPECT_FALSE(finder.GetChartPosition(image).valid);
    EXPECT_EQ(spy.count(), 1);
}

const SizeRow kSizeRows[] = {
    {{0, 0}, false},     {{3, 2}, false},    {{11, 8}, false},    {{12, 7}, false},
    {{7, 12}, false},    {{12, 8}, true},    {{8, 12}, true},     {{2000, 8}, true},
    {{8, 2000}, false},  {{100, 400}, true}, {{100, 401}, false}, {{30000, 100}, true},
};

INSTANTIATE_TEST_SUITE_P(Rows, FinderImageSize, ::testing::ValuesIn(kSizeRows));

QStringList g_chartLines;

void collectChartLines(QtMsgType, const QMessageLogContext& context, const QString& message)
{
    if (QByteArray(context.category) == "colcal.chart")
        g_chartLines << message;
}

TEST(ColorCorrectionAutoChartFinder, DebugLinesGoToTheChartCategoryAndAreOffUnlessAskedFor)
{
    ColorCorrectionAutoChartFinder finder;
    QImage strip(8, 2000, QImage::Format_RGB32);
    strip.fill(Qt::red);
    g_chartLines.clear();
    const QtMessageHandler previous = qInstallMessageHandler(collectChartLines);
    finder.GetChartPosition(strip);
    const QStringList byDefault = g_chartLines;
    QLoggingCategory::setFilterRules(QStringLiteral("colcal.chart.debug=true"));
    finder.GetChartPosition(strip);
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(previous);
    EXPECT_TRUE(byDefault.isEmpty());
    ASSERT_EQ(g_chartLines.size(), 2);
    EXPECT_TRUE(g_chartLines[0].startsWith("8x2000 image not searched")) << g_chartLines[0].toStdString();
    EXPECT_TRUE(g_chartLines[1].startsWith("no chart in the 8x2000 image")) << g_chartLines[1].toStdString();
}

TEST(ColorCorrectionAutoChartFinder, InputTwiceTheWorkingWidthDoublesTheCorners)
{
    const QImage full = photo("pedrodiamel_handheld_sunlight.jpg");
    ASSERT_FALSE(full.isNull());
    const QImage working = full.scaled(640, 480, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage doubled = working.scaled(1280, 960, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    ColorCorrectionAutoChartFinder finder;
    const ColorCorrectionAutoChartFinderResult a = finder.GetChartPosition(working);
    const ColorCorrectionAutoChartFinderResult b = finder.GetChartPosition(doubled);
    ASSERT_TRUE(a.valid);
    ASSERT_TRUE(b.valid);
    EXPECT_EQ(b.topLeft, a.topLeft * 2);
    EXPECT_EQ(b.topRight, a.topRight * 2);
    EXPECT_EQ(b.bottomLeft, a.bottomLeft * 2);
    EXPECT_EQ(b.bottomRight, a.bottomRight * 2);
}

// Flat areas come out lifted by 12/11 per pass (8-bit intermediate, clipped);
// an edge spreads over the five pixels each way the window reaches.
TEST(ColorCorrectionAutoChartFinderImpl, BoxFilterLiftsFlatAreasAndSpreadsEdges)
{
    ColorCorrectionAutoChartFinderImpl impl;
    QImage flat(40, 30, QImage::Format_RGB32);
    flat.fill(QColor(200, 100, 50));
    const QImage out = impl.boxFilter(flat, 5);
    ASSERT_EQ(out.format(), QImage::Format_ARGB32);
    // 200 -> 218 after the column pass, -> 238 after the row pass.
    for (const QPoint p : {QPoint(0, 0), QPoint(39, 29), QPoint(20, 15)})
        EXPECT_EQ(out.pixelColor(p), QColor(238, 119, 60)) << p.x() << "," << p.y();
    flat.fill(QColor(250, 250, 250));
    EXPECT_EQ(impl.boxFilter(flat, 5).pixelColor(15, 15), QColor(255, 255, 255));

    QImage step(40, 4, QImage::Format_RGB32);
    for (int x = 0; x < 40; ++x)
        for (int y = 0; y < 4; ++y)
            step.setPixelColor(x, y, QColor::fromRgb(x < 20 ? 0 : qRgb(100, 100, 100)));
    const QImage blurred = impl.boxFilter(step, 5);
    // The extra seed sample, at x = 5, is dark.
    EXPECT_EQ(blurred.pixelColor(14, 2).red(), 0);
    EXPECT_GT(blurred.pixelColor(15, 2).red(), 0);
    for (int x = 14; x < 26; ++x)
        EXPECT_GE(blurred.pixelColor(x + 1, 2).red(), blurred.pixelColor(x, 2).red()) << x;
    EXPECT_EQ(blurred.pixelColor(30, 2).red(), blurred.pixelColor(39, 2).red());
    EXPECT_TRUE(impl.boxFilter(QImage(), 5).isNull());
}

TEST(ColorCorrectionAutoChartFinderImpl, DivideQImageGivesChannelSumRatios)
{
    ColorCorrectionAutoChartFinderImpl impl;
    QImage num(3, 2, QImage::Format_ARGB32), den(3, 2, QImage::Format_ARGB32);
    num.fill(QColor(100, 50, 0));
    den.fill(QColor(0, 75, 0));
    den.setPixelColor(2, 1, QColor(0, 0, 0));
    const auto m = impl.divideQImage(num, den);
    ASSERT_EQ(m.nr(), 3);  // indexed [x][y]
    ASSERT_EQ(m.nc(), 2);
    EXPECT_FLOAT_EQ(m(0, 0), 2.0f);
    EXPECT_FLOAT_EQ(m(2, 1), 1.0f);  // zero denominator

    const auto mismatch = impl.divideQImage(num, QImage(3, 3, QImage::Format_ARGB32));
    ASSERT_EQ(mismatch.nr(), 1);
    ASSERT_EQ(mismatch.nc(), 1);
    EXPECT_FLOAT_EQ(mismatch(0, 0), 0.0f);
    const auto otherFormat = impl.divideQImage(num, den.convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(otherFormat.size(), 1);
}

TEST(ColorCorrectionAutoChartFinderImpl, ReverseWeightedSumWeighsTheFirstPixelMost)
{
    ColorCorrectionAutoChartFinderImpl impl;
    QImage img(10, 10, QImage::Format_ARGB32);
    img.fill(Qt::black);
    img.setPixelColor(5, 5, QColor(0, 255, 0));
    img.setPixelColor(6, 5, QColor(0, 51, 0));
    // count 3 from (5,5) to the right: 1.0 * 3 + 0.2 * 2 + 0 * 1
    EXPECT_NEAR(impl.reverseWeightedSum(img, QPoint(5, 5), 0, 1, 3), 3.4f, 1e-5);
    EXPECT_NEAR(impl.reverseWeightedSum(img, QPoint(5, 5), 0, -1, 3), 3.0f, 1e-5);
    EXPECT_EQ(impl.reverseWeightedSum(img, QPoint(5, 5), 0, 1, 0), 0.0f);
}

TEST(ColorCorrectionAutoChartFinderImpl, FindPatchCenterClimbsOnePixelPerRound)
{
    ColorCorrectionAutoChartFinderImpl impl;
    // A green pyramid peaking at (30, 20).
    QImage img(60, 40, QImage::Format_ARGB32);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x)
            img.setPixelColor(x, y, QColor(0, std::max(0, 200 - 6 * (std::abs(x - 30) + std::abs(y - 20))), 0));
    EXPECT_EQ(impl.findPatchCenter(img, QPoint(26, 23), 10.0, 1, 1), QPoint(30, 20));
    // Radii 1..3 give two moving rounds (radius 1 compares a pixel with itself).
    EXPECT_EQ(impl.findPatchCenter(img, QPoint(26, 23), 3.0, 1, 1), QPoint(28, 21));
    // Direction -1 walks downhill.
    EXPECT_EQ(impl.findPatchCenter(img, QPoint(26, 23), 3.0, -1, 1), QPoint(24, 25));
}

QVector<QPoint> lattice(QPointF origin, QPointF alongRow, QPointF alongColumn)
{
    QVector<QPoint> c;
    for (int r = 0; r < 4; ++r)
        for (int k = 0; k < 6; ++k)
            c << (origin + k * alongRow + r * alongColumn).toPoint();
    return c;
}

// Corners lie half the neighbour gap beyond the corner patches, truncated
// toward zero, and follow a grid turned clockwise (rows running down the image).
TEST(ColorCorrectionAutoChartFinderImpl, CornersLieHalfAGapBeyondTheCornerPatches)
{
    ColorCorrectionAutoChartFinderImpl impl;
    const struct {
        const char* name;
        QVector<QPoint> centres;
        QVector<QPoint> corners;
    } rows[] = {
        {"upright", lattice(QPointF(115, 215), QPointF(31, 0), QPointF(0, 27)),
         {QPoint(99, 201), QPoint(285, 201), QPoint(99, 309), QPoint(285, 309)}},
        {"turned clockwise", lattice(QPointF(300, 100), QPointF(0, 40), QPointF(-40, 0)),
         {QPoint(320, 80), QPoint(320, 320), QPoint(160, 80), QPoint(160, 320)}},
    };
    for (const auto& row : rows) {
        const QVector<QPoint> corners = impl.getColorCheckerCorners(row.centres);
        EXPECT_EQ(corners, row.corners) << row.name;
        EXPECT_TRUE(ColorCorrectionAutoChartFinder::validate(corners, QSize(640, 480)).valid) << row.name;
        EXPECT_TRUE(impl.getColorCheckerCorners(row.centres.mid(0, 23)).isEmpty());
    }
}

TEST(ColorCorrectionAutoChartFinderImpl, FewerThanFourCentresGiveNoGrid)
{
    ColorCorrectionAutoChartFinderImpl impl;
    QImage img(640, 480, QImage::Format_ARGB32);
    img.fill(Qt::gray);
    EXPECT_TRUE(impl.getAllPatchCenter(img, {QPoint(1, 1), QPoint(5, 5), QPoint(9, 9)}).isEmpty());
    EXPECT_TRUE(impl.getInitialRegressionPatches(img).isEmpty());
}

}  // namespace
