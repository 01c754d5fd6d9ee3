#include "qmlslidervalue.h"

namespace {

constexpr int kHoldMs = 10;

}  // namespace

QMLSliderValue::QMLSliderValue(ColorCorrectionModel* model, QObject* parent) : QObject(parent), m_model(model)
{
    m_hold.setSingleShot(true);
    m_hold.setInterval(kHoldMs);
}

QString QMLSliderValue::lastError() const
{
    return m_lastError;
}

void QMLSliderValue::startHold()
{
    m_hold.start();
}

bool QMLSliderValue::holding() const
{
    return m_hold.isActive();
}

void QMLSliderValue::setLastError(const QString& message)
{
    m_lastError = message;
    emit lastErrorChanged();
}
