#pragma once

#include "core/pluginrecord.h"

#include <QObject>
#include <QPointer>

#include <memory>

namespace Core {
namespace Plugin {

class IPluginInitializer;

/// Loads the host's plug-ins from a folder. A file is refused with a reason
/// when it is no plug-in of this host (other IID, no IPlugin object), its
/// metadata lacks a Name or a valid Version, its name is taken, a dependency
/// is neither a host component nor another loadable plug-in of at least the
/// required version, dependencies form a cycle, or initialize returns false.
/// The rest are initialized in dependency order, then post-initialized. Each
/// refusal is also logged ("kalto.sdk"), naming the plug-in (or its file).
class PluginManager : public QObject {
    Q_OBJECT
public:
    explicit PluginManager(QPointer<IPluginInitializer> initializer, QObject* parent = nullptr);
    ~PluginManager() override;  ///< unloads what is still running

    /// A part of the host that plug-ins may depend on ("AppCore", "CameraPool" ...).
    void addHostComponent(const QString& name, const QVersionNumber& version);
    /// Returns every plug-in file found, running or refused.
    QList<PluginRecord> loadPlugins(const QString& folder);
    /// aboutToUninitialize on all, then unInitialize and unload in reverse order.
    void unloadPlugins();
    QList<PluginRecord> plugins() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

}  // namespace Plugin
}  // namespace Core
