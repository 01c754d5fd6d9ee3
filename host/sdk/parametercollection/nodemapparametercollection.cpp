#include "parametercollection/nodemapparametercollection.h"

#include "genicam/inodemap.h"
#include "genicam/sfncversion.h"
#include "parametercollection/booleanparameter.h"
#include "parametercollection/commandparameter.h"
#include "parametercollection/enumparameter.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/parametercontext.h"
#include "parametercollection/stringparameter.h"

#include <mutex>

namespace ParameterCollection {

namespace {

QString resolve(const ParameterContext& c, const QStringList& alternatives, Kalto::ENodeType type)
{
    std::lock_guard<std::recursive_mutex> lock(c.nodeMap->mutex());
    QString fallback;
    for (const QString& a : alternatives) {
        const std::string n = a.toStdString();
        if (!c.nodeMap->hasNode(n) || c.nodeMap->nodeType(n) != type)
            continue;
        if (c.nodeMap->isAvailable(n))
            return a;
        if (fallback.isEmpty())
            fallback = a;
    }
    return fallback;
}

template <class P, class Name>
QSharedPointer<P> make(const std::shared_ptr<const ParameterContext>& c, const Name& name,
                       Kalto::ENodeType type)
{
    return QSharedPointer<P>::create(c, resolve(*c, name.alternatives(), type), name.name());
}

}  // namespace

NodeMapParameterCollection::NodeMapParameterCollection(std::shared_ptr<Kalto::INodeMap> nodeMap,
                                                       const QString& cameraName,
                                                       std::function<bool()> connected)
{
    auto c = std::make_shared<ParameterContext>();
    c->nodeMap = std::move(nodeMap);
    c->cameraName = cameraName;
    c->connected = std::move(connected);
    m_context = std::move(c);
}

NodeMapParameterCollection::~NodeMapParameterCollection() = default;

QSharedPointer<FloatParameter> NodeMapParameterCollection::parameter(
    const FloatParameterName& name) const
{
    return make<FloatParameter>(m_context, name, Kalto::ENodeType::Float);
}

QSharedPointer<IntegerParameter> NodeMapParameterCollection::parameter(
    const IntegerParameterName& name) const
{
    return make<IntegerParameter>(m_context, name, Kalto::ENodeType::Integer);
}

QSharedPointer<EnumParameter> NodeMapParameterCollection::parameter(
    const EnumParameterName& name) const
{
    return make<EnumParameter>(m_context, name, Kalto::ENodeType::Enumeration);
}

QSharedPointer<BooleanParameter> NodeMapParameterCollection::parameter(
    const BooleanParameterName& name) const
{
    return make<BooleanParameter>(m_context, name, Kalto::ENodeType::Boolean);
}

QSharedPointer<StringParameter> NodeMapParameterCollection::parameter(
    const StringParameterName& name) const
{
    return make<StringParameter>(m_context, name, Kalto::ENodeType::String);
}

QSharedPointer<CommandParameter> NodeMapParameterCollection::parameter(
    const CommandParameterName& name) const
{
    return make<CommandParameter>(m_context, name, Kalto::ENodeType::Command);
}

bool NodeMapParameterCollection::contains(const QString& name) const
{
    return m_context->nodeMap->hasNode(name.toStdString());
}

QStringList NodeMapParameterCollection::featureNames() const
{
    QStringList names;
    for (const std::string& name : m_context->nodeMap->nodeNames())
        names << QString::fromStdString(name);
    return names;
}

QVersionNumber NodeMapParameterCollection::sfncVersion() const
{
    m_context->requireConnected();
    return Kalto::SfncVersion(*m_context->nodeMap);
}

}  // namespace ParameterCollection
