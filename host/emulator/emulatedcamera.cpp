#include "emulatedcamera.h"

#include "emulatedfeatures.h"
#include "framedelivery.h"

#include "genicam/runtimeexception.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>

#include <atomic>
#include <mutex>

struct EmulatedCamera::Impl {
    explicit Impl(const CameraModel& m)
        : model(m), sensor([&] {
              SensorDesign design;
              design.sceneKelvin = m.sceneKelvin;
              return design;
          }()),
          features(m, connected), delivery(features, sensor, m.scene, [this] { lose(); })
    {
    }

    CameraModel model;
    SensorModel sensor;
    std::atomic<bool> connected{true};
    std::atomic<bool> opened{false};
    EmulatedFeatures features;
    FrameDelivery delivery;
    /// Held while open: one process controls the camera at a time, as a
    /// network camera grants its control privilege to one host.
    std::unique_ptr<QLockFile> accessLock;
    std::mutex accessMutex;
    std::mutex lostMutex;  ///< guards `lostHandler`
    ConnectionLostHandler lostHandler;
    std::atomic<bool> lostReported{false};

    void lose();
};

void EmulatedCamera::Impl::lose()
{
    connected = false;
    delivery.halt();
    if (!lostReported.exchange(true)) {
        ConnectionLostHandler handler;
        {
            std::lock_guard<std::mutex> lock(lostMutex);
            handler = lostHandler;
        }
        if (handler)
            handler();
    }
}

EmulatedCamera::EmulatedCamera(const CameraModel& model) : d(new Impl(model))
{
}

EmulatedCamera::~EmulatedCamera()
{
    d->delivery.stop();
}

Kalto::SDeviceInfo EmulatedCamera::info() const
{
    Kalto::SDeviceInfo i;
    i.id = d->model.id;
    i.modelName = d->model.modelName;
    i.vendorName = "Kalto";
    i.serialNumber = d->model.serialNumber;
    i.userDefinedName = d->features.map().getString("DeviceUserID");
    i.transportLayer = "Emulator";
    return i;
}

void EmulatedCamera::open()
{
    if (!d->connected)
        KALTO_THROW_RUNTIME("Camera " + d->model.id + " is disconnected");
    std::lock_guard<std::mutex> lock(d->accessMutex);
    if (!d->accessLock) {
        const QString path = d->features.memoryPath() + ".access.lock";
        QDir().mkpath(QFileInfo(path).absolutePath());
        auto access = std::make_unique<QLockFile>(path);
        access->setStaleLockTime(0);  // held for as long as a session runs; a dead holder's lock is taken over
        if (!access->tryLock(0)) {
            qint64 pid = 0;
            QString host, application;
            access->getLockInfo(&pid, &host, &application);
            KALTO_THROW_RUNTIME("Camera " + d->model.id + " is in use by another process (" +
                                application.toStdString() + ", pid " + std::to_string(pid) + ")");
        }
        d->accessLock = std::move(access);
    }
    d->opened = true;
}

void EmulatedCamera::close()
{
    d->delivery.stop();
    d->opened = false;
    std::lock_guard<std::mutex> lock(d->accessMutex);
    d->accessLock.reset();
}

bool EmulatedCamera::isOpen() const
{
    return d->opened && d->connected;
}

bool EmulatedCamera::isConnected() const
{
    return d->connected;
}

Kalto::CNodeMap& EmulatedCamera::nodeMap()
{
    return d->features.map();
}

void EmulatedCamera::startAcquisition(Kalto::EAcquisitionMode mode)
{
    if (!d->connected)
        KALTO_THROW_RUNTIME("Camera " + d->model.id + " is disconnected");
    if (!d->opened)
        KALTO_THROW_RUNTIME("Camera " + d->model.id + " is not open");
    d->delivery.start(mode);
}

void EmulatedCamera::stopAcquisition()
{
    d->delivery.stop();
}

bool EmulatedCamera::isAcquiring() const
{
    return d->delivery.isAcquiring();
}

void EmulatedCamera::setFrameSink(FrameSink sink)
{
    d->delivery.setSink(std::move(sink));
}

void EmulatedCamera::setConnectionLostHandler(ConnectionLostHandler handler)
{
    std::lock_guard<std::mutex> lock(d->lostMutex);
    d->lostHandler = std::move(handler);
}

const CameraModel& EmulatedCamera::model() const
{
    return d->model;
}

void EmulatedCamera::setSceneGeometry(const SceneGeometry& geometry)
{
    d->delivery.setGeometry(geometry);
}

SceneGeometry EmulatedCamera::sceneGeometry() const
{
    return d->delivery.geometry();
}

PipelineSettings EmulatedCamera::currentSettings() const
{
    return d->features.resolve();
}

double EmulatedCamera::frameRate() const
{
    return d->features.frameRate();
}

QString EmulatedCamera::memoryPath() const
{
    return d->features.memoryPath();
}

void EmulatedCamera::disconnect()
{
    d->lose();
    d->delivery.stop();
}

void EmulatedCamera::disconnectAfterFrames(int frames)
{
    if (frames <= 0) {
        disconnect();
        return;
    }
    d->delivery.disconnectAfterFrames(frames);
}

void EmulatedCamera::failNextGrabs(int count)
{
    d->delivery.failNextGrabs(count);
}

void EmulatedCamera::setExtraFrameDelayMs(int milliseconds)
{
    d->delivery.setExtraFrameDelayMs(milliseconds);
}
