#pragma once

#include "camerapool/icamerainfo.h"
#include "core/iservice.h"

namespace Plugin {
namespace CameraPool {

class ICameraStatusService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    /// True when nobody holds the camera open, so an exclusive open would succeed.
    virtual bool canGetExclusiveAccess(QSharedPointer<ICameraInfo> camera) const = 0;
    virtual bool isCameraOpen(QSharedPointer<ICameraInfo> camera) const = 0;

signals:
    /// Emitted on whichever thread noticed the loss.
    void cameraConnectionLost(QString deviceId);
};

}  // namespace CameraPool
}  // namespace Plugin
