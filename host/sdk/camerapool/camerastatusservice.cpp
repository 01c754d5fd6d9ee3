#include "camerapool/camerastatusservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraStatusService::CameraStatusService(CameraPool* pool) : m_pool(pool)
{
    connect(pool, &CameraPool::cameraConnectionLost, this,
            &ICameraStatusService::cameraConnectionLost, Qt::DirectConnection);
}

bool CameraStatusService::canGetExclusiveAccess(QSharedPointer<ICameraInfo> camera) const
{
    if (!m_pool)
        return {};
    return m_pool->canGetExclusiveAccess(camera);
}

bool CameraStatusService::isCameraOpen(QSharedPointer<ICameraInfo> camera) const
{
    if (!m_pool)
        return {};
    return m_pool->isCameraOpen(camera);
}

}  // namespace CameraPool
}  // namespace Plugin
