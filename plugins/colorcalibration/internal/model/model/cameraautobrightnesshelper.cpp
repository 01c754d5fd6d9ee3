#include "cameraautobrightnesshelper.h"

#include "calibrationinterface.h"
#include "chartdiscriminator.h"
#include "modellog.h"

#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QElapsedTimer>
#include <QThread>
#include <QVersionNumber>

#include <algorithm>
#include <cmath>

using namespace ParameterCollection;

namespace {

struct Limits {
    double lower = 0.0;
    double upper = 0.0;
};

// Auto-function limits are integers on older cameras and floats on newer
// ones; either is read. A missing feature leaves the range unbounded.
Limits readLimits(const IParameterCollection* parameters, const char* lowerName, const char* upperName)
{
    auto read = [parameters](const char* name, double fallback) {
        if (!parameters)
            return fallback;
        const auto f = parameters->parameter(FloatParameterName(name));
        if (!f->isNull() && f->isReadable())
            return f->value();
        const auto i = parameters->parameter(IntegerParameterName(name));
        if (!i->isNull() && i->isReadable())
            return double(i->value());
        return fallback;
    };
    return {read(lowerName, -HUGE_VAL), read(upperName, HUGE_VAL)};
}

// Writes `value` kept within `limits`; false when it had to be kept in.
template <class Write>
bool writeWithin(double value, const Limits& limits, Write write)
{
    const double kept = std::clamp(value, limits.lower, limits.upper);
    write(kept);
    return kept == value;
}

}  // namespace

CameraAutoBrightnessHelper::CameraAutoBrightnessHelper(CalibrationInterface* calibration,
                                                       QSharedPointer<IParameterCollection> parameters,
                                                       QObject* parent)
    : QObject(parent), m_calibration(calibration), m_parameters(std::move(parameters))
{
}

CameraAutoBrightnessHelper::~CameraAutoBrightnessHelper() = default;

void CameraAutoBrightnessHelper::stop()
{
    m_stopRequested = true;
    m_running = false;
}

void CameraAutoBrightnessHelper::pause()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kPauseMs && m_running.load())
        QThread::msleep(10);
}

void CameraAutoBrightnessHelper::doWork()
{
    m_running = !m_stopRequested.load();
    // Nothing may leave a slot run by the thread's start: a camera lost under
    // the loop ends it like any other missing measurement.
    try {
        adjust();
    } catch (const std::exception& e) {
        modellog::warning(QStringLiteral("Automatic brightness ended: %1").arg(QString::fromUtf8(e.what())));
    } catch (...) {
        modellog::warning(QStringLiteral("Automatic brightness ended: Unspecified exception occurred."));
    }
    m_running = false;
    emit AutoBrightnessFinished();
}

void CameraAutoBrightnessHelper::adjust()
{
    const bool sfnc2 = m_parameters && m_parameters->sfncVersion() >= QVersionNumber(2, 0, 0);
    // Older cameras count gain in raw steps, newer ones in dB.
    const Limits gainLimits = sfnc2 ? readLimits(m_parameters.data(), "AutoGainLowerLimit", "AutoGainUpperLimit")
                                    : readLimits(m_parameters.data(), "AutoGainRawLowerLimit", "AutoGainRawUpperLimit");
    const Limits exposureLimits =
        sfnc2 ? readLimits(m_parameters.data(), "AutoExposureTimeLowerLimit", "AutoExposureTimeUpperLimit")
              : readLimits(m_parameters.data(), "AutoExposureTimeAbsLowerLimit", "AutoExposureTimeAbsUpperLimit");
    const double gainFactor = sfnc2 ? 1.0 : 10.0;

    double gainMin = 0.0, gain = 0.0, gainMax = 0.0;
    m_calibration->GetGainRange(gainMin, gain, gainMax);
    m_calibration->SetGainValue(gainMin);
    QVector<QColor> colors;
    m_calibration->GetColorPatchValues(colors, true);
    bool exposureMode = true;

    while (m_running.load()) {
        colors.clear();
        m_calibration->GetColorPatchValues(colors, true);
        double exposureMin = 0.0, exposure = 0.0, exposureMax = 0.0;
        // Without the grey patch or the camera's values there is nothing to
        // steer by (camera gone, chart not sampled): end rather than guess.
        if (colors.size() <= ChartDiscriminator::kGray80PercentIndex ||
            !m_calibration->GetGainRange(gainMin, gain, gainMax) ||
            !m_calibration->GetExposureTimeRange(exposureMin, exposure, exposureMax)) {
            modellog::debug(QStringLiteral("Automatic brightness ended: no measurement"));
            break;
        }
        const QColor& c = colors[ChartDiscriminator::kGray80PercentIndex];
        const double m = std::max({double(c.red()), double(c.green()), double(c.blue()), 1.0});

        const double ratio = kTargetDn / m;
        const double error = ratio - 1.0;

        if (exposureMode) {
            if (gain > gainMin)
                m_calibration->SetGainValue(gainMin);
            const double newExposure = exposure + kDamping * error * exposure;
            modellog::debug(QStringLiteral("Error: %1, OldValue: %2, NewValue: %3")
                                .arg(kDamping * error, 0, 'g')
                                .arg(exposure, 0, 'g')
                                .arg(newExposure, 0, 'g'));
            // At the exposure limit gain takes over.
            exposureMode = writeWithin(newExposure, exposureLimits,
                                       [this](double v) { m_calibration->SetExposureTimeValue(v); });
        } else {
            const double added = gainFactor * kDamping * 10.0 * std::log(ratio);
            const double newGain = gain + added;
            modellog::debug(QStringLiteral("GainError: %1, OldValue: %2, NewValue: %3 Added: %4")
                                .arg(ratio, 0, 'g')
                                .arg(gain, 0, 'g')
                                .arg(newGain, 0, 'g')
                                .arg(added, 0, 'g'));
            // At the gain limit there is nothing left to turn.
            if (!writeWithin(newGain, gainLimits, [this](double v) { m_calibration->SetGainValue(v); }))
                m_running = false;
        }

        pause();
        if (std::abs(100.0 * error) < kTolerancePercent)
            break;
    }
}
