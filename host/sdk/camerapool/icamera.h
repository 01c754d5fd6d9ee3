#pragma once

#include "camerapool/icamerainfo.h"
#include "kalto/grabresultptr.h"

#include <QObject>
#include <QStringList>

namespace ParameterCollection {
class IParameterCollection;
}

namespace Plugin {
namespace CameraPool {

/// An opened camera. Calls on a camera that has lost its connection throw
/// Core::Exception::BaseException naming it (the state queries answer false).
class ICamera : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~ICamera() override = default;

    virtual QSharedPointer<ICameraInfo> cameraInfo() const = 0;
    virtual bool isOpen() const = 0;
    virtual bool isGrabbing() const = 0;
    /// Starts a single-frame acquisition; the result comes by cameraImageGrabbed.
    /// A grab that has not delivered after timeoutMs is abandoned.
    virtual void grabOne(int timeoutMs) = 0;
    virtual void startGrabbing() = 0;
    virtual void stopGrabbing() = 0;
    virtual QSharedPointer<ParameterCollection::IParameterCollection> parameterCollection() const = 0;
    /// The device node map as feature-persistence text.
    virtual QString saveSettings() const = 0;
    /// Applies such a text; false when lines were rejected, each listed in
    /// `rejected` as "line N: Feature: reason". `applied` counts the lines
    /// that were applied all the same.
    virtual bool loadSettings(const QString& text, QStringList* rejected = nullptr, int* applied = nullptr) = 0;

signals:
    /// Emitted on the camera's delivery thread.
    void cameraImageGrabbed(const Kalto::CGrabResultPtr& result);
    void cameraConnectionLost();
};

}  // namespace CameraPool
}  // namespace Plugin

Q_DECLARE_METATYPE(Kalto::CGrabResultPtr)
