#include "genicam/featurepersistence.h"
#include "genicam/nodemap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

using Kalto::CFeaturePersistence;
using Kalto::CNodeMap;
using Kalto::EAccessMode;
using Kalto::SLoadReport;

namespace {

// A camera-like map: plain features, two selectors, a read-only and a command.
void buildCamera(CNodeMap& map)
{
    map.addString("DeviceModelName", "Test cMED");
    map.setAccessMode("DeviceModelName", EAccessMode::RO);
    map.addEnumeration("PixelFormat",
                       {{"Mono8", "", 1}, {"RGB8", "", 2}, {"BayerRG12", "", 3}}, "BayerRG12");
    map.addInteger("Width", 16, 1920, 16, 1920);
    map.addFloat("ExposureTime", 10, 1e6, 0, 5000, "us");
    map.addFloat("Gain", 0, 24, 0.1, 0);
    map.addEnumeration("BalanceRatioSelector", {{"Red", "", 0}, {"Green", "", 1}, {"Blue", "", 2}},
                       "Green");
    map.addFloat("BalanceRatio", 0, 8, 1.0 / 1024, 1);
    map.setSelectedBy("BalanceRatio", "BalanceRatioSelector");
    map.addEnumeration("GammaSelector", {{"User", "", 0}, {"sRGB", "", 1}}, "User");
    map.addBoolean("GammaEnable", true);
    map.addFloat("Gamma", 0.25, 4, 0, 0.7);
    map.setSelectedBy("GammaEnable", "GammaSelector");
    map.setSelectedBy("Gamma", "GammaSelector");
    map.addString("DeviceUserID", "bench #1\tleft");
    map.addCommand("UserSetSave", [] {});
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        out.push_back(line);
    return out;
}

TEST(FeaturePersistence, CutTextIsReportedAndTheLineCutThroughIsNotApplied)
{
    CNodeMap source;
    buildCamera(source);
    source.setFloat("Gain", 12.5);
    const std::string whole = CFeaturePersistence::Save(source);
    const size_t gain = whole.find("Gain\t12.5\n");
    ASSERT_NE(gain, std::string::npos);
    std::string legacy = whole;  // as texts were written before they declared their length
    legacy.erase(legacy.find("# Lines\t"), legacy.find('\n', legacy.find("# Lines\t")) + 1 - legacy.find("# Lines\t"));
    legacy.erase(legacy.rfind("# End\n"));
    struct Case {
        const char* what;
        std::string text;
        double gain;          // what the loaded map holds afterwards
        bool cutLine;         // the line cut through is rejected
        bool truncated;
    };
    const Case cases[] = {
        {"whole", whole, 12.5, false, false},
        {"cut inside a value", whole.substr(0, gain + 7), 0.0, true, true},  // "Gain\t12" must not read as 12
        {"cut before the end marker", whole.substr(0, whole.rfind("# End")), 12.5, false, true},
        {"legacy text", legacy, 12.5, false, false},
    };
    for (const Case& c : cases) {
        CNodeMap map;
        buildCamera(map);
        const SLoadReport r = CFeaturePersistence::Load(map, c.text);
        EXPECT_DOUBLE_EQ(map.getFloat("Gain"), c.gain) << c.what;
        bool cut = false, truncated = false;
        for (const auto& line : r.rejected) {
            cut = cut || (line.feature == "Gain" && line.reason.find("cut off") != std::string::npos);
            truncated = truncated || line.reason.find("truncated") != std::string::npos;
        }
        EXPECT_EQ(cut, c.cutLine) << c.what;
        EXPECT_EQ(truncated, c.truncated) << c.what;
        EXPECT_EQ(r.ok(), !c.truncated) << c.what;
    }
}

// Read-only features, commands and features marked not persistent are left out.
TEST(FeaturePersistence, WritesSelectorBlocksInOrder)
{
    CNodeMap map;
    buildCamera(map);
    map.setPersistent("Width", false);
    map.setEnum("BalanceRatioSelector", "Red");
    map.setFloat("BalanceRatio", 1.5);
    map.setEnum("BalanceRatioSelector", "Green");
    const std::vector<std::string> l = lines(CFeaturePersistence::Save(map));
    ASSERT_GT(l.size(), 3u);
    EXPECT_EQ(l[0][0], '#');
    EXPECT_EQ(l[1][0], '#');
    EXPECT_EQ(l[2], "# Lines\t" + std::to_string(l.size()));  // the count includes header and end marker
    EXPECT_EQ(l.back(), "# End");
    const std::vector<std::string> body(l.begin() + 3, l.end() - 1);
    const std::vector<std::string> expected{
        "PixelFormat\tBayerRG12",
        "ExposureTime\t5000",
        "Gain\t0",
        "BalanceRatioSelector\tRed",
        "BalanceRatio\t1.5",
        "BalanceRatioSelector\tGreen",
        "BalanceRatio\t1",
        "BalanceRatioSelector\tBlue",
        "BalanceRatio\t1",
        "BalanceRatioSelector\tGreen",
        "GammaSelector\tUser",
        "GammaEnable\t1",
        "Gamma\t0.7",
        "GammaSelector\tsRGB",
        "GammaEnable\t1",
        "Gamma\t0.7",
        "GammaSelector\tUser",
        "DeviceUserID\tbench \\x231\\tleft",
    };
    EXPECT_EQ(body, expected);
    // Only the header and the end marker carry a '#', as consumers of the text rely on.
    for (size_t i = 3; i + 1 < l.size(); ++i)
        EXPECT_EQ(l[i].find('#'), std::string::npos) << l[i];
}

TEST(FeaturePersistence, RoundTripRestoresEveryValueAndIsByteIdentical)
{
    CNodeMap a;
    buildCamera(a);
    a.setEnum("PixelFormat", "RGB8");
    a.setInteger("Width", 1280);
    a.setFloat("ExposureTime", 12345.678901234567);
    a.setFloat("Gain", 3.3);
    for (auto [entry, v] : {std::pair<const char*, double>{"Red", 1.37}, {"Blue", 2.11}}) {
        a.setEnum("BalanceRatioSelector", entry);
        a.setFloat("BalanceRatio", v);
    }
    a.setEnum("GammaSelector", "sRGB");
    a.setBool("GammaEnable", false);
    a.setString("DeviceUserID", "a\\b\nc\xc3\xa9");
    const std::string saved = CFeaturePersistence::Save(a);

    CNodeMap b;
    buildCamera(b);
    const SLoadReport r = CFeaturePersistence::Load(b, saved);
    EXPECT_TRUE(r.ok()) << r.rejected.front().reason;
    EXPECT_EQ(CFeaturePersistence::Save(b), saved);
    // Byte-identical text means every value arrived; these could be lost
    // symmetrically by writer and reader.
    EXPECT_EQ(b.getFloat("ExposureTime"), 12345.678901234567);
    EXPECT_TRUE(b.getBoolFor("GammaEnable", "User"));
    EXPECT_EQ(b.getString("DeviceUserID"), "a\\b\nc\xc3\xa9");
    // Loading into the map it came from changes nothing either.
    EXPECT_TRUE(CFeaturePersistence::Load(a, saved).ok());
    EXPECT_EQ(CFeaturePersistence::Save(a), saved);
}

TEST(FeaturePersistence, FloatsRoundTripExactly)
{
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
    std::uniform_int_distribution<int> exponent(-300, 300);
    for (int i = 0; i < 5000; ++i) {
        const double v = std::ldexp(mantissa(rng), exponent(rng));
        CNodeMap a;
        a.addFloat("F", -1e308, 1e308, 0, v);
        CNodeMap b;
        b.addFloat("F", -1e308, 1e308, 0, 0);
        ASSERT_TRUE(CFeaturePersistence::Load(b, CFeaturePersistence::Save(a)).ok());
        ASSERT_EQ(b.getFloat("F"), v) << CFeaturePersistence::FormatFloat(v);
    }
    EXPECT_EQ(CFeaturePersistence::FormatFloat(0.45), "0.45");
    EXPECT_EQ(CFeaturePersistence::FormatFloat(1), "1");
}

struct BadLine {
    const char* line;
    const char* feature;
    const char* reasonPart;
};

class RejectedLine : public ::testing::TestWithParam<BadLine> {};

TEST_P(RejectedLine, IsReportedWithItsLineNumberAndTheRestApplies)
{
    const BadLine c = GetParam();
    CNodeMap map;
    buildCamera(map);
    const std::string text = std::string("# header\nGain\t2\n") + c.line + "\nWidth\t640\n";
    const SLoadReport r = CFeaturePersistence::Load(map, text);
    ASSERT_EQ(r.rejectedCount, 1u);
    ASSERT_EQ(r.rejected.size(), 1u);
    EXPECT_EQ(r.rejected[0].lineNumber, 3u);
    EXPECT_EQ(r.rejected[0].feature, c.feature);
    EXPECT_NE(r.rejected[0].reason.find(c.reasonPart), std::string::npos) << r.rejected[0].reason;
    EXPECT_EQ(r.appliedLines, 2u);
    EXPECT_DOUBLE_EQ(map.getFloat("Gain"), 2);
    EXPECT_EQ(map.getInteger("Width"), 640);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RejectedLine,
    ::testing::Values(BadLine{"Gain 3", "Gain", "no tab"},
                      BadLine{"Hue\t3", "Hue", "unknown feature"},
                      BadLine{"Gain\tabc", "Gain", "not a number"},
                      BadLine{"Gain\t1.5x", "Gain", "not a number"},
                      BadLine{"Gain\tnan", "Gain", "not a number"},
                      BadLine{"Gain\t99", "Gain", "out of range [0, 24]"},
                      BadLine{"Width\t1.5", "Width", "not an integer"},
                      BadLine{"Width\t99999999999999999999", "Width", "not an integer"},
                      BadLine{"Width\t8", "Width", "out of range"},
                      BadLine{"PixelFormat\tMono16", "PixelFormat", "no entry named Mono16"},
                      BadLine{"GammaEnable\tyes", "GammaEnable", "not a boolean"},
                      BadLine{"DeviceModelName\tx", "DeviceModelName", "not writable"},
                      BadLine{"UserSetSave\t1", "UserSetSave", "command"},
                      BadLine{"DeviceUserID\tbad\\q", "DeviceUserID", "escape"},
                      BadLine{"Gain\t\x01\x02", "", "binary"},
                      BadLine{"Gain\t\xff\xfe", "", "UTF-8"},
                      BadLine{"Gain\t\xc0\xaf", "", "UTF-8"},         // overlong '/'
                      BadLine{"Gain\t\xed\xa0\x80", "", "UTF-8"}));  // surrogate

TEST(FeaturePersistence, ValuesOfARejectedSelectorEntryAreNotMisapplied)
{
    CNodeMap map;
    buildCamera(map);
    const SLoadReport r = CFeaturePersistence::Load(
        map, "BalanceRatioSelector\tViolet\nBalanceRatio\t3\nBalanceRatioSelector\tRed\n"
             "BalanceRatio\t2\n");
    ASSERT_EQ(r.rejectedCount, 2u);
    EXPECT_EQ(r.rejected[0].lineNumber, 1u);
    EXPECT_EQ(r.rejected[1].lineNumber, 2u);
    EXPECT_NE(r.rejected[1].reason.find("selector"), std::string::npos);
    EXPECT_DOUBLE_EQ(map.getFloatFor("BalanceRatio", "Green"), 1);
    EXPECT_DOUBLE_EQ(map.getFloatFor("BalanceRatio", "Red"), 2);
}

TEST(FeaturePersistence, ToleratesCrLfEmptyLinesAndMissingFinalNewline)
{
    CNodeMap map;
    buildCamera(map);
    const SLoadReport r = CFeaturePersistence::Load(map, "# h\r\n\r\n\nGain\t4\r\nWidth\t320");
    EXPECT_TRUE(r.ok());
    EXPECT_EQ(r.appliedLines, 2u);
    EXPECT_DOUBLE_EQ(map.getFloat("Gain"), 4);
    EXPECT_EQ(map.getInteger("Width"), 320);
    EXPECT_TRUE(CFeaturePersistence::Load(map, "").ok());
}

TEST(FeaturePersistence, RandomBinaryNeverCrashes)
{
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 50; ++round) {
        std::string text(4096, '\0');
        for (char& c : text) {
            const int b = byte(rng);
            c = static_cast<char>(b < 20 ? '\n' : b < 40 ? '\t' : b);
        }
        CNodeMap map;
        buildCamera(map);
        const SLoadReport r = CFeaturePersistence::Load(map, text);
        EXPECT_GT(r.rejectedCount, 0u);
        EXPECT_LE(r.rejected.size(), CFeaturePersistence::kMaxReportedLines);
        // Whatever was applied leaves a map that still round-trips.
        const std::string saved = CFeaturePersistence::Save(map);
        CNodeMap copy;
        buildCamera(copy);
        EXPECT_TRUE(CFeaturePersistence::Load(copy, saved).ok());
        EXPECT_EQ(CFeaturePersistence::Save(copy), saved);
    }
}

