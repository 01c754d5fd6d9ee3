#pragma once

#include "colorcorrectionautochartfinderresult.h"
#include "extendedchartsearchparameters.h"

#include <QImage>
#include <QObject>
#include <QVector>

#include <memory>

class ColorCorrectionAutoChartFinderImpl;

/// Finds the 24-patch chart in one still image. Stateless between calls; runs
/// synchronously in the caller's thread.
class ColorCorrectionAutoChartFinder : public QObject {
    Q_OBJECT
public:
    explicit ColorCorrectionAutoChartFinder(QObject* parent = nullptr);
    ~ColorCorrectionAutoChartFinder() override;

    /// Returns the grid corners and emits them; `valid` is false when no chart
    /// was found or the corners fail the plausibility rules. The standard
    /// search runs first; the extended one only when it finds nothing.
    ColorCorrectionAutoChartFinderResult GetChartPosition(QImage image);

    const ExtendedChartSearchParameters& extendedSearchParameters() const { return m_extended; }
    void setExtendedSearchParameters(const ExtendedChartSearchParameters& parameters) { m_extended = parameters; }

    /// The plausibility rules on a list of corners (top-left, top-right,
    /// bottom-left, bottom-right of the chart) for an image of `imageSize`:
    /// inside the image (the border included; bottom-left y must not be 0) and
    /// in order. A chart turned by a quarter or half turn is judged as it
    /// appears in the image, so its corners pass; mirrored or crossed lists fail.
    static ColorCorrectionAutoChartFinderResult validate(const QVector<QPoint>& corners, const QSize& imageSize);

signals:
    void autoChartFinderFinished(ColorCorrectionAutoChartFinderResult result);

private:
    std::unique_ptr<ColorCorrectionAutoChartFinderImpl> m_impl;
    ExtendedChartSearchParameters m_extended;
};
