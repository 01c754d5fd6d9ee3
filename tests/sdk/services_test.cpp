#include "appcore/icommand.h"
#include "appcore/imenu.h"
#include "appcore/menuservice.h"
#include "camerapool/ibaseinfo.h"
#include "cameraselector/deviceselectorservice.h"
#include "core/alocalizedplugin.h"
#include "core/cid.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <gtest/gtest.h>

using namespace Plugin;

namespace {

TEST(MenuService, MenusGroupsAndCommandsById)
{
    AppCore::MenuService service;
    EXPECT_EQ(service.menu(Core::CId("KaltoViewer.Menu.Tools")), nullptr);
    AppCore::IMenu* tools = service.createMenu(Core::CId("KaltoViewer.Menu.Tools"));
    EXPECT_EQ(service.createMenu(Core::CId("KaltoViewer.Menu.Tools")), tools);
    tools->appendGroup(Core::CId("KaltoViewer.Group.Tools.Tools"));
    tools->appendGroup(Core::CId("KaltoViewer.Group.Tools.Misc"));
    tools->appendGroup(Core::CId("KaltoViewer.Group.Tools.Tools"));
    EXPECT_EQ(tools->groups().size(), 2);

    QObject action;
    AppCore::ICommand* cmd = service.registerAction(&action, Core::CId("ColorCalibration.Start"),
                                                    {Core::CId("AppCore.Global.Context")});
    ASSERT_TRUE(cmd);
    EXPECT_EQ(cmd->action(), &action);
    EXPECT_EQ(service.command(Core::CId("ColorCalibration.Start")), cmd);
    EXPECT_EQ(service.registerAction(&action, Core::CId("ColorCalibration.Start"),
                                     {Core::CId("Other.Context")}),
              cmd);
    EXPECT_EQ(cmd->contexts().size(), 2);
    EXPECT_TRUE(tools->addCommand(cmd, Core::CId("KaltoViewer.Group.Tools.Tools")));
    EXPECT_FALSE(tools->addCommand(cmd, Core::CId("No.Such.Group")));
    EXPECT_FALSE(tools->addCommand(nullptr, Core::CId("KaltoViewer.Group.Tools.Tools")));
    EXPECT_EQ(tools->commands(Core::CId("KaltoViewer.Group.Tools.Tools")),
              QList<AppCore::ICommand*>{cmd});
    EXPECT_EQ(service.registerAction(nullptr, Core::CId("X"), {}), nullptr);
}

struct Item : CameraPool::IBaseInfo {
    QString deviceId() const override { return "id"; }
    QString displayText() const override { return "Item"; }
};

TEST(DeviceSelectorService, EmitsOnChangeOnly)
{
    CameraSelector::DeviceSelectorService selector;
    QSignalSpy spy(&selector, &CameraSelector::IDeviceSelectorService::selectionChanged);
    QSharedPointer<CameraPool::IBaseInfo> item(new Item);
    selector.select(item);
    selector.select(item);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(selector.selectedDevice(), item);
    selector.select({});
    EXPECT_EQ(spy.count(), 2);
    EXPECT_FALSE(selector.selectedDevice());
}

class NoCatalogue : public Core::Plugin::ALocalizedPlugin {
public:
    bool initialize(QPointer<Core::Plugin::IPluginInitializer>) override { return true; }
    void postInitialize() override {}
    bool unInitialize(QPointer<Core::Plugin::IPluginInitializer>) override { return true; }

protected:
    QString translationFile(const QString& language) const override
    {
        return language == "de" ? QStringLiteral("/nonexistent/colcal_de.qm") : QString();
    }
};

TEST(LocalizedPlugin, MissingCatalogueLeavesTextsUntranslated)
{
    NoCatalogue plugin;
    EXPECT_FALSE(plugin.setLanguage("de"));
    EXPECT_EQ(plugin.language(), "de");
    EXPECT_FALSE(plugin.setLanguage("en"));
    EXPECT_EQ(QCoreApplication::translate("ctx", "Color Calibrator"), "Color Calibrator");
}

}  // namespace
