#include "camerajustify.h"

#include "emulatedcamera.h"
#include "emulatedcamerasuite.h"

#include "camerapool/icamera.h"
#include "core/baseexception.h"
#include "genicam/nodemap.h"
#include "genicam/runtimeexception.h"

#include <QThread>

#include <functional>
#include <string>
#include <vector>

// The neutral values themselves (black level, HSBC, identity matrix, unit
// gains) are checked on the camera's pipeline by SessionWritesTest.
namespace {

using Kalto::CNodeMap;
using RuntimeException = GenICam_3_1_Ostrel_kalto::RuntimeException;

const std::vector<std::string> kGains = {"Gain00", "Gain01", "Gain02", "Gain10", "Gain11",
                                         "Gain12", "Gain20", "Gain21", "Gain22"};
const std::vector<std::string> kColours = {"Red", "Yellow", "Green", "Cyan", "Blue", "Magenta"};

dlib::matrix<double, 12, 1> neutralBc6x2()
{
    dlib::matrix<double, 12, 1> p;
    p = 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1;
    return p;
}

class CameraJustifyTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        justify.reset();  // a second call starts again on a new camera
        rig.reset();
        rig = std::make_unique<SessionRig>(GetParam());
        justify = std::make_unique<CameraJustify>(rig->openCamera());
    }
    CNodeMap& map() { return rig->nodeMap(); }
    QString saved() { return rig->openCamera()->saveSettings(); }
    bool sfnc2() { return rig->sfnc2(); }
    const char* balance() { return sfnc2() ? "BalanceRatio" : "BalanceRatioAbs"; }
    std::string adjust(const char* what) { return (sfnc2() ? "ColorAdjustment" : "OstColorAdjustment") + std::string(what); }

    std::unique_ptr<SessionRig> rig;
    std::unique_ptr<CameraJustify> justify;
};

TEST_P(CameraJustifyTest, RestoreGivesTheSavedSettingsBackByteForByte)
{
    // Before any backup a restore changes nothing.
    const QString fresh = saved();
    EXPECT_TRUE(justify->getStoredCameraSettings().isEmpty());
    EXPECT_NO_THROW(justify->restoreParameterCollection(true));
    EXPECT_EQ(saved(), fresh);

    // The user's camera has been running with its auto functions.
    rig->openCamera()->startGrabbing();
    QThread::msleep(300);
    rig->openCamera()->stopGrabbing();
    justify->backupParameterCollection(true);
    const QString before = justify->getStoredCameraSettings();
    ASSERT_FALSE(before.isEmpty());
    EXPECT_EQ(before, saved());

    justify->disableAutofunctions();
    justify->disableHSBC();
    justify->disableLUT();
    justify->activateMonoImage();
    dlib::matrix<double, 3, 3> m;
    m = 1.3, -0.2, -0.1, -0.15, 1.25, -0.1, 0.05, -0.35, 1.3;
    justify->setWhiteBalance(1.2, 1.0, 1.6);
    justify->setMatrix(m);
    justify->setGamma(0.45, true);
    ASSERT_NE(saved(), before);
    justify->restoreParameterCollection(true);
    EXPECT_EQ(saved(), before);
}

TEST_P(CameraJustifyTest, SettingsTextIsAppliedLineByLineAroundRejectedLines)
{
    // A file from a camera with other features and limits: what fits is applied,
    // each misfit is named with its line; a text of which nothing fits is refused.
    const QString text = QStringLiteral("# from another camera\nNoSuchFeature\t1\nGamma\t0.7\nGamma\t99\n");
    QStringList rejected;
    ASSERT_NO_THROW(rejected = justify->loadNodemapSettings(text));
    ASSERT_EQ(rejected.size(), 2) << rejected.join(" | ").toStdString();
    EXPECT_TRUE(rejected[0].startsWith("line 2: NoSuchFeature: unknown feature")) << rejected[0].toStdString();
    EXPECT_TRUE(rejected[1].startsWith("line 4: Gamma: ")) << rejected[1].toStdString();
    EXPECT_DOUBLE_EQ(map().getFloat("Gamma"), 0.7);
    for (const char* junk : {"Gamma\t99\n", "\x89PNG\r\n\x1a\n", "NoSuchFeature\t1\nNorThis\t2\n"})
        EXPECT_THROW(justify->loadNodemapSettings(QString::fromLatin1(junk)), RuntimeException) << junk;
}

