#pragma once

#include "parametercollection/iparametercollection.h"

#include <functional>
#include <memory>

namespace Kalto {
class INodeMap;
}

namespace ParameterCollection {

struct ParameterContext;

/// The parameter collection over a node map. Every alternative of a name is
/// tried in turn; the first that exists with the right type and is available
/// wins, else the first that exists with the right type (unavailable).
class NodeMapParameterCollection : public IParameterCollection {
public:
    /// `connected` empty: the map is always reachable.
    NodeMapParameterCollection(std::shared_ptr<Kalto::INodeMap> nodeMap, const QString& cameraName,
                               std::function<bool()> connected = {});
    ~NodeMapParameterCollection() override;

    QSharedPointer<FloatParameter> parameter(const FloatParameterName& name) const override;
    QSharedPointer<IntegerParameter> parameter(const IntegerParameterName& name) const override;
    QSharedPointer<EnumParameter> parameter(const EnumParameterName& name) const override;
    QSharedPointer<BooleanParameter> parameter(const BooleanParameterName& name) const override;
    QSharedPointer<StringParameter> parameter(const StringParameterName& name) const override;
    QSharedPointer<CommandParameter> parameter(const CommandParameterName& name) const override;
    bool contains(const QString& name) const override;
    QStringList featureNames() const override;
    QVersionNumber sfncVersion() const override;

private:
    std::shared_ptr<const ParameterContext> m_context;
};

}  // namespace ParameterCollection
