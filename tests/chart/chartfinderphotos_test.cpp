// The chart finder on annotated real photographs and on synthetic families
// the standard search cannot reach (small, turned, partly covered charts).
#include "chartscene.h"
#include "colorcorrectionautochartfinder.h"

#include <QFile>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPolygonF>
#include <QTransform>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Quad = std::array<QPointF, 4>;  // top-left, top-right, bottom-left, bottom-right in chart order
using Search = ColorCorrectionAutoChartFinderResult::Search;

// Patch centres of a quadrilateral whose corners lie `reach` pitches beyond
// the corner patches' centres (0.5 for a grid, half the patch side for the
// hull of the patches that the annotations give).
QVector<QPointF> centresOf(const Quad& q, double reach)
{
    QPolygonF from, to;
    from << QPointF(-reach, -reach) << QPointF(5 + reach, -reach) << QPointF(5 + reach, 3 + reach)
         << QPointF(-reach, 3 + reach);
    to << q[0] << q[1] << q[3] << q[2];
    QTransform t;
    QVector<QPointF> out;
    if (QTransform::quadToQuad(from, to, t))
        for (int k = 0; k < 24; ++k)
            out << t.map(QPointF(k % 6, k / 6));
    return out;
}

// Largest distance of a found grid's patch centres from the true ones, in
// patch pitches of the true grid (mean over the chart).
double worstCentreError(const ColorCorrectionAutoChartFinderResult& r, const Quad& truth, double truthReach)
{
    const QVector<QPointF> want = centresOf(truth, truthReach);
    const QVector<QPointF> got =
        centresOf({QPointF(r.topLeft), QPointF(r.topRight), QPointF(r.bottomLeft), QPointF(r.bottomRight)}, 0.5);
    if (want.size() != 24 || got.size() != 24)
        return INFINITY;
    auto dist = [](QPointF a, QPointF b) { return std::hypot(a.x() - b.x(), a.y() - b.y()); };
    const double pitch = (dist(want[0], want[5]) + dist(want[18], want[23])) / 10.0 * 0.5 +
                         (dist(want[0], want[18]) + dist(want[5], want[23])) / 6.0 * 0.5;
    double worst = 0.0;
    for (int k = 0; k < 24; ++k)
        worst = std::max(worst, dist(got[k], want[k]) / pitch);
    return worst;
}

const QJsonObject& annotations()
{
    static const QJsonObject a = [] {
        QFile f(COLCAL_TESTDATA_DIR "/charts/annotations.json");
        return f.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(f.readAll()).object() : QJsonObject();
    }();
    return a;
}

enum class Expect { Found, Rejected, NeverWrong };

struct PhotoRow {
    const char* file;
    Expect expect;
};

void PrintTo(const PhotoRow& row, std::ostream* os)
{
    *os << row.file;
}

class FinderOnPhotos : public ::testing::TestWithParam<PhotoRow> {};

TEST_P(FinderOnPhotos, FindsTheChartWithinAQuarterPitchOrRejects)
{
    const PhotoRow& row = GetParam();
    const QJsonObject a = annotations().value(row.file).toObject();
    ASSERT_FALSE(a.isEmpty()) << "no annotation for " << row.file;
    const QImage image = QImageReader(QString(COLCAL_TESTDATA_DIR "/charts/") + row.file).read();
    ASSERT_FALSE(image.isNull());
    ColorCorrectionAutoChartFinder finder;
    const ColorCorrectionAutoChartFinderResult r = finder.GetChartPosition(image);
    if (row.expect == Expect::Rejected) {
        EXPECT_FALSE(r.valid);
        EXPECT_EQ(r.foundBy, Search::None);
        return;
    }
    if (row.expect == Expect::Found)
        ASSERT_TRUE(r.valid);
    else if (!r.valid)
        return;
    EXPECT_NE(r.foundBy, Search::None);
    const QJsonObject c = a.value("corners").toObject();
    auto pt = [&c](const char* key) {
        const QJsonArray v = c.value(key).toArray();
        return QPointF(v.at(0).toDouble(), v.at(1).toDouble());
    };
    // The annotations give the hull of the patches; their side is 0.87 of the pitch.
    const Quad hull = {pt("topLeft"), pt("topRight"), pt("bottomLeft"), pt("bottomRight")};
    EXPECT_LE(worstCentreError(r, hull, 0.87 / 2), 0.25)
        << "found (" << r.topLeft.x() << "," << r.topLeft.y() << ") (" << r.topRight.x() << "," << r.topRight.y()
        << ") (" << r.bottomLeft.x() << "," << r.bottomLeft.y() << ") (" << r.bottomRight.x() << ","
        << r.bottomRight.y() << ")";
}

