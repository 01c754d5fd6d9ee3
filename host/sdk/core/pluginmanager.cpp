#include "core/pluginmanager.h"

#include "core/iplugin.h"
#include "core/ipluginitializer.h"

#include <QDir>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

namespace Core {
namespace Plugin {

namespace {

// A version must be given completely ("6.2.4"), not merely start with digits.
QVersionNumber parseVersion(const QString& text)
{
    int suffix = 0;
    const QVersionNumber v = QVersionNumber::fromString(text, &suffix);
    return suffix == text.size() ? v : QVersionNumber();
}

}  // namespace

struct PluginManager::Impl {
    struct Entry {
        PluginSpec spec;
        QPluginLoader* loader = nullptr;
    };

    QPointer<IPluginInitializer> initializer;
    QHash<QString, QVersionNumber> hostComponents;
    QList<Entry> entries;
    QList<int> order;  // running plug-ins in initialization order

    void readMetaData(Entry& e)
    {
        const QJsonObject meta = e.loader->metaData();
        if (meta.isEmpty()) {
            e.spec.error = QStringLiteral("not a plug-in");
            return;
        }
        if (meta.value(QStringLiteral("IID")).toString() != QLatin1String(CORE_PLUGIN_IPLUGIN_IID)) {
            e.spec.error = QStringLiteral("plug-in of another application (IID %1)")
                               .arg(meta.value(QStringLiteral("IID")).toString());
            return;
        }
        const QJsonObject md = meta.value(QStringLiteral("MetaData")).toObject();
        e.spec.name = md.value(QStringLiteral("Name")).toString();
        e.spec.version = parseVersion(md.value(QStringLiteral("Version")).toString());
        e.spec.vendor = md.value(QStringLiteral("Vendor")).toString();
        e.spec.description = md.value(QStringLiteral("Description")).toString();
        if (e.spec.name.isEmpty()) {
            e.spec.error = QStringLiteral("metadata without a Name");
            return;
        }
        if (e.spec.version.isNull()) {
            e.spec.error = QStringLiteral("metadata without a valid Version");
            return;
        }
        for (const QJsonValue& v : md.value(QStringLiteral("Dependencies")).toArray()) {
            const QJsonObject dep = v.toObject();
            const QString name = dep.value(QStringLiteral("Name")).toString();
            const QVersionNumber version =
                parseVersion(dep.value(QStringLiteral("Version")).toString());
            if (name.isEmpty() || version.isNull()) {
                e.spec.error = QStringLiteral("malformed dependency entry");
                return;
            }
            e.spec.dependencies << qMakePair(name, version);
        }
    }

    int findCandidate(const QString& name) const
    {
        for (int i = 0; i < entries.size(); ++i)
            if (entries[i].spec.error.isEmpty() && entries[i].spec.name == name)
                return i;
        return -1;
    }

    // Refuses every plug-in whose dependency cannot be met, until nothing changes.
    void checkDependencies()
    {
        bool changed = true;
        while (changed) {
            changed = false;
            for (Entry& e : entries) {
                if (!e.spec.error.isEmpty())
                    continue;
                for (const auto& dep : e.spec.dependencies) {
                    QString problem;
                    const int other = findCandidate(dep.first);
                    if (hostComponents.contains(dep.first)) {
                        if (hostComponents.value(dep.first) < dep.second)
                            problem = QStringLiteral("host component %1 is %2, %3 needed")
                                          .arg(dep.first, hostComponents.value(dep.first).toString(),
                                               dep.second.toString());
                    } else if (other < 0) {
                        problem = QStringLiteral("missing dependency %1 %2")
                                      .arg(dep.first, dep.second.toString());
                    } else if (entries[other].spec.version < dep.second) {
                        problem = QStringLiteral("dependency %1 is %2, %3 needed")
                                      .arg(dep.first, entries[other].spec.version.toString(),
                                           dep.second.toString());
                    }
                    if (!problem.isEmpty()) {
                        e.spec.error = problem;
                        changed = true;
                        break;
                    }
                }
            }
        }
    }

