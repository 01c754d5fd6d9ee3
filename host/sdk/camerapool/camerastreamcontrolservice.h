#pragma once

#include <QPointer>

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
    QPointer<CameraPool> m_pool;  // services may outlive the pool; calls then fail soft
};

}  // namespace CameraPool
}  // namespace Plugin