// The tiny chart behind the pot (about 7 px pitch, on the image's edge) is
// beyond the search; should it be found, the grid must be right.
const PhotoRow kPhotos[] = {
    {"jarrelscy_printed_closeup_warm_cast_laptop.jpg", Expect::Found},
    {"jarrelscy_printed_desk_perspective.jpg", Expect::Found},
    {"jarrelscy_printed_floor_small.jpg", Expect::Found},
    {"jarrelscy_printed_floor_tilted_medium.jpg", Expect::Found},
    {"jarrelscy_printed_keyboard_rot45_clutter.jpg", Expect::Found},
    {"mathandy_passport_case_dim.jpg", Expect::Found},
    {"pedrodiamel_handheld_sunlight.jpg", Expect::Found},
    {"plantcv_chamber_rot90cw_source1.png", Expect::Found},
    {"plantcv_chamber_rot90cw_target.png", Expect::Found},
    {"plantcv_chamber_tiny_cutoff_behind_pot.jpg", Expect::NeverWrong},
    {"plantcv_mini_closeup_rot90ccw.jpg", Expect::Found},
    {"plantcv_other_maker_24patch_seedheads.jpg", Expect::Found},
    {"plantcv_small_corner_black_cloth.jpg", Expect::Found},
    {"plantcv_negative_no_chart.jpg", Expect::Rejected},
    {"plantcv_closeup_partial_cutoff.png", Expect::Rejected},
};

INSTANTIATE_TEST_SUITE_P(Photos, FinderOnPhotos, ::testing::ValuesIn(kPhotos));

struct FamilyRow {
    const char* name;
    double pitch;     // 0: the scene's own scale
    double angleDeg;  // NaN: the scene's own tilt
    int covered;
    uint32_t seed;
    QSize frame = {1024, 768};
    bool plain = false;         // no perspective, no clutter
    Search by = Search::None;  // None: either search
};

void PrintTo(const FamilyRow& row, std::ostream* os)
{
    *os << row.name;
}

class FinderOnScenes : public ::testing::TestWithParam<FamilyRow> {};

TEST_P(FinderOnScenes, TheExtendedSearchFindsWhatTheStandardOneCannot)
{
    const FamilyRow& row = GetParam();
    ChartScene::Params p = ChartScene::randomParams(row.seed, row.frame.width(), row.frame.height());
    p.pitch = row.pitch;
    if (!std::isnan(row.angleDeg))
        p.angleDeg = row.angleDeg;
    p.covered = row.covered;
    if (row.plain) {
        p.perspective = 0.0;
        p.clutter = 0;
    }
    Quad truth;
    const QImage image = ChartScene::render(p, truth);
    ColorCorrectionAutoChartFinder finder;
    const ColorCorrectionAutoChartFinderResult r = finder.GetChartPosition(image);
    ASSERT_TRUE(r.valid);
    if (row.by != Search::None) {
        EXPECT_EQ(r.foundBy, row.by);
    }
    // Corners come in whole pixels, a third of a pitch or more at the smallest pitches.
    EXPECT_LE(worstCentreError(r, truth, 0.5), row.pitch > 0 ? std::max(0.25, 1.0 / row.pitch) : 0.25);
    // Without the extended search the same scene is not found.
    ExtendedChartSearchParameters off = finder.extendedSearchParameters();
    off.enabled = false;
    finder.setExtendedSearchParameters(off);
    if (r.foundBy == Search::Extended)
        EXPECT_FALSE(finder.GetChartPosition(image).valid);
    else
        EXPECT_EQ(r.foundBy, Search::Standard);
}

const FamilyRow kScenes[] = {
    {"pitch 8 px", 8.0, 5.0, 0, 3},
    {"pitch 12 px turned 100 degrees", 12.0, 100.0, 0, 4},
    {"pitch 18 px", 18.0, -12.0, 0, 5},
    {"upright turned 225 degrees", 0.0, 225.0, 0, 6},
    {"two patches covered", 40.0, 10.0, 2, 7},
    {"three patches covered, turned 300 degrees", 30.0, 300.0, 3, 8},
    // A corner of the grid a fifth of a pitch off its patch, where the final
    // placement's samples snapped to whole pixels.
    {"pitch 12 px, upright", 12.0, NAN, 0, 9, {1280, 720}},
    {"pitch 11 px, foreshortened", 8.0 + 12.0 * 27 / 99, NAN, 0, 71},
    // The corner at the black patch, which shows nothing on the black frame,
    // a third of a pitch off where moves along one axis alone could not mend it.
    {"pitch 12 px, noisy", 8.0 + 12.0 * 35 / 99, NAN, 0, 1155},
    // Three covered patches pull the colour match over all 24 under the bar;
    // two among the search's nine samples hide the chart from the search.
    {"three patches covered, a corner one among them", 0.0, NAN, 3, 20, {800, 600}},
    {"three patches covered, one in the grey row", 0.0, NAN, 3, 92, {800, 600}},
    {"three patches covered, two of them searched", 0.0, NAN, 3, 26, {1920, 1080}},
    // Charts at the smallest pitches found, in frames barely larger than the
    // chart: the searches skip images and pitches too small for a grid, and
    // must still find these.
    {"pitch 2 px in 17 x 13", 2.0, 0.0, 0, 220, {17, 13}, true, Search::Standard},
    {"pitch 2 px turned clockwise in 13 x 17", 2.0, 90.0, 0, 220, {13, 17}, true, Search::Standard},
    {"pitch 3 px in 23 x 17", 3.0, 0.0, 0, 310, {23, 17}, true, Search::Standard},
    {"pitch 5 px in 38 x 28", 5.0, 0.0, 0, 510, {38, 28}, true, Search::Extended},
    {"pitch 5 px tilted in 53 x 43", 5.0, 10.0, 0, 540, {53, 43}, true, Search::Extended},
};

INSTANTIATE_TEST_SUITE_P(Families, FinderOnScenes, ::testing::ValuesIn(kScenes));

}  // namespace
