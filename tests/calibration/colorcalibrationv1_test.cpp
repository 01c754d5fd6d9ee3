#include "colorcalibrationv1.h"
#include "colorspace.h"
#include "enginetestutil.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>

#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>

namespace {

const auto kUnknown = static_cast<COLORCALIBRATION_STEP_TYPE>(7);
const auto kUnknownSource = static_cast<COLORCALIBRATION_STEP_TYPE>(9);

TEST(ColorCalibrationV1, UnknownStepsGiveMinusOneOrZeros)
{
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, targetChart());
    engine.SetChart(kUnknown, dlib::ones_matrix<double>(24, 3));
    EXPECT_EQ(engine.GetError(kUnknown, false, false), -1.0);
    EXPECT_EQ(engine.GetError(kUnknown, 3, true, true), -1.0);
    EXPECT_EQ(dlib::max(dlib::abs(engine.GetChart(kUnknown))), 0.0);
    EXPECT_EQ(engine.Run(COLORCALIBRATION_STEP_ORIGINAL, kUnknownSource), -1.0);
    EXPECT_EQ(engine.Run(kUnknown, COLORCALIBRATION_STEP_ORIGINAL), -1.0);
    // Nothing ran: Original's output is still the chart that was set.
    EXPECT_EQ(engine.GetChart(COLORCALIBRATION_STEP_ORIGINAL), targetChart());
}

TEST(ColorCalibrationV1, TargetChartCalibratesToAlmostNothing)
{
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, targetChart());
    const double mean = engine.Run();
    EXPECT_LT(mean, 0.5);
    EXPECT_NEAR(engine.GetError(COLORCALIBRATION_STEP_BC6X2, false, true), mean, 1e-12);
    EXPECT_NEAR(dlib::max(dlib::rowm(engine.GetChart(COLORCALIBRATION_STEP_DIGITALGAIN), 19)), 150.0, 1e-9);
    double r, g, b;
    engine.GetWhiteBalance(r, g, b);
    EXPECT_EQ(std::min({r, g, b}), 1.0);
}

TEST(ColorCalibrationV1, CalibrationReducesErrorOfRealisticCharts)
{
    std::mt19937 rng(11);
    for (int trial = 0; trial < 10; ++trial) {
        ColorCalibrationV1 engine;
        engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, randomMeasuredChart(rng));
        const double after = engine.Run();
        const double before = engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, false, false);
        EXPECT_LT(after, before) << trial;
        EXPECT_LT(after, 3.0) << trial;
        dlib::matrix<double, 3, 3> m;
        engine.GetMatrix(m);
        for (long r = 0; r < 3; ++r)
            EXPECT_NEAR(dlib::sum(dlib::rowm(m, r)), 1.0, 1e-12);
        // Per-patch figures average to the step's mean.
        double sum = 0;
        for (int k = 0; k < 24; ++k)
            sum += engine.GetError(COLORCALIBRATION_STEP_BC6X2, k, false, true);
        EXPECT_NEAR(sum / 24.0, after, 1e-12);
    }
}

TEST(ColorCalibrationV1, SingleStepRunRefitsOnlyThatStep)
{
    std::mt19937 rng(5);
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, randomMeasuredChart(rng));
    engine.Run();
    const auto finalChart = engine.GetChart(COLORCALIBRATION_STEP_BC6X2);
    dlib::matrix<double, 3, 3> before;
    engine.GetMatrix(before);

    // Change what white balance produced, then refit only the matrix on it.
    engine.SetChart(COLORCALIBRATION_STEP_WHITEBALANCE, targetChart());
    const double mean = engine.Run(COLORCALIBRATION_STEP_MATRIX3X3, COLORCALIBRATION_STEP_WHITEBALANCE);
    dlib::matrix<double, 3, 3> after;
    engine.GetMatrix(after);
    EXPECT_LT(dlib::max(dlib::abs(after - dlib::identity_matrix<double>(3))), 1e-9);
    EXPECT_NEAR(mean, engine.GetError(COLORCALIBRATION_STEP_MATRIX3X3, false, true), 1e-12);
    EXPECT_EQ(engine.GetChart(COLORCALIBRATION_STEP_BC6X2), finalChart);
    EXPECT_GT(dlib::max(dlib::abs(before - after)), 1e-3);
}

