#pragma once

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
    CameraPool* m_pool;
};

}  // namespace CameraPool
}  // namespace Plugin
