#include "publishedchart.h"

#include "colorchecker.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

namespace {

using Edition = PublishedChart::Edition;

// Lab (D50) back to the linear RGB (0..255, D65) that labD50 should map onto it.
dlib::matrix<double, 1, 3> linearRgbOf(const pixel_lab& lab)
{
    const auto finv = [](double f) { return f * f * f > 0.008856 ? f * f * f : (116.0 * f - 16.0) / 903.3; };
    const double fy = (lab.L + 16.0) / 116.0;
    const dlib::matrix<double, 1, 3> w = PublishedChart::whitePointD50();
    dlib::matrix<double, 3, 1> xyz;
    xyz = w(0) * finv(fy + lab.a / 500.0), w(1) * finv(fy), w(2) * finv(fy - lab.b / 200.0);
    const dlib::matrix<double, 3, 3> toXyzD50 = PublishedChart::bradfordD65ToD50() * ColorSpace().GetMatrixRGB2XYZatD65();
    return dlib::trans(dlib::inv(toXyzD50) * xyz) * 255.0;
}

// Bruce Lindbloom's published Bradford matrix (D65 to D50, the same white
// points) and his sRGB-to-XYZ matrix adapted to D50 the same way, by columns;
// and the white-point mapping itself.
struct Adaptation {
    const char* what;
    pixel_xyz in;     // XYZ under D65, 0..100
    pixel_xyz out;    // expected under D50
};

const ColorSpace kCs;
pixel_xyz xyzOf(double r, double g, double b)
{
    dlib::matrix<double, 1, 3> rgb;
    rgb = r, g, b;
    return kCs.RGB_To_XYZ(rgb, kCs.GetMatrixRGB2XYZatD65());
}

class BradfordAdaptation : public ::testing::TestWithParam<Adaptation> {};

TEST_P(BradfordAdaptation, MatchesThePublishedTransform)
{
    const Adaptation& c = GetParam();
    const pixel_xyz got = PublishedChart().adaptD65ToD50(c.in);
    EXPECT_NEAR(got.X, c.out.X, 2e-5);
    EXPECT_NEAR(got.Y, c.out.Y, 2e-5);
    EXPECT_NEAR(got.Z, c.out.Z, 2e-5);
}

INSTANTIATE_TEST_SUITE_P(
    Lindbloom, BradfordAdaptation,
    ::testing::Values(
        Adaptation{"X", {100, 0, 0}, {104.78112, 2.95424, -0.92345}},
        Adaptation{"Y", {0, 100, 0}, {2.28866, 99.04844, 1.50436}},
        Adaptation{"Z", {0, 0, 100}, {-5.01270, -1.70491, 75.21316}},
        Adaptation{"WhiteD65", {95.047, 100.0, 108.883}, {96.422, 100.0, 82.521}},
        Adaptation{"SrgbRed", xyzOf(255, 0, 0), {43.60747, 22.25045, 1.39322}},
        Adaptation{"SrgbGreen", xyzOf(0, 255, 0), {38.50649, 71.68786, 9.71045}},
        Adaptation{"SrgbBlue", xyzOf(0, 0, 255), {14.30804, 6.06169, 71.41733}}),
    [](const auto& info) { return std::string(info.param.what); });

TEST(PublishedChart, CompiledTableEqualsTheReferenceFile)
{
    QFile f(COLCAL_TESTDATA_DIR "/colorchecker_reference.csv");
    ASSERT_TRUE(f.open(QIODevice::ReadOnly | QIODevice::Text));
    QTextStream in(&f);
    const PublishedChart post(Edition::Post2014), pre(Edition::Pre2014);
    int rows = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (line.startsWith('#') || line.startsWith("patch"))
            continue;
        // patch,row,col,"name",L,a,b,L_pre2014,a_pre2014,b_pre2014
        const QStringList v = line.section('"', 2).mid(1).split(',');
        ASSERT_EQ(v.size(), 6) << line.toStdString();
        const int k = line.section(',', 0, 0).toInt() - 1;
        ASSERT_EQ(k, rows);
        const pixel_lab a = post.lab(k), b = pre.lab(k);
        const double compiled[6] = {a.L, a.a, a.b, b.L, b.a, b.b};
        for (int i = 0; i < 6; ++i)
            EXPECT_DOUBLE_EQ(compiled[i], v[i].toDouble()) << "patch " << k + 1 << " column " << i;
        ++rows;
    }
    EXPECT_EQ(rows, 24);
}

// A chart measured exactly as published scores zero against it, in both
// editions, also where the value lies outside sRGB (patch 18, cyan).
TEST(PublishedChart, ChartEqualToThePublishedValuesScoresZero)
{
    for (const Edition e : {Edition::Post2014, Edition::Pre2014}) {
        const PublishedChart chart(e);
        for (int k = 0; k < 24; ++k) {
            const dlib::matrix<double, 1, 3> rgb = linearRgbOf(chart.lab(k));
            EXPECT_NEAR(chart.deltaE(k, rgb), 0.0, 1e-6) << PublishedChart::editionName(e) << " patch " << k + 1;
            EXPECT_NEAR(chart.deltaC(k, rgb), 0.0, 1e-6);
        }
        // and another patch's value does not
        EXPECT_GT(chart.deltaE(0, linearRgbOf(chart.lab(1))), 5.0);
    }
    EXPECT_LT(linearRgbOf(PublishedChart().lab(17))(0), 0.0);
}

// The engine's own targets (linear sRGB, D65) against the published chart:
// close, except where the published cyan lies outside sRGB and the target is
// the nearest colour inside.
TEST(PublishedChart, EngineTargetsLieNearThePublishedValues)
{
    const dlib::matrix<double, 24, 3> targets = ColorChecker().GetTargetRgb();
    const PublishedChart chart;
    double sum = 0.0;
    for (int k = 0; k < 24; ++k) {
        const double dE = chart.deltaE(k, dlib::rowm(targets, k));
        if (k == 17)
            EXPECT_GT(dE, 5.0);
        else
            EXPECT_LT(dE, 2.5) << "patch " << k + 1;
        sum += dE;
    }
    EXPECT_NEAR(sum / 24, 1.06, 0.01);
}

TEST(PublishedChart, EditionNamesReadBack)
{
    for (const Edition e : {Edition::Post2014, Edition::Pre2014}) {
        Edition read = e == Edition::Post2014 ? Edition::Pre2014 : Edition::Post2014;
        ASSERT_TRUE(PublishedChart::editionFromName(PublishedChart::editionName(e), read));
        EXPECT_EQ(read, e);
    }
    Edition unchanged = Edition::Pre2014;
    EXPECT_FALSE(PublishedChart::editionFromName("2014", unchanged));
    EXPECT_EQ(unchanged, Edition::Pre2014);
}

}  // namespace
