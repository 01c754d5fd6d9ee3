#include "camerapool/camerastreamcontrolservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraStreamControlService::CameraStreamControlService(CameraPool* pool)
    : ICameraStreamControlService(pool), m_pool(pool)
{
}

bool CameraStreamControlService::isCameraInUse(QSharedPointer<ICameraInfo> camera) const
{
    return m_pool->isInUse(camera);
}

void CameraStreamControlService::stopAll() { m_pool->stopAll(); }

}  // namespace CameraPool
}  // namespace Plugin
