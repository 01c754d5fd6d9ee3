#pragma once

#include "parametercollection/parameter.h"

namespace ParameterCollection {

class BooleanParameter : public Parameter {
    Q_OBJECT
public:
    BooleanParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                     const QString& requested);

    bool value() const;
    void setValue(bool value);

protected:
    QVariant variantValue() const override;
};

}  // namespace ParameterCollection
