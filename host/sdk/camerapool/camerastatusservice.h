#pragma once

#include <QPointer>

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
    QPointer<CameraPool> m_pool;  // services may outlive the pool; calls then fail soft
};

}  // namespace CameraPool
}  // namespace Plugin
