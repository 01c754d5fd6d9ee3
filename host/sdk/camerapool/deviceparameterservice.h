#pragma once

#include <QPointer>

#include "camerapool/ideviceparameterservice.h"

namespace Plugin {
namespace CameraPool {

class CameraPool;

/// IDeviceParameterService over the camera pool.
class DeviceParameterService : public IDeviceParameterService {
    Q_OBJECT
public:
    explicit DeviceParameterService(CameraPool* pool);
    QSharedPointer<ParameterCollection::IParameterCollection> parameterCollection(
        QSharedPointer<ICameraInfo> camera) override;

private:
    QPointer<CameraPool> m_pool;  // services may outlive the pool; calls then fail soft
};

}  // namespace CameraPool
}  // namespace Plugin
