#pragma once

#include <QPointer>

#include "camerapool/icameraenumerationservice.h"

namespace Plugin {
namespace CameraPool {

class CameraPool;

/// ICameraEnumerationService over the camera pool.
class CameraEnumerationService : public ICameraEnumerationService {
    Q_OBJECT
public:
    explicit CameraEnumerationService(CameraPool* pool);
    QStringList transportLayers() const override;
    QList<QSharedPointer<ICameraInfo>> cameras(const QString& transportLayer) const override;
    QList<QSharedPointer<ICameraInfo>> allCameras() const override;
    QSharedPointer<ICameraInfo> cameraInfo(const QString& deviceId) const override;

private:
    QPointer<CameraPool> m_pool;  // services may outlive the pool; calls then fail soft
};

}  // namespace CameraPool
}  // namespace Plugin
