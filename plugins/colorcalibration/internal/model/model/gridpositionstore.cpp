#include "gridpositionstore.h"

#include <QPointF>
#include <QSettings>

namespace {

void openGroup(QSettings& settings, const QString& camera)
{
    settings.beginGroup("ColCalPlugin");
    settings.beginGroup(QString("GridPosition %1").arg(camera));
}

}  // namespace

void GridPositionStore::store(const QString& camera, const CTrapezoid& grid, double width, double height)
{
    QSettings settings;
    openGroup(settings, camera);
    auto fraction = [&](const QPoint& p) { return QPointF(p.x() / width, p.y() / height); };
    settings.setValue("TopLeft", fraction(grid.getTopLeft()));
    settings.setValue("TopRight", fraction(grid.getTopRight()));
    settings.setValue("BottomRight", fraction(grid.getBottomRight()));
    settings.setValue("BottomLeft", fraction(grid.getBottomLeft()));
}

CTrapezoid GridPositionStore::restore(const QString& camera, double width, double height)
{
    QSettings settings;
    openGroup(settings, camera);
    auto point = [&](const char* key, QPointF fallback) {
        const QPointF f = settings.value(key, fallback).toPointF();
        return QPoint(qRound(f.x() * width), qRound(f.y() * height));
    };
    CTrapezoid grid;
    grid.setTopLeft(point("TopLeft", {0.1, 0.1}));
    grid.setTopRight(point("TopRight", {0.9, 0.1}));
    grid.setBottomRight(point("BottomRight", {0.9, 0.9}));
    grid.setBottomLeft(point("BottomLeft", {0.1, 0.9}));
    return grid;
}
