#pragma once

#include "kalto/itransportlayer.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class ArvCameraDevice;

/// GenICam cameras through Aravis ("GenICam"): GigE Vision and USB3 Vision by
/// default. Camera ids are Aravis's device ids ("<vendor>-<model>-<serial>").
///
/// Enumerating broadcasts GigE Vision discovery on every network interface,
/// so the layer exists only when the user asks for it (enabledBy); nothing
/// else in the project calls Aravis's interface or discovery functions.
class ArvTransportLayer : public Kalto::ITransportLayer {
public:
    /// Aravis interface ids to search ("GigEVision", "USB3Vision", "Fake");
    /// every other interface is disabled.
    explicit ArvTransportLayer(std::vector<std::string> interfaces = {"GigEVision", "USB3Vision"});
    ~ArvTransportLayer() override;

    std::string name() const override { return "GenICam"; }
    std::vector<Kalto::SDeviceInfo> enumerateDevices() override;
    /// The camera from the last enumeration, or else asked for by its id alone
    /// (no enumeration needed); the same object again while it is connected.
    std::shared_ptr<Kalto::IDevice> createDevice(const std::string& deviceId) override;

    /// Whether the GenICam backend is asked for: the command line's switch
    /// (--genicam) or KALTO_GENICAM=1 in the environment.
    static bool enabledBy(bool commandLineSwitch);
    /// Adds the layer to the process-wide registry once.
    static std::shared_ptr<ArvTransportLayer> registerDefault();

private:
    std::mutex m_mutex;
    std::vector<Kalto::SDeviceInfo> m_devices;
    std::map<std::string, std::shared_ptr<ArvCameraDevice>> m_cameras;
};
