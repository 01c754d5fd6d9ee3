#pragma once

#include "camerapool/icamera.h"
#include "core/iservice.h"

namespace Plugin {
namespace CameraPool {

/// Opening hands out the pool's one camera object per device and counts the
/// holders; every open is matched by a close or a release.
class ICameraControlService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    /// Null on failure; the reason is then the camera info's errorDescription().
    virtual QSharedPointer<ICamera> openCamera(QSharedPointer<ICameraInfo> camera) = 0;
    /// Null when anyone else holds the camera.
    virtual QSharedPointer<ICamera> openCameraExclusive(QSharedPointer<ICameraInfo> camera) = 0;
    /// Gives up one hold of an open camera; the device closes with the last one.
    virtual bool closeCamera(QSharedPointer<ICameraInfo> camera) = 0;
    /// Gives up one hold (exclusive or not), also of a camera that is gone.
    virtual bool releaseCamera(QSharedPointer<ICamera> camera) = 0;
};

}  // namespace CameraPool
}  // namespace Plugin
