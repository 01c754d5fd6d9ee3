#pragma once

#include <QPointer>

#include "camerapool/icameracontrolservice.h"

namespace Plugin {
namespace CameraPool {

class CameraPool;

/// ICameraControlService over the camera pool.
class CameraControlService : public ICameraControlService {
    Q_OBJECT
public:
    explicit CameraControlService(CameraPool* pool);
    QSharedPointer<ICamera> openCamera(QSharedPointer<ICameraInfo> camera) override;
    QSharedPointer<ICamera> openCameraExclusive(QSharedPointer<ICameraInfo> camera) override;
    bool closeCamera(QSharedPointer<ICameraInfo> camera) override;
    bool releaseCamera(QSharedPointer<ICamera> camera) override;

private:
    QPointer<CameraPool> m_pool;  // services may outlive the pool; calls then fail soft
};

}  // namespace CameraPool
}  // namespace Plugin
