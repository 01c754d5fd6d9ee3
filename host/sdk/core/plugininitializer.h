#pragma once

#include "core/ipluginitializer.h"

namespace Core {
namespace Plugin {

class PluginInitializer : public IPluginInitializer {
    Q_OBJECT
public:
    using IPluginInitializer::IPluginInitializer;

    QReadWriteLock& serviceLock() const override { return m_lock; }
    const QList<QSharedPointer<Service::IService>>& serviceList() const override { return m_services; }
    void addService(const QSharedPointer<Service::IService>& service) override;
    void removeService(const QSharedPointer<Service::IService>& service) override;

private:
    mutable QReadWriteLock m_lock;
    QList<QSharedPointer<Service::IService>> m_services;
};

}  // namespace Plugin
}  // namespace Core
