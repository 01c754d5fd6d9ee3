#include "colorspace.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTextStream>

#include <cmath>
#include <limits>

namespace {

struct SharmaPair {
    pixel_lab first, second;
    double dE00;
};

std::vector<SharmaPair> loadSharma()
{
    QFile f(COLCAL_TESTDATA_DIR "/ciede2000_sharma.csv");
    EXPECT_TRUE(f.open(QIODevice::ReadOnly | QIODevice::Text)) << "missing ciede2000_sharma.csv";
    std::vector<SharmaPair> pairs;
    QTextStream in(&f);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (line.startsWith('#') || line.startsWith("L1"))
            continue;
        const QStringList v = line.split(',');
        if (v.size() != 7)
            continue;
        pairs.push_back({{v[0].toDouble(), v[1].toDouble(), v[2].toDouble()},
                         {v[3].toDouble(), v[4].toDouble(), v[5].toDouble()},
                         v[6].toDouble()});
    }
    return pairs;
}

TEST(ColorSpace, ReproducesPublishedCiede2000Pairs)
{
    const ColorSpace cs;
    const auto pairs = loadSharma();
    ASSERT_EQ(pairs.size(), 34u);
    double worst = 0.0;
    for (size_t i = 0; i < pairs.size(); ++i) {
        const double dE = cs.DeltaE2000(pairs[i].first, pairs[i].second, false);
        EXPECT_NEAR(dE, pairs[i].dE00, 1e-4) << "pair " << i + 1;
        // The formula is symmetric in its two samples.
        EXPECT_NEAR(cs.DeltaE2000(pairs[i].second, pairs[i].first, false), dE, 1e-9);
        worst = std::max(worst, std::fabs(dE - pairs[i].dE00));
    }
    RecordProperty("max_deviation", std::to_string(worst));
    std::printf("max deviation over the published pairs: %.3g\n", worst);
}

// Lightness alone makes no chroma difference; neutral samples (hue undefined,
// also with a negative zero) give no NaN, and the formula stays symmetric.
TEST(ColorSpace, ChromaDifferenceIgnoresLightnessAndNeutralsGiveNoNaN)
{
    const ColorSpace cs;
    const pixel_lab same[][2] = {{{50, 20, -10}, {70, 20, -10}}, {{10, 0, 0}, {90, 0, 0}}, {{60, -40, 30}, {20, -40, 30}}};
    for (const auto& c : same) {
        EXPECT_LE(cs.DeltaC2000(c[0], c[1]), 1e-300);
        EXPECT_GT(cs.DeltaE2000(c[0], c[1], false), 0.0);
    }
    const pixel_lab grey1{50, 0, 0}, grey2{60, 0, 0}, red{50, 40, 0}, negZero{50, -0.0, -0.0};
    for (const auto& [a, b] : {std::pair{grey1, grey2}, {grey1, red}, {red, grey1}, {negZero, grey1}}) {
        EXPECT_FALSE(std::isnan(cs.DeltaE2000(a, b, false)));
        EXPECT_FALSE(std::isnan(cs.DeltaC2000(a, b)));
        EXPECT_NEAR(cs.DeltaE2000(a, b, false), cs.DeltaE2000(b, a, false), 1e-12);
    }
    EXPECT_EQ(cs.DeltaE2000(red, red, false), 0.0);
    EXPECT_EQ(cs.DeltaC2000(red, red), 0.0);
}

// The curves invert each other over the whole range and meet at the knee;
// values out of range, NaN included, are limited to 0..255.
TEST(ColorSpace, TransferCurvesInvertAndClamp)
{
    const ColorSpace cs;
    for (double x = 0.0; x <= 255.0; x += 0.25) {
        EXPECT_NEAR(cs.RGB_to_sRGB(cs.sRGB_to_RGB(x)), x, 1e-9) << x;
        EXPECT_NEAR(cs.sRGB_to_RGB(cs.RGB_to_sRGB(x)), x, 1e-9) << x;
    }
    const double knee = 0.04045 * 255.0;
    for (double x : {knee - 1e-9, knee, knee + 1e-9})
        EXPECT_NEAR(cs.RGB_to_sRGB(cs.sRGB_to_RGB(x)), x, 1e-9);
    EXPECT_NEAR(cs.sRGB_to_RGB(knee - 1e-7), cs.sRGB_to_RGB(knee + 1e-7), 1e-6);
    for (const auto& [in, out] : {std::pair{0.0, 0.0}, {255.0, 255.0}, {-5.0, 0.0}, {300.0, 255.0}, {-0.0, 0.0}}) {
        EXPECT_DOUBLE_EQ(cs.sRGB_to_RGB(in), out) << in;
        EXPECT_DOUBLE_EQ(cs.RGB_to_sRGB(in), out) << in;
    }
    dlib::matrix<double, 1, 3> row;
    row = -1.0, std::numeric_limits<double>::quiet_NaN(), 1000.0;
    const auto d = cs.sRGB_to_RGB(row);
    EXPECT_EQ(d(0), 0.0);
    EXPECT_EQ(d(1), 0.0);
    EXPECT_EQ(d(2), 255.0);
}

TEST(ColorSpace, WhiteOfD65IsLab100)
{
    const ColorSpace cs;
    dlib::matrix<double, 1, 3> white;
    white = 255.0, 255.0, 255.0;
    const pixel_lab lab = cs.XYZ_To_Lab(cs.RGB_To_XYZ(white, cs.GetMatrixRGB2XYZatD65()),
                                        cs.GetWhitePointAtD65());
    EXPECT_NEAR(lab.L, 100.0, 1e-3);
    EXPECT_NEAR(lab.a, 0.0, 1e-2);
    EXPECT_NEAR(lab.b, 0.0, 1e-2);
}

}  // namespace
