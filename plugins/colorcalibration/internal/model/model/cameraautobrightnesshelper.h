#pragma once

#include <QObject>
#include <QSharedPointer>

#include <atomic>

class CalibrationInterface;

namespace ParameterCollection {
class IParameterCollection;
}

/// Brings the brightest channel of the chart's 80 % grey patch to 150 of 255:
/// exposure time first, gain once exposure is at its auto limit, each step
/// damped. Lives on its own thread; all measuring and setting goes through
/// the session's CalibrationInterface. There is no round limit: the loop ends
/// within 10 % of the target, at a gain limit, or after stop().
class CameraAutoBrightnessHelper : public QObject {
    Q_OBJECT
public:
    CameraAutoBrightnessHelper(CalibrationInterface* calibration,
                               QSharedPointer<ParameterCollection::IParameterCollection> parameters,
                               QObject* parent = nullptr);
    ~CameraAutoBrightnessHelper() override;

    /// Thread-safe; the loop ends after its current round (the pause between
    /// rounds is cut short). A stop before doWork() has begun holds as well.
    void stop();
    bool isRunning() const { return m_running.load(); }

    static constexpr double kTargetDn = 150.0;
    static constexpr double kDamping = 0.8;
    static constexpr double kTolerancePercent = 10.0;
    static constexpr int kPauseMs = 200;

public slots:
    void doWork();

signals:
    void AutoBrightnessFinished();

private:
    void adjust();
    void pause();

    CalibrationInterface* m_calibration;
    QSharedPointer<ParameterCollection::IParameterCollection> m_parameters;
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_stopRequested{false};
};
