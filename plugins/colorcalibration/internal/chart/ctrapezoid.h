#pragma once

#include <QPoint>
#include <QPolygon>

/// Four corners of a quadrilateral (the chart grid or one patch) in image
/// pixels. Nothing is checked: the corners need not form a convex shape.
class CTrapezoid {
public:
    CTrapezoid() = default;
    /// Note the order: bottom-left comes before bottom-right.
    CTrapezoid(const QPoint& topLeft, const QPoint& topRight, const QPoint& bottomLeft,
               const QPoint& bottomRight);

    void setTopLeft(const QPoint& p) { m_topLeft = p; }
    void setTopRight(const QPoint& p) { m_topRight = p; }
    void setBottomRight(const QPoint& p) { m_bottomRight = p; }
    void setBottomLeft(const QPoint& p) { m_bottomLeft = p; }

    QPoint getTopLeft() const { return m_topLeft; }
    QPoint getTopRight() const { return m_topRight; }
    QPoint getBottomLeft() const { return m_bottomLeft; }
    QPoint getBottomRight() const { return m_bottomRight; }

    /// Closed outline of five points: top-left, top-right, bottom-right,
    /// bottom-left, top-left (clockwise in image coordinates).
    QPolygon toPolygon() const;

    bool operator==(const CTrapezoid& o) const;
    bool operator!=(const CTrapezoid& o) const { return !(*this == o); }

private:
    QPoint m_topLeft;
    QPoint m_topRight;
    QPoint m_bottomLeft;
    QPoint m_bottomRight;
};
