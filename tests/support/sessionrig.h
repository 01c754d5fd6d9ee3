#pragma once

#include "emulatedpool.h"

#include <QSharedPointer>
#include <QString>

#include <memory>

namespace Kalto {
class CNodeMap;
}
namespace Plugin {
namespace CameraPool {
class ICamera;
}
}  // namespace Plugin

/// One emulated camera behind the host's camera pool and a calibration
/// session with the pool's services, as the plug-in gets them, in the test
/// application's sandbox. The camera's flash and the session's stored grid
/// positions start empty for every rig; frames are small so that sanitizer
/// builds stay quick.
class SessionRig {
public:
    static constexpr const char* kMedical = EmulatedPool::kMedical;  // SFNC 2.x
    static constexpr const char* kCustom = EmulatedPool::kCustom;    // SFNC 1.x

    explicit SessionRig(const QString& deviceId, int width = 480, int height = 300);
    ~SessionRig();

    ColorCorrectionModel& model() { return *m_model; }
    EmulatedPool& pool() { return *m_pool; }
    EmulatedCamera& device() { return m_pool->device(m_id); }
    Kalto::CNodeMap& nodeMap();
    QSharedPointer<Plugin::CameraPool::ICameraInfo> info() const { return m_pool->info(m_id); }
    bool sfnc2();
    void resize(int width, int height);
    /// Where the chart's patch field lies in the image.
    CTrapezoid grid() { return m_pool->grid(m_id); }
    QString settingsText() { return m_pool->settingsText(m_id); }

    /// The pool's camera, opened exclusively without the session, for the
    /// parts under the session; the rig releases it.
    QSharedPointer<Plugin::CameraPool::ICamera> openCamera();
    /// Opens the session, grabs past the first frame (the first wait is the
    /// short one) and lays the grid on the chart.
    bool open();
    /// open(), a backup and the neutral settings. Returns the settings text
    /// of the opened camera, which a cancel must bring back; empty on failure.
    QString openAndNeutralise();
    /// Brightest channel (0..255) of the 80 % grey patch in a fresh grab
    /// through the session; -1 when it could not be measured.
    double measureGrey();
    /// The exposure time (us) that puts that channel at `targetDn`, from the
    /// sensor's linearity; a saturated patch halves the exposure first.
    double exposureForGrey(double targetDn);

private:
    QString m_id;
    std::unique_ptr<EmulatedPool> m_pool;
    std::unique_ptr<ColorCorrectionModel> m_model;
    QSharedPointer<Plugin::CameraPool::ICamera> m_camera;
};
