#pragma once

#include "core/ipluginiid.h"

#include <QObject>
#include <QPointer>

namespace Core {
namespace Plugin {

class IPluginInitializer;

/// A plug-in's entry object. The host calls initialize on every plug-in (in
/// dependency order), then postInitialize on each, and at shutdown
/// aboutToUninitialize and unInitialize in reverse order.
class IPlugin : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~IPlugin() override = default;

    /// False refuses the plug-in; it is then unloaded.
    virtual bool initialize(QPointer<IPluginInitializer> initializer) = 0;
    /// Every plug-in is initialized now: look up services here.
    virtual void postInitialize() = 0;
    virtual bool unInitialize(QPointer<IPluginInitializer> initializer) = 0;
    virtual void aboutToUninitialize() {}
};

}  // namespace Plugin
}  // namespace Core
