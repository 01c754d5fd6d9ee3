#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QVector>

#include <dlib/matrix.h>

/// The image analysis behind ColorCorrectionAutoChartFinder. Holds no state;
/// every operation works on its own copies. Numeric fields are indexed [x][y].
class ColorCorrectionAutoChartFinderImpl {
public:
    using FloatMatrix = dlib::matrix<float>;

    /// Analysis width: every input is reduced to this many pixels across.
    static constexpr int kWorkingWidth = 640;

    /// The four grid corners in full-size pixels (top-left, top-right,
    /// bottom-left, bottom-right in chart order), or a list of another length
    /// when no chart was found.
    QVector<QPoint> GetChartPosition(QImage image);

    /// Separable running-sum box blur of window 2 * radius + 1, into ARGB32.
    QImage boxFilter(QImage image, int radius);
    /// Keeps the channels selected by `mask` ((1,0,0), (0,1,0) or (0,0,1)).
    QImage killAllChannelBut(QColor mask, QImage image);
    /// Per pixel: channel sum of numerator over that of denominator (1 where the
    /// denominator is 0); a 1x1 zero matrix when the images differ in size or format.
    FloatMatrix divideQImage(QImage numerator, QImage denominator);
    /// Green values along a line, the first weighted `count`, the last 1.
    float reverseWeightedSum(QImage image, QPoint start, int stepY, int stepX, int count);
    /// Moves `start` one pixel per axis and round towards the side with more
    /// green (direction +1) or less (-1), for radii startRadius .. round(maxRadius).
    QPoint findPatchCenter(QImage image, QPoint start, double maxRadius, int direction, int startRadius);
    /// Centres of the search model's nine patches for the best-scoring
    /// position, pitch and angle; empty when nothing resembles the chart.
    QVector<QPoint> getInitialRegressionPatches(QImage image);
    /// Design matrix over grid coordinates (column, row): 1, column, row and,
    /// with `secondOrder`, column * row, column^2, row^2.
    FloatMatrix buildPatchMatrix(QVector<QPoint> gridCoordinates, bool secondOrder);
    /// All 24 centres in chart order, or a shorter list when the fit fails or
    /// the colours at the fitted centres do not match the chart.
    QVector<QPoint> getAllPatchCenter(QImage image, QVector<QPoint> initialCenters);
    /// Outer grid corners from the 24 centres, in CTrapezoid order.
    QVector<QPoint> getColorCheckerCorners(QVector<QPoint> centers);
    /// Clamps `value` into [0, limit].
    void checkError(float& value, float unused, int limit);
    int calculateHGap(QPoint a, QPoint b);
    int calculateVGap(QPoint a, QPoint b);

    /// Grid coordinates (column, row) of the search model's nine patches, in
    /// the order getInitialRegressionPatches returns their centres.
    static QVector<QPoint> modelPatches();
};
