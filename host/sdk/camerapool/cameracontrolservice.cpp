#include "camerapool/cameracontrolservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraControlService::CameraControlService(CameraPool* pool) : m_pool(pool) {}

QSharedPointer<ICamera> CameraControlService::openCamera(QSharedPointer<ICameraInfo> camera)
{
    if (!m_pool)
        return {};
    return m_pool->open(camera, false);
}

QSharedPointer<ICamera> CameraControlService::openCameraExclusive(QSharedPointer<ICameraInfo> camera)
{
    if (!m_pool)
        return {};
    return m_pool->open(camera, true);
}

bool CameraControlService::closeCamera(QSharedPointer<ICameraInfo> camera)
{
    if (!m_pool)
        return {};
    return m_pool->close(camera);
}

bool CameraControlService::releaseCamera(QSharedPointer<ICamera> camera)
{
    if (!m_pool)
        return {};
    return m_pool->release(camera);
}

}  // namespace CameraPool
}  // namespace Plugin
