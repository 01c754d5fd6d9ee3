#pragma once

#include <QImage>
#include <QPointF>
#include <QVector>

/// Final placement of a fitted patch grid on the unreduced image. The grid is
/// the perspective map through the four corner patches' centres; they are
/// moved, together and one by one, in shrinking steps while that lowers the
/// colour spread inside the cells. A cell is uniform only when it lies inside
/// one patch, so the spread pins every cell to its patch more tightly than
/// the reduced image's blurred climb can.
class ChartGridRefiner {
public:
    /// Smallest pitch, in pixels of the image, a grid can be placed at: one
    /// pixel of patch and one of gap. Charts below it are neither refined nor
    /// searched for.
    static constexpr double kMinPitch = 2.0;

    /// `centres`: 24 patch centres in chart order (row * 6 + column), in pixels
    /// of `image`. Returns the refined 24 centres, or the input unchanged when
    /// it is not a grid of 24 or the image is empty.
    static QVector<QPointF> refine(const QImage& image, const QVector<QPointF>& centres);
};
