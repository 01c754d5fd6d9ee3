#pragma once

#include "kalto/deviceinfo.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Kalto {

class IDevice;
class ITransportLayer;

/// Where backends register; the camera pool enumerates and creates devices
/// through it. Thread-safe.
class CTransportLayerRegistry {
public:
    CTransportLayerRegistry();
    ~CTransportLayerRegistry();

    /// The process-wide registry backends add themselves to.
    static CTransportLayerRegistry& instance();

    /// Adds a layer; one of the same name is replaced.
    void add(std::shared_ptr<ITransportLayer> layer);
    void remove(const std::string& name);
    std::vector<std::shared_ptr<ITransportLayer>> transportLayers() const;
    std::shared_ptr<ITransportLayer> transportLayer(const std::string& name) const;

    /// Devices of every layer, in registration order of the layers.
    std::vector<SDeviceInfo> enumerateDevices() const;
    /// Asks each layer in turn; null when no layer knows the id.
    std::shared_ptr<IDevice> createDevice(const std::string& deviceId) const;

private:
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<ITransportLayer>> m_layers;
};

}  // namespace Kalto
