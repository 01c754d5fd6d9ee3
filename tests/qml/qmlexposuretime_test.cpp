#include "qmlexposuretime.h"

#include "controlrig.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include <cmath>

namespace {

/// The exposure slider, with the exposure range and value a row asks for.
class ExposureRig : public ControlRig<QMLExposureTime> {
public:
    ExposureRig(double minUs, double maxUs, double valueUs)
    {
        camera().setFloatRange("ExposureTime", minUs, maxUs);
        camera().setFloat("ExposureTime", valueUs);
    }
    double cameraUs() { return camera().getFloat("ExposureTime"); }
    QMLExposureTime& exposure = control;
};

struct RangeRow {
    double minUs, maxUs, valueUs;
    double sliderMin, sliderMax, sliderValue;
};

class ExposureSliderRange : public ::testing::TestWithParam<RangeRow> {};

TEST_P(ExposureSliderRange, PublishesLogarithmsOnRead)
{
    const RangeRow row = GetParam();
    ExposureRig rig(row.minUs, row.maxUs, row.valueUs);
    ASSERT_TRUE(rig.opened);
    QSignalSpy value(&rig.exposure, &QMLExposureTime::signalValueChanged);
    QSignalSpy min(&rig.exposure, &QMLExposureTime::signalMinChanged);
    EXPECT_EQ(rig.exposure.value(), -1);  // unknown before initialize()
    ASSERT_TRUE(rig.exposure.initialize());
    EXPECT_EQ(value.count(), 1);
    EXPECT_NEAR(rig.exposure.value(), row.sliderValue, 1e-9);
    EXPECT_NEAR(rig.exposure.min(), row.sliderMin, 1e-9);
    EXPECT_NEAR(rig.exposure.max(), row.sliderMax, 1e-9);
    EXPECT_EQ(min.count(), row.sliderMin != 0.0 ? 1 : 0);
    EXPECT_NEAR(rig.cameraUs(), row.valueUs, 1e-6);  // written back unchanged
}

INSTANTIATE_TEST_SUITE_P(Rows, ExposureSliderRange,
                         ::testing::Values(RangeRow{10, 1e6, 1000, 1, 6, 3}, RangeRow{0.5, 1e6, 1000.5, 0, 6, std::log10(1000.5)},
                                           RangeRow{20, 1e5, 100, std::log10(20.0), 5, 2}));

TEST(QMLExposureTime, SliderValueIsAPowerOfTenOnTheCamera)
{
    ExposureRig rig(10, 1e6, 1000);
    ASSERT_TRUE(rig.opened);
    ASSERT_TRUE(rig.exposure.initialize());
    rig.exposure.setValue(3.5);
    EXPECT_NEAR(rig.cameraUs(), std::pow(10.0, 3.5), 1.0);  // the node's increment is 1 µs
    rig.exposure.setValue(0);
    rig.exposure.setValue(-2);
    EXPECT_NEAR(rig.cameraUs(), std::pow(10.0, 3.5), 1.0);
    EXPECT_TRUE(rig.exposure.lastError().isEmpty());
}

TEST(QMLExposureTime, RefusalSetsLastError)
{
    ExposureRig rig(10, 1e6, 1000);
    expectRefusedWrite(rig, 4, "Couldn't set exposureTime!<br>");
    EXPECT_FALSE(rig.exposure.initialize());
}

// Only the old value's logarithm is divided by the log range (5 decades here):
// from 1000 µs the threshold centres on log10(x) = 3 / 5, not on 3. Within 10 ms
// of a notification the next change is stored without one.
TEST(QMLExposureTime, CameraChangesUseTheAsymmetricThresholdAndAreCoalesced)
{
    ExposureRig rig(10, 1e6, 1000);
    ASSERT_TRUE(rig.opened);
    ASSERT_TRUE(rig.exposure.initialize());
    QSignalSpy value(&rig.exposure, &QMLExposureTime::signalValueChanged);

    rig.exposure.onChangedValue(std::pow(10.0, 0.6) * 1.001);  // a huge change, yet below the threshold
    EXPECT_EQ(value.count(), 0);
    rig.exposure.onChangedValue(1000.0);  // |3 - log10(3.98) / 5| = 2.88
    EXPECT_EQ(value.count(), 1);
    rig.exposure.onChangedValue(1000.0);  // unchanged
    rig.exposure.onChangedValue(3000.0);  // within the 10 ms
    EXPECT_EQ(value.count(), 1);
    EXPECT_NEAR(rig.exposure.value(), std::log10(3000.0), 1e-9);  // stored all the same
    QTest::qWait(30);
    rig.exposure.onChangedValue(3001.0);  // tiny, yet far above it
    EXPECT_EQ(value.count(), 2);
    EXPECT_NEAR(rig.exposure.value(), std::log10(3001.0), 1e-9);
    rig.exposure.reset();  // forgets value and range until the next initialize()
    EXPECT_EQ(rig.exposure.value(), -1);
}

}  // namespace
