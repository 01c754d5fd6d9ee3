#include "emulatortransportlayer.h"

#include "emulatedcamera.h"

#include "kalto/transportlayerregistry.h"

EmulatorTransportLayer::EmulatorTransportLayer(std::vector<CameraModel> models)
    : m_models(std::move(models))
{
}

std::vector<Kalto::SDeviceInfo> EmulatorTransportLayer::enumerateDevices()
{
    std::vector<Kalto::SDeviceInfo> out;
    for (const auto& m : m_models) {
        Kalto::SDeviceInfo i;
        i.id = m.id;
        i.modelName = m.modelName;
        i.vendorName = "Kalto";
        i.serialNumber = m.serialNumber;
        i.transportLayer = name();
        out.push_back(i);
    }
    return out;
}

std::shared_ptr<EmulatedCamera> EmulatorTransportLayer::camera(const std::string& deviceId)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = m_cameras.find(deviceId);
    if (it != m_cameras.end())
        return it->second;
    for (const auto& m : m_models) {
        if (m.id == deviceId) {
            auto cam = std::make_shared<EmulatedCamera>(m);
            m_cameras.emplace(deviceId, cam);
            return cam;
        }
    }
    return nullptr;
}

std::shared_ptr<Kalto::IDevice> EmulatorTransportLayer::createDevice(const std::string& deviceId)
{
    return camera(deviceId);
}

std::shared_ptr<EmulatorTransportLayer> EmulatorTransportLayer::registerDefault()
{
    static std::mutex mutex;
    static std::shared_ptr<EmulatorTransportLayer> layer;
    std::lock_guard<std::mutex> lock(mutex);
    if (!layer) {
        layer = std::make_shared<EmulatorTransportLayer>();
        Kalto::CTransportLayerRegistry::instance().add(layer);
    }
    return layer;
}
