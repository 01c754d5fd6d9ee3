#include "appcore/icommand.h"
#include "appcore/imenu.h"
#include "appcore/menuservice.h"
#include "core/pluginmanager.h"
#include "core/plugininitializer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>

using namespace Core::Plugin;

namespace {

const PluginRecord* find(const QList<PluginRecord>& records, const QString& name)
{
    for (const PluginRecord& s : records)
        if (s.name == name)
            return &s;
    return nullptr;
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
    EXPECT_EQ(initializer->property("log").toStringList(),
              (QStringList{"TestA:init", "TestB:init", "TestA:post", "TestB:post"}));
    // The plug-ins found the host's service across the library boundary.
    const auto commands = menus->menu(Core::CId("Test.Menu"))->commands(Core::CId("Test.Group"));
    ASSERT_EQ(commands.size(), 2);
    EXPECT_EQ(commands[0]->id(), Core::CId("TestA.Start"));
    EXPECT_EQ(commands[0]->contexts(), QList<Core::CId>{Core::CId("AppCore.Global.Context")});
    EXPECT_EQ(commands[1]->id(), Core::CId("TestB.Start"));

    manager->unloadPlugins();
    EXPECT_EQ(initializer->property("log").toStringList().mid(4),
              (QStringList{"TestB:about", "TestA:about", "TestB:uninit", "TestA:uninit"}));
}

TEST_F(Loader, RefusesBrokenPluginsWithAReason)
{
    const QList<PluginRecord> records = manager->loadPlugins(dir.path());
    const PluginRecord* c = find(records, "TestC");
    ASSERT_TRUE(c);
    EXPECT_FALSE(c->running);
    EXPECT_TRUE(c->error.contains("missing dependency Nope")) << c->error.toStdString();
    const PluginRecord* d = find(records, "TestD");
    ASSERT_TRUE(d);
    EXPECT_FALSE(d->running);
    EXPECT_TRUE(d->error.contains("TestC")) << d->error.toStdString();
    const PluginRecord* e = find(records, "TestE");
    ASSERT_TRUE(e);
    EXPECT_FALSE(e->running);
    EXPECT_TRUE(e->error.contains("Version")) << e->error.toStdString();
    const PluginRecord* f = find(records, "TestF");
    ASSERT_TRUE(f);
    EXPECT_FALSE(f->running);
    EXPECT_TRUE(f->error.contains("3.0")) << f->error.toStdString();
    bool junkRefused = false;
    for (const PluginRecord& s : records)
        if (s.fileName.endsWith("libjunk.so"))
            junkRefused = !s.running && !s.error.isEmpty();
    EXPECT_TRUE(junkRefused);
    const QStringList log = initializer->property("log").toStringList();
    for (const QString& entry : log)
        EXPECT_TRUE(entry.startsWith("TestA") || entry.startsWith("TestB")) << entry.toStdString();
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
