#pragma once

#include "parametercollection/parameter.h"

namespace ParameterCollection {

class IntegerParameter : public Parameter {
    Q_OBJECT
public:
    IntegerParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                     const QString& requested);

    qint64 minimum() const;
    qint64 maximum() const;
    qint64 increment() const;
    qint64 value() const;
    /// Clipped to [minimum, maximum] and rounded to the increment; returns the stored value.
    qint64 setValue(qint64 value);

protected:
    QVariant variantValue() const override;
};

}  // namespace ParameterCollection
