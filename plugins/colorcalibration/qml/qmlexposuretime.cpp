#include "qmlexposuretime.h"

#include "colorcorrectionmodel.h"

#include <cmath>

namespace {

// Camera-side changes smaller than this share of the slider are not worth a slider jump.
constexpr double kNotifyThreshold = 0.003;

}  // namespace

QMLExposureTime::QMLExposureTime(ColorCorrectionModel* model, QObject* parent) : QMLSliderValue(model, parent)
{
}

double QMLExposureTime::min() const
{
    return m_sliderMin;
}

void QMLExposureTime::setMin(double min)
{
    if (min == m_sliderMin)
        return;
    m_sliderMin = min;
    emit signalMinChanged();
}

double QMLExposureTime::max() const
{
    return m_sliderMax;
}

void QMLExposureTime::setMax(double max)
{
    if (max == m_sliderMax)
        return;
    m_sliderMax = max;
    emit signalMaxChanged();
}

double QMLExposureTime::value()
{
    if (m_valueUs <= 0)
        return -1;
    setMin(m_minUs > 1 ? std::log10(m_minUs) : 0.0);
    setMax(std::log10(m_maxUs));
    return std::log10(m_valueUs);
}

bool QMLExposureTime::initialize()
{
    double min = 0, value = 0, max = 0;
    if (!m_model->GetExposureTimeRange(min, value, max))
        return false;
    m_minUs = min;
    m_maxUs = max;
    m_valueUs = value;
    if (!m_model->SetExposureTimeValue(value))
        return false;
    emit signalValueChanged();
    return true;
}

void QMLExposureTime::setValue(double logExposure)
{
    if (logExposure <= 0)
        return;
    const double exposureUs = std::pow(10.0, logExposure);
    // Kept as it always was: the stored value is overwritten with the slider value
    // before the comparison, so every positive slider value reaches the camera.
    m_valueUs = logExposure;
    if (std::abs(exposureUs - m_valueUs) <= 1e-6)
        return;
    m_valueUs = exposureUs;
    startHold();
    if (!m_model->SetExposureTimeValue(exposureUs))
        setLastError(tr("Couldn't set exposureTime!<br>"));
}

void QMLExposureTime::reset()
{
    m_minUs = -1.0;
    m_maxUs = -1.0;
    m_valueUs = -1.0;
}

void QMLExposureTime::onChangedValue(double exposureUs)
{
    if (exposureUs == m_valueUs)
        return;
    const double old = m_valueUs;
    m_valueUs = exposureUs;
    // Only the old value's logarithm is divided by the range, as the slider always did.
    const double change = std::abs(std::log10(exposureUs) - std::log10(old) / (std::log10(m_maxUs) - std::log10(m_minUs)));
    if (change > kNotifyThreshold && !holding()) {
        startHold();
        emit signalValueChanged();
    }
}
