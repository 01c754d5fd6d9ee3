#include "reportpictures.h"

#include "chartcolors.h"
#include "colorchecker.h"
#include "original.h"
#include "publishedchart.h"
#include "resultsdocumentkeys.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

namespace Keys = ResultsDocumentKeys;
using ChartLayout::kColumns;
using ChartLayout::kPatches;
using ChartLayout::kRows;

// "R: 0.1234 G: 0.5 B: 1.0000" (channels 0..1, as the session writes them) or "#rrggbb".
bool parseColour(const QJsonValue& value, QColor& colour)
{
    static const QRegularExpression rgb("^R: ([-0-9.]+) G: ([-0-9.]+) B: ([-0-9.]+)$");
    static const QRegularExpression hex("^#[0-9A-Fa-f]{6}$");
    if (hex.match(value.toString()).hasMatch()) {
        colour = QColor(value.toString());
        return true;
    }
    const QRegularExpressionMatch m = rgb.match(value.toString());
    if (!m.hasMatch())
        return false;
    double c[3];
    for (int i = 0; i < 3; ++i)
        c[i] = std::clamp(m.captured(i + 1).toDouble(), 0.0, 1.0);
    colour = QColor::fromRgbF(c[0], c[1], c[2]);
    return true;
}

QString targetsCaption()
{
    return QCoreApplication::translate("CalibrationResult", "dE00 per patch");
}

QString number(double v)
{
    return QString::number(v, 'f', 1);
}

}  // namespace

QString ReportPictures::patchesTitle()
{
    return QCoreApplication::translate("CalibrationResult", "Patches");
}

QString ReportPictures::errorTitle()
{
    return QCoreApplication::translate("CalibrationResult", "Colour error");
}

QString ReportPictures::publishedErrorTitle()
{
    return QCoreApplication::translate("CalibrationResult", "Colour error against the published chart values");
}

ReportPictures::ReportPictures(const QJsonObject& preciseColors, PublishedChartEdition edition) : m_edition(edition)
{
    for (int k = 0; k < kPatches; ++k) {
        const QJsonObject p = preciseColors.value(Keys::patchKey(k)).toObject();
        QColor t, i, c;
        if (!parseColour(p.value(Keys::kTarget), t) || !parseColour(p.value(Keys::kInitial), i) ||
            !parseColour(p.value(Keys::kCurrent), c))
            return;
        m_target << t;
        m_initial << i;
        m_current << c;
        m_after << p.value(Keys::kDeltaE).toString().toDouble();
    }
    // The error before is scored as the session scores the camera's first
    // measurement: the engine's uncorrected step on the initial colours.
    ColorChecker checker;
    Original uncorrected(&checker, 1.0);
    // The session scores the calibrated camera's sRGB output decoded to linear,
    // the uncorrected camera's linear output as it is; so does this.
    const dlib::matrix<double, kPatches, 3> before = chartFromColors(m_initial, false);
    const dlib::matrix<double, kPatches, 3> after = chartFromColors(m_current, true);
    uncorrected.SetInputChart(before);
    uncorrected.SetOutputChart(before);
    const PublishedChart published(edition);
    for (int k = 0; k < kPatches; ++k) {
        m_before << uncorrected.GetError(k, false, false);
        m_publishedBefore << published.deltaE(k, dlib::rowm(before, k));
        m_publishedAfter << published.deltaE(k, dlib::rowm(after, k));
    }
    m_valid = true;
}

