#pragma once

#include "core/iservice.h"

#include <QList>
#include <QObject>
#include <QReadWriteLock>
#include <QSharedPointer>

namespace Core {
namespace Plugin {

/// The host's service registry as plug-ins see it.
class IPluginInitializer : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~IPluginInitializer() override = default;

    /// Guards serviceList(); hold it for reading while walking the list, and
    /// release it before calling a service.
    virtual QReadWriteLock& serviceLock() const = 0;
    virtual const QList<QSharedPointer<Service::IService>>& serviceList() const = 0;
    virtual void addService(const QSharedPointer<Service::IService>& service) = 0;
    virtual void removeService(const QSharedPointer<Service::IService>& service) = 0;

    /// The first service that is a T, or null.
    template <class T>
    QSharedPointer<T> getService() const
    {
        QReadLocker lock(&serviceLock());
        for (const auto& s : serviceList())
            if (auto t = s.template objectCast<T>())
                return t;
        return {};
    }
};

}  // namespace Plugin
}  // namespace Core
