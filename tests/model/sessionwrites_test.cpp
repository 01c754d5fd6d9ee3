#include "colorcalibrationv1.h"
#include "colorcorrectionmodel.h"
#include "colorcorrectionmodelimpl.h"
#include "colorspace.h"

#include "emulatedcamera.h"
#include "featurewritelog.h"
#include "emulatedcamerasuite.h"

#include "genicam/nodemap.h"

#include <QTest>


#include <cmath>

// What the session writes into the camera, as the camera records it: the
// order of the neutral settings and of the calibration results, and that the
// results make the camera itself produce the colours the engine predicted.
namespace {

using Chart = dlib::matrix<double, 24, 3>;
using Entries = std::vector<std::string>;

const Entries kColours = {"Red", "Yellow", "Green", "Cyan", "Blue", "Magenta"};
// Per row the two off-diagonal cells, then the diagonal that makes the row sum to 1.
const Entries kMatrixCells = {"Gain01", "Gain02", "Gain00", "Gain10", "Gain12", "Gain11", "Gain20", "Gain21", "Gain22"};

Entries each(const std::string& feature, const Entries& selectorEntries)
{
    Entries out;
    for (const auto& e : selectorEntries)
        out.push_back(feature + "[" + e + "]");
    return out;
}

/// The log entries one step of the session leaves on a camera prepared by
/// makeEveryWriteVisible().
struct Step {
    const char* name;
    Entries writes;
};

class SessionWritesTest : public ::testing::TestWithParam<const char*> {
protected:
    // Patches of some 60 x 60 pixels: the session calibrates on a single grab.
    void SetUp() override { rig = std::make_unique<SessionRig>(GetParam(), 960, 600); }
    ColorCorrectionModel& model() { return rig->model(); }
    Kalto::CNodeMap& map() { return rig->nodeMap(); }
    bool sfnc2() { return rig->sfnc2(); }
    std::string balance() { return sfnc2() ? "BalanceRatio" : "BalanceRatioAbs"; }
    std::string adjust(const char* what) { return (sfnc2() ? "ColorAdjustment" : "OstColorAdjustment") + std::string(what); }

    // The node map logs changes only: every selected value gets one that
    // neither neutral settings nor a calibration result can have.
    void makeEveryWriteVisible()
    {
        for (const char* c : {"Red", "Green", "Blue"})
            map().storeFloatFor(balance(), c, 1.7171);
        for (const auto& cell : kMatrixCells)
            map().storeFloatFor("ColorTransformationValue", cell, 0.3131);
        for (const auto& c : kColours) {
            map().storeFloatFor(adjust("Hue"), c, 0.4141);
            map().storeFloatFor(adjust("Saturation"), c, 1.3131);
        }
    }

    Step hueSaturation()
    {
        Entries writes;
        for (const auto& c : kColours)
            writes.insert(writes.end(), {adjust("Hue") + "[" + c + "]", adjust("Saturation") + "[" + c + "]"});
        return {"hue and saturation", writes};
    }
    Step whiteBalance(bool autoOffFirst)
    {
        Entries writes = each(balance(), {"Red", "Blue", "Green"});
        if (autoOffFirst)
            writes.insert(writes.begin(), "BalanceWhiteAuto");
        return {"white balance", writes};
    }
    Step matrix(Entries before, Entries after)
    {
        Entries writes = std::move(before);
        for (const auto& w : each("ColorTransformationValue", kMatrixCells))
            writes.push_back(w);
        writes.insert(writes.end(), after.begin(), after.end());
        return {"colour matrix", writes};
    }

    // Compares the log, cut to the features the steps name, step by step.
    void expectSteps(const FeatureWriteLog& log, const std::vector<Step>& steps)
    {
        std::set<std::string> features;
        for (const Step& step : steps)
            for (const auto& w : step.writes)
                features.insert(w.substr(0, w.find('[')));
        const Entries got = log.of(features);
        size_t at = 0;
        for (const Step& step : steps) {
            const size_t end = std::min(got.size(), at + step.writes.size());
            EXPECT_EQ(Entries(got.begin() + long(std::min(at, got.size())), got.begin() + long(end)), step.writes)
                << "step " << step.name;
            at += step.writes.size();
        }
        EXPECT_EQ(got.size(), at) << "writes after the last step";
    }

