#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <QVector>

#include <memory>
#include <mutex>

namespace ParameterCollection {

struct ParameterContext;

/// One camera feature as the collection hands it out. A null parameter names a
/// feature the camera does not have: every test is false and accessing the
/// value throws. Values are read live from the camera, never cached.
class Parameter : public QObject {
    Q_OBJECT
public:
    ~Parameter() override;

    QString name() const { return m_name; }  ///< the alternative actually used
    bool isNull() const { return m_name.isEmpty(); }
    bool isAvailable() const;
    bool isReadable() const;
    bool isWritable() const;

signals:
    /// The feature's new value, emitted in this object's thread after the write
    /// has returned (queued), whichever thread wrote it.
    void parameterDataChangedDecoupled(QVariant value);

protected:
    /// `name` is the resolved feature (empty: null parameter), `requested` the
    /// name text asked for, kept for error messages.
    Parameter(std::shared_ptr<const ParameterContext> context, const QString& name,
              const QString& requested);
    /// The value as a QVariant; called under the node map's lock.
    virtual QVariant variantValue() const = 0;
    /// Throws unless the feature exists and the camera is connected.
    void require() const;

    std::shared_ptr<const ParameterContext> m_context;
    QString m_name;
    QString m_requested;
    std::string m_node;

private:
    /// Emits the values written since the last call, in order.
    Q_INVOKABLE void deliverChanges();

    int m_callbackId = 0;
    // Values written on other threads wait here; the handover goes through a
    // lock that race checkers see (Qt's own event queue lock they do not).
    std::mutex m_pendingMutex;
    QVector<QVariant> m_pending;
};

}  // namespace ParameterCollection
