#pragma once

#include "camerapool/icamerainfo.h"
#include "core/iservice.h"

#include <QList>
#include <QStringList>

namespace Plugin {
namespace CameraPool {

class ICameraEnumerationService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;
    virtual QStringList transportLayers() const = 0;
    virtual QList<QSharedPointer<ICameraInfo>> cameras(const QString& transportLayer) const = 0;
    virtual QList<QSharedPointer<ICameraInfo>> allCameras() const = 0;
    /// Null when no backend knows the id.
    virtual QSharedPointer<ICameraInfo> cameraInfo(const QString& deviceId) const = 0;
};

}  // namespace CameraPool
}  // namespace Plugin
