#include "qmltrapezoidlist.h"

#include "colorcorrectionmodel.h"
#include "pointtransformer.h"
#include "qmltrapezoid.h"

#include <QDebug>
#include <QPolygon>

namespace {

QColor colorAt(const QVector<QColor>& colors, int index, const char* what)
{
    if (index >= 0 && index < colors.size())
        return colors[index];
    qDebug().noquote() << QStringLiteral("Unable to get %1 color patch at index %2").arg(what).arg(index);
    return QColor();
}

bool contains(const QPolygon& polygon, int x, int y)
{
    return polygon.containsPoint(QPoint(x, y), Qt::OddEvenFill);
}

int listCount(QQmlListProperty<QmlTrapezoid>* property)
{
    return static_cast<QmlTrapezoidList*>(property->object)->trapezoidCount();
}

QmlTrapezoid* listAt(QQmlListProperty<QmlTrapezoid>* property, int index)
{
    return static_cast<QmlTrapezoidList*>(property->object)->trapezoidAt(index);
}

}  // namespace

QmlTrapezoidList::QmlTrapezoidList(ColorCorrectionModel* model, PointTransformer* transformer, QObject* parent)
    : QObject(parent), m_model(model), m_transformer(transformer)
{
}

QmlTrapezoidList::~QmlTrapezoidList() = default;

QQmlListProperty<QmlTrapezoid> QmlTrapezoidList::list()
{
    return QQmlListProperty<QmlTrapezoid>(this, nullptr, &listCount, &listAt);
}

int QmlTrapezoidList::selectedPatch() const
{
    return m_selectedPatch;
}

QString QmlTrapezoidList::lastError() const
{
    return m_lastError;
}

CTrapezoid* QmlTrapezoidList::outline()
{
    return &m_outline;
}

void QmlTrapezoidList::update()
{
    m_items.clear();
    m_patches.clear();
    m_model->SetGridPositon(m_outline);
    m_model->GetColorPatchPositions(m_patches);
    // The items point into m_patches, which is not touched again until the next update.
    for (CTrapezoid& patch : m_patches)
        m_items.push_back(std::make_unique<QmlTrapezoid>(&patch, m_transformer));
    emit listChanged();
}

int QmlTrapezoidList::count() const
{
    return trapezoidCount();
}

QColor QmlTrapezoidList::originalColorAt(int index) const
{
    return colorAt(m_originalColors, index, "original");
}

// Shares the original accessor's log text on purpose: both sets come from the chart sampling.
QColor QmlTrapezoidList::targetColorAt(int index) const
{
    return colorAt(m_targetColors, index, "original");
}

QColor QmlTrapezoidList::calibratedColorAt(int index) const
{
    return colorAt(m_calibratedColors, index, "calibrated");
}

QColor QmlTrapezoidList::colorAtPoint(int x, int y)
{
    const int index = patchIndexAtPoint(x, y);
    if (index != m_selectedPatch) {
        m_selectedPatch = index;
        emit selectedPatchChanged();
    }
    switch (patchPartitionAtPoint(index, x, y)) {
    case 1:
        return targetColorAt(index);
    case 2:
        return originalColorAt(index);
    case 3:
        return calibratedColorAt(index);
    default:
        return QColor("transparent");
    }
}

QString QmlTrapezoidList::textOfColor(const QColor& color) const
{
    return QStringLiteral("Patch%1%2 R: %3 G: %4 B: %5")
        .arg(m_selectedPatch < 9 ? QStringLiteral("0") : QString())
        .arg(m_selectedPatch + 1)
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue());
}

void QmlTrapezoidList::reset()
{
    m_outline = m_model->GetGridPosition();
    m_model->SetGridPositon(m_outline);
}

void QmlTrapezoidList::fetchColorPatchValues()
{
    m_calibratedColors.clear();
    m_originalColors.clear();
    m_targetColors.clear();
    m_model->GetColorPatchValues(m_calibratedColors, false);
    if (m_calibratedColors.isEmpty()) {
        m_lastError = QStringLiteral("Unable to fetch color patch values! <br> ");
        return;
    }
    m_model->GetColorPatchInitialValues(m_originalColors);
    if (m_originalColors.isEmpty()) {
        m_lastError = QStringLiteral("Unable to fetch original color patch values! <br> ");
        return;
    }
    m_model->GetColorPatchTargetValues(m_targetColors);
    if (m_targetColors.isEmpty())
        m_lastError = QStringLiteral("Unable to fetch target color patch values! <br> ");
}

int QmlTrapezoidList::patchIndexAtPoint(int x, int y) const
{
    for (size_t i = 0; i < m_items.size(); ++i) {
        const QmlTrapezoid& item = *m_items[i];
        const QPolygon polygon({item.upperLeft(), item.upperRight(), item.lowerRight(), item.lowerLeft()});
        if (contains(polygon, x, y))
            return int(i);
    }
    return -1;
}

int QmlTrapezoidList::patchPartitionAtPoint(int index, int x, int y) const
{
    if (index < 0 || index >= int(m_items.size()))
        return -1;
    const QmlTrapezoid& item = *m_items[size_t(index)];
    const QPoint c = item.center();
    const QPoint b = item.bottomCenter();
    if (contains(QPolygon({item.upperLeft(), item.upperRight(), c}), x, y))
        return 1;
    if (contains(QPolygon({item.upperLeft(), item.lowerLeft(), b, c}), x, y))
        return 2;
    if (contains(QPolygon({item.upperRight(), item.lowerRight(), b, c}), x, y))
        return 3;
    return -1;
}

int QmlTrapezoidList::trapezoidCount() const
{
    return int(m_items.size());
}

QmlTrapezoid* QmlTrapezoidList::trapezoidAt(int index) const
{
    return index >= 0 && index < int(m_items.size()) ? m_items[size_t(index)].get() : nullptr;
}