TEST(FeaturePersistence, HundredMegabytesLoadsWithCappedReport)
{
    // Over-long lines, garbage lines and valid lines mixed; 100 MB in all.
    std::string text;
    text.reserve(100u << 20);
    const std::string longLine(CFeaturePersistence::kMaxLineBytes + 10, 'x');
    const std::string garbage = "\x01\x02\x03 binary \xff\n";
    size_t expectedRejected = 0;
    while (text.size() < (100u << 20)) {
        text += longLine;
        text += '\n';
        ++expectedRejected;
        for (int i = 0; i < 2000; ++i) {
            text += garbage;
            ++expectedRejected;
        }
        text += "Gain\t7\n";
    }
    CNodeMap map;
    buildCamera(map);
    const SLoadReport r = CFeaturePersistence::Load(map, text);
    EXPECT_EQ(r.rejectedCount, expectedRejected);
    EXPECT_EQ(r.rejected.size(), CFeaturePersistence::kMaxReportedLines);
    EXPECT_EQ(r.rejected[0].lineNumber, 1u);
    EXPECT_NE(r.rejected[0].reason.find("longer"), std::string::npos);
    EXPECT_EQ(r.rejected[1].lineNumber, 2u);
    EXPECT_DOUBLE_EQ(map.getFloat("Gain"), 7);

    // One single line of 100 MB without a newline.
    const std::string one(100u << 20, 'G');
    const SLoadReport single = CFeaturePersistence::Load(map, one);
    EXPECT_EQ(single.rejectedCount, 1u);
}

}  // namespace
