#pragma once

#include "appcore/icommand.h"

#include <QObject>
#include <QPointer>

namespace Plugin {
namespace AppCore {

class Command : public ICommand {
public:
    Command(const Core::CId& id, QObject* action);

    Core::CId id() const override { return m_id; }
    QObject* action() const override { return m_action.data(); }
    QList<Core::CId> contexts() const override { return m_contexts; }
    void addContext(const Core::CId& context);

private:
    Core::CId m_id;
    QPointer<QObject> m_action;
    QList<Core::CId> m_contexts;
};

}  // namespace AppCore
}  // namespace Plugin
