#include "featuresdock.h"

#include "featureeditor.h"
#include "viewerhost.h"

#include "camerapool/camerapool.h"
#include "parametercollection/iparametercollection.h"

#include <QHeaderView>
#include <QTimer>
#include <QTreeWidget>

namespace {

// Which group a feature goes in, by the first matching name prefix.
struct Category {
    const char* title;
    QStringList prefixes;
};

const QList<Category>& categories()
{
    static const QList<Category> list = {
        {"Device Control", {"Device"}},
        {"Image Format", {"Width", "Height", "Offset", "PixelFormat", "TestImage", "Binning", "Reverse"}},
        {"Acquisition", {"Acquisition", "Exposure", "Trigger"}},
        {"Analog Control", {"Gain", "BlackLevel", "Balance", "Gamma"}},
        {"Color", {"Color", "LightSource", "OstLightSource", "OstColor", "Hue", "Saturation", "Demosaicing",
                   "Bsl", "Ost"}},
        {"Image Quality", {"Lut", "LUT", "Brightness", "Contrast", "Sharpness", "Noise"}},
        {"Auto Functions", {"Auto"}},
        {"User Sets", {"UserSet"}},
    };
    return list;
}

QString categoryOf(const QString& feature)
{
    for (const Category& c : categories())
        for (const QString& prefix : c.prefixes)
            if (feature.startsWith(prefix))
                return QString::fromLatin1(c.title);
    return QStringLiteral("Other");
}

}  // namespace

FeaturesDock::FeaturesDock(ViewerHost& host, QWidget* parent)
    : QDockWidget(tr("Features"), parent), m_host(host), m_tree(new QTreeWidget(this)),
      m_refresh(new QTimer(this))
{
    setObjectName(QStringLiteral("featuresDock"));
    m_tree->setObjectName(QStringLiteral("featureTree"));
    m_tree->setAccessibleName(tr("Features"));
    m_tree->setHeaderLabels({tr("Feature"), tr("Value")});
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    m_tree->header()->resizeSection(0, 250);
    m_tree->setMinimumWidth(500);
    setWidget(m_tree);
    m_refresh->setSingleShot(true);
    m_refresh->setInterval(50);
    connect(m_refresh, &QTimer::timeout, this, &FeaturesDock::refreshAll);
}

void FeaturesDock::showCamera(QSharedPointer<Plugin::CameraPool::ICameraInfo> camera)
{
    if (camera == m_camera)
        return;
    m_camera = camera;
    m_tree->clear();
    if (!camera)
        return;
    auto collection = m_host.pool().parameterCollection(camera);
    if (!collection) {
        new QTreeWidgetItem(m_tree, {tr("The camera cannot be reached.")});
        return;
    }
    QMap<QString, QTreeWidgetItem*> groups;
    for (const Category& c : categories())
        groups.insert(QString::fromLatin1(c.title), nullptr);
    for (const QString& name : collection->featureNames()) {
        FeatureEditor* editor = FeatureEditor::create(*collection, name);
        if (!editor)
            continue;
        const QString category = categoryOf(name);
        QTreeWidgetItem*& group = groups[category];
        if (!group) {
            group = new QTreeWidgetItem(m_tree, {category});
            group->setExpanded(category != QLatin1String("Other"));
        }
        auto* item = new QTreeWidgetItem(group, {name});
        item->setToolTip(0, editor->kind());
        m_tree->setItemWidget(item, 1, editor);
        connect(editor, &FeatureEditor::changed, m_refresh, QOverload<>::of(&QTimer::start));
    }
}

void FeaturesDock::refreshAll()
{
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it)
        if (auto* editor = qobject_cast<FeatureEditor*>(m_tree->itemWidget(*it, 1)))
            editor->refresh();
}
