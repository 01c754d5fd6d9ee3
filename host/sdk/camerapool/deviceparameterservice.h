#pragma once

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
    CameraPool* m_pool;
};

}  // namespace CameraPool
}  // namespace Plugin
