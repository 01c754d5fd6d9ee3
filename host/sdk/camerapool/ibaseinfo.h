#pragma once

#include <QMetaType>
#include <QSharedPointer>
#include <QString>

namespace Plugin {
namespace CameraPool {

/// Something the host can select: a camera, or another device item.
class IBaseInfo {
public:
    virtual ~IBaseInfo() = default;
    virtual QString deviceId() const = 0;
    /// The text the host shows for the item ("Model (Serial)").
    virtual QString displayText() const = 0;
};

}  // namespace CameraPool
}  // namespace Plugin

Q_DECLARE_METATYPE(QSharedPointer<Plugin::CameraPool::IBaseInfo>)
