// Detection rate and corner accuracy of the chart finder on synthetic scenes
// and on the annotated real photographs. Corner errors are in percent of the
// true grid's diagonal. Usage: eval_chart [COUNT] [--write DIR]
#include "chartscene.h"

#include "colorcorrectionautochartfinder.h"

#include <QDir>
#include <QGuiApplication>
#include <QImageReader>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

struct Outcome {
    bool valid = false;
    double worstPercent = 0.0;
};

Outcome judge(const ColorCorrectionAutoChartFinderResult& r, const std::array<QPointF, 4>& truth)
{
    Outcome o;
    o.valid = r.valid;
    const double diagonal = 0.5 * (std::hypot(truth[3].x() - truth[0].x(), truth[3].y() - truth[0].y()) +
                                   std::hypot(truth[2].x() - truth[1].x(), truth[2].y() - truth[1].y()));
    const QPoint found[4] = {r.topLeft, r.topRight, r.bottomLeft, r.bottomRight};
    for (int i = 0; i < 4; ++i)
        o.worstPercent = std::max(o.worstPercent, 100.0 * std::hypot(found[i].x() - truth[i].x(),
                                                                     found[i].y() - truth[i].y()) / diagonal);
    return o;
}

struct Tally {
    int total = 0, valid = 0, within = 0;
    double worst = 0.0;
    void add(const Outcome& o)
    {
        ++total;
        if (!o.valid)
            return;
        ++valid;
        within += o.worstPercent <= 3.0;
        worst = std::max(worst, o.worstPercent);
    }
    void print(const char* name) const
    {
        std::printf("%-28s found %d/%d (%.0f %%), within 3 %% of diagonal %d/%d (%.0f %%), worst corner error %.2f %%\n",
                    name, valid, total, 100.0 * valid / std::max(total, 1), within, total,
                    100.0 * within / std::max(total, 1), worst);
    }
};

struct RealPhoto {
    const char* file;
    std::array<QPointF, 4> corners;  // grid corners in chart order
};

// Grid corners: patch centres pushed out by half a pitch along both grid axes.
// The chamber photos come from the chip annotation (21 px pitch, chart turned
// clockwise, dark skin at (233.5, 169.5)); the second chamber photo shows the
// same chart about 3 px higher. The others were read off 1:1 crops by hand.
const RealPhoto kRealPhotos[] = {
    {"plantcv_chamber_rot90cw_target.png", {QPointF(244, 159), QPointF(244, 285), QPointF(160, 159), QPointF(160, 285)}},
    {"plantcv_chamber_rot90cw_source1.png", {QPointF(244, 156), QPointF(244, 282), QPointF(160, 156), QPointF(160, 282)}},
    {"pedrodiamel_handheld_sunlight.jpg", {QPointF(236, 283), QPointF(532, 278), QPointF(232, 473), QPointF(532, 467)}},
};

}  // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    int count = argc > 1 ? std::max(1, atoi(argv[1])) : 100;
    QString writeDir;
    for (int i = 1; i + 1 < argc; ++i)
        if (QString(argv[i]) == "--write")
            writeDir = argv[i + 1];

    ColorCorrectionAutoChartFinder finder;
    const QSize sizes[] = {{1280, 720}, {1920, 1080}, {1024, 768}, {800, 600}};
    Tally synthetic;
    for (int i = 0; i < count; ++i) {
        const QSize s = sizes[i % 4];
        const ChartScene::Params p = ChartScene::randomParams(uint32_t(i + 1), s.width(), s.height());
        std::array<QPointF, 4> truth;
        const QImage img = ChartScene::render(p, truth);
        const Outcome o = judge(finder.GetChartPosition(img), truth);
        synthetic.add(o);
        if (!o.valid || o.worstPercent > 3.0)
            std::printf("  scene %d: %dx%d scale %.2f angle %.1f persp %.2f noise %.1f light %.2f -> %s %.2f %%\n", i + 1,
                        s.width(), s.height(), p.scale, p.angleDeg, p.perspective, p.noiseSigma, p.lightGradient,
                        o.valid ? "valid" : "not found", o.worstPercent);
        if (!writeDir.isEmpty())
            img.save(QDir(writeDir).filePath(QString("scene_%1.png").arg(i + 1)));
    }
    synthetic.print("synthetic scenes");

    Tally real;
    for (const RealPhoto& photo : kRealPhotos) {
        const QString path = QDir(COLCAL_TESTDATA_DIR "/charts").filePath(photo.file);
        QImageReader reader(path);
        const QImage img = reader.read();
        const Outcome o = judge(finder.GetChartPosition(img), photo.corners);
        std::printf("  %s: %s, worst corner error %.2f %%\n", photo.file, o.valid ? "found" : "not found", o.worstPercent);
        real.add(o);
    }
    real.print("annotated real photographs");
    return 0;
}
