#include "core/baseexception.h"
#include "genicam/nodemap.h"
#include "genicam/runtimeexception.h"
#include "parametercollection/booleanparameter.h"
#include "parametercollection/commandparameter.h"
#include "parametercollection/enumparameter.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/nodemapparametercollection.h"
#include "parametercollection/stringparameter.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace ParameterCollection;
using Kalto::CNodeMap;
using Kalto::EAccessMode;

namespace {

class Collection : public ::testing::Test {
protected:
    void SetUp() override
    {
        map = std::make_shared<CNodeMap>();
        map->addInteger("DeviceSFNCVersionMajor", 0, 99, 1, 2);
        map->addInteger("DeviceSFNCVersionMinor", 0, 99, 1, 1);
        map->addInteger("DeviceSFNCVersionSubMinor", 0, 99, 1, 0);
        map->addFloat("ExposureTime", 20, 1e6, 0, 5000, "us");
        map->addInteger("GainRaw", 0, 1200, 1, 0);
        map->addEnumeration("OstLightSourcePreset", {{"Off", "", 0}, {"Daylight", "", 1}}, "Off");
        map->setAccessMode("OstLightSourcePreset", EAccessMode::NA);
        map->addEnumeration("LightSourceSelector",
                            {{"Off", "Off", 0}, {"Custom", "Custom matrix", 1},
                             {"Tungsten", "Tungsten 2800K", 2}},
                            "Tungsten");
        map->addBoolean("GammaEnable", false);
        map->addString("DeviceModelName", "Emulation A1");
        map->setAccessMode("DeviceModelName", EAccessMode::RO);
        map->addCommand("UserSetSave", [this] { ++saves; });
        collection = std::make_unique<NodeMapParameterCollection>(map, "Cam 1",
                                                                  [this] { return connected.load(); });
    }

