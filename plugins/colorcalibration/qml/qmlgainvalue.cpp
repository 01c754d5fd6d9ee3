#include "qmlgainvalue.h"

#include "colorcorrectionmodel.h"

#include <cmath>

namespace {

// Camera-side changes smaller than this share of the range are not worth a slider jump.
constexpr double kNotifyThreshold = 0.003;

}  // namespace

QMLGainvalue::QMLGainvalue(ColorCorrectionModel* model, QObject* parent) : QMLSliderValue(model, parent)
{
}

double QMLGainvalue::min() const
{
    return m_min;
}

double QMLGainvalue::max() const
{
    return m_max;
}

double QMLGainvalue::value() const
{
    if (m_value < 0)
        return -1;
    return (m_value - m_min) / (m_max - m_min);
}

bool QMLGainvalue::initialize()
{
    double min = 0, value = 0, max = 0;
    if (!m_model->GetGainRange(min, value, max))
        return false;
    const bool rangeMoved = min != m_min || max != m_max;
    m_min = min;
    m_max = max;
    m_value = value;
    if (rangeMoved) {
        emit signalMinChanged();
        emit signalMaxChanged();
    }
    if (!m_model->SetGainValue(value))
        return false;
    emit signalValueChanged();
    return true;
}

void QMLGainvalue::setValue(double fraction)
{
    if (fraction < 0)
        return;
    const double gain = fraction * (m_max - m_min) + m_min;
    if (std::abs(gain - m_value) <= 1e-6)
        return;
    m_value = gain;
    startHold();
    if (!m_model->SetGainValue(gain))
        setLastError(tr("Couldn't set gain value!<br>"));
}

void QMLGainvalue::reset()
{
    m_min = -1.0;
    m_max = -1.0;
    m_value = -1.0;
}

void QMLGainvalue::onChangedValue(double gain)
{
    if (gain == m_value)
        return;
    const double old = m_value;
    m_value = gain;
    if (std::abs(old - gain) / (m_max - m_min) > kNotifyThreshold && !holding()) {
        startHold();
        emit signalValueChanged();
    }
}
