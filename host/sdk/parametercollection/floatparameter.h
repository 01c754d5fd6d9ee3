#pragma once

#include "parametercollection/parameter.h"

namespace ParameterCollection {

class FloatParameter : public Parameter {
    Q_OBJECT
public:
    FloatParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                   const QString& requested);

    double minimum() const;
    double maximum() const;
    double increment() const;  ///< 0: continuous
    bool hasIncrement() const { return increment() > 0.0; }
    QString unit() const;
    double value() const;
    /// Clipped to [minimum, maximum] and rounded to the increment; returns the stored value.
    double setValue(double value);

protected:
    QVariant variantValue() const override;
};

}  // namespace ParameterCollection
