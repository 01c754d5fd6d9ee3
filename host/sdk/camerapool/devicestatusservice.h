#pragma once

#include <QPointer>

#include "camerapool/idevicestatusservice.h"

namespace Plugin {
namespace CameraPool {

class CameraPool;

/// IDeviceStatusService over the camera pool.
class DeviceStatusService : public IDeviceStatusService {
    Q_OBJECT
public:
    explicit DeviceStatusService(CameraPool* pool);
    bool isDeviceOpen(const QString& deviceId) const override;

private:
    QPointer<CameraPool> m_pool;  // services may outlive the pool; calls then fail soft
};

}  // namespace CameraPool
}  // namespace Plugin
