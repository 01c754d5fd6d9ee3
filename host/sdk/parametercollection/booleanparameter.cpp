#include "parametercollection/booleanparameter.h"

#include "genicam/inodemap.h"
#include "parametercollection/parametercontext.h"

namespace ParameterCollection {

BooleanParameter::BooleanParameter(std::shared_ptr<const ParameterContext> context,
                                   const QString& name, const QString& requested)
    : Parameter(std::move(context), name, requested)
{
}

bool BooleanParameter::value() const { require(); return m_context->nodeMap->getBool(m_node); }
void BooleanParameter::setValue(bool value)
{
    require();
    m_context->nodeMap->setBool(m_node, value);
}
QVariant BooleanParameter::variantValue() const { return m_context->nodeMap->getBool(m_node); }

}  // namespace ParameterCollection
