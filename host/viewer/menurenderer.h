#pragma once

#include "core/cid.h"

class QMenu;

namespace Plugin {
namespace AppCore {
class IMenuService;
}
}  // namespace Plugin

/// Shows a menu of the menu service as a QMenu: its groups in order, split by
/// separators, each command's action as registered (hidden actions stay hidden).
class MenuRenderer {
public:
    /// Refills `target` from the menu `id` now; nothing when there is no such menu.
    static void fill(QMenu* target, const Plugin::AppCore::IMenuService& service, const Core::CId& id);
    /// Refills `target` each time it is about to show, so commands that
    /// plug-ins add later appear too.
    static void bind(QMenu* target, const Plugin::AppCore::IMenuService& service, const Core::CId& id);
};
