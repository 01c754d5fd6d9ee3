#pragma once

#include "kalto/deviceinfo.h"

#include <QString>

#include <memory>
#include <vector>

namespace Kalto {
class IDevice;
}

/// The cameras the tool reaches: every backend registered with the
/// process-wide transport-layer registry, the emulated cameras always among them.
class EmulatedCameras {
public:
    /// Registers the emulator's cameras once, and after them the GenICam
    /// cameras when that backend is enabled.
    static void ensureRegistered();
    /// Off unless the user asks: GenICam discovery broadcasts on the network.
    static void setGenicamEnabled(bool enabled);
    static std::vector<Kalto::SDeviceInfo> all();
    /// The opened device of that id; throws cli::Error (bad input) for an unknown id.
    static std::shared_ptr<Kalto::IDevice> open(const QString& id);
    /// Whether the calibration plug-in accepts the camera: a medical model
    /// ("cMED" in the name), or a custom model with colour pipeline version 1.
    static bool isCompatible(const QString& modelName, int colorPipelineVersion);
};
