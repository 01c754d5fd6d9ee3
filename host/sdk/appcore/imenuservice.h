#pragma once

#include "core/cid.h"
#include "core/iservice.h"

#include <QList>

namespace Plugin {
namespace AppCore {

class ICommand;
class IMenu;

class IMenuService : public Core::Service::IService {
    Q_OBJECT
public:
    using IService::IService;

    /// The menu of that id, created empty when new.
    virtual IMenu* createMenu(const Core::CId& id) = 0;
    /// Null when no menu has that id.
    virtual IMenu* menu(const Core::CId& id) const = 0;
    /// Registers `action` (a QAction) as command `id`; a second registration of
    /// the same id adds the contexts and keeps the first action.
    virtual ICommand* registerAction(QObject* action, const Core::CId& id,
                                     const QList<Core::CId>& contexts) = 0;
    virtual ICommand* command(const Core::CId& id) const = 0;

signals:
    void menuChanged(const QString& menuId);
};

}  // namespace AppCore
}  // namespace Plugin
