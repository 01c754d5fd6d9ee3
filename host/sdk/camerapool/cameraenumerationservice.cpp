#include "camerapool/cameraenumerationservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraEnumerationService::CameraEnumerationService(CameraPool* pool)
    : ICameraEnumerationService(pool), m_pool(pool)
{
}

QStringList CameraEnumerationService::transportLayers() const { return m_pool->transportLayers(); }

QList<QSharedPointer<ICameraInfo>> CameraEnumerationService::cameras(const QString& layer) const
{
    return m_pool->cameras(layer);
}

QList<QSharedPointer<ICameraInfo>> CameraEnumerationService::allCameras() const
{
    QList<QSharedPointer<ICameraInfo>> all;
    for (const QString& layer : m_pool->transportLayers())
        all << m_pool->cameras(layer);
    return all;
}

QSharedPointer<ICameraInfo> CameraEnumerationService::cameraInfo(const QString& deviceId) const
{
    return m_pool->cameraInfo(deviceId);
}

}  // namespace CameraPool
}  // namespace Plugin
