#include "kalto/transportlayerregistry.h"

#include "genicam/runtimeexception.h"
#include "kalto/idevice.h"
#include "kalto/itransportlayer.h"

#include <algorithm>

namespace Kalto {

CTransportLayerRegistry::CTransportLayerRegistry() = default;
CTransportLayerRegistry::~CTransportLayerRegistry() = default;

CTransportLayerRegistry& CTransportLayerRegistry::instance()
{
    static CTransportLayerRegistry registry;
    return registry;
}

void CTransportLayerRegistry::add(std::shared_ptr<ITransportLayer> layer)
{
    if (!layer)
        KALTO_THROW_RUNTIME("Cannot register an empty transport layer");
    const std::string name = layer->name();
    std::lock_guard<std::mutex> lock(m_mutex);
    for (auto& l : m_layers)
        if (l->name() == name) {
            l = std::move(layer);
            return;
        }
    m_layers.push_back(std::move(layer));
}

void CTransportLayerRegistry::remove(const std::string& name)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_layers.erase(std::remove_if(m_layers.begin(), m_layers.end(),
                                  [&](const auto& l) { return l->name() == name; }),
                   m_layers.end());
}

std::vector<std::shared_ptr<ITransportLayer>> CTransportLayerRegistry::transportLayers() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_layers;
}

std::shared_ptr<ITransportLayer> CTransportLayerRegistry::transportLayer(
    const std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& l : m_layers)
        if (l->name() == name)
            return l;
    return nullptr;
}

std::vector<SDeviceInfo> CTransportLayerRegistry::enumerateDevices() const
{
    // Enumeration may be slow (a network scan); do it outside the lock.
    std::vector<SDeviceInfo> all;
    for (const auto& l : transportLayers())
        for (SDeviceInfo& info : l->enumerateDevices()) {
            if (info.transportLayer.empty())
                info.transportLayer = l->name();
            all.push_back(std::move(info));
        }
    return all;
}

std::shared_ptr<IDevice> CTransportLayerRegistry::createDevice(const std::string& deviceId) const
{
    for (const auto& l : transportLayers())
        if (auto device = l->createDevice(deviceId))
            return device;
    return nullptr;
}

}  // namespace Kalto
