#include "core/pluginmanager.h"

#include "core/iplugin.h"
#include "core/ipluginitializer.h"
#include "core/sdklog.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QRegularExpression>

namespace Core {
namespace Plugin {

namespace {

// A version must be given completely ("6.2.4"), not merely start with digits.
// Checked by pattern: Qt 5.15's fromString leaves the suffix index unset in
// optimised builds, which refused every plug-in there.
QVersionNumber parseVersion(const QString& text)
{
    static const QRegularExpression whole(QStringLiteral("^[0-9]+(\\.[0-9]+)*$"));
    return whole.match(text).hasMatch() ? QVersionNumber::fromString(text) : QVersionNumber();
}

}  // namespace

struct PluginManager::Impl {
    struct Entry {
        PluginRecord design;
        QPluginLoader* loader = nullptr;
    };

    QPointer<IPluginInitializer> initializer;
    QHash<QString, QVersionNumber> hostComponents;
    QList<Entry> entries;
    QList<int> order;  // running plug-ins in initialization order

    void readMetaData(Entry& e) { e.design.error = metaDataProblem(e.loader->metaData(), e.design); }

    // Fills `design` from the metadata; empty when they are complete, or why not.
    static QString metaDataProblem(const QJsonObject& meta, PluginRecord& design)
    {
        if (meta.isEmpty())
            return QStringLiteral("not a plug-in");
        if (meta.value(QStringLiteral("IID")).toString() != QLatin1String(CORE_PLUGIN_IPLUGIN_IID))
            return QStringLiteral("plug-in of another application (IID %1)")
                .arg(meta.value(QStringLiteral("IID")).toString());
        const QJsonObject md = meta.value(QStringLiteral("MetaData")).toObject();
        design.name = md.value(QStringLiteral("Name")).toString();
        design.version = parseVersion(md.value(QStringLiteral("Version")).toString());
        design.vendor = md.value(QStringLiteral("Vendor")).toString();
        design.description = md.value(QStringLiteral("Description")).toString();
        if (design.name.isEmpty())
            return QStringLiteral("metadata without a Name");
        if (design.version.isNull())
            return QStringLiteral("metadata without a valid Version");
        const QJsonValue dependencies = md.value(QStringLiteral("Dependencies"));
        if (!dependencies.isUndefined() && !dependencies.isArray())
            return QStringLiteral("malformed metadata: Dependencies is not a list");
        for (const QJsonValue& v : dependencies.toArray()) {
            const QJsonObject dep = v.toObject();
            const QString name = dep.value(QStringLiteral("Name")).toString();
            const QVersionNumber version = parseVersion(dep.value(QStringLiteral("Version")).toString());
            if (name.isEmpty() || version.isNull())
                return QStringLiteral("malformed dependency entry");
            design.dependencies << qMakePair(name, version);
        }
        return {};
    }

    int findCandidate(const QString& name) const
    {
        for (int i = 0; i < entries.size(); ++i)
            if (entries[i].design.error.isEmpty() && entries[i].design.name == name)
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
                if (!e.design.error.isEmpty())
                    continue;
                for (const auto& dep : e.design.dependencies) {
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
                    } else if (entries[other].design.version < dep.second) {
                        problem = QStringLiteral("dependency %1 is %2, %3 needed")
                                      .arg(dep.first, entries[other].design.version.toString(),
                                           dep.second.toString());
                    }
                    if (!problem.isEmpty()) {
                        e.design.error = problem;
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
            if (entries[i].design.error.isEmpty())
                pending << i;
        bool progress = true;
        while (!pending.isEmpty() && progress) {
            progress = false;
            for (int k = 0; k < pending.size(); ++k) {
                const int i = pending[k];
                bool ready = true;
                for (const auto& dep : entries[i].design.dependencies) {
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
        // What is left waits on itself through the others left (named before
        // any of them is refused, which would hide it from findCandidate).
        QStringList problems;
        for (int i : pending) {
            QStringList waitsOn;
            for (const auto& dep : entries[i].design.dependencies) {
                const int other = findCandidate(dep.first);
                if (other >= 0 && pending.contains(other))
                    waitsOn << dep.first;
            }
            problems << QStringLiteral("dependency cycle through %1").arg(waitsOn.join(QStringLiteral(", ")));
        }
        for (int k = 0; k < pending.size(); ++k)
            entries[pending[k]].design.error = problems[k];
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

QList<PluginRecord> PluginManager::loadPlugins(const QString& folder)
{
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    const int first = d->entries.size();
    for (const QFileInfo& f : files) {
        if (!QLibrary::isLibrary(f.fileName()))
            continue;
        Impl::Entry e;
        e.design.fileName = f.absoluteFilePath();
        e.loader = new QPluginLoader(e.design.fileName, this);
        d->readMetaData(e);
        if (e.design.error.isEmpty() && d->findCandidate(e.design.name) >= 0)
            e.design.error = QStringLiteral("a plug-in named %1 is loaded already").arg(e.design.name);
        d->entries << e;
    }
    d->checkDependencies();
    const QList<int> order = d->initializationOrder();

    QList<int> initialized;
    for (int i : order) {
        if (i < first)
            continue;  // running from an earlier folder
        Impl::Entry& e = d->entries[i];
        for (const auto& dep : e.design.dependencies) {
            const int other = d->findCandidate(dep.first);
            if (other >= 0 && !d->hostComponents.contains(dep.first) &&
                !d->entries[other].design.running)
                e.design.error = QStringLiteral("dependency %1 failed to start").arg(dep.first);
        }
        if (!e.design.error.isEmpty())
            continue;
        auto* plugin = qobject_cast<IPlugin*>(e.loader->instance());
        if (!plugin) {
            e.design.error = QStringLiteral("no plug-in object: %1").arg(e.loader->errorString());
            e.loader->unload();
            continue;
        }
        if (!plugin->initialize(d->initializer)) {
            e.design.error = QStringLiteral("initialize returned false");
            e.loader->unload();
            continue;
        }
        e.design.instance = plugin;
        e.design.running = true;
        initialized << i;
    }
    for (int i : initialized)
        if (d->entries[i].design.running)
            d->entries[i].design.instance->postInitialize();
    d->order << initialized;

    QList<PluginRecord> result;
    for (int i = first; i < d->entries.size(); ++i) {
        const PluginRecord& r = d->entries[i].design;
        if (!r.error.isEmpty())
            qCWarning(sdkLog, "plug-in %s refused: %s",
                      qPrintable(r.name.isEmpty() ? QFileInfo(r.fileName).fileName() : r.name), qPrintable(r.error));
        result << r;
    }
    return result;
}

void PluginManager::unloadPlugins()
{
    for (int k = d->order.size() - 1; k >= 0; --k)
        if (auto* p = d->entries[d->order[k]].design.instance.data())
            p->aboutToUninitialize();
    for (int k = d->order.size() - 1; k >= 0; --k) {
        Impl::Entry& e = d->entries[d->order[k]];
        if (auto* p = e.design.instance.data())
            p->unInitialize(d->initializer);
        e.loader->unload();
        e.design.running = false;
    }
    d->order.clear();
}

QList<PluginRecord> PluginManager::plugins() const
{
    QList<PluginRecord> out;
    for (const auto& e : d->entries)
        out << e.design;
    return out;
}

}  // namespace Plugin
}  // namespace Core
