#include "appcore/command.h"

namespace Plugin {
namespace AppCore {

Command::Command(const Core::CId& id, QObject* action) : m_id(id), m_action(action) {}

void Command::addContext(const Core::CId& context)
{
    if (context.isValid() && !m_contexts.contains(context))
        m_contexts << context;
}

}  // namespace AppCore
}  // namespace Plugin
