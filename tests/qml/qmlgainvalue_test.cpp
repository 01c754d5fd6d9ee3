#include "qmlgainvalue.h"

#include "controlrig.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

namespace {

/// The gain slider, 0 to 24 dB.
class GainRig : public ControlRig<QMLGainvalue> {
public:
    double cameraDb() { return camera().getFloat("Gain"); }
    QMLGainvalue& gain = control;
};

struct SetRow {
    double slider;
    double expectedDb;  // the camera's gain afterwards, starting from 6 dB
};

class GainSlider : public ::testing::TestWithParam<SetRow> {};

TEST_P(GainSlider, MapsLinearlyOntoTheRange)
{
    GainRig rig;
    ASSERT_TRUE(rig.opened);
    rig.camera().setFloat("Gain", 6.0);
    ASSERT_TRUE(rig.gain.initialize());
    EXPECT_DOUBLE_EQ(rig.gain.min(), 0.0);
    EXPECT_DOUBLE_EQ(rig.gain.max(), 24.0);
    EXPECT_NEAR(rig.gain.value(), 0.25, 1e-9);
    rig.gain.setValue(GetParam().slider);
    EXPECT_NEAR(rig.cameraDb(), GetParam().expectedDb, 0.005);
}

INSTANTIATE_TEST_SUITE_P(Rows, GainSlider,
                         ::testing::Values(SetRow{0.5, 12.0}, SetRow{-0.1, 6.0}, SetRow{0.0, 0.0}, SetRow{1.0, 24.0}));

TEST(QMLGainvalue, SmallCameraChangesAreStoredSilently)
{
    GainRig rig;
    ASSERT_TRUE(rig.opened);
    ASSERT_TRUE(rig.gain.initialize());
    QSignalSpy value(&rig.gain, &QMLGainvalue::signalValueChanged);
    rig.gain.onChangedValue(0.05);  // 0.21 % of 24 dB
    EXPECT_EQ(value.count(), 0);
    EXPECT_NEAR(rig.gain.value(), 0.05 / 24.0, 1e-12);
    rig.gain.onChangedValue(0.15);  // 0.42 %
    EXPECT_EQ(value.count(), 1);
    rig.gain.onChangedValue(3.0);  // within the 10 ms after the last notification
    EXPECT_EQ(value.count(), 1);
    QTest::qWait(30);
    rig.gain.onChangedValue(6.0);
    EXPECT_EQ(value.count(), 2);
}

TEST(QMLGainvalue, RefusalSetsLastError)
{
    GainRig rig;
    expectRefusedWrite(rig, 0.75, "Couldn't set gain value!<br>");
    rig.gain.reset();
    EXPECT_EQ(rig.gain.value(), -1);
}

}  // namespace
