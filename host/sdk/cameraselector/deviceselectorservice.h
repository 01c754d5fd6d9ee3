#pragma once

#include "cameraselector/ideviceselectorservice.h"

namespace Plugin {
namespace CameraSelector {

class DeviceSelectorService : public IDeviceSelectorService {
    Q_OBJECT
public:
    explicit DeviceSelectorService(QObject* parent = nullptr);

    QSharedPointer<Plugin::CameraPool::IBaseInfo> selectedDevice() const override;
    /// Selects `device` (null: nothing) and emits selectionChanged when it differs.
    void select(const QSharedPointer<Plugin::CameraPool::IBaseInfo>& device);

private:
    QSharedPointer<Plugin::CameraPool::IBaseInfo> m_selected;
};

}  // namespace CameraSelector
}  // namespace Plugin