    std::unique_ptr<SessionRig> rig;
};

TEST_P(SessionWritesTest, NeutralSettingsAreWrittenInOrderAndLeaveNoColourProcessing)
{
    // A user's camera: its auto functions have worked on a few frames.
    ASSERT_TRUE(rig->open());
    QImage live;
    ASSERT_TRUE(model().GrabImage(live, false));
    QTest::qWait(300);
    ASSERT_TRUE(model().StopGrab());
    makeEveryWriteVisible();

    FeatureWriteLog log(map());
    ASSERT_TRUE(model().SetNeutralSettings());
    const Step sfnc1HueSaturation = {"hue and saturation", {"OstColorAdjustmentEnable"}};
    expectSteps(log, {{"black level", {sfnc2() ? "BlackLevel[All]" : "BlackLevelRaw[All]"}},
                      {"gamma", {"Gamma"}},
                      sfnc2() ? matrix({"LightSourceSelector"}, {"LightSourceSelector"}) : matrix({"OstLightSourcePreset"}, {}),
                      {"HSBC", {"OstHue", "OstSaturation", "OstBrightness", "OstContrast"}},
                      {"LUT", {"LUTEnable"}},
                      sfnc2() ? hueSaturation() : sfnc1HueSaturation,
                      whiteBalance(true),
                      {"demosaicing", {"DemosaicingMode"}},
                      {"auto functions", {"TonalRangeAuto", "TonalRangeEnable", "ExposureAuto", "GainAuto"}}});

    const PipelineSettings s = rig->device().currentSettings();
    EXPECT_EQ(s.blackLevelDn, 0.0);
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(s.balance[c], 1.0) << "channel " << c;
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(s.matrix[i], (i % 4 == 0) ? 1.0 : 0.0) << kMatrixCells[i];
    if (sfnc2()) {
        for (int k = 0; k < 6; ++k) {
            EXPECT_EQ(s.colorAdjust[k], 0.0) << kColours[k];
            EXPECT_EQ(s.colorAdjust[6 + k], 1.0) << kColours[k];
        }
    } else {
        EXPECT_FALSE(s.colorAdjustEnable);
    }
    EXPECT_EQ(s.hueDeg, 0.0);
    EXPECT_EQ(s.saturation, 1.0);
    EXPECT_EQ(s.brightness, 0.0);
    EXPECT_EQ(s.contrast, 0.0);
    EXPECT_EQ(s.contrastMode, ContrastMode::Linear);
    EXPECT_FALSE(s.tonalRange);
    EXPECT_TRUE(!s.gammaEnable || (s.gammaCurve == GammaCurve::User && s.gamma == 1.0));
    EXPECT_FALSE(s.lutEnable);
    EXPECT_EQ(s.demosaicing, Demosaicing::Simple);
    EXPECT_EQ(s.testPattern, TestPattern::Off);
    for (const char* f : {"ExposureAuto", "GainAuto", "BalanceWhiteAuto", "TonalRangeAuto"})
        EXPECT_EQ(map().getEnum(f), "Off") << f;
    EXPECT_EQ(map().getEnum(sfnc2() ? "LightSourceSelector" : "OstLightSourcePreset"), "Off");
}

pixel_lab toLab(const ColorSpace& cs, double r, double g, double b)
{
    dlib::matrix<double, 1, 3> rgb;
    rgb = r, g, b;
    return cs.XYZ_To_Lab(cs.RGB_To_XYZ(rgb, cs.GetMatrixRGB2XYZatD65()), cs.GetWhitePointAtD65());
}

// Mean of a few grabs of the 24 patches, 0..255 as the camera outputs them.
bool measure(ColorCorrectionModel& model, Chart& chart, int grabs = 3)
{
    chart = 0;
    for (int g = 0; g < grabs; ++g) {
        QVector<QColor> values;
        if (model.GetColorPatchValues(values, true) != 24)
            return false;
        chart += ColorCorrectionModelImpl::convertQColorsToMatrix(values, false) / double(grabs);
    }
    return true;
}

TEST_P(SessionWritesTest, CalibrationResultsAreWrittenInOrderAndTheCameraMatchesTheEngine)
{
    ASSERT_FALSE(rig->openAndNeutralise().isEmpty());
    // Raw Bayer output bypasses the camera's colour pipeline (the medical
    // model starts in BayerRG8): measure what the pipeline makes.
    map().setEnum("PixelFormat", "RGB8");
    ASSERT_TRUE(model().SetExposureTimeValue(rig->exposureForGrey(150.0)));
    ASSERT_NEAR(rig->measureGrey(), 150.0, 8.0);
    ASSERT_TRUE(model().ApplyInitialColorPatchValues());
    QVector<QColor> input;  // what the session calibrates with: the last sampled patches
    model().GetColorPatchCurrentValues(input);
    ASSERT_EQ(input.size(), 24);
    makeEveryWriteVisible();

    FeatureWriteLog log(map());
    ASSERT_TRUE(model().ExecuteCalibrationAndApply());
    std::vector<Step> steps = {whiteBalance(false),
                               matrix(sfnc2() ? Entries{"LightSourceSelector"} : Entries{}, {}),
                               hueSaturation(),
                               {"gamma", {"Gamma"}}};
    if (!sfnc2())
        steps.push_back({"sRGB curve", {"GammaSelector"}});
    expectSteps(log, steps);

    // Every row of the camera's own matrix sums to exactly 1.
    for (int row = 0; row < 3; ++row) {
        double sum = 0.0;
        for (int col = 0; col < 3; ++col)
            sum += map().getFloatFor("ColorTransformationValue", kMatrixCells[size_t(row * 3 + col)]);
        EXPECT_EQ(sum, 1.0) << "row " << row;
    }

    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, ColorCorrectionModelImpl::convertQColorsToMatrix(input, false));
    engine.Run();
    double gamma, digitalGain;
    engine.GetGamma(gamma);
    engine.GetDigitalGain(digitalGain);
    EXPECT_NEAR(map().getFloat("Gamma"), gamma, map().floatIncrement("Gamma") + 1e-9);  // the same calibration
    const Chart predicted = engine.GetChart(COLORCALIBRATION_STEP_BC6X2);

