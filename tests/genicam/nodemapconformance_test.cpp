// One suite for every node-map implementation: the in-memory map the emulator
// uses and the map over a GenICam device through Aravis (its in-process fake
// device serving testcamera.xml). Both describe the same camera, so the same
// expectations hold for both.
#include "loopbackonly.h"

// Before Qt's headers, whose `signals` keyword GLib's would trip over.
#include <arv.h>

#include "arvnodemap.h"
#include "genicam/featurepersistence.h"
#include "genicam/nodemap.h"
#include "genicam/runtimeexception.h"
#include "parametercollection/nodemapparametercollection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace Kalto;

namespace {

const char* const kName = "ConformanceCam";

// The camera of testcamera.xml, feature for feature, in its category order.
class MemoryCamera {
public:
    MemoryCamera() : m_map(kName)
    {
        CNodeMap& m = m_map;
        const auto readOnly = [&](const char* n) { m.setAccessMode(n, EAccessMode::RO); };
        m.addString("DeviceModelName", kName, 32);
        m.addInteger("DeviceSFNCVersionMajor", 2, 2, 1, 2);
        m.addInteger("DeviceSFNCVersionMinor", 1, 1, 1, 1);
        m.addInteger("DeviceSFNCVersionSubMinor", 0, 0, 1, 0);
        m.addFloat("DeviceTemperature", -40, 125, 0, 0, "C");
        for (const char* n : {"DeviceModelName", "DeviceSFNCVersionMajor", "DeviceSFNCVersionMinor",
                              "DeviceSFNCVersionSubMinor", "DeviceTemperature"})
            readOnly(n);
        m.addInteger("Width", 8, 2048, 8, 512);
        m.addInteger("Height", 8, 2048, 2, 512);
        m.addEnumeration("PixelFormat",
                         {{"Mono8", "", 0x01080001}, {"BayerRG8", "", 0x01080009}, {"RGB8", "", 0x02180014}},
                         "Mono8");
        m.addEnumeration("AcquisitionMode", {{"Continuous", "", 1}, {"SingleFrame", "", 2}}, "Continuous");
        m.addCommand("AcquisitionStart", [] {});
        m.addCommand("AcquisitionStop", [] {});
        m.addFloat("Gain", 0, 24, 0.5, 0, "dB");
        m.addInteger("BlackLevelRaw", 0, 252, 4, 0);
        m.addEnumeration("TestMode", {{"Off", "", 0}, {"Ramp", "Grey ramp", 1}, {"Noise", "", 2}}, "Off");
        m.setEntryAvailable("TestMode", "Noise", false);
        m.addBoolean("LUTEnable", false);
        m.addString("DeviceUserID", "", 16);
        m.addEnumeration("BalanceRatioSelector", {{"Red", "", 0}, {"Green", "", 1}, {"Blue", "", 2}}, "Red");
        m.addFloat("BalanceRatio", 0, 8, 0, 0);
        m.setSelectedBy("BalanceRatio", "BalanceRatioSelector");
        m.addCommand("ResetCounter", [this] { m_map.storeInteger("ResetDone", 1); });
        m.addInteger("ResetDone", 0, 1, 1, 0);
        readOnly("ResetDone");
        m.addInteger("HDRLevel", 0, 3, 1, 0);
        m.setAccessMode("HDRLevel", EAccessMode::NA);
        // Streamable in the XML: the test features only.
        for (const char* n : {"DeviceModelName", "DeviceSFNCVersionMajor", "DeviceSFNCVersionMinor",
                              "DeviceSFNCVersionSubMinor", "DeviceTemperature", "Width", "Height",
                              "PixelFormat", "AcquisitionMode", "ResetDone"})
            m.setPersistent(n, false);
    }
    INodeMap& map() { return m_map; }
    std::shared_ptr<INodeMap> shared() { return std::shared_ptr<INodeMap>(std::shared_ptr<void>(), &m_map); }

private:
    CNodeMap m_map;
};

class AravisCamera {
public:
    AravisCamera() : m_map(kName)
    {
        arv_set_fake_camera_genicam_filename(COLCAL_GENICAM_TEST_XML);
        GError* error = nullptr;
        ArvDevice* device = arv_fake_device_new("CONF0", &error);
        if (error) {
            ADD_FAILURE() << "fake device: " << error->message;
            g_error_free(error);
            return;
        }
        m_map.attach(device);
        g_object_unref(device);
    }
    INodeMap& map() { return m_map; }
    std::shared_ptr<INodeMap> shared() { return std::shared_ptr<INodeMap>(std::shared_ptr<void>(), &m_map); }

private:
    CArvNodeMap m_map;
};

template <class Camera>
class NodeMapConformance : public ::testing::Test {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        camera = std::make_unique<Camera>();
    }
    INodeMap& map() { return camera->map(); }

