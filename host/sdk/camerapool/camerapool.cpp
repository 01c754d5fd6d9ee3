#include "camerapool/camerapool.h"

#include "camerapool/camera.h"
#include "camerapool/camerainfo.h"
#include "camerapool/cameracontrolservice.h"
#include "camerapool/cameraenumerationservice.h"
#include "camerapool/camerastatusservice.h"
#include "camerapool/camerastreamcontrolservice.h"
#include "camerapool/deviceparameterservice.h"
#include "camerapool/devicestatusservice.h"
#include "genicam/inodemap.h"
#include "genicam/sfncversion.h"
#include "kalto/idevice.h"
#include "kalto/itransportlayer.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/iparametercollection.h"

#include <QMap>
#include <QRecursiveMutex>

namespace Plugin {
namespace CameraPool {

namespace {

QVersionNumber sfncOf(Kalto::IDevice& device)
{
    try {
        return Kalto::SfncVersion(device.nodeMap());
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace

struct CameraPool::Impl {
    explicit Impl(Kalto::CTransportLayerRegistry& r) : registry(r) {}

    struct Entry {
        std::shared_ptr<Kalto::IDevice> device;
        QSharedPointer<CameraInfo> info;
        QSharedPointer<Camera> camera;
        int holders = 0;
        bool exclusive = false;
    };

    Kalto::CTransportLayerRegistry& registry;
    mutable QRecursiveMutex mutex;
    QMap<QString, Entry> entries;
    QList<QSharedPointer<Core::Service::IService>> services;

    // The pool's camera for a device the layer found, made on first sight;
    // null when the layer cannot create it.
    QSharedPointer<CameraInfo> entryOf(Kalto::ITransportLayer& layer, Kalto::SDeviceInfo info, CameraPool* pool,
                                       std::shared_ptr<Kalto::IDevice> device = nullptr)
    {
        if (info.transportLayer.empty())
            info.transportLayer = layer.name();
        const QString id = QString::fromStdString(info.id);
        QMutexLocker lock(&mutex);
        auto it = entries.find(id);
        if (it == entries.end()) {
            if (!device)
                device = layer.createDevice(info.id);
            if (!device)
                return {};
            Entry e;
            e.device = device;
            e.info = QSharedPointer<CameraInfo>::create(info, sfncOf(*device));
            e.camera = QSharedPointer<Camera>(new Camera(device, e.info));
            QObject::connect(e.camera.data(), &ICamera::cameraConnectionLost, pool,
                             [pool, id] { emit pool->cameraConnectionLost(id); }, Qt::DirectConnection);
            it = entries.insert(id, e);
        }
        return it->info;
    }
};

CameraPool::CameraPool(Kalto::CTransportLayerRegistry& registry, QObject* parent)
    : QObject(parent), d(new Impl(registry))
{
    qRegisterMetaType<QSharedPointer<Plugin::CameraPool::IBaseInfo>>(
        "QSharedPointer<Plugin::CameraPool::IBaseInfo>");
    qRegisterMetaType<QSharedPointer<Plugin::CameraPool::ICameraInfo>>(
        "QSharedPointer<Plugin::CameraPool::ICameraInfo>");
    d->services << QSharedPointer<Core::Service::IService>(new CameraStatusService(this))
                << QSharedPointer<Core::Service::IService>(new CameraControlService(this))
                << QSharedPointer<Core::Service::IService>(new CameraEnumerationService(this))
                << QSharedPointer<Core::Service::IService>(new CameraStreamControlService(this))
                << QSharedPointer<Core::Service::IService>(new DeviceParameterService(this))
                << QSharedPointer<Core::Service::IService>(new DeviceStatusService(this));
}

CameraPool::~CameraPool()
{
    QMutexLocker lock(&d->mutex);
    for (Impl::Entry& e : d->entries) {
        try {
            if (e.camera && e.holders > 0)
                e.camera->close();
        } catch (const std::exception&) {
            // Shutting down: a device that refuses to close is left to its backend.
        }
    }
}

QList<QSharedPointer<Core::Service::IService>> CameraPool::services() const
{
    return d->services;
}

QStringList CameraPool::transportLayers() const
{
    QStringList names;
    for (const auto& layer : d->registry.transportLayers())
        names << QString::fromStdString(layer->name());
    return names;
}

QList<QSharedPointer<ICameraInfo>> CameraPool::cameras(const QString& transportLayer) const
{
    QList<QSharedPointer<ICameraInfo>> out;
    auto layer = d->registry.transportLayer(transportLayer.toStdString());
    if (!layer)
        return out;
    for (const Kalto::SDeviceInfo& info : layer->enumerateDevices())
        if (const auto known = d->entryOf(*layer, info, const_cast<CameraPool*>(this)))
            out << known;
    return out;
}

QSharedPointer<ICameraInfo> CameraPool::cameraInfo(const QString& deviceId) const
{
    {
        QMutexLocker lock(&d->mutex);
        auto it = d->entries.constFind(deviceId);
        if (it != d->entries.constEnd())
            return it->info;
    }
    // Asked for by id, without listing every camera: a GigE Vision listing
    // alone waits a second for late answers.
    for (const auto& layer : d->registry.transportLayers())
        if (const auto device = layer->createDevice(deviceId.toStdString()))
            return d->entryOf(*layer, device->info(), const_cast<CameraPool*>(this), device);
    return {};
}

namespace {
// The pool's entry for a camera info, made on demand; null when unknown.
template <class Impl>
typename Impl::Entry* entryFor(Impl& d, const CameraPool& pool,
                               const QSharedPointer<ICameraInfo>& camera)
{
    if (!camera)
        return nullptr;
    const QString id = camera->deviceId();
    if (!d.entries.contains(id) && !pool.cameraInfo(id))
        return nullptr;
    auto it = d.entries.find(id);
    return it == d.entries.end() ? nullptr : &*it;
}
}  // namespace

bool CameraPool::canGetExclusiveAccess(const QSharedPointer<ICameraInfo>& camera) const
{
    QMutexLocker lock(&d->mutex);
    auto* e = entryFor(*d, *this, camera);
    return e && e->holders == 0 && e->camera->isConnected();
}

bool CameraPool::isCameraOpen(const QSharedPointer<ICameraInfo>& camera) const
{
    QMutexLocker lock(&d->mutex);
    auto* e = entryFor(*d, *this, camera);
    return e && e->holders > 0 && e->camera->isOpen();
}

QSharedPointer<ICamera> CameraPool::open(const QSharedPointer<ICameraInfo>& camera, bool exclusive)
{
    QSharedPointer<Camera> opened;
    QSharedPointer<CameraInfo> info;
    bool first = false;
    {
        QMutexLocker lock(&d->mutex);
        auto* e = entryFor(*d, *this, camera);
        if (!e)
            return {};
        if ((exclusive && e->holders > 0) || e->exclusive) {
            e->info->setErrorDescription(
                QStringLiteral("Camera %1 is in use by another client").arg(e->info->displayText()));
            return {};
        }
        try {
            e->camera->open();
        } catch (const std::exception& ex) {
            e->info->setErrorDescription(QString::fromUtf8(ex.what()));
            return {};
        }
        first = e->holders == 0;
        ++e->holders;
        e->exclusive = exclusive;
        opened = e->camera;
        info = e->info;
    }
    if (first)
        emit deviceOpened(info);
    return opened;
}

bool CameraPool::close(const QSharedPointer<ICameraInfo>& camera)
{
    QMutexLocker lock(&d->mutex);
    auto* e = entryFor(*d, *this, camera);
    if (!e || e->holders == 0)
        return false;
    if (--e->holders == 0) {
        e->exclusive = false;
        try {
            e->camera->close();
        } catch (const std::exception& ex) {
            e->info->setErrorDescription(QString::fromUtf8(ex.what()));
            return false;
        }
    }
    return true;
}

bool CameraPool::release(const QSharedPointer<ICamera>& camera)
{
    if (!camera)
        return false;
    return close(camera->cameraInfo());
}

bool CameraPool::isInUse(const QSharedPointer<ICameraInfo>& camera) const
{
    QMutexLocker lock(&d->mutex);
    auto* e = entryFor(*d, *this, camera);
    return e && e->camera->isGrabbingContinuously();
}

void CameraPool::stopAll()
{
    QList<QSharedPointer<Camera>> all;
    {
        QMutexLocker lock(&d->mutex);
        for (const Impl::Entry& e : d->entries)
            all << e.camera;
    }
    for (const auto& c : all) {
        if (!c->isConnected())
            continue;
        try {
            c->stopGrabbing();
        } catch (const std::exception&) {
            // The camera went away meanwhile; it is stopped either way.
        }
    }
}

QSharedPointer<ParameterCollection::IParameterCollection> CameraPool::parameterCollection(
    const QSharedPointer<ICameraInfo>& camera)
{
    QMutexLocker lock(&d->mutex);
    auto* e = entryFor(*d, *this, camera);
    if (!e || !e->camera->isConnected())
        return {};
    return e->camera->parameterCollection();
}

}  // namespace CameraPool
}  // namespace Plugin
