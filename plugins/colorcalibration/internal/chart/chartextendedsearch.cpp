#include "chartextendedsearch.h"

#include "chartgridcheck.h"
#include "chartgridrefiner.h"
#include "colorcorrectionautochartfinder.h"
#include "colorcorrectionautochartfinderimpl.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

// Normalised box blur through a summed-area table: unlike the standard
// search's running sum it keeps flat areas at their level, which matters for
// the small radii the fine band uses.
QImage meanBlur(const QImage& source, int radius)
{
    if (radius < 1)
        return source;
    const int w = source.width(), h = source.height();
    std::vector<uint32_t> table(size_t(w + 1) * (h + 1) * 3, 0);
    auto at = [&](int x, int y, int c) -> uint32_t& { return table[(size_t(y) * (w + 1) + x) * 3 + c]; };
    for (int y = 0; y < h; ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(source.constScanLine(y));
        uint32_t row[3] = {0, 0, 0};
        for (int x = 0; x < w; ++x) {
            row[0] += qRed(line[x]);
            row[1] += qGreen(line[x]);
            row[2] += qBlue(line[x]);
            for (int c = 0; c < 3; ++c)
                at(x + 1, y + 1, c) = at(x + 1, y, c) + row[c];
        }
    }
    QImage out(w, h, QImage::Format_ARGB32);
    for (int y = 0; y < h; ++y) {
        const int y0 = std::max(0, y - radius), y1 = std::min(h, y + radius + 1);
        QRgb* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int x0 = std::max(0, x - radius), x1 = std::min(w, x + radius + 1);
            const uint32_t n = uint32_t((x1 - x0) * (y1 - y0));
            int v[3];
            for (int c = 0; c < 3; ++c)
                v[c] = int((at(x1, y1, c) - at(x0, y1, c) - at(x1, y0, c) + at(x0, y0, c) + n / 2) / n);
            line[x] = qRgb(v[0], v[1], v[2]);
        }
    }
    return out;
}

// One pitch band of the search: its working copy's scale, blurred copy and ratio fields.
struct Band {
    double scale = 1.0;  // full-size pixels per working pixel
    std::vector<int> pitches;
    QImage blurred;
    ColorCorrectionAutoChartFinderImpl::FloatMatrix rg, bg;
};

struct Tried {
    ColorCorrectionAutoChartFinderImpl::Candidate candidate;
    const Band* band;
};

// The pitches of the three bands: the working copy's coarse and fine bands
// from the largest pitch it holds down, and the larger copy's pitches below
// those the working copy reaches (none when the image is no wider than it).
std::vector<Band> bandPitches(int workingWidth, int workingHeight, int imageWidth, int largerWidth,
                              const ExtendedChartSearchParameters& prm)
{
    std::vector<Band> bands(3);
    const int largest = std::min(workingWidth / 6, workingHeight / 4);
    // A working copy enlarged from a small image holds pitches no grid can
    // be placed at in the image itself.
    const double smallest = std::max(double(prm.smallestPitch), ChartGridRefiner::kMinPitch * workingWidth / imageWidth);
    for (double p = largest; p >= smallest - 0.5; p *= prm.pitchRatio) {
        const int rounded = int(std::lround(p));
        std::vector<int>& band = bands[rounded < prm.finePitchLimit ? 1 : 0].pitches;
        if (band.empty() || band.back() != rounded)
            band.push_back(rounded);
    }
    if (largerWidth > prm.workingWidth) {
        const double up = double(largerWidth) / prm.workingWidth;
        for (double p = prm.smallestPitch * up; p >= prm.smallestPitch - 0.5; p *= prm.pitchRatio) {
            const int rounded = int(std::lround(p));
            if (rounded < prm.smallestPitch * up - 0.5 &&
                (bands[2].pitches.empty() || bands[2].pitches.back() != rounded))
                bands[2].pitches.push_back(rounded);
        }
    }
    return bands;
}

// The band's blurred copy of `source`, blurred in proportion to its smallest
// pitch, and its ratio fields.
void prepareBand(ColorCorrectionAutoChartFinderImpl& impl, Band& band, const QImage& source, int imageWidth,
                 const ExtendedChartSearchParameters& prm)
{
    band.scale = imageWidth / double(source.width());
    band.blurred = meanBlur(source, int(std::lround(prm.blurPerPitch * band.pitches.back())));
    auto fields = impl.ratioFields(band.blurred);
    band.rg = std::move(fields.rg);
    band.bg = std::move(fields.bg);
}

