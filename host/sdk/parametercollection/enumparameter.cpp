#include "parametercollection/enumparameter.h"

#include "genicam/inodemap.h"
#include "parametercollection/parametercontext.h"

namespace ParameterCollection {

namespace {
QVariantMap toMap(const Kalto::SEnumEntry& e)
{
    return {{QStringLiteral("Symbolic"), QString::fromStdString(e.symbolic)},
            {QStringLiteral("DisplayName"), QString::fromStdString(e.displayName)},
            {QStringLiteral("Value"), QVariant::fromValue<qint64>(e.value)},
            {QStringLiteral("Available"), e.available}};
}
}  // namespace

EnumParameter::EnumParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                             const QString& requested)
    : Parameter(std::move(context), name, requested)
{
}

QString EnumParameter::value() const
{
    require();
    return QString::fromStdString(m_context->nodeMap->getEnum(m_node));
}

qint64 EnumParameter::intValue() const
{
    require();
    return m_context->nodeMap->getEnumValue(m_node);
}

void EnumParameter::setValue(const QString& symbolic)
{
    require();
    m_context->nodeMap->setEnum(m_node, symbolic.toStdString());
}

QStringList EnumParameter::symbolics() const
{
    require();
    QStringList out;
    for (const Kalto::SEnumEntry& e : m_context->nodeMap->enumEntries(m_node))
        if (e.available)
            out << QString::fromStdString(e.symbolic);
    return out;
}

bool EnumParameter::hasEntry(const QString& symbolic) const
{
    return !isNull() && m_context->isConnected() &&
           m_context->nodeMap->isEntryAvailable(m_node, symbolic.toStdString());
}

QList<QVariantMap> EnumParameter::entries() const
{
    require();
    QList<QVariantMap> out;
    for (const Kalto::SEnumEntry& e : m_context->nodeMap->enumEntries(m_node))
        out << toMap(e);
    return out;
}

QVariantMap EnumParameter::entry(const QString& symbolic) const
{
    require();
    for (const Kalto::SEnumEntry& e : m_context->nodeMap->enumEntries(m_node))
        if (QString::fromStdString(e.symbolic) == symbolic)
            return toMap(e);
    return {};
}

QVariant EnumParameter::variantValue() const
{
    return QString::fromStdString(m_context->nodeMap->getEnum(m_node));
}

}  // namespace ParameterCollection
