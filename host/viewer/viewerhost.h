#pragma once

#include "core/pluginrecord.h"

#include <QObject>
#include <QStringList>

#include <memory>

namespace Kalto {
class CTransportLayerRegistry;
}
namespace Plugin {
namespace AppCore {
class IMenuService;
}
namespace CameraSelector {
class DeviceSelectorService;
}
namespace CameraPool {
class CameraPool;
}
}  // namespace Plugin

/// The viewer's platform: the camera pool over every registered backend, the
/// menu and selector services, the service registry handed to plug-ins, and
/// the plug-in manager. Menus and groups exist before any plug-in loads.
class ViewerHost : public QObject {
    Q_OBJECT
public:
    /// Over the process-wide registry, with the emulated cameras registered.
    explicit ViewerHost(QObject* parent = nullptr);
    /// Over the backends of `registry`, which must outlive the host.
    explicit ViewerHost(Kalto::CTransportLayerRegistry& registry, QObject* parent = nullptr);
    ~ViewerHost() override;

    Plugin::AppCore::IMenuService& menus();
    Plugin::CameraSelector::DeviceSelectorService& selector();
    Plugin::CameraPool::CameraPool& pool();

    /// Loads every plug-in file of each existing folder, in order.
    QList<Core::Plugin::PluginRecord> loadPlugins(const QStringList& folders);
    QList<Core::Plugin::PluginRecord> plugins() const;
    /// Switches every running plug-in that has catalogues to `language`.
    void setLanguage(const QString& language);
    /// Must run before the windows plug-ins may have parented dialogs to go.
    void unloadPlugins();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
