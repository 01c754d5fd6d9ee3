#pragma once

#include <QObject>

namespace Core {
namespace Service {

/// Base of every host service; plug-ins find services by casting to the
/// interface they want.
class IService : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~IService() override = default;
};

}  // namespace Service
}  // namespace Core
