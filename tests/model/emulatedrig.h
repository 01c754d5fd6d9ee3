#pragma once

#include "ctrapezoid.h"

#include <QSharedPointer>
#include <QTemporaryDir>

#include <memory>
#include <string>

class CameraJustify;
class EmulatedCamera;
class EmulatorTransportLayer;
namespace Kalto {
class CTransportLayerRegistry;
}
namespace Plugin {
namespace CameraPool {
class CameraPool;
class ICamera;
class ICameraInfo;
}  // namespace CameraPool
}  // namespace Plugin
namespace ParameterCollection {
class IParameterCollection;
}

/// One emulated camera opened exclusively through the host's camera pool, as
/// the session opens it, at a small frame size so that sanitizer builds stay
/// quick. Its non-volatile memory lives in a temporary folder.
class EmulatedRig {
public:
    static constexpr const char* kMedical = "emu-cmed-0";     // SFNC 2.x
    static constexpr const char* kCustom = "emu-custom-1";    // SFNC 1.x

    explicit EmulatedRig(const std::string& deviceId, int width = 480, int height = 300);
    ~EmulatedRig();

    EmulatedCamera& device() { return *m_device; }
    QSharedPointer<Plugin::CameraPool::ICamera> camera() const { return m_camera; }
    QSharedPointer<ParameterCollection::IParameterCollection> parameters() const;
    /// Where the emulated chart's patch field lies in the image.
    CTrapezoid grid() const;
    bool sfnc2() const;

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Kalto::CTransportLayerRegistry> m_registry;
    std::shared_ptr<EmulatorTransportLayer> m_layer;
    std::shared_ptr<EmulatedCamera> m_device;
    std::unique_ptr<Plugin::CameraPool::CameraPool> m_pool;
    QSharedPointer<Plugin::CameraPool::ICameraInfo> m_info;
    QSharedPointer<Plugin::CameraPool::ICamera> m_camera;
    int m_width;
    int m_height;
};

/// The neutralising operations in the order the session runs them, with the
/// test image switched off first as opening a session does.
void neutralise(CameraJustify& justify);
