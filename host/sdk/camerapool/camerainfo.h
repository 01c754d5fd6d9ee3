#pragma once

#include "camerapool/icamerainfo.h"
#include "kalto/deviceinfo.h"

#include <QMutex>

namespace Plugin {
namespace CameraPool {

class CameraInfo : public ICameraInfo {
public:
    CameraInfo(const Kalto::SDeviceInfo& info, const QVersionNumber& sfncVersion);

    QString deviceId() const override;
    QString displayText() const override;
    QString modelName() const override;
    QString serialNumber() const override;
    QString vendorName() const override;
    QString transportLayer() const override;
    QString identifyingText() const override;
    QVersionNumber sfncVersion() const override;
    QString errorDescription() const override;

    void setSfncVersion(const QVersionNumber& version);
    void setErrorDescription(const QString& text);

private:
    Kalto::SDeviceInfo m_info;
    mutable QMutex m_mutex;
    QVersionNumber m_sfnc;
    QString m_error;
};

}  // namespace CameraPool
}  // namespace Plugin
