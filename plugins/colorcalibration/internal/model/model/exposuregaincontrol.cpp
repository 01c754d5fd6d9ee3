#include "exposuregaincontrol.h"

#include "core/baseexception.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QVersionNumber>

using ParameterCollection::FloatParameterName;
using ParameterCollection::IntegerParameterName;

namespace {

// GainRaw counts hundredths of the session's gain unit.
constexpr double kGainRawScale = 100.0;

}  // namespace

ExposureGainControl::ExposureGainControl(
    const QSharedPointer<ParameterCollection::IParameterCollection>& parameters)
{
    if (!parameters)
        throw Core::Exception::BaseException("No parameter collection");
    if (parameters->sfncVersion() < QVersionNumber(2, 0, 0)) {
        m_gainRaw = parameters->parameter(IntegerParameterName("GainRaw"));
    } else {
        m_gain = parameters->parameter(FloatParameterName("Gain"));
        if (m_gain->isNull())
            m_gain = parameters->parameter(FloatParameterName("GainAbs"));
    }
    m_exposureTime = parameters->parameter(FloatParameterName("ExposureTimeAbs"));
    if (m_exposureTime->isNull())
        m_exposureTime = parameters->parameter(FloatParameterName("ExposureTime"));
}

ExposureGainControl::~ExposureGainControl() = default;

bool ExposureGainControl::exposureRange(double& min, double& value, double& max) const
{
    if (m_exposureTime->isNull() || !m_exposureTime->isReadable())
        return false;
    min = m_exposureTime->minimum();
    value = m_exposureTime->value();
    max = m_exposureTime->maximum();
    return true;
}

bool ExposureGainControl::setExposure(double exposureUs)
{
    if (m_exposureTime->isNull() || !m_exposureTime->isWritable())
        return false;
    m_exposureTime->setValue(exposureUs);
    return true;
}

bool ExposureGainControl::gainRange(double& min, double& value, double& max) const
{
    if (m_gain && !m_gain->isNull() && m_gain->isReadable()) {
        min = m_gain->minimum();
        value = m_gain->value();
        max = m_gain->maximum();
        return true;
    }
    if (m_gainRaw && !m_gainRaw->isNull() && m_gainRaw->isReadable()) {
        min = m_gainRaw->minimum() / kGainRawScale;
        value = m_gainRaw->value() / kGainRawScale;
        max = m_gainRaw->maximum() / kGainRawScale;
        return true;
    }
    return false;
}

bool ExposureGainControl::setGain(double gain)
{
    if (m_gain && !m_gain->isNull()) {
        if (!m_gain->isWritable())
            return false;
        m_gain->setValue(gain);
        return true;
    }
    if (m_gainRaw && !m_gainRaw->isNull() && m_gainRaw->isWritable()) {
        m_gainRaw->setValue(static_cast<qint64>(gain * kGainRawScale));
        return true;
    }
    return false;
}

ParameterCollection::Parameter* ExposureGainControl::exposureParameter() const
{
    return m_exposureTime.data();
}

ParameterCollection::Parameter* ExposureGainControl::gainParameter() const
{
    return m_gain ? static_cast<ParameterCollection::Parameter*>(m_gain.data()) : m_gainRaw.data();
}

double ExposureGainControl::notifiedGain(double notified) const
{
    return m_gain ? notified : notified * kGainRawScale;
}
