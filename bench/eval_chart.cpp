// Detection rate and accuracy of the chart finder on synthetic scenes and on
// the annotated real photographs. A grid counts as right when every patch
// centre it implies lies within a quarter of the local patch pitch of the true
// centre; a valid grid that is not right is a wrong grid.
// Usage: eval_chart [COUNT] [--first SEED] [--write DIR] [--photos-only] [--family NAME]
// Scenes use seeds SEED .. SEED + COUNT - 1 (SEED 1 unless given), so that a
// change tuned on one range can be checked on another.
#include "chartscene.h"

#include "colorcorrectionautochartfinder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using Quad = std::array<QPointF, 4>;  // top-left, top-right, bottom-left, bottom-right in chart order

// Patch centres (row-major) of a quadrilateral whose corners lie `reach`
// pitches beyond the corner patches' centres: 0.5 for grid-cell corners,
// half the patch side for the hull of the patches.
std::vector<QPointF> centresOf(const Quad& q, double reach)
{
    QPolygonF from, to;
    from << QPointF(-reach, -reach) << QPointF(5 + reach, -reach) << QPointF(5 + reach, 3 + reach)
         << QPointF(-reach, 3 + reach);
    to << q[0] << q[1] << q[3] << q[2];
    QTransform t;
    std::vector<QPointF> out;
    if (!QTransform::quadToQuad(from, to, t))
        return out;
    for (int k = 0; k < 24; ++k)
        out.push_back(t.map(QPointF(k % 6, k / 6)));
    return out;
}

struct Outcome {
    bool valid = false;
    bool right = false;
    double worstPitches = 0.0;  // largest centre error in local pitches
};

Outcome judge(const ColorCorrectionAutoChartFinderResult& r, const Quad& truthGrid, double truthReach)
{
    Outcome o;
    o.valid = r.valid;
    if (!r.valid)
        return o;
    const std::vector<QPointF> truth = centresOf(truthGrid, truthReach);
    const std::vector<QPointF> found =
        centresOf({QPointF(r.topLeft), QPointF(r.topRight), QPointF(r.bottomLeft), QPointF(r.bottomRight)}, 0.5);
    if (truth.size() != 24 || found.size() != 24)
        return o;
    auto dist = [](QPointF a, QPointF b) { return std::hypot(a.x() - b.x(), a.y() - b.y()); };
    for (int k = 0; k < 24; ++k) {
        const int c = k % 6, row = k / 6;
        const double along = dist(truth[row * 6 + std::max(c - 1, 0)], truth[row * 6 + std::min(c + 1, 5)]) /
                             (std::min(c + 1, 5) - std::max(c - 1, 0));
        const double down = dist(truth[std::max(row - 1, 0) * 6 + c], truth[std::min(row + 1, 3) * 6 + c]) /
                            (std::min(row + 1, 3) - std::max(row - 1, 0));
        o.worstPitches = std::max(o.worstPitches, dist(found[k], truth[k]) / (0.5 * (along + down)));
    }
    o.right = o.worstPitches <= 0.25;
    return o;
}

struct Tally {
    int total = 0, valid = 0, right = 0;
    double worstRight = 0.0;
    void add(const Outcome& o)
    {
        ++total;
        valid += o.valid;
        if (o.right) {
            ++right;
            worstRight = std::max(worstRight, o.worstPitches);
        }
    }
    void print(const char* name) const
    {
        std::printf("%-34s found right %d/%d (%.1f %%), wrong grids reported valid %d, worst centre error of the "
                    "right ones %.2f pitch\n",
                    name, right, total, 100.0 * right / std::max(total, 1), valid - right, worstRight);
    }
};

const char* searchName(const ColorCorrectionAutoChartFinderResult& r)
{
    switch (r.foundBy) {
    case ColorCorrectionAutoChartFinderResult::Search::Standard:
        return "standard";
    case ColorCorrectionAutoChartFinderResult::Search::Extended:
        return "extended";
    default:
        return "none";
    }
}

// One synthetic family: the scene parameters drawn at random, then adjusted.
struct Family {
    const char* name;
    void (*adjust)(ChartScene::Params&, uint32_t seed);
};

const QSize kSizes[] = {{1280, 720}, {1920, 1080}, {1024, 768}, {800, 600}};

