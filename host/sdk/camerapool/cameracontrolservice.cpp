#include "camerapool/cameracontrolservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraControlService::CameraControlService(CameraPool* pool) : ICameraControlService(pool), m_pool(pool) {}

QSharedPointer<ICamera> CameraControlService::openCamera(QSharedPointer<ICameraInfo> camera)
{
    return m_pool->open(camera, false);
}

QSharedPointer<ICamera> CameraControlService::openCameraExclusive(QSharedPointer<ICameraInfo> camera)
{
    return m_pool->open(camera, true);
}

bool CameraControlService::closeCamera(QSharedPointer<ICameraInfo> camera)
{
    return m_pool->close(camera);
}

bool CameraControlService::releaseCamera(QSharedPointer<ICamera> camera)
{
    return m_pool->release(camera);
}

}  // namespace CameraPool
}  // namespace Plugin
