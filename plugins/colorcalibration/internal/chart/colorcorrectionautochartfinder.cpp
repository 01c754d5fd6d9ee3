#include "colorcorrectionautochartfinder.h"

#include "chartextendedsearch.h"
#include "chartgridcheck.h"
#include "chartlog.h"
#include "colorcorrectionautochartfinderimpl.h"

#include <QElapsedTimer>

#include <cmath>

namespace {

const int kResultTypeId = qRegisterMetaType<ColorCorrectionAutoChartFinderResult>("ColorCorrectionAutoChartFinderResult");

bool within(const QPoint& p, const QSize& s)
{
    return p.x() >= 0 && p.x() <= s.width() && p.y() >= 0 && p.y() <= s.height();
}

// Cells off their patches that a grid in place may show: a covering object
// reads as one colour over most of its patch, so only an edge crossing a
// cell's middle counts. Refusing a grid is always better than a wrong one.
constexpr int kMaxCellsOffPatches = 1;

// The last word on either search's grid: one whose cells sit off their
// patches by a good part of a pitch would make the calibration measure patch
// borders. It decides only which results are reported valid; the standard
// search itself runs as it is.
bool gridOnPatches(const QImage& image, const ColorCorrectionAutoChartFinderResult& r)
{
    const int off = ChartGridCheck::cellsOffPatches(
        image, ChartGridCheck::centresOfCorners({r.topLeft, r.topRight, r.bottomLeft, r.bottomRight}));
    return off <= kMaxCellsOffPatches;
}

}  // namespace

ColorCorrectionAutoChartFinder::ColorCorrectionAutoChartFinder(QObject* parent)
    : QObject(parent), m_impl(std::make_unique<ColorCorrectionAutoChartFinderImpl>())
{
    (void)kResultTypeId;
}

ColorCorrectionAutoChartFinder::~ColorCorrectionAutoChartFinder() = default;

ColorCorrectionAutoChartFinderResult ColorCorrectionAutoChartFinder::GetChartPosition(QImage image)
{
    const QSize size = image.size();
    QElapsedTimer timer;
    timer.start();
    if (!image.isNull() && !ColorCorrectionAutoChartFinderImpl::worthSearching(size))
        qCDebug(chartLog, "%dx%d image not searched: too small for the grid or too tall for its width", size.width(),
                size.height());
    ColorCorrectionAutoChartFinderResult result = validate(m_impl->GetChartPosition(image), size);
    result.valid = result.valid && gridOnPatches(image, result);
    if (result.valid) {
        result.foundBy = ColorCorrectionAutoChartFinderResult::Search::Standard;
    } else if (m_extended.enabled) {
        const ColorCorrectionAutoChartFinderResult extended =
            validate(ChartExtendedSearch::find(*m_impl, image, m_extended), size);
        if (extended.valid && gridOnPatches(image, extended)) {
            result = extended;
            result.foundBy = ColorCorrectionAutoChartFinderResult::Search::Extended;
        }
    }
    if (result.valid)
        qCDebug(chartLog, "chart found by the %s search in %lld ms",
                result.foundBy == ColorCorrectionAutoChartFinderResult::Search::Standard ? "standard" : "extended",
                timer.elapsed());
    else
        qCDebug(chartLog, "no chart in the %dx%d image (%lld ms)", size.width(), size.height(), timer.elapsed());
    emit autoChartFinderFinished(result);
    return result;
}

ColorCorrectionAutoChartFinderResult ColorCorrectionAutoChartFinder::validate(const QVector<QPoint>& corners,
                                                                              const QSize& imageSize)
{
    ColorCorrectionAutoChartFinderResult r;
    if (corners.size() != 4)
        return r;
    r.topLeft = corners[0];
    r.topRight = corners[1];
    r.bottomLeft = corners[2];
    r.bottomRight = corners[3];

    // The corners name the chart's own corners, so a chart turned by a quarter
    // turn has its top-left elsewhere in the image. The rules below are about
    // the grid as it appears in the image: relabel the corners by the quarter
    // turn of the grid's row direction first. A mirrored or crossed list stays
    // out of order after any turn and is rejected.
    const QPoint row = (r.topRight - r.topLeft) + (r.bottomRight - r.bottomLeft);
    const int turn = ((int(std::lround(std::atan2(double(row.y()), double(row.x())) / (M_PI / 2))) % 4) + 4) % 4;
    QPoint tl = r.topLeft, tr = r.topRight, bl = r.bottomLeft, br = r.bottomRight;
    switch (turn) {
    case 1:  // turned clockwise: the chart's top edge runs down the image's right side
        tl = r.bottomLeft, tr = r.topLeft, bl = r.bottomRight, br = r.topRight;
        break;
    case 2:
        tl = r.bottomRight, tr = r.bottomLeft, bl = r.topRight, br = r.topLeft;
        break;
    case 3:
        tl = r.topRight, tr = r.bottomRight, bl = r.topLeft, br = r.bottomLeft;
        break;
    default:
        break;
    }
    // Bottom-left y is tested for zero, not for being negative.
    const bool inside = within(tl, imageSize) && within(tr, imageSize) && within(br, imageSize) &&
                        bl.x() >= 0 && bl.x() <= imageSize.width() && bl.y() <= imageSize.height() && bl.y() != 0;
    const bool ordered = tl.x() < tr.x() && tl.y() < bl.y() && tr.y() < br.y() && br.x() > bl.x();
    r.valid = inside && ordered;
    return r;
}
