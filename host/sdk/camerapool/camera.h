#pragma once

#include "camerapool/icamera.h"

#include <memory>

namespace Kalto {
class IDevice;
}

namespace Plugin {
namespace CameraPool {

class CameraInfo;

/// ICamera over one device of any backend.
class Camera : public ICamera {
    Q_OBJECT
public:
    Camera(std::shared_ptr<Kalto::IDevice> device, QSharedPointer<CameraInfo> info);
    ~Camera() override;

    QSharedPointer<ICameraInfo> cameraInfo() const override;
    bool isOpen() const override;
    bool isGrabbing() const override;
    void grabOne(int timeoutMs) override;
    void startGrabbing() override;
    void stopGrabbing() override;
    QSharedPointer<ParameterCollection::IParameterCollection> parameterCollection() const override;
    QString saveSettings() const override;
    bool loadSettings(const QString& text, QStringList* rejected = nullptr, int* applied = nullptr) override;

    bool isConnected() const;
    bool isGrabbingContinuously() const;
    /// Used by the pool; throw BaseException naming the camera on failure.
    void open();
    void close();

private:
    struct Impl;
    std::shared_ptr<Impl> d;
};

}  // namespace CameraPool
}  // namespace Plugin
