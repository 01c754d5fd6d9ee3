#include "parametercollection/parameter.h"

#include "genicam/inodemap.h"
#include "genicam/runtimeexception.h"
#include "parametercollection/parametercontext.h"


namespace ParameterCollection {

Parameter::Parameter(std::shared_ptr<const ParameterContext> context, const QString& name,
                     const QString& requested)
    : m_context(std::move(context)), m_name(name), m_requested(requested),
      m_node(name.toStdString())
{
    if (isNull())
        return;
    m_callbackId = m_context->nodeMap->addChangeCallback(m_node, [this](const std::string&) {
        // Runs on the writer's thread under the node-map lock; the destructor
        // removes the callback under that lock, so `this` is alive here.
        const QVariant v = variantValue();
        {
            std::lock_guard<std::mutex> lock(m_pendingMutex);
            m_pending.append(v);
        }
        QMetaObject::invokeMethod(this, "deliverChanges", Qt::QueuedConnection);
    });
}

void Parameter::deliverChanges()
{
    QVector<QVariant> values;
    {
        std::lock_guard<std::mutex> lock(m_pendingMutex);
        values.swap(m_pending);
    }
    for (const QVariant& v : values)
        emit parameterDataChangedDecoupled(v);
}

Parameter::~Parameter()
{
    if (m_callbackId)
        m_context->nodeMap->removeChangeCallback(m_callbackId);
}

bool Parameter::isAvailable() const
{
    return !isNull() && m_context->isConnected() && m_context->nodeMap->isAvailable(m_node);
}

bool Parameter::isReadable() const
{
    return !isNull() && m_context->isConnected() && m_context->nodeMap->isReadable(m_node);
}

bool Parameter::isWritable() const
{
    return !isNull() && m_context->isConnected() && m_context->nodeMap->isWritable(m_node);
}

void Parameter::require() const
{
    if (isNull())
        KALTO_THROW_RUNTIME("Parameter " + m_requested.toStdString() + " not present in camera " +
                            m_context->cameraName.toStdString());
    m_context->requireConnected();
}

}  // namespace ParameterCollection
