#pragma once

#include "qmlslidervalue.h"

/// The gain slider: value runs linearly from 0 (range minimum) to 1 (maximum).
class QMLGainvalue : public QMLSliderValue {
    Q_OBJECT
    Q_PROPERTY(double min READ min NOTIFY signalMinChanged)
    Q_PROPERTY(double max READ max NOTIFY signalMaxChanged)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY signalValueChanged)
public:
    explicit QMLGainvalue(ColorCorrectionModel* model, QObject* parent = nullptr);

    /// The camera's gain range (its own unit).
    double min() const;
    double max() const;
    /// -1 while the gain is unknown.
    double value() const;

    Q_INVOKABLE bool initialize();
    Q_INVOKABLE void setValue(double fraction);
    /// Range and value back to -1 (unknown).
    void reset();

public slots:
    /// The camera changed its gain.
    void onChangedValue(double gain);

private:
    double m_min = -1.0;
    double m_max = -1.0;
    double m_value = -1.0;
};
