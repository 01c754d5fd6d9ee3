#include "camerapool/camerastreamcontrolservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraStreamControlService::CameraStreamControlService(CameraPool* pool)
    : m_pool(pool)
{
}

bool CameraStreamControlService::isCameraInUse(QSharedPointer<ICameraInfo> camera) const
{
    if (!m_pool)
        return {};
    return m_pool->isInUse(camera);
}

void CameraStreamControlService::stopAll()
{
    if (m_pool)
        m_pool->stopAll();
}

}  // namespace CameraPool
}  // namespace Plugin
