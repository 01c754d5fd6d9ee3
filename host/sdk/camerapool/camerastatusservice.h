#pragma once

#include "camerapool/icamerastatusservice.h"

namespace Plugin {
namespace CameraPool {

class CameraPool;

/// ICameraStatusService over the camera pool.
class CameraStatusService : public ICameraStatusService {
    Q_OBJECT
public:
    explicit CameraStatusService(CameraPool* pool);
    bool canGetExclusiveAccess(QSharedPointer<ICameraInfo> camera) const override;
    bool isCameraOpen(QSharedPointer<ICameraInfo> camera) const override;

private:
    CameraPool* m_pool;
};

}  // namespace CameraPool
}  // namespace Plugin
