#include "appcore/icommand.h"
#include "appcore/imenu.h"
#include "appcore/menuservice.h"
#include "core/pluginmanager.h"
#include "core/plugininitializer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>

#include <iterator>

using namespace Core::Plugin;

namespace {

// By plug-in name, or by file name for files whose metadata name nothing.
const PluginRecord* find(const QList<PluginRecord>& records, const QString& name)
{
    for (const PluginRecord& s : records)
        if (s.name == name || QFileInfo(s.fileName).fileName() == name)
            return &s;
    return nullptr;
}

QStringList g_sdkWarnings;

void captureSdkWarnings(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtWarningMsg && qstrcmp(context.category, "kalto.sdk") == 0)
        g_sdkWarnings << text;
}

class Loader : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        // The built plug-ins plus files that are not plug-ins of this host.
        for (const QFileInfo& f : QDir(COLCAL_TEST_PLUGIN_DIR).entryInfoList(QDir::Files))
            ASSERT_TRUE(QFile::copy(f.absoluteFilePath(), dir.filePath(f.fileName())));
        QFile junk(dir.filePath("libjunk.so"));
        ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
        junk.write("\x7f" "ELF but not really");
        junk.close();
        QFile text(dir.filePath("readme.txt"));
        ASSERT_TRUE(text.open(QIODevice::WriteOnly));
        text.close();

        initializer = new PluginInitializer;
        menus = QSharedPointer<Plugin::AppCore::MenuService>::create();
        menus->createMenu(Core::CId("Test.Menu"))->appendGroup(Core::CId("Test.Group"));
        initializer->addService(menus);
        manager = std::make_unique<PluginManager>(initializer);
        manager->addHostComponent("AppCore", QVersionNumber(1, 2, 4));
    }
    void TearDown() override
    {
        manager.reset();
        delete initializer;
    }

    QTemporaryDir dir;
    PluginInitializer* initializer = nullptr;
    QSharedPointer<Plugin::AppCore::MenuService> menus;
    std::unique_ptr<PluginManager> manager;
};

TEST_F(Loader, ReadsMetadataAndRunsPluginsInDependencyOrder)
{
    const QList<PluginRecord> records = manager->loadPlugins(dir.path());
    const PluginRecord* a = find(records, "TestA");
    const PluginRecord* b = find(records, "TestB");
    ASSERT_TRUE(a && b);
    EXPECT_TRUE(a->running) << a->error.toStdString();
    EXPECT_TRUE(b->running) << b->error.toStdString();
    EXPECT_EQ(a->version, QVersionNumber(1, 2, 0));
    EXPECT_EQ(a->vendor, "Test");
    EXPECT_EQ(a->description, "first");
    ASSERT_EQ(a->dependencies.size(), 1);
    EXPECT_EQ(a->dependencies[0].first, "AppCore");
    EXPECT_EQ(a->dependencies[0].second, QVersionNumber(1, 2, 4));
    // TestI's initialize ran and refused: it is neither post-initialized nor unloaded.
    EXPECT_EQ(initializer->property("log").toStringList(),
              (QStringList{"TestA:init", "TestB:init", "TestI:init", "TestA:post", "TestB:post"}));
    // The plug-ins found the host's service across the library boundary.
    const auto commands = menus->menu(Core::CId("Test.Menu"))->commands(Core::CId("Test.Group"));
    ASSERT_EQ(commands.size(), 2);
    EXPECT_EQ(commands[0]->id(), Core::CId("TestA.Start"));
    EXPECT_EQ(commands[0]->contexts(), QList<Core::CId>{Core::CId("AppCore.Global.Context")});
    EXPECT_EQ(commands[1]->id(), Core::CId("TestB.Start"));

    manager->unloadPlugins();
    EXPECT_EQ(initializer->property("log").toStringList().mid(5),
              (QStringList{"TestB:about", "TestA:about", "TestB:uninit", "TestA:uninit"}));
}

TEST_F(Loader, RefusesEachBrokenPluginWithAReasonNamingIt)
{
    g_sdkWarnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler(captureSdkWarnings);
    const QList<PluginRecord> records = manager->loadPlugins(dir.path());
    qInstallMessageHandler(previous);

    struct Case {
        const char* plugin;
        const char* reason;
    };
    const Case cases[] = {
        {"TestC", "missing dependency Nope"},
        {"TestD", "missing dependency TestC"},  // TestC itself was refused
        {"TestE", "without a valid Version"},
        {"TestF", "TestA is 1.2.0, 3.0 needed"},
        {"TestG", "dependency cycle through TestH"},
        {"TestH", "dependency cycle through TestG"},
        {"TestI", "initialize returned false"},
        {"TestJ", "malformed metadata: Dependencies is not a list"},
        {"libjunk.so", "not a plug-in"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.plugin);
        const PluginRecord* r = find(records, c.plugin);
        ASSERT_TRUE(r);
        EXPECT_FALSE(r->running);
        EXPECT_TRUE(r->error.contains(c.reason)) << r->error.toStdString();
        EXPECT_EQ(g_sdkWarnings.filter(QStringLiteral("plug-in %1 refused: %2").arg(c.plugin, r->error)).size(), 1)
            << g_sdkWarnings.join('\n').toStdString();
    }
    EXPECT_EQ(g_sdkWarnings.size(), int(std::size(cases)));
    // The broken ones take nothing down with them.
    for (const char* good : {"TestA", "TestB"}) {
        const PluginRecord* r = find(records, good);
        ASSERT_TRUE(r);
        EXPECT_TRUE(r->running) << good << ": " << r->error.toStdString();
    }
}

TEST_F(Loader, HostComponentTooOldRefusesItsDependents)
{
    PluginManager strict(initializer);
    strict.addHostComponent("AppCore", QVersionNumber(1, 0));
    const QList<PluginRecord> records = strict.loadPlugins(dir.path());
    const PluginRecord* a = find(records, "TestA");
    const PluginRecord* b = find(records, "TestB");
    ASSERT_TRUE(a && b);
    EXPECT_FALSE(a->running);
    EXPECT_TRUE(a->error.contains("AppCore")) << a->error.toStdString();
    EXPECT_FALSE(b->running);
}

TEST(PluginInitializer, GetServiceFindsTheFirstOfTheType)
{
    PluginInitializer init;
    EXPECT_FALSE(init.getService<Plugin::AppCore::IMenuService>());
    auto first = QSharedPointer<Plugin::AppCore::MenuService>::create();
    auto second = QSharedPointer<Plugin::AppCore::MenuService>::create();
    init.addService(first);
    init.addService(second);
    init.addService(first);  // once only
    EXPECT_EQ(init.serviceList().size(), 2);
    EXPECT_EQ(init.getService<Plugin::AppCore::IMenuService>(), first);
    init.removeService(first);
    EXPECT_EQ(init.getService<Plugin::AppCore::IMenuService>(), second);
}

}  // namespace
