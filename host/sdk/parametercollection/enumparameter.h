#pragma once

#include "parametercollection/parameter.h"

#include <QStringList>
#include <QVariantMap>

namespace ParameterCollection {

class EnumParameter : public Parameter {
    Q_OBJECT
public:
    EnumParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                  const QString& requested);

    QString value() const;  ///< symbolic name of the current entry
    qint64 intValue() const;
    void setValue(const QString& symbolic);  ///< throws for an unknown or unavailable entry
    /// Symbolic names of the entries available now.
    QStringList symbolics() const;
    bool hasEntry(const QString& symbolic) const;  ///< exists and is available
    /// Every entry as {"Symbolic", "DisplayName", "Value", "Available"}.
    QList<QVariantMap> entries() const;
    /// One entry as above; empty when there is none of that name.
    QVariantMap entry(const QString& symbolic) const;

protected:
    QVariant variantValue() const override;
};

}  // namespace ParameterCollection
