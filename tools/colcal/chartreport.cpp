#include "chartreport.h"

#include "cli.h"

#include "core/savefile.h"

#include <QFileInfo>
#include <QImageWriter>
#include <QJsonArray>
#include <QPainter>

#include <algorithm>

namespace {

QJsonArray point(const QPoint& p)
{
    return QJsonArray{p.x(), p.y()};
}

}  // namespace

QJsonObject ChartReport::cornersJson(const CTrapezoid& grid)
{
    return {{"topLeft", point(grid.getTopLeft())},
            {"topRight", point(grid.getTopRight())},
            {"bottomLeft", point(grid.getBottomLeft())},
            {"bottomRight", point(grid.getBottomRight())}};
}

QString ChartReport::cornersText(const CTrapezoid& grid)
{
    auto p = [](const QPoint& q) { return QString("(%1, %2)").arg(q.x()).arg(q.y()); };
    return QString("top-left %1  top-right %2  bottom-left %3  bottom-right %4")
        .arg(p(grid.getTopLeft()), p(grid.getTopRight()), p(grid.getBottomLeft()), p(grid.getBottomRight()));
}

QImage ChartReport::overlay(const QImage& image, const CTrapezoid& grid, const QVector<CTrapezoid>& patches)
{
    QImage out = image.convertToFormat(QImage::Format_ARGB32);
    QPainter painter(&out);
    painter.setRenderHint(QPainter::Antialiasing);
    const int scale = std::max(1, std::max(out.width(), out.height()) / 500);
    // A dark halo under each line keeps it visible on light and dark charts alike.
    auto outline = [&](const QPolygon& poly, const QColor& colour, int width) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(0, 0, 0, 200), width + 2 * scale, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolygon(poly);
        painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolygon(poly);
    };
    outline(grid.toPolygon(), QColor(0, 255, 0), 2 * scale);
    for (int i = 0; i < patches.size(); ++i)
        outline(patches[i].toPolygon(), i == 0 ? QColor(255, 0, 255) : QColor(255, 255, 255), scale);
    painter.setPen(QPen(Qt::black, scale));
    painter.setBrush(QColor(255, 0, 255));
    painter.drawEllipse(grid.getTopLeft(), 4 * scale, 4 * scale);
    painter.end();
    return out;
}

void ChartReport::saveOverlay(const QImage& overlay, const QString& path)
{
    // The format follows the name's suffix, PNG without one.
    const QByteArray suffix = QFileInfo(path).suffix().toLower().toLatin1();
    QString encoderError, error;
    const bool written = Core::saveFile(path, [&](QIODevice& device) {
        QImageWriter writer(&device, suffix.isEmpty() ? QByteArray("png") : suffix);
        const bool encoded = writer.write(overlay);
        if (!encoded)
            encoderError = writer.errorString();
        return encoded;
    }, &error);
    if (!written)
        throw cli::Error(QString("%1: cannot write overlay: %2").arg(path, encoderError.isEmpty() ? error : encoderError), cli::Failed);
}
