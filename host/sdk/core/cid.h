#pragma once

#include <QHashFunctions>
#include <QString>

namespace Core {

/// A dotted identifier of menus, commands, groups and contexts ("AppCore.Global.Context").
class CId {
public:
    CId() = default;
    CId(const char* name) : m_name(QString::fromUtf8(name)) {}
    explicit CId(const QString& name) : m_name(name) {}

    bool isValid() const { return !m_name.isEmpty(); }
    const QString& toString() const { return m_name; }
    bool operator==(const CId& o) const { return m_name == o.m_name; }
    bool operator!=(const CId& o) const { return m_name != o.m_name; }
    bool operator<(const CId& o) const { return m_name < o.m_name; }

private:
    QString m_name;
};

inline uint qHash(const CId& id, uint seed = 0) { return qHash(id.toString(), seed); }

}  // namespace Core
