#pragma once

#include "core/cid.h"

#include <QList>

namespace Plugin {
namespace AppCore {

class ICommand;

/// A menu as ordered groups of commands; the host renders it.
class IMenu {
public:
    virtual ~IMenu() = default;
    virtual Core::CId id() const = 0;
    virtual void appendGroup(const Core::CId& group) = 0;
    virtual QList<Core::CId> groups() const = 0;
    /// False when the group does not exist or the command is null.
    virtual bool addCommand(ICommand* command, const Core::CId& group) = 0;
    virtual QList<ICommand*> commands(const Core::CId& group) const = 0;
};

}  // namespace AppCore
}  // namespace Plugin
