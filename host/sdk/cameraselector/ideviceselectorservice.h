#pragma once

#include "camerapool/ibaseinfo.h"
#include "core/iservice.h"

namespace Plugin {
namespace CameraSelector {

/// The device the user has selected in the host's camera list.
class IDeviceSelectorService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    virtual QSharedPointer<Plugin::CameraPool::IBaseInfo> selectedDevice() const = 0;

signals:
    void selectionChanged(QSharedPointer<Plugin::CameraPool::IBaseInfo> device);
};

}  // namespace CameraSelector
}  // namespace Plugin
