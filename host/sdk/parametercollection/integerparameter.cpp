#include "parametercollection/integerparameter.h"

#include "genicam/inodemap.h"
#include "parametercollection/parametercontext.h"

namespace ParameterCollection {

IntegerParameter::IntegerParameter(std::shared_ptr<const ParameterContext> context,
                                   const QString& name, const QString& requested)
    : Parameter(std::move(context), name, requested)
{
}

qint64 IntegerParameter::minimum() const { require(); return m_context->nodeMap->integerMin(m_node); }
qint64 IntegerParameter::maximum() const { require(); return m_context->nodeMap->integerMax(m_node); }
qint64 IntegerParameter::increment() const
{
    require();
    return m_context->nodeMap->integerIncrement(m_node);
}
qint64 IntegerParameter::value() const { require(); return m_context->nodeMap->getInteger(m_node); }
qint64 IntegerParameter::setValue(qint64 value)
{
    require();
    return m_context->nodeMap->setInteger(m_node, value);
}
QVariant IntegerParameter::variantValue() const
{
    return QVariant::fromValue<qint64>(m_context->nodeMap->getInteger(m_node));
}

}  // namespace ParameterCollection
