#pragma once

#include "camerapool/icamerastreamcontrolservice.h"

namespace Plugin {
namespace CameraPool {

class CameraPool;

/// ICameraStreamControlService over the camera pool.
class CameraStreamControlService : public ICameraStreamControlService {
    Q_OBJECT
public:
    explicit CameraStreamControlService(CameraPool* pool);
    bool isCameraInUse(QSharedPointer<ICameraInfo> camera) const override;
    void stopAll() override;

private:
    CameraPool* m_pool;
};

}  // namespace CameraPool
}  // namespace Plugin