ReportPictures::Picture ReportPictures::patches() const
{
    // Columns and rows as the chart hangs; each patch: target on top,
    // before and after side by side below, as swatch charts compare them.
    constexpr int cell = 130, gap = 12, margin = 20, legend = 30;
    Picture p{QSize(2 * margin + kColumns * cell + (kColumns - 1) * gap,
                    2 * margin + legend + kRows * (cell + 18) + (kRows - 1) * gap),
              patchesTitle(), {}};
    Group key{"legend", {}};
    key.marks << Mark{Mark::Text, QRectF(margin, margin, 600, 20), QColor(60, 60, 60),
                      QCoreApplication::translate("CalibrationResult",
                                                  "Each patch: target (top), before (bottom left), after (bottom right)")};
    p.groups << key;
    for (int k = 0; k < kPatches; ++k) {
        const double x = margin + (k % kColumns) * (cell + gap);
        const double y = margin + legend + (k / kColumns) * (cell + 18 + gap);
        Group g{"patch", {}};
        g.marks << Mark{Mark::Rect, QRectF(x, y, cell, cell / 2.0), m_target[k], "target"}
                << Mark{Mark::Rect, QRectF(x, y + cell / 2.0, cell / 2.0, cell / 2.0), m_initial[k], "before"}
                << Mark{Mark::Rect, QRectF(x + cell / 2.0, y + cell / 2.0, cell / 2.0, cell / 2.0), m_current[k], "after"}
                << Mark{Mark::Text, QRectF(x, y + cell + 2, cell, 16), QColor(60, 60, 60),
                        QString("%1  dE %2 / %3").arg(k + 1).arg(number(m_before[k]), number(m_after[k]))};
        p.groups << g;
    }
    return p;
}

ReportPictures::Picture ReportPictures::errors(const QVector<double>& before, const QVector<double>& after,
                                               const QString& title, const QString& caption)
{
    constexpr int left = 50, top = 40, plotH = 260, slot = 36, bar = 14, bottom = 40;
    const double mean[2] = {std::accumulate(before.begin(), before.end(), 0.0) / kPatches,
                            std::accumulate(after.begin(), after.end(), 0.0) / kPatches};
    const double highest = std::max(*std::max_element(before.begin(), before.end()),
                                    *std::max_element(after.begin(), after.end()));
    // The axis ends at the next multiple of 5 so the grid lines have round values.
    const double axis = std::max(5.0, std::ceil(highest / 5.0) * 5.0);
    const auto yOf = [&](double v) { return top + plotH * (1.0 - v / axis); };
    const QColor colours[2] = {QColor(170, 170, 170), QColor(20, 72, 126)};
    const QString names[2] = {"before", "after"};
    const QString legends[2] = {QCoreApplication::translate("CalibrationResult", "before (camera as found), mean %1"),
                                QCoreApplication::translate("CalibrationResult", "after, mean %1")};
    Picture p{QSize(left + kPatches * slot + 20, top + plotH + bottom + 20), title, {}};

    Group axes{"axes", {}};
    for (double v = 0; v <= axis + 1e-9; v += 5) {
        axes.marks << Mark{Mark::Line, QRectF(QPointF(left, yOf(v)), QPointF(left + kPatches * slot, yOf(v))),
                           QColor(220, 220, 220), {}}
                   << Mark{Mark::Text, QRectF(0, yOf(v) - 8, left - 6, 16), QColor(90, 90, 90), QString::number(v)};
    }
    axes.marks << Mark{Mark::Text, QRectF(0, top + plotH + bottom - 2, 900, 20), QColor(60, 60, 60), caption};
    p.groups << axes;
    for (int k = 0; k < kPatches; ++k) {
        const double x = left + k * slot + (slot - 2 * bar) / 2.0;
        const double v[2] = {before[k], after[k]};
        for (int i = 0; i < 2; ++i) {
            Group g{"bar " + names[i], {}};
            g.marks << Mark{Mark::Rect, QRectF(QPointF(x + i * bar, yOf(v[i])), QPointF(x + (i + 1) * bar, yOf(0))),
                            colours[i], QString("patch %1 %2: %3").arg(k + 1).arg(names[i], number(v[i]))};
            p.groups << g;
        }
        Group label{"label", {}};
        label.marks << Mark{Mark::Text, QRectF(left + k * slot, yOf(0) + 4, slot, 16), QColor(90, 90, 90),
                            QString::number(k + 1)};
        p.groups << label;
    }
    for (int i = 0; i < 2; ++i) {
        Group m{"mean " + names[i], {}};
        m.marks << Mark{Mark::Line, QRectF(QPointF(left, yOf(mean[i])), QPointF(left + kPatches * slot, yOf(mean[i]))),
                        colours[i], {}}
                << Mark{Mark::Rect, QRectF(left + 200 + i * 300, 10, 14, 14), colours[i], names[i]}
                << Mark{Mark::Text, QRectF(left + 220 + i * 300, 8, 260, 18), QColor(60, 60, 60),
                        legends[i].arg(mean[i], 0, 'f', 2)};
        p.groups << m;
    }
    return p;
}

