#include "chartscene.h"

#include "colorchecker.h"
#include "colorspace.h"

#include <QPainter>
#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <random>

ChartScene::Params ChartScene::randomParams(uint32_t seed, int width, int height)
{
    std::mt19937 rng(seed);
    auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
    Params p;
    p.width = width;
    p.height = height;
    p.scale = uni(0.25, 0.9);
    p.angleDeg = uni(-20.0, 20.0);
    p.perspective = uni(0.0, 0.12);
    p.noiseSigma = uni(0.0, 6.0);
    p.lightGradient = uni(0.0, 0.3);
    for (double& c : p.cast)
        c = uni(0.8, 1.2);
    p.clutter = int(uni(0, 40));
    p.seed = seed * 7919u + 13u;
    return p;
}

namespace {

// The 24 patches in chart units, one pitch apart.
void drawPatches(QPainter& painter)
{
    const ColorSpace cs;
    const dlib::matrix<double, 24, 3> t = ColorChecker().GetTargetRgb();
    for (int k = 0; k < 24; ++k) {
        const int c = k % 6, r = k / 6;
        painter.setBrush(QColor(int(std::lround(cs.RGB_to_sRGB(t(k, 0)))), int(std::lround(cs.RGB_to_sRGB(t(k, 1)))),
                                int(std::lround(cs.RGB_to_sRGB(t(k, 2))))));
        painter.drawRect(QRectF(c + 0.1, r + 0.1, 0.8, 0.8));
    }
}

// Light falls off across the frame in a random direction; cast and noise on top.
void light(QImage& img, const ChartScene::Params& prm, std::mt19937& rng)
{
    const int W = img.width(), H = img.height();
    const double dir = std::uniform_real_distribution<double>(0, 2 * M_PI)(rng);
    std::normal_distribution<double> noise(0.0, std::max(prm.noiseSigma, 1e-9));
    for (int y = 0; y < H; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < W; ++x) {
            const double u = ((x - W / 2.0) * std::cos(dir) + (y - H / 2.0) * std::sin(dir)) / (0.5 * std::hypot(W, H));
            const double light = 1.0 + prm.lightGradient * u;
            const int in[3] = {qRed(line[x]), qGreen(line[x]), qBlue(line[x])};
            int out[3];
            for (int ch = 0; ch < 3; ++ch) {
                const double v = in[ch] * light * prm.cast[ch] + (prm.noiseSigma > 0 ? noise(rng) : 0.0);
                out[ch] = std::clamp(int(std::lround(v)), 0, 255);
            }
            line[x] = qRgb(out[0], out[1], out[2]);
        }
    }
}

}  // namespace

QImage ChartScene::render(const Params& prm, std::array<QPointF, 4>& corners)
{
    std::mt19937 rng(prm.seed);
    auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
    const int W = prm.width, H = prm.height;

    QImage img(W, H, QImage::Format_ARGB32);
    img.fill(QColor(int(uni(90, 200)), int(uni(90, 200)), int(uni(90, 200))));
    QPainter painter(&img);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < prm.clutter; ++i) {
        painter.setBrush(QColor(int(uni(0, 255)), int(uni(0, 255)), int(uni(0, 255))));
        const QRectF r(uni(-0.1, 1.0) * W, uni(-0.1, 1.0) * H, uni(0.02, 0.3) * W, uni(0.02, 0.3) * H);
        if (i % 2)
            painter.drawEllipse(r);
        else
            painter.drawRect(r);
    }

    // Chart units: one patch pitch; the grid spans (0,0)..(6,4), the black
    // frame reaches a third of a pitch beyond it.
    const double frame = 0.35;
    const QRectF chartRect(-frame, -frame, 6 + 2 * frame, 4 + 2 * frame);
    const QPolygonF chartQuad(chartRect);
    const double a = prm.angleDeg * M_PI / 180.0;
    auto similarity = [&](QPointF q) {
        const double x = q.x() - 3.0, y = q.y() - 2.0;
        return QPointF(std::cos(a) * x - std::sin(a) * y, std::sin(a) * x + std::cos(a) * y);
    };
    // Foreshortening: each outer corner moves by up to `perspective` of the chart width.
    QPolygonF target;
    for (int i = 0; i < 4; ++i)
        target << similarity(chartQuad[i]) +
                      QPointF(uni(-1, 1), uni(-1, 1)) * prm.perspective * chartRect.width();
    const QRectF box = target.boundingRect();
    // Without foreshortening the grid's six pitches span six chart units.
    const double s = prm.pitch > 0.0 ? prm.pitch : prm.scale * std::min(W / box.width(), H / box.height());
    const QPointF offset(uni(0.0, std::max(0.0, W - s * box.width())), uni(0.0, std::max(0.0, H - s * box.height())));
    for (QPointF& q : target)
        q = (q - box.topLeft()) * s + offset;
    QTransform toImage;
    QTransform::quadToQuad(QPolygonF(chartRect).mid(0, 4), target.mid(0, 4), toImage);

    painter.setTransform(toImage);
    painter.setBrush(QColor(22, 22, 24));
    painter.drawRect(chartRect);
    drawPatches(painter);
    // Objects in front of the chart: each hides most of one patch.
    for (int i = 0; i < prm.covered; ++i) {
        const int k = int(uni(0, 24));
        painter.setBrush(QColor(int(uni(0, 255)), int(uni(0, 255)), int(uni(0, 255))));
        painter.drawEllipse(QRectF(k % 6 + uni(-0.2, 0.1), k / 6 + uni(-0.2, 0.1), 1.1, 1.1));
    }
    painter.end();
    corners = {toImage.map(QPointF(0, 0)), toImage.map(QPointF(6, 0)), toImage.map(QPointF(0, 4)),
               toImage.map(QPointF(6, 4))};

    light(img, prm, rng);
    return img;
}

double ChartScene::pitchOf(const std::array<QPointF, 4>& c)
{
    auto len = [](QPointF a, QPointF b) { return std::hypot(a.x() - b.x(), a.y() - b.y()); };
    return (len(c[0], c[1]) + len(c[2], c[3])) / 12.0 * 0.5 + (len(c[0], c[2]) + len(c[1], c[3])) / 8.0 * 0.5;
}