    Chart encoded;
    ASSERT_TRUE(measure(model(), encoded));
    const ColorSpace cs;
    double sum = 0.0, worst = 0.0;
    int compared = 0;
    for (int k = 0; k < 24; ++k) {
        double lin[3];
        bool clipped = false;
        for (int c = 0; c < 3; ++c) {
            const double v = encoded(k, c);
            lin[c] = sfnc2() ? 255.0 * std::pow(v / 255.0, 1.0 / gamma) : cs.sRGB_to_RGB(v);
            // The camera has no digital gain; the engine's chart carries it.
            lin[c] *= digitalGain;
            const double expected = predicted(k, c) / digitalGain;
            clipped = clipped || expected < 1.0 || expected > 250.0 || v >= 254.5;
        }
        if (clipped)
            continue;  // the camera clips what the engine's arithmetic does not
        const double dE = cs.DeltaE2000(toLab(cs, lin[0], lin[1], lin[2]),
                                        toLab(cs, predicted(k, 0), predicted(k, 1), predicted(k, 2)), false);
        sum += dE;
        worst = std::max(worst, dE);
        ++compared;
    }
    ASSERT_GE(compared, 20);
    const double mean = sum / compared;
    RecordProperty("meanDeltaE00", std::to_string(mean));
    RecordProperty("maxDeltaE00", std::to_string(worst));
    // The session calibrates on one grab of the neutral camera, measured
    // linearly in 8-bit colours: the darkest patches enter the engine with a
    // few per cent of rounding and noise, and greys show small chroma shifts
    // as large CIEDE2000 values. Measured at this frame size: mean 1.7, worst
    // 3.3 (SFNC 2); mean 1.8, worst 4.0 (SFNC 1, whose colour adjustment
    // stays switched off after neutralising, so the engine's hue/saturation
    // step never reaches its image). Without the matrix writes the mean is
    // near 18.
    EXPECT_LT(mean, 2.2);
    EXPECT_LT(worst, 6.0);
}

INSTANTIATE_ON_EMULATED_CAMERAS(SessionWritesTest);

}  // namespace