ColorCorrectionAutoChartFinderImpl::SearchLadder ladderOf(const Band& band, const ExtendedChartSearchParameters& prm)
{
    ColorCorrectionAutoChartFinderImpl::SearchLadder ladder;
    ladder.pitches = band.pitches;
    for (int a = 0; a < prm.angleSteps; ++a)
        ladder.angles.push_back(float(2.0 * M_PI * a / prm.angleSteps));
    // The model's nine samples must lie in the image; the chart itself may reach its edge.
    ladder.xMargin = 1.0;
    ladder.yMargin = 1.0;
    ladder.minScore = prm.minSearchScore;
    ladder.leaveOutSlack = prm.leaveOutSlack;
    ladder.samplesLeftOut = prm.searchSamplesLeftOut;
    return ladder;
}

}  // namespace

QVector<QPoint> ChartExtendedSearch::find(ColorCorrectionAutoChartFinderImpl& impl, const QImage& image,
                                          const ExtendedChartSearchParameters& prm)
{
    if (!prm.enabled || image.isNull() || prm.workingWidth < 64 || prm.smallestPitch < 2 ||
        !(prm.pitchRatio > 0.0 && prm.pitchRatio < 1.0) || prm.angleSteps < 1 ||
        !ColorCorrectionAutoChartFinderImpl::worthSearching(image.size()))
        return {};
    // The working copy holds the whole ladder from the largest pitch down,
    // split into a coarse and a fine band by blur. A larger copy, where the
    // image has the pixels for it, adds the pitches the working copy cannot
    // resolve: a pyramid of two levels.
    const QImage working = image.scaledToWidth(prm.workingWidth, Qt::SmoothTransformation)
                               .convertToFormat(QImage::Format_ARGB32);
    const int largerWidth = std::min(image.width(), prm.largerWorkingWidth);
    QImage larger;  // made when its band is searched
    std::vector<Band> bands = bandPitches(working.width(), working.height(), image.width(), largerWidth, prm);
    std::vector<const QImage*> sources = {&working, &working, &larger};

    // Candidates of the given bands, best first.
    auto search = [&](size_t first, size_t last) {
        std::vector<Tried> tried;
        for (size_t b = first; b <= last; ++b) {
            Band& band = bands[b];
            if (band.pitches.empty())
                continue;
            if (sources[b] == &larger && larger.isNull())
                larger = image.scaledToWidth(largerWidth, Qt::SmoothTransformation).convertToFormat(QImage::Format_ARGB32);
            prepareBand(impl, band, *sources[b], image.width(), prm);
            for (const auto& c : ColorCorrectionAutoChartFinderImpl::searchPlacements(band.rg, band.bg,
                                                                                      ladderOf(band, prm), prm.candidates))
                tried.push_back({c, &band});
        }
        std::sort(tried.begin(), tried.end(),
                  [](const Tried& a, const Tried& b) { return a.candidate.score > b.candidate.score; });
        if (int(tried.size()) > prm.candidates)
            tried.resize(size_t(prm.candidates));
        return tried;
    };

    // The grid check reads cells and the gaps between them, which a working
    // copy of small pitch blurs together: it reads the full-size image.
    const ColorCorrectionAutoChartFinderImpl::GridAcceptance accept =
        [&image, &prm](const QVector<QPoint>&, const QVector<QPointF>& full) {
            QVector<QPoint> centres;
            for (const QPointF& p : full)
                centres << p.toPoint();
            const ChartGridCheck::Measures m = ChartGridCheck::measure(image, centres);
            return ChartGridCheck::acceptsWithoutBorders(m) && m.cellSpread <= prm.maxCellSpread &&
                   ChartGridCheck::shiftMargin(image, full) >= prm.minShiftMargin &&
                   ChartGridCheck::halfShiftContrast(image, full) >= prm.minHalfShiftContrast;
        };
    // The larger level costs as much again as the working copy: it is
    // searched only when the working copy yields no chart.
    for (const auto& levelBands : {std::make_pair(0, 1), std::make_pair(2, 2)}) {
        for (const Tried& t : search(size_t(levelBands.first), size_t(levelBands.second))) {
            const Band& band = *t.band;
            float placementScore = 0.0f;
            const QVector<QPoint> initial =
                impl.refinePlacement(band.rg, band.bg, t.candidate, &placementScore, prm.coveredPatches);
            // Settling a grid costs far more than the search; one whose 24
            // patches match the chart's colours this poorly is not worth it.
            if (placementScore < prm.minPlacementScore)
                continue;
            const QVector<QPoint> corners =
                impl.placeGrid(image, band.blurred, initial, band.scale, accept, false, prm.coveredPatches);
            if (ColorCorrectionAutoChartFinder::validate(corners, image.size()).valid)
                return corners;
        }
    }
    return {};
}
