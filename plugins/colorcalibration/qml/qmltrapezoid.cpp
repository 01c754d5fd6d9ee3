#include "qmltrapezoid.h"

#include "ctrapezoid.h"
#include "pointtransformer.h"

#include <QLineF>

namespace {

// What QML sees before a trapezoid is attached.
const CTrapezoid kPlaceholder(QPoint(0, 0), QPoint(2, 0), QPoint(0, 2), QPoint(2, 2));

}  // namespace

QmlTrapezoid::QmlTrapezoid(QObject* parent) : QObject(parent) {}

QmlTrapezoid::QmlTrapezoid(CTrapezoid* trapezoid, PointTransformer* transformer, QObject* parent)
    : QObject(parent), m_trapezoid(trapezoid), m_transformer(transformer)
{
}

void QmlTrapezoid::setTrapezoid(CTrapezoid* trapezoid)
{
    m_trapezoid = trapezoid;
}

void QmlTrapezoid::setTransformer(PointTransformer* transformer)
{
    m_transformer = transformer;
}

QPoint QmlTrapezoid::toView(const QPoint& image) const
{
    return m_transformer ? m_transformer->inverseTransform(image) : image;
}

QPoint QmlTrapezoid::toImage(const QPoint& view) const
{
    return m_transformer ? m_transformer->transform(view) : view;
}

QPoint QmlTrapezoid::upperLeft() const
{
    return m_trapezoid ? toView(m_trapezoid->getTopLeft()) : kPlaceholder.getTopLeft();
}

QPoint QmlTrapezoid::upperRight() const
{
    return m_trapezoid ? toView(m_trapezoid->getTopRight()) : kPlaceholder.getTopRight();
}

QPoint QmlTrapezoid::lowerRight() const
{
    return m_trapezoid ? toView(m_trapezoid->getBottomRight()) : kPlaceholder.getBottomRight();
}

QPoint QmlTrapezoid::lowerLeft() const
{
    return m_trapezoid ? toView(m_trapezoid->getBottomLeft()) : kPlaceholder.getBottomLeft();
}

void QmlTrapezoid::setUpperLeft(const QPoint& view)
{
    if (m_trapezoid)
        m_trapezoid->setTopLeft(toImage(view));
    emit upperLeftChanged();
    cornerMoved();
}

void QmlTrapezoid::setUpperRight(const QPoint& view)
{
    if (m_trapezoid)
        m_trapezoid->setTopRight(toImage(view));
    emit upperRightChanged();
    cornerMoved();
}

void QmlTrapezoid::setLowerRight(const QPoint& view)
{
    if (m_trapezoid)
        m_trapezoid->setBottomRight(toImage(view));
    emit lowerRightChanged();
    cornerMoved();
}

void QmlTrapezoid::setLowerLeft(const QPoint& view)
{
    if (m_trapezoid)
        m_trapezoid->setBottomLeft(toImage(view));
    emit lowerLeftChanged();
    cornerMoved();
}

// The centre and bottom centre follow every corner, so bindings on them must hear of it.
void QmlTrapezoid::cornerMoved()
{
    emit centerChanged();
    emit bottomCenterChanged();
}

QPoint QmlTrapezoid::center() const
{
    const QLineF falling(upperLeft(), lowerRight());
    const QLineF rising(lowerLeft(), upperRight());
    QPointF crossing;
    falling.intersects(rising, &crossing);
    return QPoint(int(crossing.x()), int(crossing.y()));
}

QPoint QmlTrapezoid::bottomCenter() const
{
    const QPoint left = lowerLeft();
    const QPoint right = lowerRight();
    return QPoint(int((left.x() + right.x()) * 0.5), int((left.y() + right.y()) * 0.5));
}
