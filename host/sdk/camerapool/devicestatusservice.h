#pragma once

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
    CameraPool* m_pool;
};

}  // namespace CameraPool
}  // namespace Plugin
