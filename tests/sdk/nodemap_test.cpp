#include "genicam/nodemap.h"
#include "genicam/runtimeexception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

using Kalto::CNodeMap;
using Kalto::EAccessMode;
using Kalto::SEnumEntry;
using GenICam_3_1_Ostrel_kalto::RuntimeException;

namespace {

std::vector<SEnumEntry> colours()
{
    return {{"Red", "Red", 0}, {"Green", "Green", 1}, {"Blue", "Blue", 2}};
}

struct FloatCase {
    double min, max, inc, written, expected;
};

class FloatWrite : public ::testing::TestWithParam<FloatCase> {};

TEST_P(FloatWrite, ClipsAndRoundsToIncrement)
{
    const FloatCase c = GetParam();
    CNodeMap map;
    map.addFloat("F", c.min, c.max, c.inc, c.min);
    EXPECT_DOUBLE_EQ(map.setFloat("F", c.written), c.expected);
    EXPECT_DOUBLE_EQ(map.getFloat("F"), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, FloatWrite,
    ::testing::Values(FloatCase{0, 10, 0, 5.25, 5.25},          // continuous: kept
                      FloatCase{0, 10, 0, -3, 0},               // below: clipped
                      FloatCase{0, 10, 0, 1e9, 10},             // above: clipped
                      FloatCase{0, 10, 0.5, 5.3, 5.5},          // rounded to nearest step
                      FloatCase{0, 10, 0.5, 5.2, 5.0},
                      FloatCase{1, 2, 0.3, 1.95, 1.9},          // steps counted from min
                      FloatCase{0, 1, 0.4, 1.0, 0.8},           // step above max: one down
                      FloatCase{-8, 8, 1.0 / 32, 0.1, 0.09375},  // matrix-like increment
                      FloatCase{0, 4, 0.015625, 1.2345, 1.234375},
                      FloatCase{0, 10, 0, -HUGE_VAL, 0},
                      FloatCase{0, 10, 0, HUGE_VAL, 10}));

struct IntCase {
    int64_t min, max, inc, written, expected;
};

void PrintTo(const IntCase& c, std::ostream* os)
{
    *os << c.written << " into " << c.min << ".." << c.max << " step " << c.inc;
}

class IntegerWrite : public ::testing::TestWithParam<IntCase> {};

TEST_P(IntegerWrite, ClipsAndRoundsToIncrement)
{
    const IntCase c = GetParam();
    CNodeMap map;
    map.addInteger("I", c.min, c.max, c.inc, c.min);
    EXPECT_EQ(map.setInteger("I", c.written), c.expected);
    EXPECT_EQ(map.getInteger("I"), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, IntegerWrite,
    ::testing::Values(IntCase{0, 4095, 1, 100, 100}, IntCase{0, 4095, 1, -1, 0},
                      IntCase{0, 4095, 1, 5000, 4095}, IntCase{16, 1920, 16, 100, 96},
                      IntCase{16, 1920, 16, 104, 112}, IntCase{0, 10, 4, 9, 8},
                      IntCase{INT64_MIN, INT64_MAX, 2, INT64_MAX - 1, INT64_MAX - 1},
                      IntCase{INT64_MIN, INT64_MAX, 1, INT64_MIN, INT64_MIN}));

TEST(NodeMap, ErrorsNameTheFeature)
{
    CNodeMap map;
    map.addFloat("Gain", 0, 24, 0, 0);
    try {
        map.getInteger("Gain");
        FAIL() << "type mismatch not detected";
    } catch (const RuntimeException& e) {
        EXPECT_NE(std::string(e.GetDescription()).find("Gain"), std::string::npos);
        EXPECT_GT(e.GetSourceLine(), 0u);
    }
    EXPECT_THROW(map.getFloat("Nope"), RuntimeException);
    EXPECT_THROW(map.addFloat("Gain", 0, 1, 0, 0), RuntimeException);
    EXPECT_THROW(map.setFloat("Gain", std::nan("")), RuntimeException);
    EXPECT_THROW(map.addFloat("Bad", 2, 1, 0, 1), RuntimeException);
    EXPECT_THROW(map.addEnumeration("E", colours(), "Violet"), RuntimeException);
    EXPECT_FALSE(map.hasNode("E"));
}

TEST(NodeMap, AccessModeGuardsWritesButNotDeviceStores)
{
    CNodeMap map;
    map.addEnumeration("ExposureAuto", {{"Off", "", 0}, {"Continuous", "", 2}}, "Continuous");
    map.addFloat("ExposureTime", 10, 1000, 0, 100);
    map.setAccessFunction("ExposureTime", [&map] {
        return map.getEnum("ExposureAuto") == "Off" ? EAccessMode::RW : EAccessMode::RO;
    });
    EXPECT_EQ(map.accessMode("ExposureTime"), EAccessMode::RO);
    EXPECT_TRUE(map.isReadable("ExposureTime"));
    EXPECT_THROW(map.setFloat("ExposureTime", 200), RuntimeException);
    EXPECT_DOUBLE_EQ(map.storeFloat("ExposureTime", 2000), 1000);  // the auto function
    map.setEnum("ExposureAuto", "Off");
    EXPECT_TRUE(map.isWritable("ExposureTime"));
    EXPECT_DOUBLE_EQ(map.setFloat("ExposureTime", 200), 200);

    map.setAccessMode("ExposureTime", EAccessMode::NA);
    EXPECT_FALSE(map.isAvailable("ExposureTime"));
    EXPECT_FALSE(map.isReadable("ExposureTime"));
    EXPECT_THROW(map.setFloat("ExposureTime", 300), RuntimeException);
    EXPECT_EQ(map.accessMode("Missing"), EAccessMode::NA);
}

TEST(NodeMap, EnumerationEntriesAndAvailability)
{
    CNodeMap map;
    map.addEnumeration("PixelFormat",
                       {{"Mono8", "Mono 8", 0x01080001}, {"BayerRG12", "Bayer RG 12", 0x01100011}},
                       "BayerRG12");
    EXPECT_EQ(map.getEnum("PixelFormat"), "BayerRG12");
    EXPECT_EQ(map.getEnumValue("PixelFormat"), 0x01100011);
    EXPECT_EQ(map.enumEntries("PixelFormat")[0].displayName, "Mono 8");
    map.setEnumValue("PixelFormat", 0x01080001);
    EXPECT_EQ(map.getEnum("PixelFormat"), "Mono8");
    map.setEntryAvailable("PixelFormat", "BayerRG12", false);
    EXPECT_FALSE(map.isEntryAvailable("PixelFormat", "BayerRG12"));
    EXPECT_THROW(map.setEnum("PixelFormat", "BayerRG12"), RuntimeException);
    EXPECT_THROW(map.setEnum("PixelFormat", "Mono12"), RuntimeException);
    EXPECT_THROW(map.setEnumValue("PixelFormat", 7), RuntimeException);
    EXPECT_EQ(map.getEnum("PixelFormat"), "Mono8");
}

TEST(NodeMap, SelectorKeepsOneValuePerEntry)
{
    CNodeMap map;
    map.addEnumeration("BalanceRatioSelector", colours(), "Red");
    map.addFloat("BalanceRatio", 0, 8, 1.0 / 64, 1.0);
    map.setSelectedBy("BalanceRatio", "BalanceRatioSelector");
    EXPECT_EQ(map.selectorOf("BalanceRatio"), "BalanceRatioSelector");
    EXPECT_EQ(map.selectedFeatures("BalanceRatioSelector"),
              std::vector<std::string>{"BalanceRatio"});

    map.setFloat("BalanceRatio", 1.5);
    map.setEnum("BalanceRatioSelector", "Blue");
    EXPECT_DOUBLE_EQ(map.getFloat("BalanceRatio"), 1.0);
    map.setFloat("BalanceRatio", 2.3);  // rounded to 1/64
    EXPECT_DOUBLE_EQ(map.getFloat("BalanceRatio"), 147.0 / 64);
    EXPECT_DOUBLE_EQ(map.getFloatFor("BalanceRatio", "Red"), 1.5);
    EXPECT_DOUBLE_EQ(map.getFloatFor("BalanceRatio", "Green"), 1.0);
    map.storeFloatFor("BalanceRatio", "Green", 0.5);
    EXPECT_DOUBLE_EQ(map.getFloatFor("BalanceRatio", "Green"), 0.5);
    EXPECT_EQ(map.getEnum("BalanceRatioSelector"), "Blue");
    EXPECT_THROW(map.getFloatFor("BalanceRatio", "Violet"), RuntimeException);
    // One selector level only.
    map.addEnumeration("Other", colours(), "Red");
    EXPECT_THROW(map.setSelectedBy("BalanceRatio", "Other"), RuntimeException);
}

TEST(NodeMap, ChangeCallbacksFireOnRealChangesAndForSelectedFeatures)
{
    CNodeMap map;
    map.addEnumeration("GammaSelector", {{"User", "", 0}, {"sRGB", "", 1}}, "User");
    map.addFloat("Gamma", 0.25, 4, 0, 1);
    map.addBoolean("GammaEnable", false);
    map.setSelectedBy("Gamma", "GammaSelector");
    map.setSelectedBy("GammaEnable", "GammaSelector");
    std::vector<std::string> seen, all;
    const int id = map.addChangeCallback("Gamma", [&](const std::string& f) { seen.push_back(f); });
    map.addChangeCallback("", [&](const std::string& f) { all.push_back(f); });

    map.setFloat("Gamma", 1.0);  // unchanged: no call
    EXPECT_TRUE(seen.empty());
    map.setFloat("Gamma", 0.45);
    map.setEnum("GammaSelector", "sRGB");
    EXPECT_EQ(seen, (std::vector<std::string>{"Gamma", "Gamma"}));
    EXPECT_EQ(all, (std::vector<std::string>{"Gamma", "GammaSelector", "Gamma", "GammaEnable"}));
    map.removeChangeCallback(id);
    map.setFloat("Gamma", 2.0);
    EXPECT_EQ(seen.size(), 2u);
}

TEST(NodeMap, CallbackMayWriteBackIntoTheMap)
{
    CNodeMap map;
    map.addFloat("A", 0, 10, 0, 0);
    map.addFloat("B", 0, 10, 0, 0);
    map.addChangeCallback("A", [&](const std::string&) { map.storeFloat("B", map.getFloat("A")); });
    map.setFloat("A", 3);
    EXPECT_DOUBLE_EQ(map.getFloat("B"), 3);
}

TEST(NodeMap, RangeChangeClipsStoredValues)
{
    CNodeMap map;
    map.addFloat("ExposureTime", 10, 1e6, 0, 5e5);
    int calls = 0;
    map.addChangeCallback("ExposureTime", [&](const std::string&) { ++calls; });
    map.setFloatRange("ExposureTime", 10, 1e5);
    EXPECT_DOUBLE_EQ(map.getFloat("ExposureTime"), 1e5);
    EXPECT_DOUBLE_EQ(map.floatMax("ExposureTime"), 1e5);
    EXPECT_EQ(calls, 1);
    map.addInteger("Width", 16, 1920, 16, 1920);
    map.setIntegerRange("Width", 16, 640);
    EXPECT_EQ(map.getInteger("Width"), 640);
}

TEST(NodeMap, StringsAndCommands)
{
    CNodeMap map;
    map.addString("DeviceUserID", "", 8);
    map.setString("DeviceUserID", "bench");
    EXPECT_EQ(map.getString("DeviceUserID"), "bench");
    EXPECT_THROW(map.setString("DeviceUserID", "far too long"), RuntimeException);
    int runs = 0;
    map.addCommand("UserSetSave", [&] { ++runs; });
    map.execute("UserSetSave");
    EXPECT_EQ(runs, 1);
    map.setAccessMode("UserSetSave", EAccessMode::NA);
    EXPECT_THROW(map.execute("UserSetSave"), RuntimeException);
    EXPECT_EQ(runs, 1);
}

TEST(NodeMap, ConcurrentWritersAndReadersStayConsistent)
{
    CNodeMap map;
    map.addEnumeration("Sel", colours(), "Red");
    map.addFloat("V", 0, 1000, 1, 0);
    map.setSelectedBy("V", "Sel");
    std::atomic<bool> bad{false};
    auto writer = [&](const std::string& entry, double base) {
        for (int i = 0; i < 2000; ++i) {
            std::lock_guard<std::recursive_mutex> lock(map.mutex());
            map.setEnum("Sel", entry);
            map.setFloat("V", base + i % 100);
            if (map.getFloat("V") != base + i % 100)
                bad = true;
        }
    };
    std::thread a(writer, "Red", 0), b(writer, "Blue", 500);
    for (int i = 0; i < 2000; ++i) {
        const double v = map.getFloatFor("V", "Blue");
        if (v != 0 && (v < 500 || v > 599))
            bad = true;
    }
    a.join();
    b.join();
    EXPECT_FALSE(bad);
}

}  // namespace
