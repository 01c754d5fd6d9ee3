#include "core/plugininitializer.h"

namespace Core {
namespace Plugin {

void PluginInitializer::addService(const QSharedPointer<Service::IService>& service)
{
    if (!service)
        return;
    QWriteLocker lock(&m_lock);
    if (!m_services.contains(service))
        m_services << service;
}

void PluginInitializer::removeService(const QSharedPointer<Service::IService>& service)
{
    QWriteLocker lock(&m_lock);
    m_services.removeAll(service);
}

}  // namespace Plugin
}  // namespace Core
