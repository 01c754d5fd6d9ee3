#include "viewerhost.h"

#include "menuids.h"

#include "appcore/imenu.h"
#include "appcore/menuservice.h"
#include "camerapool/camerapool.h"
#include "cameraselector/deviceselectorservice.h"
#include "core/alocalizedplugin.h"
#include "core/plugininitializer.h"
#include "core/pluginmanager.h"
#include "emulatortransportlayer.h"
#include "kalto/transportlayerregistry.h"

#include <QDir>

struct ViewerHost::Impl {
    Core::Plugin::PluginInitializer initializer;
    QSharedPointer<Plugin::AppCore::MenuService> menus =
        QSharedPointer<Plugin::AppCore::MenuService>::create();
    QSharedPointer<Plugin::CameraSelector::DeviceSelectorService> selector =
        QSharedPointer<Plugin::CameraSelector::DeviceSelectorService>::create();
    std::unique_ptr<Plugin::CameraPool::CameraPool> pool;
    std::unique_ptr<Core::Plugin::PluginManager> manager;
};

namespace {
Kalto::CTransportLayerRegistry& defaultRegistry()
{
    EmulatorTransportLayer::registerDefault();
    return Kalto::CTransportLayerRegistry::instance();
}
}  // namespace

ViewerHost::ViewerHost(QObject* parent) : ViewerHost(defaultRegistry(), parent) {}

ViewerHost::ViewerHost(Kalto::CTransportLayerRegistry& registry, QObject* parent)
    : QObject(parent), d(new Impl)
{
    // The host's icons live in this static library; keep them linked in.
    Q_INIT_RESOURCE(viewer);
    d->pool = std::make_unique<Plugin::CameraPool::CameraPool>(registry);

    for (const MenuIds::MenuLayout& layout : MenuIds::layout()) {
        Plugin::AppCore::IMenu* menu = d->menus->createMenu(Core::CId(layout.id));
        for (const char* group : layout.groups)
            menu->appendGroup(Core::CId(group));
    }

    d->initializer.addService(d->menus);
    d->initializer.addService(d->selector);
    for (const auto& service : d->pool->services())
        d->initializer.addService(service);

    d->manager = std::make_unique<Core::Plugin::PluginManager>(&d->initializer);
    const QVersionNumber platform(1, 2, 4);
    const QVersionNumber application(6, 2, 4);
    for (const char* name : {"AppCore", "CameraPool", "DataProcessing", "DataProcessingCore"})
        d->manager->addHostComponent(QLatin1String(name), platform);
    for (const char* name : {"CameraSelector", "ImageView", "KaltoViewer", "VideoRecording"})
        d->manager->addHostComponent(QLatin1String(name), application);
}

ViewerHost::~ViewerHost()
{
    unloadPlugins();
}

Plugin::AppCore::IMenuService& ViewerHost::menus() { return *d->menus; }
Plugin::CameraSelector::DeviceSelectorService& ViewerHost::selector() { return *d->selector; }
Plugin::CameraPool::CameraPool& ViewerHost::pool() { return *d->pool; }

QList<Core::Plugin::PluginRecord> ViewerHost::loadPlugins(const QStringList& folders)
{
    QList<Core::Plugin::PluginRecord> records;
    for (const QString& folder : folders)
        if (QDir(folder).exists())
            records << d->manager->loadPlugins(folder);
    return records;
}

QList<Core::Plugin::PluginRecord> ViewerHost::plugins() const
{
    return d->manager->plugins();
}

void ViewerHost::setLanguage(const QString& language)
{
    for (const auto& record : d->manager->plugins())
        if (auto* localized = qobject_cast<Core::Plugin::ALocalizedPlugin*>(record.instance.data()))
            localized->setLanguage(language);
}

void ViewerHost::unloadPlugins()
{
    if (d->manager)
        d->manager->unloadPlugins();
}
