#pragma once

#include "parametercollection/parameter.h"

namespace ParameterCollection {

class CommandParameter : public Parameter {
    Q_OBJECT
public:
    CommandParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                     const QString& requested);

    void execute();

protected:
    QVariant variantValue() const override { return {}; }
};

}  // namespace ParameterCollection
