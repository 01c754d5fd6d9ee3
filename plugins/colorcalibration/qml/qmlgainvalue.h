#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class ColorCorrectionModel;

/// The gain slider: value runs linearly from 0 (range minimum) to 1 (maximum).
class QMLGainvalue : public QObject {
    Q_OBJECT
    Q_PROPERTY(double min READ min NOTIFY signalMinChanged)
    Q_PROPERTY(double max READ max NOTIFY signalMaxChanged)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY signalValueChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
public:
    explicit QMLGainvalue(ColorCorrectionModel* model, QObject* parent = nullptr);

    /// The camera's gain range (its own unit).
    double min() const;
    double max() const;
    /// -1 while the gain is unknown.
    double value() const;
    QString lastError() const;

    Q_INVOKABLE bool initialize();
    Q_INVOKABLE void setValue(double fraction);
    /// Range and value back to -1 (unknown).
    void reset();

public slots:
    /// The camera changed its gain.
    void onChangedValue(double gain);

signals:
    void signalMinChanged();
    void signalMaxChanged();
    void signalValueChanged();
    void lastErrorChanged();

private:
    ColorCorrectionModel* m_model;
    double m_min = -1.0;
    double m_max = -1.0;
    double m_value = -1.0;
    QTimer m_timer;
    bool m_pending = false;
    QString m_lastError;
};
