#include "pointtransformer.h"

#include <QMutexLocker>

PointTransformer::PointTransformer(QObject* parent) : QObject(parent) {}

QPoint PointTransformer::offset() const
{
    QMutexLocker lock(&m_mutex);
    return m_offset;
}

void PointTransformer::setOffset(const QPoint& offset)
{
    {
        QMutexLocker lock(&m_mutex);
        if (offset == m_offset)
            return;
        m_offset = offset;
    }
    emit offsetChanged();
}

double PointTransformer::scale() const
{
    QMutexLocker lock(&m_mutex);
    return m_scale;
}

void PointTransformer::setScale(double scale)
{
    {
        QMutexLocker lock(&m_mutex);
        if (scale == m_scale)
            return;
        m_scale = scale;
    }
    emit scaleChanged();
}

void PointTransformer::setX(double x)
{
    setOffset(QPoint(int(x), offset().y()));
}

void PointTransformer::setY(double y)
{
    setOffset(QPoint(offset().x(), int(y)));
}

// Truncation, not rounding: the grid must land on the same pixels the session samples.
QPoint PointTransformer::transform(const QPoint& view) const
{
    QMutexLocker lock(&m_mutex);
    return QPoint(int((view.x() - m_offset.x()) * m_scale), int((view.y() - m_offset.y()) * m_scale));
}

QPoint PointTransformer::inverseTransform(const QPoint& image) const
{
    QMutexLocker lock(&m_mutex);
    return QPoint(int(image.x() / m_scale + m_offset.x()), int(image.y() / m_scale + m_offset.y()));
}