TEST(ColorCalibrationV1, GreyChromaticPatchEscapesRunAfterEarlierSteps)
{
    ColorCalibrationV1 engine;
    dlib::matrix<double, 24, 3> chart = targetChart();
    // Neutral light greys keep the white balance at 1, so the grey patch stays grey.
    for (long k = 19; k < 22; ++k)
        chart(k, 0) = chart(k, 2) = chart(k, 1);
    chart(5, 0) = chart(5, 1) = chart(5, 2) = 80.0;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, chart);
    EXPECT_THROW(engine.Run(), std::runtime_error);
    // Digital gain already ran: its chart has the reference grey at 150.
    EXPECT_NEAR(dlib::max(dlib::rowm(engine.GetChart(COLORCALIBRATION_STEP_DIGITALGAIN), 19)), 150.0, 1e-9);
}

// The sample chart colcal ships: a warm-lit camera with channel crosstalk.
dlib::matrix<double, 24, 3> sampleChart()
{
    QFile f(COLCAL_SAMPLES_DIR "/measured_chart.csv");
    EXPECT_TRUE(f.open(QIODevice::ReadOnly | QIODevice::Text)) << "missing measured_chart.csv";
    QStringList values;
    for (const QString& line : QString::fromUtf8(f.readAll()).split('\n'))
        if (!line.startsWith('#') && !line.trimmed().isEmpty())
            values += line.split(',');
    EXPECT_EQ(values.size(), 72);
    dlib::matrix<double, 24, 3> chart = dlib::zeros_matrix<double>(24, 3);
    for (int i = 0; i < 72 && i < values.size(); ++i)
        chart(i / 3, i % 3) = values[i].toDouble();
    return chart;
}

const char* const kStepNames[] = {"Original", "DigitalGain", "WhiteBalance", "Matrix3x3", "Bc6x2"};
const char* const kSectors[] = {"red", "yellow", "green", "cyan", "blue", "magenta"};

// Every figure the engine reports for the sample chart, by name.
std::map<std::string, double> figures(ColorCalibrationV1& engine)
{
    std::map<std::string, double> f;
    engine.GetDigitalGain(f["digital gain"]);
    engine.GetWhiteBalance(f["white balance R"], f["white balance G"], f["white balance B"]);
    dlib::matrix<double, 3, 3> m;
    engine.GetMatrix(m);
    for (long r = 0; r < 3; ++r)
        for (long c = 0; c < 3; ++c)
            f["matrix " + std::to_string(r) + std::to_string(c)] = m(r, c);
    dlib::matrix<double, 12, 1> p;
    engine.GetBc6x2(p);
    for (long i = 0; i < 12; ++i)
        f[std::string(i < 6 ? "hue " : "saturation ") + kSectors[i % 6]] = p(i);
    engine.GetGamma(f["gamma"]);
    f["dE00 measured"] = engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, false, false);
    f["dC00 measured"] = engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, true, false);
    for (int step = COLORCALIBRATION_STEP_DIGITALGAIN; step <= COLORCALIBRATION_STEP_BC6X2; ++step) {
        const auto key = static_cast<COLORCALIBRATION_STEP_TYPE>(step);
        f[std::string("dE00 after ") + kStepNames[step]] = engine.GetError(key, false, true);
        f[std::string("dC00 after ") + kStepNames[step]] = engine.GetError(key, true, true);
    }
    return f;
}

struct Pinned {
    const char* what;
    double value;
};

// Pinned so that any change in the numeric path shows. They come from
// `colcal engine tools/colcal/samples/measured_chart.csv --json`; renew them
// only for a change that is meant to move them.
const Pinned kSampleFigures[] = {
    {"digital gain", 0.9532282664},
    {"white balance R", 1.0},
    {"white balance G", 1.159967722},
    {"white balance B", 1.640597826},
    {"matrix 00", 1.259849339},
    {"matrix 01", -0.233058889},
    {"matrix 02", -0.0267904502},
    {"matrix 10", -0.1250567076},
    {"matrix 11", 1.264854179},
    {"matrix 12", -0.1397974712},
    {"matrix 20", -0.02615463024},
    {"matrix 21", -0.34411452},
    {"matrix 22", 1.37026915},
    {"hue red", -0.002719240131},
    {"hue yellow", -0.02648677137},
    {"hue green", 0.0005238777999},
    {"hue cyan", 0.0166680677},
    {"hue blue", 0.009995980742},
    {"hue magenta", 0.01935755363},
    {"saturation red", 1.000212341},
    {"saturation yellow", 0.9919757418},
    {"saturation green", 1.011143824},
    {"saturation cyan", 1.00803835},
    {"saturation blue", 1.00225983},
    {"saturation magenta", 1.013600832},
    {"gamma", 0.45},
    {"dE00 measured", 8.927804068},
    {"dC00 measured", 8.550850489},
    {"dE00 after DigitalGain", 9.216216082},
    {"dC00 after DigitalGain", 8.584922111},
    {"dE00 after WhiteBalance", 4.529290721},
    {"dC00 after WhiteBalance", 4.319029191},
    {"dE00 after Matrix3x3", 1.122688755},
    {"dC00 after Matrix3x3", 0.8219240343},
    {"dE00 after Bc6x2", 0.9101010692},
    {"dC00 after Bc6x2", 0.5624958155},
};

