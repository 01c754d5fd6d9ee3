#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QVector>

#include <dlib/matrix.h>

#include <functional>
#include <vector>

/// The image analysis behind ColorCorrectionAutoChartFinder. Holds no state;
/// every operation works on its own copies. Numeric fields are indexed [x][y].
class ColorCorrectionAutoChartFinderImpl {
public:
    using FloatMatrix = dlib::matrix<float>;

    /// Analysis width: every input is reduced to this many pixels across.
    static constexpr int kWorkingWidth = 640;

    /// One placement of the search model on the ratio fields.
    struct Candidate {
        QPoint centre;    ///< working pixels
        int pitch = 0;    ///< working pixels
        float angle = 0;  ///< radians, search angle
        float score = 0;  ///< mean of the two ratio correlations, 1 = perfect
    };
    /// The placements a search tries: every pitch (in order) at every angle,
    /// centres on a grid of a third of the pitch, kept the given number of
    /// pitches from the image's sides.
    struct SearchLadder {
        std::vector<int> pitches;
        std::vector<float> angles;
        double xMargin = 2.0;
        double yMargin = 1.5;
        /// With more than one kept candidate, only those scoring above this count.
        float minScore = 0.0f;
        /// Above 0, placements scoring within this of the bar are scored
        /// again without up to `samplesLeftOut` of the model's samples, those
        /// matching worst: covered patches among the nine then hide no chart.
        float leaveOutSlack = 0.0f;
        int samplesLeftOut = 1;
    };
    /// Accepts or refuses a settled grid: its 24 centres in working pixels and
    /// in full-size pixels, both in chart order.
    using GridAcceptance = std::function<bool(const QVector<QPoint>& working, const QVector<QPointF>& full)>;

    /// Working copies are made by width, so a frame much taller than wide
    /// would make one of millions of pixels: portrait frames of cameras and
    /// phones are at most 16:9; taller ones are not searched.
    static constexpr int kMaxHeightPerWidth = 4;
    /// Whether the searches look at an image of this size at all: it must hold
    /// the chart's grid at the smallest pitch a grid is placed at
    /// (ChartGridRefiner::kMinPitch), upright or turned by a quarter, and be
    /// at most kMaxHeightPerWidth times as tall as wide. Both searches give
    /// up at once on other images.
    static bool worthSearching(const QSize& imageSize);
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
    /// Red over green and blue over green (divideQImage of the single channels).
    struct RatioFields {
        FloatMatrix rg, bg;
    };
    RatioFields ratioFields(const QImage& image);
    /// Green values along a line, the first weighted `count`, the last 1.
    float reverseWeightedSum(QImage image, QPoint start, int stepY, int stepX, int count);
    /// Moves `start` one pixel per axis and round towards the side with more
    /// green (direction +1) or less (-1), for radii startRadius .. round(maxRadius).
    QPoint findPatchCenter(QImage image, QPoint start, double maxRadius, int direction, int startRadius);
    /// Centres of the search model's nine patches for the best-scoring
    /// position, pitch and angle; empty when nothing resembles the chart.
    /// Pitches below `minPitch` (working pixels) are not searched.
    QVector<QPoint> getInitialRegressionPatches(QImage image, double minPitch = 0.0);
    /// The best placements over the ladder, best first: with `keep` 1 the single
    /// best; otherwise up to `keep` placements at least two pitches apart.
    static std::vector<Candidate> searchPlacements(const FloatMatrix& rg, const FloatMatrix& bg,
                                                   const SearchLadder& ladder, int keep);
    /// The nine model centres of a placement after a finer search scored on
    /// all 24 patches (red and blue over green ratio fields, working pixels);
    /// `score` receives that search's best score (as Candidate::score). With
    /// `patchesLeftOut` above 0 each placement is scored without up to that
    /// many patches, those whose colours match worst (covered ones).
    QVector<QPoint> refinePlacement(const FloatMatrix& rg, const FloatMatrix& bg, const Candidate& candidate,
                                    float* score = nullptr, int patchesLeftOut = 0);
    /// From the nine model centres on `blurred` (a blurred copy of `working`,
    /// which is `image` reduced by `scale`) to the grid corners in full-size
    /// pixels: completes and refines the grid, places it on the full-size
    /// image and asks `accept`; an empty list when any step fails. With
    /// `workingPixelCorners` the corners are rounded in working pixels and
    /// scaled up truncated, as the standard search does; without, they are
    /// rounded once in full-size pixels, which a small chart in a large
    /// frame needs (a working pixel can be a third of its pitch).
    /// `patchesLeftOut` as for getAllPatchCenter.
    QVector<QPoint> placeGrid(const QImage& image, const QImage& blurred, const QVector<QPoint>& initial,
                              double scale, const GridAcceptance& accept, bool workingPixelCorners = true,
                              int patchesLeftOut = 0);
    /// Design matrix over grid coordinates (column, row): 1, column, row and,
    /// with `secondOrder`, column * row, column^2, row^2.
    FloatMatrix buildPatchMatrix(QVector<QPoint> gridCoordinates, bool secondOrder);
    /// All 24 centres in chart order, or a shorter list when the fit fails or
    /// the colours at the fitted centres do not match the chart; the colour
    /// match leaves out up to `patchesLeftOut` patches, those matching worst.
    QVector<QPoint> getAllPatchCenter(QImage image, QVector<QPoint> initialCenters, int patchesLeftOut = 0);
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
