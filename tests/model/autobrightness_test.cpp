#include "camerajustify.h"
#include "cameraautobrightnesshelper.h"

#include "emulatedcamera.h"
#include "emulatedrig.h"
#include "modeltestapp.h"
#include "testcalibrationsession.h"

#include "core/baseexception.h"
#include "genicam/nodemap.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

// Automatic brightness on the emulated cameras, through a real grab-and-sample
// path, on the worker thread CameraJustify starts.
namespace {

class AutoBrightnessTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        ensureModelTestApp();
        rig = std::make_unique<EmulatedRig>(GetParam());
        justify = std::make_unique<CameraJustify>(rig->camera());
        neutralise(*justify);
        session = std::make_unique<TestCalibrationSession>(rig->camera(), rig->grid());
        session->measureGrey();  // the short first wait may miss the first frame
        onTargetUs = exposureForTarget();
    }
    void TearDown() override
    {
        justify.reset();  // stops a worker still running
        session.reset();
    }

    // Exposure that puts the grey patch at 150, from the sensor's linearity.
    double exposureForTarget()
    {
        double exposure = session->GetExposureTimeValue();
        double grey = session->measureGrey();
        while (grey >= 250.0 && exposure > 200.0) {
            exposure /= 2;
            session->SetExposureTimeValue(exposure);
            grey = session->measureGrey();
        }
        EXPECT_GT(grey, 20.0);
        return exposure * 150.0 / grey;
    }

    bool runToEnd(int timeoutMs = 30000)
    {
        QSignalSpy finished(justify.get(), &CameraJustify::AutoBrightnessFinished);
        justify->startAutoBrightness(session.get());
        return finished.wait(timeoutMs) && finished.count() == 1;
    }

    std::unique_ptr<EmulatedRig> rig;
    std::unique_ptr<CameraJustify> justify;
    std::unique_ptr<TestCalibrationSession> session;
    double onTargetUs = 0.0;
};

TEST_P(AutoBrightnessTest, TenTimesTooDarkEndsOnTarget)
{
    ASSERT_TRUE(session->SetExposureTimeValue(onTargetUs / 10));
    ASSERT_LT(session->measureGrey(), 25.0);
    ASSERT_TRUE(runToEnd());
    EXPECT_NEAR(session->measureGrey(), 150.0, 15.0);
    EXPECT_LT(session->measurements(), 12);
}

TEST_P(AutoBrightnessTest, SaturatedEndsOnTarget)
{
    ASSERT_TRUE(session->SetExposureTimeValue(onTargetUs * 4));
    ASSERT_GE(session->measureGrey(), 250.0);
    ASSERT_TRUE(runToEnd());
    EXPECT_NEAR(session->measureGrey(), 150.0, 15.0);
}

TEST_P(AutoBrightnessTest, TooLittleLightStopsAtTheGainLimit)
{
    // Exposure may not exceed a twentieth of what the target needs, and gain
    // makes up at most 6 dB (a factor of two).
    auto& map = rig->device().nodeMap();
    if (rig->sfnc2()) {
        map.setFloat("AutoExposureTimeUpperLimit", std::floor(onTargetUs / 20));
        map.setFloat("AutoGainUpperLimit", 6.0);
    } else {
        map.setFloat("AutoExposureTimeAbsUpperLimit", std::floor(onTargetUs / 20));
        map.setInteger("AutoGainRawUpperLimit", 60);
    }
    ASSERT_TRUE(session->SetExposureTimeValue(onTargetUs / 10));
    ASSERT_TRUE(runToEnd());
    EXPECT_NEAR(session->GetGainValue(), 6.0 * (rig->sfnc2() ? 1 : 10), 0.02);
    EXPECT_NEAR(session->GetExposureTimeValue(), std::floor(onTargetUs / 20), 1.0);
    EXPECT_LT(session->measureGrey(), 150.0 * 0.9);
}

TEST_P(AutoBrightnessTest, NeverRunsOnAfterStop)
{
    // Nothing to reach: exposure capped far below target, gain without limit
    // room to end the loop quickly.
    ASSERT_TRUE(session->SetExposureTimeValue(onTargetUs / 10));
    QSignalSpy finished(justify.get(), &CameraJustify::AutoBrightnessFinished);
    const int writesBefore = session->exposureWrites();
    justify->startAutoBrightness(session.get());
    ASSERT_TRUE(waitUntil([&] { return session->exposureWrites() > writesBefore; }, 10000));
    ASSERT_TRUE(justify->stopAutoBrightness(10000));
    const int exposureWrites = session->exposureWrites();
    const int gainWrites = session->gainWrites();
    const int measurements = session->measurements();
    QTest::qWait(700);
    EXPECT_EQ(session->exposureWrites(), exposureWrites);
    EXPECT_EQ(session->gainWrites(), gainWrites);
    EXPECT_EQ(session->measurements(), measurements);
    EXPECT_EQ(finished.count(), 1);
}

TEST_P(AutoBrightnessTest, RestartReplacesTheRunningWorker)
{
    ASSERT_TRUE(session->SetExposureTimeValue(onTargetUs / 10));
    QSignalSpy finished(justify.get(), &CameraJustify::AutoBrightnessFinished);
    justify->startAutoBrightness(session.get());
    justify->startAutoBrightness(session.get());
    ASSERT_TRUE(waitUntil([&] { return finished.count() >= 2; }, 30000));
    EXPECT_NEAR(session->measureGrey(), 150.0, 15.0);
}

TEST_P(AutoBrightnessTest, DisconnectDuringTheLoopEndsIt)
{
    ASSERT_TRUE(session->SetExposureTimeValue(onTargetUs / 10));
    QSignalSpy finished(justify.get(), &CameraJustify::AutoBrightnessFinished);
    const int writesBefore = session->exposureWrites();
    justify->startAutoBrightness(session.get());
    ASSERT_TRUE(waitUntil([&] { return session->exposureWrites() > writesBefore; }, 10000));
    rig->device().disconnect();
    EXPECT_TRUE(finished.wait(ConvertingImageCamera::kGrabTimeoutMs + 1000));
    EXPECT_FALSE(session->wrapper().isOpen());
}

TEST_P(AutoBrightnessTest, CameraGoneBeforeTheLoopBegins)
{
    const auto parameters = rig->parameters();
    const int writesBefore = session->exposureWrites();
    rig->device().disconnect();
    // Starting raises the camera's error for the session to report ...
    EXPECT_THROW(justify->startAutoBrightness(session.get()), Core::Exception::BaseException);
    // ... and a worker that meets the loss first ends quietly.
    CameraAutoBrightnessHelper helper(session.get(), parameters);
    QSignalSpy finished(&helper, &CameraAutoBrightnessHelper::AutoBrightnessFinished);
    EXPECT_NO_THROW(helper.doWork());
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(session->exposureWrites(), writesBefore);
}

INSTANTIATE_TEST_SUITE_P(EmulatedCameras, AutoBrightnessTest,
                         ::testing::Values(EmulatedRig::kMedical, EmulatedRig::kCustom),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == EmulatedRig::kMedical ? "Sfnc2" : "Sfnc1";
                         });

}  // namespace
