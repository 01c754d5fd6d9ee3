#include "appcore/menu.h"

namespace Plugin {
namespace AppCore {

Menu::Menu(const Core::CId& id) : m_id(id) {}

void Menu::appendGroup(const Core::CId& group)
{
    for (const auto& g : m_groups)
        if (g.first == group)
            return;
    m_groups.append(qMakePair(group, QList<ICommand*>()));
}

QList<Core::CId> Menu::groups() const
{
    QList<Core::CId> out;
    for (const auto& g : m_groups)
        out << g.first;
    return out;
}

bool Menu::addCommand(ICommand* command, const Core::CId& group)
{
    if (!command)
        return false;
    for (auto& g : m_groups)
        if (g.first == group) {
            if (!g.second.contains(command))
                g.second << command;
            return true;
        }
    return false;
}

QList<ICommand*> Menu::commands(const Core::CId& group) const
{
    for (const auto& g : m_groups)
        if (g.first == group)
            return g.second;
    return {};
}

}  // namespace AppCore
}  // namespace Plugin
