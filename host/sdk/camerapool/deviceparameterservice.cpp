#include "camerapool/deviceparameterservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

DeviceParameterService::DeviceParameterService(CameraPool* pool)
    : m_pool(pool)
{
}

QSharedPointer<ParameterCollection::IParameterCollection> DeviceParameterService::parameterCollection(
    QSharedPointer<ICameraInfo> camera)
{
    if (!m_pool)
        return {};
    return m_pool->parameterCollection(camera);
}

}  // namespace CameraPool
}  // namespace Plugin
