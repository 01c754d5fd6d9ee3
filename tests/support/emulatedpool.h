#pragma once

#include "ctrapezoid.h"

#include <QSharedPointer>
#include <QString>

#include <memory>

class ColorCorrectionModel;
class EmulatedCamera;
class EmulatorTransportLayer;
namespace Kalto {
class CTransportLayerRegistry;
}
namespace Plugin {
namespace CameraPool {
class CameraPool;
class ICameraInfo;
}  // namespace CameraPool
}  // namespace Plugin

/// A host camera pool over a fresh emulator transport layer, as the viewer
/// offers it to the plug-in. Creates the test application (GuiTestApp) when
/// there is none yet, so that the cameras' flash lives in the sandbox.
class EmulatedPool {
public:
    static constexpr const char* kMedical = "emu-cmed-0";  // SFNC 2.x
    static constexpr const char* kCustom = "emu-custom-1"; // SFNC 1.x

    EmulatedPool();
    ~EmulatedPool();

    Plugin::CameraPool::CameraPool& pool() { return *m_pool; }
    QSharedPointer<Plugin::CameraPool::ICameraInfo> info(const QString& deviceId) const;
    /// The emulated device of that id, for fault injection, slow frames and the scene.
    EmulatedCamera& device(const QString& deviceId);
    /// Small frames keep sanitizer builds quick; the default is the camera's own size.
    void setFrameSize(const QString& deviceId, int width, int height);
    /// Where the emulated chart's patch field lies in the image at the current frame size.
    CTrapezoid grid(const QString& deviceId);
    /// The camera's whole feature-persistence text, read past the pool.
    QString settingsText(const QString& deviceId);
    /// A session with this pool's services injected, not yet opened.
    std::unique_ptr<ColorCorrectionModel> createModel() const;

private:
    std::unique_ptr<Kalto::CTransportLayerRegistry> m_registry;
    std::shared_ptr<EmulatorTransportLayer> m_layer;
    std::unique_ptr<Plugin::CameraPool::CameraPool> m_pool;
};
