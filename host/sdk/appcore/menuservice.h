#pragma once

#include "appcore/imenuservice.h"

#include <QHash>

#include <memory>

namespace Plugin {
namespace AppCore {

class Command;
class Menu;

/// Menus and commands kept by id; used from the GUI thread.
class MenuService : public IMenuService {
    Q_OBJECT
public:
    explicit MenuService(QObject* parent = nullptr);
    ~MenuService() override;

    IMenu* createMenu(const Core::CId& id) override;
    IMenu* menu(const Core::CId& id) const override;
    ICommand* registerAction(QObject* action, const Core::CId& id,
                             const QList<Core::CId>& contexts) override;
    ICommand* command(const Core::CId& id) const override;

private:
    QHash<Core::CId, std::shared_ptr<Menu>> m_menus;
    QHash<Core::CId, std::shared_ptr<Command>> m_commands;
};

}  // namespace AppCore
}  // namespace Plugin