TEST(ColorCalibrationV1, SampleChartGivesThePinnedFigures)
{
    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, sampleChart());
    const double finalMean = engine.Run();
    const std::map<std::string, double> got = figures(engine);
    ASSERT_EQ(got.size(), std::size(kSampleFigures));
    for (const Pinned& p : kSampleFigures) {
        ASSERT_EQ(got.count(p.what), 1u) << p.what;
        EXPECT_NEAR(got.at(p.what), p.value, 1e-6 * std::fabs(p.value)) << p.what;
    }
    EXPECT_EQ(finalMean, got.at("dE00 after Bc6x2"));
}

// The message of the std::runtime_error that `run` throws; empty when none.
template <class Run>
std::string refusal(Run run)
{
    try {
        run();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return std::string();
}

// A value that is not a number, wherever it enters the numeric path, gets an
// answer that says so: the sRGB curves clip it as any value out of range (a
// camera's value is never refused), CIEDE2000 has no difference to give
// (-1.0, the engine's "unknown"), and the engine refuses the chart, naming the
// place, before any step runs.
class NonFiniteInput : public ::testing::TestWithParam<double> {};

TEST_P(NonFiniteInput, GivesAClearAnswer)
{
    const double v = GetParam();
    const ColorSpace cs;
    EXPECT_EQ(cs.sRGB_to_RGB(v), v > 0 ? 255.0 : 0.0);
    EXPECT_EQ(cs.RGB_to_sRGB(v), v > 0 ? 255.0 : 0.0);

    for (int component = 0; component < 6; ++component) {
        double lab[6] = {50, 20, -10, 60, -5, 30};
        lab[component] = v;
        for (const bool ignoreLightness : {false, true})
            EXPECT_EQ(cs.DeltaE2000({lab[0], lab[1], lab[2]}, {lab[3], lab[4], lab[5]}, ignoreLightness), -1.0)
                << "component " << component << (ignoreLightness ? ", without lightness" : "");
    }

    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, targetChart());
    engine.Run();
    const dlib::matrix<double, 24, 3> calibrated = engine.GetChart(COLORCALIBRATION_STEP_BC6X2);
    const struct {
        long patch, channel;
        const char* message;
    } places[] = {
        {0, 0, "Chart value is not a finite number: patch 1, channel R"},
        {18, 1, "Chart value is not a finite number: patch 19, channel G"},
        {19, 2, "Chart value is not a finite number: patch 20, channel B"},
    };
    for (const auto& place : places) {
        dlib::matrix<double, 24, 3> chart = targetChart();
        chart(place.patch, place.channel) = v;
        engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, chart);
        EXPECT_EQ(engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, int(place.patch), false, false), -1.0);
        EXPECT_EQ(engine.GetError(COLORCALIBRATION_STEP_ORIGINAL, true, false), -1.0);
        EXPECT_EQ(refusal([&] { engine.Run(); }), place.message);
        EXPECT_EQ(refusal([&] { engine.Run(COLORCALIBRATION_STEP_DIGITALGAIN, COLORCALIBRATION_STEP_ORIGINAL); }),
                  place.message);
        EXPECT_EQ(engine.GetChart(COLORCALIBRATION_STEP_BC6X2), calibrated) << place.message;
    }
}

INSTANTIATE_TEST_SUITE_P(NaNAndInfinities, NonFiniteInput,
                         ::testing::Values(std::numeric_limits<double>::quiet_NaN(),
                                           std::numeric_limits<double>::infinity(),
                                           -std::numeric_limits<double>::infinity()),
                         [](const auto& info) {
                             return std::isnan(info.param) ? std::string("NaN")
                                                           : info.param > 0 ? std::string("PlusInfinity")
                                                                            : std::string("MinusInfinity");
                         });

}  // namespace
