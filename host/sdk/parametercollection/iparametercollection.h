#pragma once

#include "parametercollection/parametername.h"

#include <QSharedPointer>
#include <QStringList>
#include <QVersionNumber>

namespace ParameterCollection {

class FloatParameter;
class IntegerParameter;
class EnumParameter;
class BooleanParameter;
class StringParameter;
class CommandParameter;

/// Typed access to one camera's features. Never returns a null pointer: a
/// feature the camera lacks gives a parameter whose isNull() is true.
class IParameterCollection {
public:
    virtual ~IParameterCollection() = default;

    virtual QSharedPointer<FloatParameter> parameter(const FloatParameterName& name) const = 0;
    virtual QSharedPointer<IntegerParameter> parameter(const IntegerParameterName& name) const = 0;
    virtual QSharedPointer<EnumParameter> parameter(const EnumParameterName& name) const = 0;
    virtual QSharedPointer<BooleanParameter> parameter(const BooleanParameterName& name) const = 0;
    virtual QSharedPointer<StringParameter> parameter(const StringParameterName& name) const = 0;
    virtual QSharedPointer<CommandParameter> parameter(const CommandParameterName& name) const = 0;

    /// Whether a feature of this exact name exists, of any type.
    virtual bool contains(const QString& name) const = 0;
    /// Every feature of the camera, in the camera's own order (for browsing;
    /// the typed parameter() calls tell what each one is).
    virtual QStringList featureNames() const = 0;
    /// From DeviceSFNCVersionMajor/Minor/SubMinor; null when the camera lacks them.
    virtual QVersionNumber sfncVersion() const = 0;
};

}  // namespace ParameterCollection
