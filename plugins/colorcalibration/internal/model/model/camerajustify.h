#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

#include <dlib/matrix.h>

class QThread;
class CalibrationInterface;
class CameraAutoBrightnessHelper;

namespace Plugin {
namespace CameraPool {
class ICamera;
}
}  // namespace Plugin

namespace ParameterCollection {
class IParameterCollection;
}

/// The session's only writer of camera features: switches the camera's own
/// colour and tone processing to neutral, keeps and restores its settings,
/// writes calibration results and runs the automatic brightness worker.
///
/// Neutralising operations write only features the camera has and allows to
/// be written; a missing one is skipped. Parameter and SDK errors propagate as
/// exceptions (GenICam_3_1_Ostrel_kalto::RuntimeException,
/// Core::Exception::BaseException) for the session to report. Every operation
/// fetches the parameter collection from the camera first; call from the
/// session's thread only.
class CameraJustify : public QObject {
    Q_OBJECT
public:
    explicit CameraJustify(QSharedPointer<Plugin::CameraPool::ICamera> camera,
                           QObject* parent = nullptr);
    /// Stops a running brightness worker and waits for its thread.
    ~CameraJustify() override;

    void disableHSBC();
    /// Mono8 where the camera offers it, else Mono12.
    void activateMonoImage();
    void disableTestImage();
    void disableDemosaicing();
    void disableAutoGainAndAutoExposure();
    void disableAutofunctions();
    void disableBlackLevel();
    void disableLUT();
    void disableWhiteBalance();
    void disableMatrix();
    void disableGamma();
    void disableBC6x2Op();

    void backupParameterCollection(bool);
    /// Before any backup this loads an empty text, which changes nothing.
    /// Returns the lines the camera rejected, as loadNodemapSettings.
    QStringList restoreParameterCollection(bool);
    /// The whole device node map as feature-persistence text.
    QString saveNodemapSettings();
    /// Applies every line the camera accepts and returns the rejected ones as
    /// "line N: Feature: reason"; throws when lines were rejected and not one
    /// was applied (not a settings file, or one of another camera entirely).
    QStringList loadNodemapSettings(const QString& settings);
    QString getStoredCameraSettings() const;
    void saveToUserSet(QSharedPointer<ParameterCollection::IParameterCollection> parameters);
    void setUserSet(QString name, bool save, bool setAsDefault);

    /// Balance ratios, written Red, Blue, Green.
    void setWhiteBalance(double r, double g, double b);
    /// Row-major colour matrix; each row's diagonal is written as 1 minus the
    /// off-diagonal values the camera kept, so rows sum to 1 after rounding.
    void setMatrix(const dlib::matrix<double, 3, 3>& m);
    void setGamma(double gamma, bool enable);
    void setSRGBGamma(bool enable);
    /// Hues of red, yellow, green, cyan, blue, magenta, then their saturations.
    void setBC6x2Op(const dlib::matrix<double, 12, 1>& p);

    /// Starts the brightness loop on its own thread, replacing a previous one
    /// (throws when that has not ended within kAutoBrightnessStopTimeoutMs);
    /// AutoBrightnessFinished() follows when it ends.
    void startAutoBrightness(CalibrationInterface* calibration);
    /// Asks a running loop to end after its current round and waits for it,
    /// at most `timeoutMs` (negative: without bound); false when it still runs.
    /// The loop measures through the session: never wait under its lock.
    bool stopAutoBrightness(int timeoutMs);
    /// A round is one grab (at most 5 s) plus a short pause.
    static constexpr int kAutoBrightnessStopTimeoutMs = 10000;

signals:
    void AutoBrightnessFinished();

private:
    QSharedPointer<ParameterCollection::IParameterCollection> parameters() const;
    void finishAutoBrightnessThread();

    QSharedPointer<Plugin::CameraPool::ICamera> m_camera;
    QString m_userSetName;
    bool m_saveToUserSetEnabled = false;
    bool m_setUserSetAsDefault = false;
    QString m_storedSettings;
    CameraAutoBrightnessHelper* m_autoBrightness = nullptr;
    QThread* m_autoBrightnessThread = nullptr;
};
