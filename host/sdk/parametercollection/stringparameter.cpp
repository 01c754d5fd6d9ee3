#include "parametercollection/stringparameter.h"

#include "genicam/inodemap.h"
#include "parametercollection/parametercontext.h"

namespace ParameterCollection {

StringParameter::StringParameter(std::shared_ptr<const ParameterContext> context,
                                 const QString& name, const QString& requested)
    : Parameter(std::move(context), name, requested)
{
}

QString StringParameter::value() const
{
    require();
    return QString::fromStdString(m_context->nodeMap->getString(m_node));
}
void StringParameter::setValue(const QString& value)
{
    require();
    m_context->nodeMap->setString(m_node, value.toStdString());
}
QVariant StringParameter::variantValue() const
{
    return QString::fromStdString(m_context->nodeMap->getString(m_node));
}

}  // namespace ParameterCollection
