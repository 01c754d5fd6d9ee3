#include "camerapool/devicestatusservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

DeviceStatusService::DeviceStatusService(CameraPool* pool) : m_pool(pool)
{
    connect(pool, &CameraPool::deviceOpened, this, &IDeviceStatusService::deviceOpened,
            Qt::DirectConnection);
}

bool DeviceStatusService::isDeviceOpen(const QString& deviceId) const
{
    if (!m_pool)
        return false;
    const auto info = m_pool->cameraInfo(deviceId);
    return info && m_pool->isCameraOpen(info);
}

}  // namespace CameraPool
}  // namespace Plugin