    std::unique_ptr<Camera> camera;
};

using Implementations = ::testing::Types<MemoryCamera, AravisCamera>;
TYPED_TEST_SUITE(NodeMapConformance, Implementations);

// Expects `call` to throw the SDK's exception with `feature` in its text.
template <class F>
void expectThrowNaming(F call, const std::string& feature)
{
    try {
        call();
        ADD_FAILURE() << "no exception for " << feature;
    } catch (const GenICam_3_1_Ostrel_kalto::RuntimeException& e) {
        EXPECT_NE(std::string(e.GetDescription()).find(feature), std::string::npos) << e.GetDescription();
    }
}

const std::vector<std::string> kFeatureOrder = {
    "DeviceModelName", "DeviceSFNCVersionMajor", "DeviceSFNCVersionMinor", "DeviceSFNCVersionSubMinor",
    "DeviceTemperature", "Width", "Height", "PixelFormat", "AcquisitionMode", "AcquisitionStart",
    "AcquisitionStop", "Gain", "BlackLevelRaw", "TestMode", "LUTEnable", "DeviceUserID",
    "BalanceRatioSelector", "BalanceRatio", "ResetCounter", "ResetDone", "HDRLevel"};

TYPED_TEST(NodeMapConformance, ListsEveryFeatureInCategoryOrder)
{
    EXPECT_EQ(this->map().nodeNames(), kFeatureOrder);
    EXPECT_FALSE(this->map().hasNode("NoSuchFeature"));
    expectThrowNaming([&] { this->map().nodeType("NoSuchFeature"); }, "NoSuchFeature");
}