TEST_P(CameraJustifyTest, MissingHsbcFeaturesAreSkipped)
{
    for (const char* f : {"OstHue", "OstSaturation", "OstBrightness", "OstContrast"})
        map().setAccessMode(f, Kalto::EAccessMode::NA);
    EXPECT_NO_THROW(justify->disableHSBC());
    EXPECT_EQ(map().getFloat("OstHue"), 4.0);  // the start state, untouched
    EXPECT_EQ(map().getFloat("OstSaturation"), 1.2);
}

TEST_P(CameraJustifyTest, MonoImagePrefersMono8AndFallsBackToMono12)
{
    justify->activateMonoImage();
    EXPECT_EQ(map().getEnum("PixelFormat"), "Mono8");
    map().setEnum("PixelFormat", "RGB8");
    map().setEntryAvailable("PixelFormat", "Mono8", false);
    justify->activateMonoImage();
    EXPECT_EQ(map().getEnum("PixelFormat"), "Mono12");
}

TEST_P(CameraJustifyTest, WhiteBalanceHueAndSaturationGoToTheirEntries)
{
    justify->disableAutofunctions();
    for (const char* c : {"Red", "Green", "Blue"})
        map().storeFloatFor(balance(), c, 2.0);
    justify->setWhiteBalance(1.5, 1.25, 1.75);
    EXPECT_EQ(map().getFloatFor(balance(), "Red"), 1.5);
    EXPECT_EQ(map().getFloatFor(balance(), "Green"), 1.25);
    EXPECT_EQ(map().getFloatFor(balance(), "Blue"), 1.75);

    if (!sfnc2())
        map().setBool("OstColorAdjustmentEnable", true);
    for (const auto& c : kColours)
        map().storeFloatFor(adjust("Hue"), c, 3.0);
    dlib::matrix<double, 12, 1> p;
    p = 0.125, -0.0625, 0.25, -0.125, 0.0078125, -0.25, 1.125, 0.875, 1.25, 0.75, 1.0625, 0.9375;
    justify->setBC6x2Op(p);
    for (size_t k = 0; k < 6; ++k) {
        EXPECT_EQ(map().getFloatFor(adjust("Hue"), kColours[k]), p(long(k))) << kColours[k];
        EXPECT_EQ(map().getFloatFor(adjust("Saturation"), kColours[k]), p(long(6 + k))) << kColours[k];
    }
    justify->setBC6x2Op(neutralBc6x2());
    const PipelineSettings s = rig->device().currentSettings();
    for (size_t k = 0; k < 12; ++k)
        EXPECT_EQ(s.colorAdjust[k], k < 6 ? 0.0 : 1.0);
}

TEST_P(CameraJustifyTest, MatrixRowsSumToExactlyOneAfterTheCameraRounds)
{
    for (const auto& g : kGains)
        map().storeFloatFor("ColorTransformationValue", g, 3.0);
    dlib::matrix<double, 3, 3> m;
    m = 1.61803, -0.412345, -0.2056789, -0.3333333, 1.47123, -0.1378901, 0.0123457, -0.4876543, 1.4753086;
    justify->setMatrix(m);

    EXPECT_EQ(map().getEnum(sfnc2() ? "LightSourceSelector" : "OstLightSourcePreset"), sfnc2() ? "Custom" : "Off");
    const double step = map().floatIncrement("ColorTransformationValue");
    const PipelineSettings s = rig->device().currentSettings();  // what the pipeline uses
    for (size_t row = 0; row < 3; ++row) {
        double sum = 0.0;
        for (size_t col = 0; col < 3; ++col) {
            const double v = map().getFloatFor("ColorTransformationValue", kGains[row * 3 + col]);
            if (row != col) {
                EXPECT_NEAR(v, m(long(row), long(col)), step / 2 + 1e-12) << "row " << row << " col " << col;
            }
            sum += v;
        }
        EXPECT_EQ(sum, 1.0) << "row " << row;
        EXPECT_EQ(s.matrix[row * 3] + s.matrix[row * 3 + 1] + s.matrix[row * 3 + 2], 1.0) << "row " << row;
    }
}

TEST_P(CameraJustifyTest, GammaAndSrgbCurve)
{
    justify->setGamma(0.45, true);
    EXPECT_EQ(map().getEnum("GammaSelector"), "User");
    EXPECT_TRUE(map().getBool("GammaEnable"));
    EXPECT_EQ(map().getFloat("Gamma"), 0.45);
    justify->setSRGBGamma(true);
    EXPECT_EQ(map().getEnum("GammaSelector"), "sRGB");
    EXPECT_TRUE(map().getBool("GammaEnable"));
    justify->setGamma(1.0, false);
    EXPECT_FALSE(map().getBool("GammaEnable"));
}

