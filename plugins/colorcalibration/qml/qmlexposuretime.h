#pragma once

#include "qmlslidervalue.h"

/// The exposure-time slider: min, max and value are base-10 logarithms of
/// the camera's exposure time (µs).
class QMLExposureTime : public QMLSliderValue {
    Q_OBJECT
    Q_PROPERTY(double min READ min WRITE setMin NOTIFY signalMinChanged)
    Q_PROPERTY(double max READ max WRITE setMax NOTIFY signalMaxChanged)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY signalValueChanged)
public:
    explicit QMLExposureTime(ColorCorrectionModel* model, QObject* parent = nullptr);

    /// Published slider minimum: log10 of the range minimum, 0 when that is 1 µs or less.
    double min() const;
    void setMin(double min);
    double max() const;
    void setMax(double max);
    /// -1 while the exposure time is unknown.
    double value();

    Q_INVOKABLE bool initialize();
    Q_INVOKABLE void setValue(double logExposure);
    /// Range and value back to -1 (unknown).
    void reset();

public slots:
    /// The camera changed its exposure time (µs).
    void onChangedValue(double exposureUs);

private:
    double m_minUs = -1.0;
    double m_maxUs = -1.0;
    double m_valueUs = -1.0;
    double m_sliderMin = 0.0;
    double m_sliderMax = 0.0;
};