TYPED_TEST(NodeMapConformance, TypesAccessAndPersistenceAsDescribed)
{
    struct Row {
        const char* name;
        ENodeType type;
        bool available, readable, writable, persistent;
    };
    const Row rows[] = {
        {"DeviceSFNCVersionMajor", ENodeType::Integer, true, true, false, false},
        {"DeviceTemperature", ENodeType::Float, true, true, false, false},
        {"Width", ENodeType::Integer, true, true, true, false},
        {"PixelFormat", ENodeType::Enumeration, true, true, true, false},
        {"Gain", ENodeType::Float, true, true, true, true},
        {"BlackLevelRaw", ENodeType::Integer, true, true, true, true},
        {"TestMode", ENodeType::Enumeration, true, true, true, true},
        {"LUTEnable", ENodeType::Boolean, true, true, true, true},
        {"DeviceUserID", ENodeType::String, true, true, true, true},
        {"ResetCounter", ENodeType::Command, true, false, true, false},
        {"ResetDone", ENodeType::Integer, true, true, false, false},
        {"HDRLevel", ENodeType::Integer, false, false, false, true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(this->map().nodeType(r.name), r.type);
        EXPECT_EQ(this->map().isAvailable(r.name), r.available);
        EXPECT_EQ(this->map().isReadable(r.name), r.readable);
        EXPECT_EQ(this->map().isWritable(r.name), r.writable);
        EXPECT_EQ(this->map().isPersistent(r.name), r.persistent);
    }
    EXPECT_EQ(this->map().accessMode("NoSuchFeature"), EAccessMode::NA);
}

TYPED_TEST(NodeMapConformance, NumbersAreClippedAndRoundedToTheDeviceRange)
{
    INodeMap& m = this->map();
    EXPECT_DOUBLE_EQ(m.floatMin("Gain"), 0.0);
    EXPECT_DOUBLE_EQ(m.floatMax("Gain"), 24.0);
    EXPECT_DOUBLE_EQ(m.floatIncrement("Gain"), 0.5);
    EXPECT_DOUBLE_EQ(m.floatIncrement("BalanceRatio"), 0.0);
    EXPECT_EQ(m.floatUnit("Gain"), "dB");
    EXPECT_EQ(m.integerMin("BlackLevelRaw"), 0);
    EXPECT_EQ(m.integerMax("BlackLevelRaw"), 252);
    EXPECT_EQ(m.integerIncrement("BlackLevelRaw"), 4);

    struct FloatCase { double written, held; };
    for (const FloatCase c : {FloatCase{3.3, 3.5}, {3.2, 3.0}, {100.0, 24.0}, {-5.0, 0.0}, {12.0, 12.0}}) {
        EXPECT_DOUBLE_EQ(m.setFloat("Gain", c.written), c.held) << c.written;
        EXPECT_DOUBLE_EQ(m.getFloat("Gain"), c.held) << c.written;
    }
    struct IntCase { int64_t written, held; };
    for (const IntCase c : {IntCase{10, 12}, {9, 8}, {1000, 252}, {-3, 0}, {64, 64}}) {
        EXPECT_EQ(m.setInteger("BlackLevelRaw", c.written), c.held) << c.written;
        EXPECT_EQ(m.getInteger("BlackLevelRaw"), c.held) << c.written;
    }
    expectThrowNaming([&] { m.setFloat("Gain", std::nan("")); }, "Gain");
}

TYPED_TEST(NodeMapConformance, EnumerationsBySymbolAndValue)
{
    INodeMap& m = this->map();
    const std::vector<SEnumEntry> entries = m.enumEntries("TestMode");
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[1].symbolic, "Ramp");
    EXPECT_EQ(entries[1].displayName, "Grey ramp");
    EXPECT_EQ(entries[1].value, 1);
    EXPECT_EQ(entries[0].displayName, "Off");
    EXPECT_TRUE(entries[0].available);
    EXPECT_FALSE(entries[2].available);
    EXPECT_TRUE(m.isEntryAvailable("TestMode", "Ramp"));
    EXPECT_FALSE(m.isEntryAvailable("TestMode", "Noise"));
    EXPECT_FALSE(m.isEntryAvailable("TestMode", "Sparkle"));

    m.setEnum("TestMode", "Ramp");
    EXPECT_EQ(m.getEnum("TestMode"), "Ramp");
    EXPECT_EQ(m.getEnumValue("TestMode"), 1);
    m.setEnumValue("TestMode", 0);
    EXPECT_EQ(m.getEnum("TestMode"), "Off");
    m.setEnum("PixelFormat", "RGB8");
    EXPECT_EQ(m.getEnumValue("PixelFormat"), 0x02180014);

    expectThrowNaming([&] { m.setEnum("TestMode", "Noise"); }, "TestMode");
    expectThrowNaming([&] { m.setEnum("TestMode", "Sparkle"); }, "TestMode");
    expectThrowNaming([&] { m.setEnumValue("TestMode", 7); }, "TestMode");
    EXPECT_EQ(m.getEnum("TestMode"), "Off");
}

