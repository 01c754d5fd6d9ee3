#include "arvtransportlayer.h"

#include "arvcameradevice.h"

#include "kalto/transportlayerregistry.h"

#include <arv.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

std::string text(const char* s)
{
    return s ? s : "";
}

}  // namespace

ArvTransportLayer::ArvTransportLayer(std::vector<std::string> interfaces)
{
    for (unsigned i = 0; i < arv_get_n_interfaces(); ++i) {
        const char* id = arv_get_interface_id(i);
        if (std::find(interfaces.begin(), interfaces.end(), text(id)) != interfaces.end())
            arv_enable_interface(id);
        else
            arv_disable_interface(id);
    }
}

ArvTransportLayer::~ArvTransportLayer() = default;

std::vector<Kalto::SDeviceInfo> ArvTransportLayer::enumerateDevices()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    arv_update_device_list();
    m_devices.clear();
    for (unsigned i = 0; i < arv_get_n_devices(); ++i) {
        Kalto::SDeviceInfo info;
        info.id = text(arv_get_device_id(i));
        info.modelName = text(arv_get_device_model(i));
        info.vendorName = text(arv_get_device_vendor(i));
        info.serialNumber = text(arv_get_device_serial_nbr(i));
        info.transportLayer = name();
        if (!info.id.empty())
            m_devices.push_back(info);
    }
    return m_devices;
}

std::shared_ptr<Kalto::IDevice> ArvTransportLayer::createDevice(const std::string& deviceId)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = m_cameras.find(deviceId);
    if (it != m_cameras.end() && it->second->isConnected())
        return it->second;
    // A camera that was lost and is found again is a new connection.
    for (const Kalto::SDeviceInfo& info : m_devices)
        if (info.id == deviceId)
            return m_cameras[deviceId] = std::make_shared<ArvCameraDevice>(info);
    // Not in the last list, or no list made: a full enumeration waits out
    // Aravis's discovery timeout (a second) for cameras that may still answer,
    // while asking for this one camera ends when it answers.
    Kalto::SDeviceInfo info;
    info.id = deviceId;
    info.transportLayer = name();
    auto camera = ArvCameraDevice::connectTo(info);
    if (!camera)
        return nullptr;
    return m_cameras[deviceId] = camera;
}

bool ArvTransportLayer::enabledBy(bool commandLineSwitch)
{
    const char* env = std::getenv("KALTO_GENICAM");
    return commandLineSwitch || (env && std::strcmp(env, "1") == 0);
}

std::shared_ptr<ArvTransportLayer> ArvTransportLayer::registerDefault()
{
    static std::mutex mutex;
    static std::shared_ptr<ArvTransportLayer> layer;
    std::lock_guard<std::mutex> lock(mutex);
    if (!layer) {
        layer = std::make_shared<ArvTransportLayer>();
        Kalto::CTransportLayerRegistry::instance().add(layer);
    }
    return layer;
}
