#pragma once

#include "kalto/deviceinfo.h"

#include <memory>
#include <string>
#include <vector>

namespace Kalto {

class IDevice;

/// A backend that finds devices and creates them (the emulator, GenICam cameras ...).
class ITransportLayer {
public:
    virtual ~ITransportLayer() = default;

    virtual std::string name() const = 0;
    /// Devices present now; each info's transportLayer is this layer's name.
    virtual std::vector<SDeviceInfo> enumerateDevices() = 0;
    /// The device with the given id, or null when this layer has none. A layer may
    /// hand out the same object again; the camera pool keeps one per id.
    virtual std::shared_ptr<IDevice> createDevice(const std::string& deviceId) = 0;
};

}  // namespace Kalto
