#include "parametercollection/floatparameter.h"

#include "genicam/inodemap.h"
#include "parametercollection/parametercontext.h"

namespace ParameterCollection {

FloatParameter::FloatParameter(std::shared_ptr<const ParameterContext> context,
                               const QString& name, const QString& requested)
    : Parameter(std::move(context), name, requested)
{
}

double FloatParameter::minimum() const { require(); return m_context->nodeMap->floatMin(m_node); }
double FloatParameter::maximum() const { require(); return m_context->nodeMap->floatMax(m_node); }
double FloatParameter::increment() const { require(); return m_context->nodeMap->floatIncrement(m_node); }
QString FloatParameter::unit() const
{
    require();
    return QString::fromStdString(m_context->nodeMap->floatUnit(m_node));
}
double FloatParameter::value() const { require(); return m_context->nodeMap->getFloat(m_node); }
double FloatParameter::setValue(double value)
{
    require();
    return m_context->nodeMap->setFloat(m_node, value);
}
QVariant FloatParameter::variantValue() const { return m_context->nodeMap->getFloat(m_node); }

}  // namespace ParameterCollection