TYPED_TEST(NodeMapConformance, BooleansStringsAndCommands)
{
    INodeMap& m = this->map();
    m.setBool("LUTEnable", true);
    EXPECT_TRUE(m.getBool("LUTEnable"));
    m.setBool("LUTEnable", false);
    EXPECT_FALSE(m.getBool("LUTEnable"));

    EXPECT_EQ(m.stringMaxLength("DeviceUserID"), 16u);
    m.setString("DeviceUserID", "bench left");
    EXPECT_EQ(m.getString("DeviceUserID"), "bench left");
    expectThrowNaming([&] { m.setString("DeviceUserID", std::string(17, 'x')); }, "DeviceUserID");
    EXPECT_EQ(m.getString("DeviceUserID"), "bench left");

    EXPECT_EQ(m.getInteger("ResetDone"), 0);
    m.execute("ResetCounter");
    EXPECT_EQ(m.getInteger("ResetDone"), 1);
}

TYPED_TEST(NodeMapConformance, RefusedWritesNameTheFeatureAndChangeNothing)
{
    INodeMap& m = this->map();
    const double temperature = m.getFloat("DeviceTemperature");
    expectThrowNaming([&] { m.setFloat("DeviceTemperature", 30.0); }, "DeviceTemperature");
    EXPECT_DOUBLE_EQ(m.getFloat("DeviceTemperature"), temperature);
    expectThrowNaming([&] { m.setInteger("ResetDone", 0); }, "ResetDone");
    expectThrowNaming([&] { m.setInteger("HDRLevel", 1); }, "HDRLevel");
    expectThrowNaming([&] { m.setInteger("Gain", 1); }, "Gain");      // of another type
    expectThrowNaming([&] { m.getFloat("NoSuchFeature"); }, "NoSuchFeature");
    expectThrowNaming([&] { m.execute("Gain"); }, "Gain");
}

TYPED_TEST(NodeMapConformance, SelectedFeaturesKeepOneValuePerEntry)
{
    INodeMap& m = this->map();
    EXPECT_EQ(m.selectorOf("BalanceRatio"), "BalanceRatioSelector");
    EXPECT_EQ(m.selectorOf("Gain"), "");
    EXPECT_EQ(m.selectedFeatures("BalanceRatioSelector"), std::vector<std::string>{"BalanceRatio"});
    EXPECT_TRUE(m.selectedFeatures("TestMode").empty());

    const std::pair<const char*, double> ratios[] = {{"Red", 1.75}, {"Green", 1.0}, {"Blue", 2.25}};
    for (const auto& [entry, ratio] : ratios) {
        m.setEnum("BalanceRatioSelector", entry);
        m.setFloat("BalanceRatio", ratio);
    }
    m.setEnum("BalanceRatioSelector", "Green");
    for (const auto& [entry, ratio] : ratios)
        EXPECT_DOUBLE_EQ(m.getFloatFor("BalanceRatio", entry), ratio) << entry;
    EXPECT_EQ(m.getEnum("BalanceRatioSelector"), "Green");  // the reads leave the selection
    EXPECT_DOUBLE_EQ(m.getFloat("BalanceRatio"), 1.0);
    expectThrowNaming([&] { m.getFloatFor("Gain", "Red"); }, "Gain");
}

TYPED_TEST(NodeMapConformance, ChangeCallbacksSeeWritesAndNewSelections)
{
    INodeMap& m = this->map();
    std::vector<std::string> seen;
    const int id = m.addChangeCallback("BalanceRatio", [&](const std::string& f) { seen.push_back(f); });
    m.setFloat("Gain", 2.0);
    EXPECT_TRUE(seen.empty());
    m.setEnum("BalanceRatioSelector", "Blue");
    m.setFloat("BalanceRatio", 1.5);
    EXPECT_EQ(seen, (std::vector<std::string>{"BalanceRatio", "BalanceRatio"}));
    m.removeChangeCallback(id);
    m.setFloat("BalanceRatio", 1.25);
    EXPECT_EQ(seen.size(), 2u);
}

TYPED_TEST(NodeMapConformance, ParameterCollectionReadsTheSfncVersion)
{
    ParameterCollection::NodeMapParameterCollection parameters(this->camera->shared(), kName);
    EXPECT_EQ(parameters.sfncVersion(), QVersionNumber(2, 1, 0));
}

