#pragma once

#include "camerapool/icamerainfo.h"
#include "core/iservice.h"

namespace Plugin {
namespace CameraPool {

class ICameraStreamControlService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    /// Acquiring continuously (or recording) right now.
    virtual bool isCameraInUse(QSharedPointer<ICameraInfo> camera) const = 0;
    /// Stops every continuous acquisition of every camera.
    virtual void stopAll() = 0;
};

}  // namespace CameraPool
}  // namespace Plugin
