#include "genicam/nodemap.h"
#include "kalto/idevice.h"
#include "kalto/itransportlayer.h"
#include "kalto/transportlayerregistry.h"

#include <gtest/gtest.h>

using namespace Kalto;

namespace {

class StillDevice : public IDevice {
public:
    explicit StillDevice(SDeviceInfo info) : m_info(std::move(info)) {}
    SDeviceInfo info() const override { return m_info; }
    void open() override { m_open = true; }
    void close() override { m_open = false; }
    bool isOpen() const override { return m_open; }
    bool isConnected() const override { return true; }
    CNodeMap& nodeMap() override { return m_map; }
    void startAcquisition(EAcquisitionMode) override {}
    void stopAcquisition() override {}
    bool isAcquiring() const override { return false; }
    void setFrameSink(FrameSink) override {}
    void setConnectionLostHandler(ConnectionLostHandler) override {}

private:
    SDeviceInfo m_info;
    CNodeMap m_map;
    bool m_open = false;
};

class ListLayer : public ITransportLayer {
public:
    ListLayer(std::string name, std::vector<std::string> ids) : m_name(std::move(name))
    {
        for (auto& id : ids)
        {
            SDeviceInfo info;
            info.id = id;
            info.modelName = "Model " + id;
            m_devices.push_back(std::make_shared<StillDevice>(info));
        }
    }
    std::string name() const override { return m_name; }
    std::vector<SDeviceInfo> enumerateDevices() override
    {
        std::vector<SDeviceInfo> out;
        for (auto& d : m_devices)
            out.push_back(d->info());
        return out;
    }
    std::shared_ptr<IDevice> createDevice(const std::string& id) override
    {
        for (auto& d : m_devices)
            if (d->info().id == id)
                return d;
        return nullptr;
    }

private:
    std::string m_name;
    std::vector<std::shared_ptr<StillDevice>> m_devices;
};

TEST(TransportLayerRegistry, EnumeratesEveryLayerInOrderAndCreatesById)
{
    CTransportLayerRegistry registry;
    registry.add(std::make_shared<ListLayer>("Emulation", std::vector<std::string>{"e1", "e2"}));
    registry.add(std::make_shared<ListLayer>("GigE", std::vector<std::string>{"g1"}));
    const auto devices = registry.enumerateDevices();
    ASSERT_EQ(devices.size(), 3u);
    EXPECT_EQ(devices[0].id, "e1");
    EXPECT_EQ(devices[0].transportLayer, "Emulation");
    EXPECT_EQ(devices[2].transportLayer, "GigE");
    auto g1 = registry.createDevice("g1");
    ASSERT_TRUE(g1);
    EXPECT_EQ(g1->info().modelName, "Model g1");
    EXPECT_EQ(registry.createDevice("zz"), nullptr);
}

TEST(TransportLayerRegistry, ReplacesAndRemovesByName)
{
    CTransportLayerRegistry registry;
    registry.add(std::make_shared<ListLayer>("Emulation", std::vector<std::string>{"e1"}));
    registry.add(std::make_shared<ListLayer>("Emulation", std::vector<std::string>{"x1", "x2"}));
    EXPECT_EQ(registry.transportLayers().size(), 1u);
    EXPECT_EQ(registry.enumerateDevices().size(), 2u);
    ASSERT_TRUE(registry.transportLayer("Emulation"));
    registry.remove("Emulation");
    EXPECT_TRUE(registry.enumerateDevices().empty());
    EXPECT_EQ(registry.transportLayer("Emulation"), nullptr);
    EXPECT_THROW(registry.add(nullptr), std::exception);
}

TEST(TransportLayerRegistry, ProcessWideInstanceIsOne)
{
    EXPECT_EQ(&CTransportLayerRegistry::instance(), &CTransportLayerRegistry::instance());
}

}  // namespace
