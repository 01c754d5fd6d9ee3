#pragma once

#include "ctrapezoid.h"

#include <QColor>
#include <QObject>
#include <QQmlListProperty>
#include <QString>
#include <QVector>

#include <memory>
#include <vector>

class ColorCorrectionModel;
class PointTransformer;
class QmlTrapezoid;

/// The grid outline, the 24 patch outlines the session derives from it (in
/// chart order), the patches' original, target and calibrated colours, and
/// hit-testing of a view position with the selected patch.
class QmlTrapezoidList : public QObject {
    Q_OBJECT
    Q_PROPERTY(QQmlListProperty<QmlTrapezoid> list READ list NOTIFY listChanged)
    Q_PROPERTY(int selectedPatch READ selectedPatch NOTIFY selectedPatchChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
public:
    QmlTrapezoidList(ColorCorrectionModel* model, PointTransformer* transformer, QObject* parent = nullptr);
    ~QmlTrapezoidList() override;

    QQmlListProperty<QmlTrapezoid> list();
    int selectedPatch() const;
    QString lastError() const;
    /// The grid outline in image pixels, wrapped by the facade's outline item.
    CTrapezoid* outline();

    /// Hands the outline to the session and rebuilds the patch items from its answer.
    Q_INVOKABLE void update();
    Q_INVOKABLE int count() const;
    Q_INVOKABLE QColor originalColorAt(int index) const;
    Q_INVOKABLE QColor targetColorAt(int index) const;
    Q_INVOKABLE QColor calibratedColorAt(int index) const;
    /// View pixels. Selects the patch under the point; its top triangle shows the
    /// target, its lower left the original and its lower right the calibrated colour.
    Q_INVOKABLE QColor colorAtPoint(int x, int y);
    Q_INVOKABLE QString textOfColor(const QColor& color) const;

    /// Takes the session's stored grid position as the outline.
    void reset();
    void fetchColorPatchValues();
    /// View pixels; -1 when no patch contains the point.
    int patchIndexAtPoint(int x, int y) const;
    /// 1 top triangle, 2 lower left, 3 lower right, -1 outside.
    int patchPartitionAtPoint(int index, int x, int y) const;
    int trapezoidCount() const;
    QmlTrapezoid* trapezoidAt(int index) const;

signals:
    void listChanged();
    void selectedPatchChanged();
    void lastErrorChanged();

private:
    ColorCorrectionModel* m_model;
    PointTransformer* m_transformer;
    QVector<CTrapezoid> m_patches;
    std::vector<std::unique_ptr<QmlTrapezoid>> m_items;
    CTrapezoid m_outline;
    QVector<QColor> m_originalColors;
    QVector<QColor> m_targetColors;
    QVector<QColor> m_calibratedColors;
    int m_selectedPatch = -1;
    QString m_lastError;
};