QString ReportPictures::svg(const Picture& picture)
{
    QString out = QString("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\" viewBox=\"0 0 %1 %2\" "
                          "font-family=\"Arial, sans-serif\" font-size=\"12\"><title>%3</title>\n")
                      .arg(picture.size.width()).arg(picture.size.height()).arg(picture.title.toHtmlEscaped());
    for (const Group& g : picture.groups) {
        out += QString("<g class=\"%1\">").arg(g.cls);
        for (const Mark& m : g.marks) {
            const QRectF& b = m.box;
            switch (m.kind) {
            case Mark::Rect:
                out += QString("<rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" fill=\"%5\"><title>%6</title></rect>")
                           .arg(b.x(), 0, 'f', 2).arg(b.y(), 0, 'f', 2).arg(b.width(), 0, 'f', 2)
                           .arg(b.height(), 0, 'f', 2).arg(m.colour.name(), m.text.toHtmlEscaped());
                break;
            case Mark::Line:
                out += QString("<line x1=\"%1\" y1=\"%2\" x2=\"%3\" y2=\"%4\" stroke=\"%5\"/>")
                           .arg(b.left(), 0, 'f', 2).arg(b.top(), 0, 'f', 2).arg(b.right(), 0, 'f', 2)
                           .arg(b.bottom(), 0, 'f', 2).arg(m.colour.name());
                break;
            case Mark::Text:
                out += QString("<text x=\"%1\" y=\"%2\" fill=\"%3\">%4</text>")
                           .arg(b.left(), 0, 'f', 2).arg(b.top() + 12, 0, 'f', 2).arg(m.colour.name(), m.text.toHtmlEscaped());
                break;
            }
        }
        out += "</g>\n";
    }
    return out + "</svg>";
}

QImage ReportPictures::image(const Picture& picture)
{
    QImage out(picture.size, QImage::Format_RGB32);
    out.fill(Qt::white);
    QPainter painter(&out);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font("Arial");
    font.setPixelSize(12);
    painter.setFont(font);
    for (const Group& g : picture.groups)
        for (const Mark& m : g.marks) {
            switch (m.kind) {
            case Mark::Rect:
                painter.fillRect(m.box, m.colour);
                break;
            case Mark::Line:
                painter.setPen(m.colour);
                painter.drawLine(m.box.topLeft(), m.box.bottomRight());
                break;
            case Mark::Text:
                // Fonts need a GUI application; a core one gets the picture without its labels.
                if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
                    break;
                painter.setPen(m.colour);
                painter.drawText(QPointF(m.box.left(), m.box.top() + 12), m.text);
                break;
            }
        }
    return out;
}

QString ReportPictures::patchesSvg() const
{
    return svg(patches());
}

QString ReportPictures::errorSvg() const
{
    return svg(errors(m_before, m_after, errorTitle(), targetsCaption()));
}

QString ReportPictures::publishedErrorSvg() const
{
    return svg(errors(m_publishedBefore, m_publishedAfter, publishedErrorTitle(), publishedCaption()));
}

QString ReportPictures::publishedCaption() const
{
    return QCoreApplication::translate("CalibrationResult",
                                       "dE00 per patch against the published chart values (D50, %1 chart; "
                                       "measured colours adapted from D65 by Bradford)")
        .arg(PublishedChart::editionName(m_edition));
}

QImage ReportPictures::patchesImage() const
{
    return image(patches());
}

QImage ReportPictures::errorImage() const
{
    return image(errors(m_before, m_after, errorTitle(), targetsCaption()));
}

QImage ReportPictures::publishedErrorImage() const
{
    return image(errors(m_publishedBefore, m_publishedAfter, publishedErrorTitle(), publishedCaption()));
}
