#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class ColorCorrectionModel;

/// What the exposure-time and gain sliders share: their change signals, the last error, and a short
/// hold after every change, during which the camera's own changes do not move the slider.
class QMLSliderValue : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
public:
    QString lastError() const;

signals:
    void signalMinChanged();
    void signalMaxChanged();
    void signalValueChanged();
    void lastErrorChanged();

protected:
    QMLSliderValue(ColorCorrectionModel* model, QObject* parent);

    void startHold();
    bool holding() const;
    void setLastError(const QString& message);

    ColorCorrectionModel* const m_model;

private:
    QTimer m_hold;
    QString m_lastError;
};