    // Dependencies first; what is left over lies on a cycle.
    QList<int> initializationOrder()
    {
        QList<int> result;
        QList<int> pending;
        for (int i = 0; i < entries.size(); ++i)
            if (entries[i].spec.error.isEmpty())
                pending << i;
        bool progress = true;
        while (!pending.isEmpty() && progress) {
            progress = false;
            for (int k = 0; k < pending.size(); ++k) {
                const int i = pending[k];
                bool ready = true;
                for (const auto& dep : entries[i].spec.dependencies) {
                    const int other = findCandidate(dep.first);
                    if (other >= 0 && !hostComponents.contains(dep.first) && !result.contains(other))
                        ready = false;
                }
                if (ready) {
                    result << i;
                    pending.removeAt(k--);
                    progress = true;
                }
            }
        }
        for (int i : pending)
            entries[i].spec.error = QStringLiteral("dependency cycle");
        return result;
    }
};

PluginManager::PluginManager(QPointer<IPluginInitializer> initializer, QObject* parent)
    : QObject(parent), d(new Impl)
{
    d->initializer = initializer;
}

PluginManager::~PluginManager() { unloadPlugins(); }

void PluginManager::addHostComponent(const QString& name, const QVersionNumber& version)
{
    d->hostComponents.insert(name, version);
}

QList<PluginSpec> PluginManager::loadPlugins(const QString& folder)
{
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    const int first = d->entries.size();
    for (const QFileInfo& f : files) {
        if (!QLibrary::isLibrary(f.fileName()))
            continue;
        Impl::Entry e;
        e.spec.fileName = f.absoluteFilePath();
        e.loader = new QPluginLoader(e.spec.fileName, this);
        d->readMetaData(e);
        if (e.spec.error.isEmpty() && d->findCandidate(e.spec.name) >= 0)
            e.spec.error = QStringLiteral("a plug-in named %1 is loaded already").arg(e.spec.name);
        d->entries << e;
    }
    d->checkDependencies();
    const QList<int> order = d->initializationOrder();

    QList<int> initialized;
    for (int i : order) {
        if (i < first)
            continue;  // running from an earlier folder
        Impl::Entry& e = d->entries[i];
        for (const auto& dep : e.spec.dependencies) {
            const int other = d->findCandidate(dep.first);
            if (other >= 0 && !d->hostComponents.contains(dep.first) &&
                !d->entries[other].spec.running)
                e.spec.error = QStringLiteral("dependency %1 failed to start").arg(dep.first);
        }
        if (!e.spec.error.isEmpty())
            continue;
        auto* plugin = qobject_cast<IPlugin*>(e.loader->instance());
        if (!plugin) {
            e.spec.error = QStringLiteral("no plug-in object: %1").arg(e.loader->errorString());
            e.loader->unload();
            continue;
        }
        if (!plugin->initialize(d->initializer)) {
            e.spec.error = QStringLiteral("initialize failed");
            e.loader->unload();
            continue;
        }
        e.spec.instance = plugin;
        e.spec.running = true;
        initialized << i;
    }
    for (int i : initialized)
        if (d->entries[i].spec.running)
            d->entries[i].spec.instance->postInitialize();
    d->order << initialized;

    QList<PluginSpec> result;
    for (int i = first; i < d->entries.size(); ++i)
        result << d->entries[i].spec;
    return result;
}

void PluginManager::unloadPlugins()
{
    for (int k = d->order.size() - 1; k >= 0; --k)
        if (auto* p = d->entries[d->order[k]].spec.instance.data())
            p->aboutToUninitialize();
    for (int k = d->order.size() - 1; k >= 0; --k) {
        Impl::Entry& e = d->entries[d->order[k]];
        if (auto* p = e.spec.instance.data())
            p->unInitialize(d->initializer);
        e.loader->unload();
        e.spec.running = false;
    }
    d->order.clear();
}

QList<PluginSpec> PluginManager::plugins() const
{
    QList<PluginSpec> out;
    for (const auto& e : d->entries)
        out << e.spec;
    return out;
}

}  // namespace Plugin
}  // namespace Core
