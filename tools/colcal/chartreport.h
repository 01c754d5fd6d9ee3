#pragma once

#include "ctrapezoid.h"

#include <QImage>
#include <QJsonObject>
#include <QString>
#include <QVector>

/// Shared output of the chart commands: the corner JSON, a text line and the overlay picture.
class ChartReport {
public:
    /// {"topLeft":[x,y], "topRight", "bottomLeft", "bottomRight"}
    static QJsonObject cornersJson(const CTrapezoid& grid);
    static QString cornersText(const CTrapezoid& grid);
    /// The image with the grid outline, the patch quadrilaterals and a dot on
    /// the grid's top-left corner (next to the first patch).
    static QImage overlay(const QImage& image, const CTrapezoid& grid, const QVector<CTrapezoid>& patches);
    /// Writes the overlay; throws cli::Error when the file cannot be written.
    static void saveOverlay(const QImage& overlay, const QString& path);
};
