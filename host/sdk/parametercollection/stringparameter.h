#pragma once

#include "parametercollection/parameter.h"

namespace ParameterCollection {

class StringParameter : public Parameter {
    Q_OBJECT
public:
    StringParameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                    const QString& requested);

    QString value() const;
    void setValue(const QString& value);  ///< UTF-8; throws when longer than the feature allows

protected:
    QVariant variantValue() const override;
};

}  // namespace ParameterCollection
