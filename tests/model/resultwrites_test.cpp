#include "camerajustify.h"

#include "colorcalibrationv1.h"
#include "colorspace.h"
#include "emulatedcamera.h"
#include "emulatedrig.h"
#include "modeltestapp.h"
#include "testcalibrationsession.h"

#include "genicam/nodemap.h"

#include <gtest/gtest.h>

#include <cmath>

// The engine's results written into an emulated camera make the camera itself
// produce the colours the engine predicted.
namespace {

using Chart = dlib::matrix<double, 24, 3>;

// Mean of a few grabs of the 24 patches, 0..255 as the camera outputs them.
bool measure(TestCalibrationSession& session, Chart& chart, int grabs = 3)
{
    chart = 0;
    for (int g = 0; g < grabs; ++g) {
        QVector<QColor> values;
        if (session.GetColorPatchValues(values, true) != 24)
            return false;
        for (int k = 0; k < 24; ++k) {
            chart(k, 0) += values[k].red() / double(grabs);
            chart(k, 1) += values[k].green() / double(grabs);
            chart(k, 2) += values[k].blue() / double(grabs);
        }
    }
    return true;
}

pixel_lab toLab(const ColorSpace& cs, double r, double g, double b)
{
    dlib::matrix<double, 1, 3> rgb;
    rgb = r, g, b;
    return cs.XYZ_To_Lab(cs.RGB_To_XYZ(rgb, cs.GetMatrixRGB2XYZatD65()), cs.GetWhitePointAtD65());
}

class ResultWritesTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        ensureModelTestApp();
        rig = std::make_unique<EmulatedRig>(GetParam());
        justify = std::make_unique<CameraJustify>(rig->camera());
        neutralise(*justify);
        // Raw Bayer output bypasses the camera's colour pipeline (the medical
        // model starts in BayerRG8): measure what the pipeline makes.
        rig->device().nodeMap().setEnum("PixelFormat", "RGB8");
        session = std::make_unique<TestCalibrationSession>(rig->camera(), rig->grid());
        session->measureGrey();  // the short first wait may miss the first frame
    }

    // The grey patch at 150, from the sensor's linearity.
    void exposeGreyTo150()
    {
        double exposure = session->GetExposureTimeValue();
        double grey = session->measureGrey();
        while (grey >= 250.0 && exposure > 200.0) {
            exposure /= 2;
            session->SetExposureTimeValue(exposure);
            grey = session->measureGrey();
        }
        ASSERT_GT(grey, 20.0);
        session->SetExposureTimeValue(exposure * 150.0 / grey);
        ASSERT_NEAR(session->measureGrey(), 150.0, 8.0);
    }

    std::unique_ptr<EmulatedRig> rig;
    std::unique_ptr<CameraJustify> justify;
    std::unique_ptr<TestCalibrationSession> session;
};

TEST_P(ResultWritesTest, CameraOutputMatchesTheEnginesFinalChart)
{
    exposeGreyTo150();
    Chart neutral;
    ASSERT_TRUE(measure(*session, neutral));

    ColorCalibrationV1 engine;
    engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, neutral);
    engine.Run();
    double r, g, b, gamma, digitalGain;
    dlib::matrix<double, 3, 3> m;
    dlib::matrix<double, 12, 1> bc6x2;
    engine.GetWhiteBalance(r, g, b);
    engine.GetMatrix(m);
    engine.GetBc6x2(bc6x2);
    engine.GetGamma(gamma);
    engine.GetDigitalGain(digitalGain);
    const Chart predicted = engine.GetChart(COLORCALIBRATION_STEP_BC6X2);

    // The session's order of writes.
    justify->setWhiteBalance(r, g, b);
    justify->setMatrix(m);
    justify->setBC6x2Op(bc6x2);
    justify->setGamma(gamma, true);
    if (!rig->sfnc2())
        justify->setSRGBGamma(true);

    // Every row of the camera's own matrix sums to exactly 1.
    auto& map = rig->device().nodeMap();
    static const char* kGains[3][3] = {{"Gain00", "Gain01", "Gain02"}, {"Gain10", "Gain11", "Gain12"},
                                       {"Gain20", "Gain21", "Gain22"}};
    for (int row = 0; row < 3; ++row) {
        double sum = 0.0;
        for (int col = 0; col < 3; ++col)
            sum += map.getFloatFor("ColorTransformationValue", kGains[row][col]);
        EXPECT_EQ(sum, 1.0) << "row " << row;
    }

    Chart encoded;
    ASSERT_TRUE(measure(*session, encoded));
    const ColorSpace cs;
    double sum = 0.0, worst = 0.0;
    int compared = 0;
    for (int k = 0; k < 24; ++k) {
        double lin[3];
        bool clipped = false;
        for (int c = 0; c < 3; ++c) {
            const double v = encoded(k, c);
            lin[c] = rig->sfnc2() ? 255.0 * std::pow(v / 255.0, 1.0 / gamma) : cs.sRGB_to_RGB(v);
            // The camera has no digital gain; the engine's chart carries it.
            lin[c] *= digitalGain;
            const double expected = predicted(k, c) / digitalGain;
            clipped = clipped || expected < 1.0 || expected > 250.0 || v >= 254.5;
        }
        if (clipped)
            continue;  // the camera clips what the engine's arithmetic does not
        const double dE = cs.DeltaE2000(toLab(cs, lin[0], lin[1], lin[2]),
                                        toLab(cs, predicted(k, 0), predicted(k, 1), predicted(k, 2)), false);
        std::printf("patch %2d dE %.2f lin %.1f %.1f %.1f pred %.1f %.1f %.1f enc %.1f %.1f %.1f\n", k, dE, lin[0], lin[1], lin[2], predicted(k,0), predicted(k,1), predicted(k,2), encoded(k,0), encoded(k,1), encoded(k,2));
        sum += dE;
        worst = std::max(worst, dE);
        ++compared;
    }
    ASSERT_GE(compared, 20);
    const double mean = sum / compared;
    RecordProperty("meanDeltaE00", std::to_string(mean));
    RecordProperty("maxDeltaE00", std::to_string(worst));
    std::printf("camera vs engine: %d patches, mean dE00 %.3f, max %.3f (engine final mean %.3f)\n", compared, mean,
                worst, engine.GetError(COLORCALIBRATION_STEP_BC6X2, false, true));
    // The neutral camera is measured linearly in 8-bit colours, so the darkest
    // patches enter the engine with a few per cent of rounding (patch 23 reads
    // about 9, 8, 7), and greys show small chroma shifts as large CIEDE2000
    // values. Measured: mean 1.1, worst 2.8 (SFNC 2). The SFNC 1 camera's
    // colour adjustment stays switched off after neutralising
    // (OstColorAdjustmentEnable false; writing hue and saturation does not
    // switch it on), so the engine's hue/saturation step never reaches its
    // image: mean 1.7, worst 3.7 there, 1.1 and 2.5 with it switched on.
    // Writes that do not reach the image give a mean above 20.
    EXPECT_LT(mean, rig->sfnc2() ? 1.5 : 2.0);
    EXPECT_LT(worst, rig->sfnc2() ? 6.0 : 6.5);
}

INSTANTIATE_TEST_SUITE_P(EmulatedCameras, ResultWritesTest,
                         ::testing::Values(EmulatedRig::kMedical, EmulatedRig::kCustom),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == EmulatedRig::kMedical ? "Sfnc2" : "Sfnc1";
                         });

}  // namespace