// Values no feature holds at the start, so that a load that did nothing shows.
void setDistinctValues(INodeMap& m)
{
    m.setFloat("Gain", 6.5);
    m.setInteger("BlackLevelRaw", 40);
    m.setEnum("TestMode", "Ramp");
    m.setBool("LUTEnable", true);
    m.setString("DeviceUserID", "line\t#2");
    const std::pair<const char*, double> ratios[] = {{"Red", 1.5}, {"Green", 1.0}, {"Blue", 2.125}};
    for (const auto& [entry, ratio] : ratios) {
        m.setEnum("BalanceRatioSelector", entry);
        m.setFloat("BalanceRatio", ratio);
    }
    m.setEnum("BalanceRatioSelector", "Green");
}

TYPED_TEST(NodeMapConformance, PersistenceRoundTripGivesTheSameText)
{
    INodeMap& m = this->map();
    setDistinctValues(m);
    const std::string saved = CFeaturePersistence::Save(m);

    // Every selector entry is visited, selector lines before the values they select.
    const size_t red = saved.find("BalanceRatioSelector\tRed\nBalanceRatio\t1.5\n");
    const size_t blue = saved.find("BalanceRatioSelector\tBlue\nBalanceRatio\t2.125\n");
    EXPECT_NE(red, std::string::npos) << saved;
    EXPECT_NE(blue, std::string::npos) << saved;
    EXPECT_NE(saved.find("Gain\t6.5\n"), std::string::npos);
    EXPECT_EQ(saved.find("DeviceTemperature"), std::string::npos);  // not writable
    EXPECT_EQ(saved.find("HDRLevel"), std::string::npos);           // not available
    EXPECT_EQ(saved.find("Width"), std::string::npos);              // not streamable

    m.setFloat("Gain", 1.0);
    m.setInteger("BlackLevelRaw", 0);
    m.setEnum("TestMode", "Off");
    m.setBool("LUTEnable", false);
    m.setString("DeviceUserID", "");
    m.setEnum("BalanceRatioSelector", "Blue");
    m.setFloat("BalanceRatio", 4.0);
    ASSERT_NE(CFeaturePersistence::Save(m), saved);

    const SLoadReport report = CFeaturePersistence::Load(m, saved);
    EXPECT_TRUE(report.ok()) << (report.rejected.empty() ? "" : report.rejected[0].feature + ": " +
                                                                  report.rejected[0].reason);
    EXPECT_EQ(CFeaturePersistence::Save(m), saved);
    EXPECT_EQ(m.getEnum("BalanceRatioSelector"), "Green");
}

TYPED_TEST(NodeMapConformance, LoadRejectsWhatTheDeviceCannotTakeByLine)
{
    INodeMap& m = this->map();
    m.setFloat("Gain", 2.0);
    const SLoadReport report = CFeaturePersistence::Load(
        m, "Gain\t99\nTestMode\tNoise\nDeviceTemperature\t20\nHDRLevel\t1\nNoSuchFeature\t1\nBlackLevelRaw\t8\n");
    EXPECT_EQ(report.appliedLines, 1u);
    ASSERT_EQ(report.rejected.size(), 5u);
    const char* features[] = {"Gain", "TestMode", "DeviceTemperature", "HDRLevel", "NoSuchFeature"};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(report.rejected[i].lineNumber, i + 1);
        EXPECT_EQ(report.rejected[i].feature, features[i]);
    }
    EXPECT_DOUBLE_EQ(m.getFloat("Gain"), 2.0);
    EXPECT_EQ(m.getInteger("BlackLevelRaw"), 8);
}

// Not only each map with itself: the two describe one camera, so the same
// values give the same text.
TEST(NodeMapConformanceAcross, BothMapsSaveTheSameTextForTheSameValues)
{
    KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
    MemoryCamera memory;
    AravisCamera aravis;
    setDistinctValues(memory.map());
    setDistinctValues(aravis.map());
    EXPECT_EQ(CFeaturePersistence::Save(memory.map()), CFeaturePersistence::Save(aravis.map()));
}

}  // namespace
