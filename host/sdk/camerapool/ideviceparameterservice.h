#pragma once

#include "camerapool/icamerainfo.h"
#include "core/iservice.h"

namespace ParameterCollection {
class IParameterCollection;
}

namespace Plugin {
namespace CameraPool {

class IDeviceParameterService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    /// The camera's features, also of a camera nobody has opened; null when
    /// the device cannot be reached.
    virtual QSharedPointer<ParameterCollection::IParameterCollection> parameterCollection(
        QSharedPointer<ICameraInfo> camera) = 0;
};

}  // namespace CameraPool
}  // namespace Plugin
