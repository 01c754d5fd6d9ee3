#include "camerapool/camera.h"

#include "camerapool/camerainfo.h"
#include "core/baseexception.h"
#include "genicam/featurepersistence.h"
#include "genicam/inodemap.h"
#include "kalto/idevice.h"
#include "parametercollection/nodemapparametercollection.h"

#include <QString>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>

namespace Plugin {
namespace CameraPool {

namespace {
using Clock = std::chrono::steady_clock;
}

struct Camera::Impl {
    std::shared_ptr<Kalto::IDevice> device;
    QSharedPointer<CameraInfo> info;
    QSharedPointer<ParameterCollection::IParameterCollection> parameters;

    // The device's threads reach the camera only through this, so that a camera
    // being destroyed is never called from them.
    std::mutex ownerMutex;
    Camera* owner = nullptr;

    std::atomic<bool> lost{false};
    mutable std::mutex stateMutex;
    bool continuous = false;
    bool singleArmed = false;
    Clock::time_point singleDeadline;

    QString name() const { return info->displayText(); }

    void requireConnected() const
    {
        if (lost || !device->isConnected())
            throw Core::Exception::BaseException(
                QStringLiteral("Camera %1 is disconnected").arg(name()));
    }

    template <class F>
    auto guarded(const char* what, F&& f) -> decltype(f())
    {
        requireConnected();
        try {
            return f();
        } catch (const std::exception& e) {
            const QString text = QStringLiteral("Camera %1: %2 failed: %3")
                                     .arg(name(), QString::fromUtf8(what), QString::fromUtf8(e.what()));
            info->setErrorDescription(text);
            throw Core::Exception::BaseException(text);
        }
    }

    // A single grab that overran its timeout is stopped when next looked at.
    // Device calls never run under stateMutex: a backend may report a lost
    // connection from inside them.
    void expireSingleGrab()
    {
        bool stop = false;
        {
            std::lock_guard<std::mutex> lock(stateMutex);
            if (singleArmed && Clock::now() >= singleDeadline) {
                singleArmed = false;
                stop = !continuous;
            }
        }
        if (stop)
            device->stopAcquisition();
    }
};

Camera::Camera(std::shared_ptr<Kalto::IDevice> device, QSharedPointer<CameraInfo> info)
    : d(std::make_shared<Impl>())
{
    qRegisterMetaType<Kalto::CGrabResultPtr>("Kalto::CGrabResultPtr");
    d->device = std::move(device);
    d->info = std::move(info);
    d->owner = this;
    std::weak_ptr<Impl> weak = d;
    std::shared_ptr<Kalto::INodeMap> map(d->device, &d->device->nodeMap());
    d->parameters = QSharedPointer<ParameterCollection::NodeMapParameterCollection>::create(
        map, d->name(), [weak] {
            auto impl = weak.lock();
            return impl && !impl->lost && impl->device->isConnected();
        });

    d->device->setFrameSink([weak](const Kalto::CGrabResultPtr& result) {
        auto impl = weak.lock();
        if (!impl)
            return;
        std::lock_guard<std::mutex> lock(impl->ownerMutex);
        if (impl->owner)
            emit impl->owner->cameraImageGrabbed(result);
    });
    d->device->setConnectionLostHandler([weak] {
        auto impl = weak.lock();
        if (!impl || impl->lost.exchange(true))
            return;
        impl->info->setErrorDescription(
            QStringLiteral("Camera %1 lost its connection").arg(impl->name()));
        {
            std::lock_guard<std::mutex> lock(impl->stateMutex);
            impl->continuous = impl->singleArmed = false;
        }
        std::lock_guard<std::mutex> lock(impl->ownerMutex);
        if (impl->owner)
            emit impl->owner->cameraConnectionLost();
    });
}

Camera::~Camera()
{
    // No delivery may run into a half-destroyed object: stop, then detach.
    try {
        d->device->stopAcquisition();
    } catch (...) {
    }
    {
        std::lock_guard<std::mutex> lock(d->ownerMutex);
        d->owner = nullptr;
    }
    d->device->setFrameSink({});
    d->device->setConnectionLostHandler({});
}

QSharedPointer<ICameraInfo> Camera::cameraInfo() const { return d->info; }

bool Camera::isConnected() const { return !d->lost && d->device->isConnected(); }

bool Camera::isOpen() const { return isConnected() && d->device->isOpen(); }

bool Camera::isGrabbing() const
{
    if (!isConnected())
        return false;
    d->expireSingleGrab();
    return d->device->isAcquiring();
}

bool Camera::isGrabbingContinuously() const
{
    bool continuous;
    {
        std::lock_guard<std::mutex> lock(d->stateMutex);
        continuous = d->continuous;
    }
    return continuous && isConnected() && d->device->isAcquiring();
}

void Camera::grabOne(int timeoutMs)
{
    d->guarded("single grab", [&] {
        {
            std::lock_guard<std::mutex> lock(d->stateMutex);
            d->continuous = false;
            d->singleArmed = true;
            d->singleDeadline = Clock::now() + std::chrono::milliseconds(std::max(0, timeoutMs));
        }
        d->device->startAcquisition(Kalto::EAcquisitionMode::SingleFrame);
    });
}

void Camera::startGrabbing()
{
    d->guarded("starting the acquisition", [&] {
        {
            std::lock_guard<std::mutex> lock(d->stateMutex);
            d->continuous = true;
            d->singleArmed = false;
        }
        d->device->startAcquisition(Kalto::EAcquisitionMode::Continuous);
    });
}

void Camera::stopGrabbing()
{
    d->guarded("stopping the acquisition", [&] {
        {
            std::lock_guard<std::mutex> lock(d->stateMutex);
            d->continuous = d->singleArmed = false;
        }
        d->device->stopAcquisition();
    });
}

QSharedPointer<ParameterCollection::IParameterCollection> Camera::parameterCollection() const
{
    d->requireConnected();
    return d->parameters;
}

QString Camera::saveSettings() const
{
    return d->guarded("saving the settings", [&] {
        return QString::fromStdString(Kalto::CFeaturePersistence::Save(d->device->nodeMap()));
    });
}

bool Camera::loadSettings(const QString& text, QStringList* rejected, int* applied)
{
    const Kalto::SLoadReport report = d->guarded("loading the settings", [&] {
        return Kalto::CFeaturePersistence::Load(d->device->nodeMap(), text.toStdString());
    });
    if (rejected) {
        rejected->clear();
        for (const Kalto::SRejectedLine& r : report.rejected)
            *rejected << QStringLiteral("line %1: %2: %3")
                             .arg(r.lineNumber)
                             .arg(QString::fromStdString(r.feature),
                                  QString::fromStdString(r.reason));
        if (report.rejectedCount > report.rejected.size())
            *rejected << QStringLiteral("... %1 more rejected lines")
                             .arg(report.rejectedCount - report.rejected.size());
    }
    if (applied)
        *applied = int(report.appliedLines);
    return report.ok();
}

void Camera::open()
{
    d->guarded("opening", [&] {
        if (!d->device->isOpen())
            d->device->open();
    });
    d->info->setErrorDescription({});
}

void Camera::close()
{
    if (!isConnected())
        return;  // nothing to close on a device that is gone
    d->guarded("closing", [&] {
        {
            std::lock_guard<std::mutex> lock(d->stateMutex);
            d->continuous = d->singleArmed = false;
        }
        d->device->close();
    });
}

}  // namespace CameraPool
}  // namespace Plugin
