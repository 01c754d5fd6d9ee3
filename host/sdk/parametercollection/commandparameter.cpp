#include "parametercollection/commandparameter.h"

#include "genicam/inodemap.h"
#include "parametercollection/parametercontext.h"

namespace ParameterCollection {

CommandParameter::CommandParameter(std::shared_ptr<const ParameterContext> context,
                                   const QString& name, const QString& requested)
    : Parameter(std::move(context), name, requested)
{
}

void CommandParameter::execute()
{
    require();
    m_context->nodeMap->execute(m_node);
}

}  // namespace ParameterCollection
