#pragma once

#include "camerapool/ibaseinfo.h"
#include "core/iservice.h"

namespace Plugin {
namespace CameraPool {

class IDeviceStatusService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    virtual bool isDeviceOpen(const QString& deviceId) const = 0;

signals:
    void deviceOpened(QSharedPointer<Plugin::CameraPool::IBaseInfo> device);
};

}  // namespace CameraPool
}  // namespace Plugin
