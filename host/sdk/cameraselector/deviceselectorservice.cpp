#include "cameraselector/deviceselectorservice.h"

namespace Plugin {
namespace CameraSelector {

DeviceSelectorService::DeviceSelectorService(QObject* parent) : IDeviceSelectorService(parent)
{
    qRegisterMetaType<QSharedPointer<Plugin::CameraPool::IBaseInfo>>(
        "QSharedPointer<Plugin::CameraPool::IBaseInfo>");
}

QSharedPointer<Plugin::CameraPool::IBaseInfo> DeviceSelectorService::selectedDevice() const
{
    return m_selected;
}

void DeviceSelectorService::select(const QSharedPointer<Plugin::CameraPool::IBaseInfo>& device)
{
    if (device == m_selected)
        return;
    m_selected = device;
    emit selectionChanged(device);
}

}  // namespace CameraSelector
}  // namespace Plugin
