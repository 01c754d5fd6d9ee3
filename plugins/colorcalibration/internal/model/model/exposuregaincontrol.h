#pragma once

#include <QSharedPointer>

namespace ParameterCollection {
class FloatParameter;
class IntegerParameter;
class IParameterCollection;
class Parameter;
}  // namespace ParameterCollection

/// A camera's exposure time and gain, whichever features its generation has:
/// ExposureTimeAbs, else ExposureTime (us); on SFNC 2.x Gain, else GainAbs
/// (dB); on older cameras GainRaw, offered as GainRaw / 100. A feature that is
/// missing or not readable (writable) gives false; parameter errors propagate.
class ExposureGainControl {
public:
    /// Picks the features; throws Core::Exception::BaseException without a collection.
    explicit ExposureGainControl(const QSharedPointer<ParameterCollection::IParameterCollection>& parameters);
    ~ExposureGainControl();

    bool exposureRange(double& min, double& value, double& max) const;
    bool setExposure(double exposureUs);
    bool gainRange(double& min, double& value, double& max) const;
    bool setGain(double gain);

    /// The parameters whose change notifications the session passes on.
    ParameterCollection::Parameter* exposureParameter() const;
    ParameterCollection::Parameter* gainParameter() const;
    /// The value a gain change notification reports: GainRaw is multiplied by
    /// 100 there, not divided as gainRange() does; kept as designed.
    double notifiedGain(double notified) const;

private:
    QSharedPointer<ParameterCollection::FloatParameter> m_exposureTime;
    QSharedPointer<ParameterCollection::FloatParameter> m_gain;      // null on SFNC 1.x
    QSharedPointer<ParameterCollection::IntegerParameter> m_gainRaw; // null on SFNC 2.x
};
