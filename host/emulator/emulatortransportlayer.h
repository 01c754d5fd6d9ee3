#pragma once

#include "cameramodel.h"

#include "kalto/itransportlayer.h"

#include <map>
#include <memory>
#include <mutex>

class EmulatedCamera;

/// The transport layer of the emulated cameras ("Emulator"). Each camera
/// object is created on first use and handed out again afterwards, as one
/// physical camera would be.
class EmulatorTransportLayer : public Kalto::ITransportLayer {
public:
    explicit EmulatorTransportLayer(std::vector<CameraModel> models = CameraModel::defaults());

    std::string name() const override { return "Emulator"; }
    std::vector<Kalto::SDeviceInfo> enumerateDevices() override;
    std::shared_ptr<Kalto::IDevice> createDevice(const std::string& deviceId) override;
    /// The emulated camera of that id, for fault injection and scene control.
    std::shared_ptr<EmulatedCamera> camera(const std::string& deviceId);

    /// Adds the default emulated cameras to the process-wide registry once;
    /// returns the layer that holds them.
    static std::shared_ptr<EmulatorTransportLayer> registerDefault();

private:
    std::vector<CameraModel> m_models;
    std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<EmulatedCamera>> m_cameras;
};
