#include "cameraautobrightnesshelper.h"
#include "colorcorrectionmodel.h"
#include "convertingimagecamera.h"

#include "emulatedcamera.h"
#include "featurewritelog.h"
#include "emulatedcamerasuite.h"

#include "genicam/nodemap.h"

#include <QSignalSpy>
#include <QTest>


#include <cmath>

// Automatic brightness of the calibration session on the emulated cameras:
// the session's own loop on its worker thread, seen through what the camera
// is asked to do.
namespace {

const std::set<std::string> kExposureAndGain = {"ExposureTime", "ExposureTimeAbs", "Gain", "GainAbs", "GainRaw"};

class AutoBrightnessTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        rig = std::make_unique<SessionRig>(GetParam());
        ASSERT_FALSE(rig->openAndNeutralise().isEmpty());
        onTargetUs = rig->exposureForGrey(CameraAutoBrightnessHelper::kTargetDn);
        ASSERT_GT(onTargetUs, 0.0);
        writes = std::make_unique<FeatureWriteLog>(rig->nodeMap());
    }
    void TearDown() override
    {
        writes.reset();
        rig.reset();  // closing ends a loop still running
    }

    ColorCorrectionModel& model() { return rig->model(); }
    bool startTooDark()
    {
        if (!model().SetExposureTimeValue(onTargetUs / 10) || rig->measureGrey() >= 25.0)
            return false;
        writes->clear();
        return model().AutoAdjustGray80PercentPatch();
    }
    bool runToEnd(int timeoutMs = 30000)
    {
        QSignalSpy finished(&model(), &ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished);
        return model().AutoAdjustGray80PercentPatch() && finished.wait(timeoutMs) && finished.count() == 1;
    }
    size_t rounds() const { return writes->count(kExposureAndGain); }

    std::unique_ptr<SessionRig> rig;
    std::unique_ptr<FeatureWriteLog> writes;
    double onTargetUs = 0.0;
};

TEST_P(AutoBrightnessTest, EndsOnTargetFromTooDarkAndFromSaturated)
{
    for (const double start : {0.1, 4.0}) {
        ASSERT_TRUE(model().SetExposureTimeValue(onTargetUs * start));
        const double grey = rig->measureGrey();
        ASSERT_TRUE(start < 1 ? grey < 25.0 : grey >= 250.0) << grey;
        writes->clear();
        ASSERT_TRUE(runToEnd()) << "start " << start;
        EXPECT_NEAR(rig->measureGrey(), 150.0, 15.0) << "start " << start;
        EXPECT_LT(rounds(), 12u) << "start " << start;
    }
}

TEST_P(AutoBrightnessTest, TooLittleLightStopsAtTheGainLimit)
{
    // Exposure may not exceed a twentieth of what the target needs, and gain
    // makes up at most 6 dB (a factor of two).
    auto& map = rig->nodeMap();
    if (rig->sfnc2()) {
        map.setFloat("AutoExposureTimeUpperLimit", std::floor(onTargetUs / 20));
        map.setFloat("AutoGainUpperLimit", 6.0);
    } else {
        map.setFloat("AutoExposureTimeAbsUpperLimit", std::floor(onTargetUs / 20));
        map.setInteger("AutoGainRawUpperLimit", 60);
    }
    ASSERT_TRUE(model().SetExposureTimeValue(onTargetUs / 10));
    ASSERT_TRUE(runToEnd());
    // The older generation's limit counts raw steps; the session scales gain by a hundred.
    EXPECT_NEAR(model().GetGainValue(), 6.0 * (rig->sfnc2() ? 1 : 10), 0.02);
    EXPECT_NEAR(model().GetExposureTimeValue(), std::floor(onTargetUs / 20), 1.0);
    EXPECT_LT(rig->measureGrey(), 150.0 * 0.9);
}

TEST_P(AutoBrightnessTest, NeverRunsOnAfterStop)
{
    QSignalSpy finished(&model(), &ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished);
    QSignalSpy measured(&model(), &ColorCorrectionModel::Gray80PercentHitRateChanged);
    ASSERT_TRUE(startTooDark());
    ASSERT_TRUE(QTest::qWaitFor([&] { return rounds() > 0; }, 10000));
    ASSERT_TRUE(model().StopAutoAdjustGray80PercentPatch());
    QCoreApplication::processEvents();  // what the ended loop sent
    const size_t roundsAtStop = rounds();
    const int measurementsAtStop = measured.count();
    QTest::qWait(700);
    EXPECT_EQ(rounds(), roundsAtStop);
    EXPECT_EQ(measured.count(), measurementsAtStop);
    EXPECT_EQ(finished.count(), 1);
}

TEST_P(AutoBrightnessTest, DisconnectDuringTheLoopEndsIt)
{
    QSignalSpy finished(&model(), &ColorCorrectionModel::AutoAdjustGray80PercentPatchFinished);
    QSignalSpy removed(&model(), &ColorCorrectionModel::cameraRemoved);
    ASSERT_TRUE(startTooDark());
    ASSERT_TRUE(QTest::qWaitFor([&] { return rounds() > 0; }, 10000));
    rig->device().disconnect();
    EXPECT_TRUE(finished.wait(ConvertingImageCamera::kGrabTimeoutMs + 1000));
    EXPECT_TRUE(removed.count() > 0 || removed.wait(2000));
}

TEST_P(AutoBrightnessTest, CameraGoneBeforeTheLoopBegins)
{
    rig->device().disconnect();
    // Starting fails with the session's text ...
    EXPECT_FALSE(model().AutoAdjustGray80PercentPatch());
    // ... and a loop that meets the loss first ends quietly.
    CameraAutoBrightnessHelper helper(&model(), nullptr);
    QSignalSpy finished(&helper, &CameraAutoBrightnessHelper::AutoBrightnessFinished);
    EXPECT_NO_THROW(helper.doWork());
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(rounds(), 0u);
}

INSTANTIATE_ON_EMULATED_CAMERAS(AutoBrightnessTest);

}  // namespace
