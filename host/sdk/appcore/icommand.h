#pragma once

#include "core/cid.h"

#include <QList>

class QObject;

namespace Plugin {
namespace AppCore {

/// A registered action with the contexts it is active in.
class ICommand {
public:
    virtual ~ICommand() = default;
    virtual Core::CId id() const = 0;
    /// The QAction the plug-in registered (a QObject here, so that the core
    /// library needs no widgets); null once the action is gone.
    virtual QObject* action() const = 0;
    virtual QList<Core::CId> contexts() const = 0;
};

}  // namespace AppCore
}  // namespace Plugin
