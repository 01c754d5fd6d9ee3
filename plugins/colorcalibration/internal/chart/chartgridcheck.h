#pragma once

#include <QImage>
#include <QPoint>
#include <QPointF>
#include <QVector>

/// Second opinion on a fitted patch grid, from the unblurred working image:
/// a grid one row, one column or half a cell beside the chart still sits on
/// coloured areas and can pass the colour-ratio match, but then its cells
/// straddle patch borders, its grey row is not a neutral ramp, or its hues
/// do not follow the chart's.
class ChartGridCheck {
public:
    struct Measures {
        /// Colour spread inside the cells over the colour step between
        /// neighbouring cells (upper quartile over the cells); small when every
        /// cell sits inside one patch.
        double cellSpread = 1.0;
        /// Steps along the grey row (white to black) that get darker, 0..5.
        int greyStepsDown = 0;
        /// Lightness range of the grey row over the mean neighbour step.
        double greyRange = 0.0;
        /// Largest fall in lightness from one grey cell to a later one, over
        /// the mean neighbour step: the range, unless an end is covered.
        double greyDrop = 0.0;
        /// Chroma of the third most neutral grey cell over the median of the colour cells,
        /// after balancing on the grey row.
        double greyChroma = 1.0;
        /// Share of the borders between neighbouring cells whose colour is that
        /// of the chart's background (the median border colour), 0..1; low
        /// when borders fall on patches.
        double bordersOnBackground = 0.0;
        /// Agreement of the colour cells' hues with the chart's, -1..1.
        double hueAgreement = -1.0;
    };

    /// Measures the grid given by 24 centres in chart order (row * 6 + column)
    /// on an 8-bit sRGB image; all measures keep their failing defaults when
    /// the grid leaves the image.
    static Measures measure(const QImage& image, const QVector<QPoint>& centres);
    /// Whether the measures describe the chart in its place.
    static bool accepts(const Measures& m);
    /// All of `accepts` but the share of borders on the chart's background,
    /// and the grey row's largest fall for its range (either end may be covered):
    /// for grids whose placement is proven otherwise (see shiftMargin and
    /// halfShiftContrast), on charts whose gaps are not one colour (prints,
    /// frames shading off, other makers).
    static bool acceptsWithoutBorders(const Measures& m);
    /// The lowest cell spread of the grid moved by half a cell along either
    /// axis over the grid's own: well above 1 when the cells lie inside the
    /// patches and moving them puts them across patch borders. 0 when the grid
    /// leaves the image or no move stays inside it.
    static double halfShiftContrast(const QImage& image, const QVector<QPointF>& centres);
    /// How much better the hues of the grid agree with the chart's than those
    /// of the best of the eight grids moved by one column and/or row (on the
    /// -1..2 scale of differences of hue agreements); the moved grids follow
    /// the perspective of the corner cells, and those leaving the image do not
    /// compete. -2 when the grid itself leaves the image.
    static double shiftMargin(const QImage& image, const QVector<QPointF>& centres);
    /// Cells whose middle (+-0.25 of a pitch along both grid axes) is not of
    /// one colour: one half of it differs from the other by more than 0.3 of
    /// the colour step between neighbouring cells, or by more than three times
    /// the difference of the quietest quarter of the cells where the patches
    /// are textured (prints), up to twice that. A cell off its patch by
    /// more than about 0.15 of a pitch reaches the gap beside it, so a
    /// grid off by that much shows it in most of its light cells, while a few
    /// covered patches spoil only their own. 24 when the grid leaves the image.
    static int cellsOffPatches(const QImage& image, const QVector<QPointF>& centres);
    /// The 24 patch centres of the grid with the given outer corners
    /// (top-left, top-right, bottom-left, bottom-right in chart order), the
    /// grid mapped projectively; empty when the corners span no quadrilateral.
    static QVector<QPointF> centresOfCorners(const QVector<QPoint>& corners);
};
