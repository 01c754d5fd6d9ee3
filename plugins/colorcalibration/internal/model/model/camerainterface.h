#pragma once

#include <QFile>
#include <QImage>
#include <QSharedPointer>
#include <QString>

namespace Plugin {
namespace CameraPool {
class ICameraInfo;
}
}  // namespace Plugin

/// What the live view and the wizard need of the session's camera. The
/// implementer is a QObject and declares cameraRemoved() among its signals.
class CameraInterface {
public:
    virtual ~CameraInterface() = default;

    virtual bool Open(QSharedPointer<Plugin::CameraPool::ICameraInfo> cameraInfo) = 0;
    virtual bool Close() = 0;
    /// `image` is a deep copy of the 8-bit display image.
    virtual bool GrabImage(QImage& image, bool grabNew) = 0;
    virtual bool StopGrab() = 0;
    virtual bool LoadSettings(const QFile& file) = 0;
    virtual bool LoadSettings(const QString& path) = 0;
    virtual bool SetNeutralSettings() = 0;
    virtual bool CreateSettingsBackup(bool) = 0;
    virtual bool RestoreSettingsBackup(bool) = 0;
    virtual bool ActivateMonoImage() = 0;

    // signal
    virtual void cameraRemoved() = 0;
};
