#pragma once

#include <QMutex>
#include <QObject>
#include <QPoint>

/// Maps between view (canvas) pixels and camera image pixels. Every
/// conversion truncates toward zero. Readable from any thread.
class PointTransformer : public QObject {
    Q_OBJECT
    Q_PROPERTY(QPoint offset READ offset WRITE setOffset NOTIFY offsetChanged)
    /// Image pixels per view pixel.
    Q_PROPERTY(double scale READ scale WRITE setScale NOTIFY scaleChanged)
public:
    explicit PointTransformer(QObject* parent = nullptr);

    QPoint offset() const;
    void setOffset(const QPoint& offset);
    double scale() const;
    void setScale(double scale);
    Q_INVOKABLE void setX(double x);
    Q_INVOKABLE void setY(double y);

    /// View to image.
    QPoint transform(const QPoint& view) const;
    /// Image to view.
    QPoint inverseTransform(const QPoint& image) const;

signals:
    void offsetChanged();
    void scaleChanged();

private:
    mutable QMutex m_mutex;
    QPoint m_offset;
    double m_scale = 1.0;
};
