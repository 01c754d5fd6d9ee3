#pragma once

#include "appcore/imenu.h"

#include <QPair>

namespace Plugin {
namespace AppCore {

class Menu : public IMenu {
public:
    explicit Menu(const Core::CId& id);

    Core::CId id() const override { return m_id; }
    void appendGroup(const Core::CId& group) override;
    QList<Core::CId> groups() const override;
    bool addCommand(ICommand* command, const Core::CId& group) override;
    QList<ICommand*> commands(const Core::CId& group) const override;

private:
    Core::CId m_id;
    QList<QPair<Core::CId, QList<ICommand*>>> m_groups;
};

}  // namespace AppCore
}  // namespace Plugin
