#include "ctrapezoid.h"

CTrapezoid::CTrapezoid(const QPoint& topLeft, const QPoint& topRight, const QPoint& bottomLeft,
                       const QPoint& bottomRight)
    : m_topLeft(topLeft), m_topRight(topRight), m_bottomLeft(bottomLeft), m_bottomRight(bottomRight)
{
}

QPolygon CTrapezoid::toPolygon() const
{
    QPolygon p;
    p << m_topLeft << m_topRight << m_bottomRight << m_bottomLeft << m_topLeft;
    return p;
}

bool CTrapezoid::operator==(const CTrapezoid& o) const
{
    return m_topLeft == o.m_topLeft && m_topRight == o.m_topRight && m_bottomLeft == o.m_bottomLeft &&
           m_bottomRight == o.m_bottomRight;
}
