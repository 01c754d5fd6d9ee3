#include "menurenderer.h"

#include "appcore/icommand.h"
#include "appcore/imenu.h"
#include "appcore/imenuservice.h"

#include <QAction>
#include <QMenu>

void MenuRenderer::fill(QMenu* target, const Plugin::AppCore::IMenuService& service, const Core::CId& id)
{
    target->clear();
    Plugin::AppCore::IMenu* menu = service.menu(id);
    if (!menu)
        return;
    for (const Core::CId& group : menu->groups()) {
        const auto commands = menu->commands(group);
        if (commands.isEmpty())
            continue;
        if (!target->isEmpty())
            target->addSeparator();
        for (Plugin::AppCore::ICommand* command : commands)
            if (auto* action = qobject_cast<QAction*>(command->action()))
                target->addAction(action);
    }
}

void MenuRenderer::bind(QMenu* target, const Plugin::AppCore::IMenuService& service, const Core::CId& id)
{
    QObject::connect(target, &QMenu::aboutToShow, target,
                     [target, &service, id] { fill(target, service, id); });
    fill(target, service, id);
}