// A camera that cannot take a write: the error names what is missing, raised
// from this file as the camera SDK's errors name theirs.
TEST_P(CameraJustifyTest, RefusedWritesAreReportedWithTheirReason)
{
    const auto oldSfnc = [](CNodeMap& m, bool) { m.storeInteger("DeviceSFNCVersionMajor", 0); };
    const char* unsupported = "Camera SFNC version is unsupported.";
    const struct {
        const char* name;
        std::function<void(CNodeMap&, bool sfnc2)> inject;
        std::function<void(CameraJustify&)> write;
        const char* description;
    } refusals[] = {
        {"unsupported SFNC version, black level", oldSfnc, [](CameraJustify& j) { j.disableBlackLevel(); }, unsupported},
        {"unsupported SFNC version, matrix", oldSfnc,
         [](CameraJustify& j) { j.setMatrix(dlib::identity_matrix<double>(3)); }, unsupported},
        {"unsupported SFNC version, white balance", oldSfnc, [](CameraJustify& j) { j.setWhiteBalance(1, 1, 1); },
         unsupported},
        {"light source preset read-only",
         [](CNodeMap& m, bool sfnc2) {
             m.setAccessMode(sfnc2 ? "LightSourceSelector" : "OstLightSourcePreset", Kalto::EAccessMode::RO);
         },
         [](CameraJustify& j) { j.disableMatrix(); }, "Couldn't get or write (Ost)LightSourcePreset"},
        {"colour adjustment missing",
         [](CNodeMap& m, bool sfnc2) {
             m.setAccessMode(sfnc2 ? "ColorAdjustmentSelector" : "OstColorAdjustmentSelector", Kalto::EAccessMode::NA);
         },
         [](CameraJustify& j) { j.setBC6x2Op(neutralBc6x2()); },
         "Couldn't get or write one of the following parameters: (Ost)ColorAdjustmentSelector, "
         "(Ost)ColorAdjustmentSaturation, (Ost)ColorAdjustmentSelector"},
    };
    for (const auto& r : refusals) {
        SCOPED_TRACE(r.name);
        SetUp();  // a camera of its own per row
        r.inject(map(), sfnc2());
        try {
            r.write(*justify);
            ADD_FAILURE() << "no error";
        } catch (const RuntimeException& e) {
            EXPECT_STREQ(e.GetDescription(), r.description);
            EXPECT_STREQ(e.GetSourceFileName(), "kaltoviewer/plugins/colorcalibration/internal/model/model/camerajustify");
            EXPECT_GT(e.GetSourceLine(), 0u);
        }
    }
}

TEST_P(CameraJustifyTest, ResultWritesGoIntoTheUserSetOnlyWhenEnabled)
{
    for (const bool enabled : {true, false}) {
        SCOPED_TRACE(enabled ? "enabled" : "disabled");
        SetUp();
        justify->disableAutofunctions();
        justify->setWhiteBalance(1.0, 1.0, 1.0);
        map().setEnum("UserSetSelector", "UserSet2");
        map().execute("UserSetSave");
        const std::string defaultBefore = map().getEnum("UserSetDefault");
        justify->setUserSet(QStringLiteral("UserSet2"), enabled, enabled);
        EXPECT_EQ(map().getEnum("UserSetDefault"), enabled ? "UserSet2" : defaultBefore);

        justify->setWhiteBalance(1.5, 1.0, 2.0);
        // Overwrite the live value, then load the set: it holds the written result only when enabled.
        map().setEnum("BalanceRatioSelector", "Blue");
        map().setFloat(balance(), 1.0);
        map().setEnum("UserSetSelector", "UserSet2");
        map().execute("UserSetLoad");
        EXPECT_EQ(map().getFloatFor(balance(), "Blue"), enabled ? 2.0 : 1.0);
        EXPECT_EQ(map().getFloatFor(balance(), "Red"), enabled ? 1.5 : 1.0);
    }
}

TEST_P(CameraJustifyTest, DisconnectBetweenTwoWritesRaisesTheCamerasError)
{
    justify->disableAutofunctions();
    justify->setWhiteBalance(1.0, 1.0, 1.0);
    rig->device().disconnect();
    EXPECT_THROW(justify->setMatrix(dlib::identity_matrix<double>(3)), Core::Exception::BaseException);
    EXPECT_THROW(justify->disableHSBC(), Core::Exception::BaseException);
    EXPECT_THROW(justify->backupParameterCollection(true), Core::Exception::BaseException);
    EXPECT_THROW(justify->restoreParameterCollection(true), Core::Exception::BaseException);
}

INSTANTIATE_ON_EMULATED_CAMERAS(CameraJustifyTest);

}  // namespace
