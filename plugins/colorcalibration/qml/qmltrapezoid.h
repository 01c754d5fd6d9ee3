#pragma once

#include <QObject>
#include <QPoint>

class CTrapezoid;
class PointTransformer;

/// One CTrapezoid (image pixels) seen from QML as four corners in view
/// pixels. Without a trapezoid it shows a 2 x 2 placeholder square.
class QmlTrapezoid : public QObject {
    Q_OBJECT
    Q_PROPERTY(QPoint upperLeft READ upperLeft WRITE setUpperLeft NOTIFY upperLeftChanged)
    Q_PROPERTY(QPoint upperRight READ upperRight WRITE setUpperRight NOTIFY upperRightChanged)
    Q_PROPERTY(QPoint lowerRight READ lowerRight WRITE setLowerRight NOTIFY lowerRightChanged)
    Q_PROPERTY(QPoint lowerLeft READ lowerLeft WRITE setLowerLeft NOTIFY lowerLeftChanged)
    Q_PROPERTY(QPoint center READ center NOTIFY centerChanged)
    Q_PROPERTY(QPoint bottomCenter READ bottomCenter NOTIFY bottomCenterChanged)
public:
    explicit QmlTrapezoid(QObject* parent = nullptr);
    /// Neither pointer is owned; both may be null.
    QmlTrapezoid(CTrapezoid* trapezoid, PointTransformer* transformer, QObject* parent = nullptr);

    void setTrapezoid(CTrapezoid* trapezoid);
    void setTransformer(PointTransformer* transformer);

    QPoint upperLeft() const;
    QPoint upperRight() const;
    QPoint lowerRight() const;
    QPoint lowerLeft() const;
    void setUpperLeft(const QPoint& view);
    void setUpperRight(const QPoint& view);
    void setLowerRight(const QPoint& view);
    void setLowerLeft(const QPoint& view);
    /// Where the diagonals cross.
    QPoint center() const;
    QPoint bottomCenter() const;

signals:
    void upperLeftChanged();
    void upperRightChanged();
    void lowerRightChanged();
    void lowerLeftChanged();
    void centerChanged();
    void bottomCenterChanged();
    void resetOutline();

private:
    QPoint toView(const QPoint& image) const;
    QPoint toImage(const QPoint& view) const;
    void cornerMoved();

    CTrapezoid* m_trapezoid = nullptr;
    PointTransformer* m_transformer = nullptr;
};