void runFamily(ColorCorrectionAutoChartFinder& finder, const Family& family, int first, int count,
               const QString& writeDir)
{
    Tally tally;
    for (int i = first - 1; i < first - 1 + count; ++i) {
        const QSize s = kSizes[i % 4];
        ChartScene::Params p = ChartScene::randomParams(uint32_t(i + 1), s.width(), s.height());
        family.adjust(p, uint32_t(i + 1));
        Quad truth;
        const QImage img = ChartScene::render(p, truth);
        const ColorCorrectionAutoChartFinderResult r = finder.GetChartPosition(img);
        const Outcome o = judge(r, truth, 0.5);
        tally.add(o);
        if (!o.right)
            std::printf("  %s %d: %dx%d pitch %.1f angle %.1f persp %.2f noise %.1f covered %d -> %s %.2f pitch (%s)\n",
                        family.name, i + 1, s.width(), s.height(), ChartScene::pitchOf(truth), p.angleDeg,
                        p.perspective, p.noiseSigma, p.covered, o.valid ? "valid" : "not found", o.worstPitches,
                        searchName(r));
        if (!o.right && !writeDir.isEmpty())
            std::printf("    true corners %.1f,%.1f %.1f,%.1f %.1f,%.1f %.1f,%.1f\n", truth[0].x(), truth[0].y(),
                        truth[1].x(), truth[1].y(), truth[2].x(), truth[2].y(), truth[3].x(), truth[3].y());
        if (!writeDir.isEmpty())
            img.save(QDir(writeDir).filePath(QString("%1_%2.png").arg(family.name).arg(i + 1)));
    }
    tally.print(family.name);
}

}  // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    int count = argc > 1 ? std::max(1, atoi(argv[1])) : 100;
    int first = 1;
    QString writeDir;
    bool photosOnly = false;
    QString onlyFamily;
    for (int i = 1; i < argc; ++i) {
        if (QString(argv[i]) == "--write" && i + 1 < argc)
            writeDir = argv[i + 1];
        if (QString(argv[i]) == "--first" && i + 1 < argc)
            first = std::max(1, atoi(argv[i + 1]));
        if (QString(argv[i]) == "--family" && i + 1 < argc)
            onlyFamily = argv[i + 1];
        photosOnly = photosOnly || QString(argv[i]) == "--photos-only";
    }

    ColorCorrectionAutoChartFinder finder;
    const Family families[] = {
        {"scenes", [](ChartScene::Params&, uint32_t) {}},
        // Pitch 8..20 px whatever the frame size.
        {"small charts", [](ChartScene::Params& p, uint32_t seed) { p.pitch = 8.0 + 12.0 * ((seed * 37u) % 100) / 99.0; }},
        {"any rotation", [](ChartScene::Params& p, uint32_t seed) { p.angleDeg = double((seed * 131u) % 360); }},
        {"covered patches", [](ChartScene::Params& p, uint32_t seed) { p.covered = 1 + int(seed % 3); }},
    };
    if (!photosOnly)
        for (const Family& f : families)
            if (onlyFamily.isEmpty() || onlyFamily == f.name)
                runFamily(finder, f, first, count, writeDir);
    if (!onlyFamily.isEmpty())
        return 0;

    // Real photographs: annotated hull corners of the patches (patch side
    // about 0.87 of the pitch), or null where no whole chart is in view.
    QFile file(COLCAL_TESTDATA_DIR "/charts/annotations.json");
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
        return 1;
    }
    const QJsonObject annotations = QJsonDocument::fromJson(file.readAll()).object();
    Tally charts;
    int rejectedRight = 0, noChart = 0;
    for (const QString& name : annotations.keys()) {
        const QJsonObject a = annotations.value(name).toObject();
        const QImage img = QImageReader(QDir(COLCAL_TESTDATA_DIR "/charts").filePath(name)).read();
        QElapsedTimer timer;
        timer.start();
        const ColorCorrectionAutoChartFinderResult r = finder.GetChartPosition(img);
        const double ms = timer.nsecsElapsed() / 1e6;
        if (a.value("corners").isNull()) {
            ++noChart;
            rejectedRight += !r.valid;
            std::printf("  %-46s no whole chart: %s (%.0f ms)\n", qPrintable(name), r.valid ? "WRONGLY VALID" : "rejected", ms);
            continue;
        }
        const QJsonObject c = a.value("corners").toObject();
        auto pt = [&c](const char* key) {
            const QJsonArray v = c.value(key).toArray();
            return QPointF(v.at(0).toDouble(), v.at(1).toDouble());
        };
        const Quad hull = {pt("topLeft"), pt("topRight"), pt("bottomLeft"), pt("bottomRight")};
        const Outcome o = judge(r, hull, 0.87 / 2);
        charts.add(o);
        std::printf("  %-46s %s by %s search, worst centre error %.2f pitch (%.0f ms)\n", qPrintable(name),
                    o.right ? "found" : (o.valid ? "WRONG GRID" : "not found"), searchName(r), o.worstPitches, ms);
    }
    charts.print("real photographs with a chart");
    std::printf("%-34s rejected %d/%d\n", "real photographs without a whole chart", rejectedRight, noChart);
    return 0;
}
