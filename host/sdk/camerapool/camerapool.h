#pragma once

#include "camerapool/icamera.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <memory>

namespace Kalto {
class CTransportLayerRegistry;
}
namespace Core {
namespace Service {
class IService;
}
}  // namespace Core
namespace ParameterCollection {
class IParameterCollection;
}

namespace Plugin {
namespace CameraPool {

/// The host's cameras over every registered backend. Keeps one device and one
/// camera object per device id, counts who holds each camera open, and offers
/// itself to plug-ins as the six camera-pool services (services()).
/// Thread-safe; signals may come from device threads.
class CameraPool : public QObject {
    Q_OBJECT
public:
    explicit CameraPool(Kalto::CTransportLayerRegistry& registry, QObject* parent = nullptr);
    ~CameraPool() override;

    /// Status, control, enumeration, stream control, device parameter and device
    /// status service. They may outlive the pool and then fail softly (null, false).
    QList<QSharedPointer<Core::Service::IService>> services() const;

    QStringList transportLayers() const;
    QList<QSharedPointer<ICameraInfo>> cameras(const QString& transportLayer) const;
    QSharedPointer<ICameraInfo> cameraInfo(const QString& deviceId) const;

    bool canGetExclusiveAccess(const QSharedPointer<ICameraInfo>& camera) const;
    bool isCameraOpen(const QSharedPointer<ICameraInfo>& camera) const;
    QSharedPointer<ICamera> open(const QSharedPointer<ICameraInfo>& camera, bool exclusive);
    bool close(const QSharedPointer<ICameraInfo>& camera);
    bool release(const QSharedPointer<ICamera>& camera);
    bool isInUse(const QSharedPointer<ICameraInfo>& camera) const;
    void stopAll();
    QSharedPointer<ParameterCollection::IParameterCollection> parameterCollection(
        const QSharedPointer<ICameraInfo>& camera);

signals:
    void cameraConnectionLost(QString deviceId);
    void deviceOpened(QSharedPointer<Plugin::CameraPool::IBaseInfo> device);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

}  // namespace CameraPool
}  // namespace Plugin
