#include "camerapool/cameraenumerationservice.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

namespace Plugin {
namespace CameraPool {

CameraEnumerationService::CameraEnumerationService(CameraPool* pool)
    : m_pool(pool)
{
}

QStringList CameraEnumerationService::transportLayers() const {
    if (!m_pool)
        return {};
    return m_pool->transportLayers();
}

QList<QSharedPointer<ICameraInfo>> CameraEnumerationService::cameras(const QString& layer) const
{
    if (!m_pool)
        return {};
    return m_pool->cameras(layer);
}

QList<QSharedPointer<ICameraInfo>> CameraEnumerationService::allCameras() const
{
    QList<QSharedPointer<ICameraInfo>> all;
    if (!m_pool)
        return all;
    for (const QString& layer : m_pool->transportLayers())
        all << m_pool->cameras(layer);
    return all;
}

QSharedPointer<ICameraInfo> CameraEnumerationService::cameraInfo(const QString& deviceId) const
{
    if (!m_pool)
        return {};
    return m_pool->cameraInfo(deviceId);
}

}  // namespace CameraPool
}  // namespace Plugin
