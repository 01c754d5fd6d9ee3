#include "cameraautobrightnesshelper.h"

#include "calibrationinterface.h"

#include "genicam/nodemap.h"
#include "parametercollection/nodemapparametercollection.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

// The loop's arithmetic against a camera whose grey patch reads a scripted
// brightest channel per measurement; the session side only records writes.
namespace {

class ScriptedCalibration : public QObject, public CalibrationInterface {
    Q_OBJECT
public:
    std::vector<int> greys;  // one per measurement; afterwards 150
    size_t next = 0;
    double exposure = 1000.0;
    double gain = 0.0;
    std::vector<double> exposureWrites;
    std::vector<double> gainWrites;

    int GetColorPatchValues(QVector<QColor>& values, bool) override
    {
        const int g = next < greys.size() ? greys[next] : 150;
        ++next;
        for (int i = 0; i < 24; ++i)
            values << QColor(g / 2, g, g / 3);
        return 24;
    }
    bool GetExposureTimeRange(double& min, double& value, double& max) override { return range(20.0, exposure, 1e6, min, value, max); }
    bool SetExposureTimeValue(double v) override { return record(exposure, exposureWrites, v); }
    double GetExposureTimeValue() override { return exposure; }
    bool GetGainRange(double& min, double& value, double& max) override { return range(0.0, gain, 24.0, min, value, max); }
    bool SetGainValue(double v) override { return record(gain, gainWrites, v); }
    double GetGainValue() override { return gain; }

    bool AutoAdjustGray80PercentPatch() override { return false; }
    CTrapezoid GetGridPosition() override { return {}; }
    void SetGridPositon(const CTrapezoid&) override {}
    void GetColorPatchPositions(QVector<CTrapezoid>&) override {}
    void GetColorPatchInitialValues(QVector<QColor>&) override {}
    void GetColorPatchTargetValues(QVector<QColor>&) override {}
    void GetColorPatchCurrentValues(QVector<QColor>&) override {}
    bool GetCameraInitialImage(QImage&) override { return false; }
    bool ApplyInitialColorPatchValues() override { return false; }
    bool ApplyInitialCameraImageAndPatchValues() override { return false; }
    bool ExecuteCalibrationAndApply() override { return false; }
    bool ExecuteWhitebalance() override { return false; }
    bool RestoreDetectedExposureAndGain() override { return false; }
    bool StoreDetectedExposureAndGain() override { return false; }

    static bool range(double lo, double now, double hi, double& min, double& value, double& max)
    {
        min = lo, value = now, max = hi;
        return true;
    }
    static bool record(double& value, std::vector<double>& writes, double v)
    {
        value = v;
        writes.push_back(v);
        return true;
    }

signals:
    void Gray80PercentHitRateChanged(double);
    void ExposureTimeValueChanged(double);
    void GainValueChanged(double);
    void GridPositionChanged();
    void CalibrationFinished();
    void AutoAdjustGray80PercentPatchFinished();
};

// Auto-function limits of an SFNC 2 camera.
QSharedPointer<ParameterCollection::IParameterCollection> limits(double exposureUpper, double gainUpper)
{
    auto map = std::make_shared<Kalto::CNodeMap>();
    map->addInteger("DeviceSFNCVersionMajor", 0, 99, 1, 2);
    map->addInteger("DeviceSFNCVersionMinor", 0, 99, 1, 3);
    map->addInteger("DeviceSFNCVersionSubMinor", 0, 99, 1, 0);
    map->addFloat("AutoExposureTimeLowerLimit", 20.0, 1e6, 1.0, 100.0);
    map->addFloat("AutoExposureTimeUpperLimit", 20.0, 1e6, 1.0, exposureUpper);
    map->addFloat("AutoGainLowerLimit", 0.0, 24.0, 0.01, 0.0);
    map->addFloat("AutoGainUpperLimit", 0.0, 24.0, 0.01, gainUpper);
    return QSharedPointer<ParameterCollection::NodeMapParameterCollection>::create(map, QStringLiteral("limits"));
}

struct Row {
    const char* name;
    std::vector<int> greys;
    double exposureUpper;
    double gainUpper;
    std::vector<double> exposureWrites;
    std::vector<double> gainWrites;  // the first is the start state's minimum
    size_t measurements;             // start measurement plus one per round
    bool stopFirst = false;          // stop() before the loop begins
};

class AutoBrightnessLoopTest : public ::testing::TestWithParam<Row> {};

TEST_P(AutoBrightnessLoopTest, WritesTheDampedCorrections)
{
    const Row& row = GetParam();
    ScriptedCalibration calibration;
    calibration.greys = row.greys;
    calibration.greys.insert(calibration.greys.begin(), 0);  // the start measurement
    CameraAutoBrightnessHelper helper(&calibration, limits(row.exposureUpper, row.gainUpper));
    QSignalSpy finished(&helper, &CameraAutoBrightnessHelper::AutoBrightnessFinished);
    if (row.stopFirst)
        helper.stop();
    helper.doWork();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_FALSE(helper.isRunning());
    EXPECT_EQ(calibration.next, row.measurements);
    ASSERT_EQ(calibration.exposureWrites.size(), row.exposureWrites.size());
    for (size_t i = 0; i < row.exposureWrites.size(); ++i)
        EXPECT_NEAR(calibration.exposureWrites[i], row.exposureWrites[i], 1e-9) << "exposure write " << i;
    ASSERT_EQ(calibration.gainWrites.size(), row.gainWrites.size());
    for (size_t i = 0; i < row.gainWrites.size(); ++i)
        EXPECT_NEAR(calibration.gainWrites[i], row.gainWrites[i], 1e-9) << "gain write " << i;
}

const double kLn10 = std::log(10.0);

INSTANTIATE_TEST_SUITE_P(
    Rows, AutoBrightnessLoopTest,
    ::testing::Values(
        // On target: one round that still applies its (zero) correction.
        Row{"OnTarget", {150}, 1e5, 24.0, {1000.0}, {0.0}, 2},
        // 140 lies within 10 %: one round, damped step towards 150.
        Row{"WithinTolerance", {140}, 1e5, 24.0, {1000.0 * (1 + 0.8 * (150.0 / 140 - 1))}, {0.0}, 2},
        // 130 does not: a second round follows.
        Row{"TwoRounds", {130, 150}, 1e5, 24.0, {1000.0 * (1 + 0.8 * (150.0 / 130 - 1)), 1000.0 * (1 + 0.8 * (150.0 / 130 - 1))}, {0.0}, 3},
        // A black patch counts as 1: x(1 + 0.8 * 149), clamped, then gain mode.
        Row{"BlackPatchClamps", {0, 150}, 1e5, 24.0, {1e5}, {0.0, 0.0}, 3},
        // Too little light: exposure at its limit, gain rises until its limit stops the loop.
        Row{"GainLimitStops", {15, 15, 15}, 1500.0, 24.0, {1500.0}, {0.0, 8 * kLn10, 24.0}, 4},
        // A stop before the loop begins holds: no round runs.
        Row{"StopBeforeTheLoopBegins", {15, 15, 15}, 1e5, 24.0, {}, {0.0}, 1, true}),
    [](const ::testing::TestParamInfo<Row>& info) { return std::string(info.param.name); });

}  // namespace

#include "cameraautobrightnesshelper_test.moc"
