#include "appcore/menuservice.h"

#include "appcore/command.h"
#include "appcore/menu.h"

namespace Plugin {
namespace AppCore {

MenuService::MenuService(QObject* parent) : IMenuService(parent) {}
MenuService::~MenuService() = default;

IMenu* MenuService::createMenu(const Core::CId& id)
{
    auto& m = m_menus[id];
    if (!m)
        m = std::make_shared<Menu>(id);
    return m.get();
}

IMenu* MenuService::menu(const Core::CId& id) const
{
    auto it = m_menus.constFind(id);
    return it == m_menus.constEnd() ? nullptr : it->get();
}

ICommand* MenuService::registerAction(QObject* action, const Core::CId& id,
                                      const QList<Core::CId>& contexts)
{
    if (!action || !id.isValid())
        return nullptr;
    auto& c = m_commands[id];
    if (!c)
        c = std::make_shared<Command>(id, action);
    for (const Core::CId& context : contexts)
        c->addContext(context);
    return c.get();
}

ICommand* MenuService::command(const Core::CId& id) const
{
    auto it = m_commands.constFind(id);
    return it == m_commands.constEnd() ? nullptr : it->get();
}

}  // namespace AppCore
}  // namespace Plugin
