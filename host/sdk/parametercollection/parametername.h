#pragma once

#include <QString>
#include <QStringList>

namespace ParameterCollection {

/// A feature name typed by the kind of parameter it addresses. `a || b` gives a
/// name whose text is "a|b": the first alternative the camera has is used.
template <class Tag>
class TParameterName {
public:
    TParameterName() = default;
    TParameterName(const char* name) : m_name(QString::fromUtf8(name)) {}
    TParameterName(const QString& name) : m_name(name) {}

    const QString& name() const { return m_name; }
    QStringList alternatives() const { return m_name.split(QLatin1Char('|'), Qt::SkipEmptyParts); }
    TParameterName operator||(const TParameterName& other) const
    {
        return TParameterName(QStringLiteral("%1|%2").arg(m_name, other.m_name));
    }
    bool operator==(const TParameterName& o) const { return m_name == o.m_name; }

private:
    QString m_name;
};

struct FloatTag;
struct IntegerTag;
struct EnumTag;
struct BooleanTag;
struct StringTag;
struct CommandTag;

using FloatParameterName = TParameterName<FloatTag>;
using IntegerParameterName = TParameterName<IntegerTag>;
using EnumParameterName = TParameterName<EnumTag>;
using BooleanParameterName = TParameterName<BooleanTag>;
using StringParameterName = TParameterName<StringTag>;
using CommandParameterName = TParameterName<CommandTag>;

}  // namespace ParameterCollection
