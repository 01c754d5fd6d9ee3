#pragma once

#include "camerapool/ibaseinfo.h"

#include <QVersionNumber>

namespace Plugin {
namespace CameraPool {

class ICameraInfo : public IBaseInfo {
public:
    virtual QString modelName() const = 0;
    virtual QString serialNumber() const = 0;
    virtual QString vendorName() const = 0;
    virtual QString transportLayer() const = 0;
    /// Distinguishes cameras of the same model: "Vendor Model (Serial) [Layer]".
    virtual QString identifyingText() const = 0;
    /// Null when the camera does not state it.
    virtual QVersionNumber sfncVersion() const = 0;
    /// Why the last open or grab failed; empty when nothing failed.
    virtual QString errorDescription() const = 0;
};

}  // namespace CameraPool
}  // namespace Plugin

Q_DECLARE_METATYPE(QSharedPointer<Plugin::CameraPool::ICameraInfo>)