    std::shared_ptr<CNodeMap> map;
    std::unique_ptr<NodeMapParameterCollection> collection;
    std::atomic<bool> connected{true};
    int saves = 0;
};

TEST_F(Collection, FloatRangeValueAndClipping)
{
    auto p = collection->parameter(FloatParameterName("ExposureTime"));
    ASSERT_FALSE(p->isNull());
    EXPECT_TRUE(p->isAvailable());
    EXPECT_TRUE(p->isReadable());
    EXPECT_TRUE(p->isWritable());
    EXPECT_DOUBLE_EQ(p->minimum(), 20);
    EXPECT_DOUBLE_EQ(p->maximum(), 1e6);
    EXPECT_FALSE(p->hasIncrement());
    EXPECT_EQ(p->unit(), "us");
    EXPECT_DOUBLE_EQ(p->setValue(5), 20);
    EXPECT_DOUBLE_EQ(p->value(), 20);
}

TEST_F(Collection, MissingFeatureGivesNullParameterThatThrowsOnUse)
{
    auto p = collection->parameter(FloatParameterName("Gain"));
    ASSERT_TRUE(p);
    EXPECT_TRUE(p->isNull());
    EXPECT_FALSE(p->isAvailable());
    EXPECT_FALSE(p->isReadable());
    EXPECT_FALSE(p->isWritable());
    try {
        p->value();
        FAIL();
    } catch (const GenICam_3_1_Ostrel_kalto::RuntimeException& e) {
        EXPECT_NE(std::string(e.what()).find("Gain"), std::string::npos);
    }
    // Right name, wrong type is missing too.
    EXPECT_TRUE(collection->parameter(FloatParameterName("GainRaw"))->isNull());
    EXPECT_TRUE(collection->contains("GainRaw"));
}

TEST_F(Collection, FirstAvailableAlternativeIsUsed)
{
    const EnumParameterName n = EnumParameterName("OstLightSourcePreset") || "LightSourceSelector";
    EXPECT_EQ(n.name(), "OstLightSourcePreset|LightSourceSelector");
    EXPECT_EQ((BooleanParameterName("A") || "B" || "C").alternatives(), (QStringList{"A", "B", "C"}));
    auto p = collection->parameter(n);
    EXPECT_EQ(p->name(), "LightSourceSelector");
    EXPECT_EQ(p->value(), "Tungsten");
    EXPECT_EQ(p->symbolics(), (QStringList{"Off", "Custom", "Tungsten"}));
    EXPECT_EQ(p->entry("Custom").value("DisplayName").toString(), "Custom matrix");
    EXPECT_EQ(p->entries().size(), 3);
    p->setValue("Custom");
    EXPECT_EQ(map->getEnum("LightSourceSelector"), "Custom");
    EXPECT_THROW(p->setValue("Violet"), std::exception);

    map->setAccessMode("OstLightSourcePreset", EAccessMode::RW);
    EXPECT_EQ(collection->parameter(n)->name(), "OstLightSourcePreset");
    // Nothing available: the first existing one, unavailable.
    map->setAccessMode("OstLightSourcePreset", EAccessMode::NA);
    map->setAccessMode("LightSourceSelector", EAccessMode::NA);
    auto none = collection->parameter(n);
    EXPECT_EQ(none->name(), "OstLightSourcePreset");
    EXPECT_FALSE(none->isAvailable());
}

TEST_F(Collection, OtherTypes)
{
    auto raw = collection->parameter(IntegerParameterName("GainRaw"));
    EXPECT_EQ(raw->setValue(5000), 1200);
    EXPECT_EQ(raw->maximum(), 1200);
    EXPECT_EQ(raw->increment(), 1);
    auto gamma = collection->parameter(BooleanParameterName("GammaEnable"));
    gamma->setValue(true);
    EXPECT_TRUE(gamma->value());
    auto model = collection->parameter(StringParameterName("DeviceModelName"));
    EXPECT_EQ(model->value(), "Emulation A1");
    EXPECT_TRUE(model->isReadable());
    EXPECT_FALSE(model->isWritable());
    EXPECT_THROW(model->setValue("x"), std::exception);
    collection->parameter(CommandParameterName("UserSetSave"))->execute();
    EXPECT_EQ(saves, 1);
}

TEST_F(Collection, SfncVersionFromTheThreeFeatures)
{
    EXPECT_EQ(collection->sfncVersion(), QVersionNumber(2, 1, 0));
    EXPECT_GE(collection->sfncVersion(), QVersionNumber(2, 0, 0));
    map->storeInteger("DeviceSFNCVersionMajor", 1);
    EXPECT_LT(collection->sfncVersion(), QVersionNumber(2, 0, 0));
    // A device that does not declare all three as readable integers has no version.
    const char* const names[3] = {"DeviceSFNCVersionMajor", "DeviceSFNCVersionMinor", "DeviceSFNCVersionSubMinor"};
    for (const char* spoil : {"missing", "a float", "unreadable"}) {
        for (int k = 0; k < 3; ++k) {
            auto spoilt = std::make_shared<CNodeMap>();
            for (int i = 0; i < 3; ++i) {
                if (i == k && spoil[0] == 'a')
                    spoilt->addFloat(names[i], 0, 99, 0, 1);
                else if (i != k || spoil[0] == 'u')
                    spoilt->addInteger(names[i], 0, 99, 1, 1);
            }
            if (spoil[0] == 'u')
                spoilt->setAccessMode(names[k], EAccessMode::NA);
            EXPECT_TRUE(NodeMapParameterCollection(spoilt, "spoilt").sfncVersion().isNull()) << names[k] << " " << spoil;
        }
    }
}

TEST_F(Collection, ChangeSignalIsDecoupledFromTheWriter)
{
    auto p = collection->parameter(FloatParameterName("ExposureTime"));
    QSignalSpy spy(p.data(), &Parameter::parameterDataChangedDecoupled);
    p->setValue(1000);
    EXPECT_EQ(spy.count(), 0);  // not inside the writer's call
    std::thread writer([this] { map->storeFloat("ExposureTime", 2000); });
    writer.join();
    ASSERT_TRUE(spy.wait(1000) || spy.count() > 0);
    QCoreApplication::processEvents();
    ASSERT_EQ(spy.count(), 2);
    EXPECT_DOUBLE_EQ(spy.at(0).at(0).toDouble(), 1000);
    EXPECT_DOUBLE_EQ(spy.at(1).at(0).toDouble(), 2000);
}

TEST_F(Collection, NoSignalAfterTheParameterIsGone)
{
    auto keep = collection->parameter(FloatParameterName("ExposureTime"));
    QSignalSpy spy(keep.data(), &Parameter::parameterDataChangedDecoupled);
    {
        auto p = collection->parameter(FloatParameterName("ExposureTime"));
        p->setValue(3000);  // leaves a queued emission for p behind
    }
    QCoreApplication::processEvents();  // must drop p's, not touch freed memory
    map->setFloat("ExposureTime", 4000);
    QCoreApplication::processEvents();
    ASSERT_EQ(spy.count(), 2);
    EXPECT_DOUBLE_EQ(spy.at(1).at(0).toDouble(), 4000);
}

TEST_F(Collection, DisconnectedCameraFailsAtOnceNamingIt)
{
    auto p = collection->parameter(FloatParameterName("ExposureTime"));
    connected = false;
    EXPECT_FALSE(p->isAvailable());
    EXPECT_FALSE(p->isWritable());
    try {
        p->setValue(100);
        FAIL();
    } catch (const Core::Exception::BaseException& e) {
        EXPECT_TRUE(e.message().contains("Cam 1"));
    }
    EXPECT_THROW(collection->sfncVersion(), Core::Exception::BaseException);
}

}  // namespace
