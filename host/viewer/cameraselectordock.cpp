#include "cameraselectordock.h"

#include "menuids.h"
#include "menurenderer.h"
#include "viewerhost.h"

#include "camerapool/camerapool.h"
#include "cameraselector/deviceselectorservice.h"

#include <QHeaderView>
#include <QMenu>
#include <QTreeWidget>

namespace {

// A transport layer as a selectable item: not a camera.
class TransportLayerInfo : public Plugin::CameraPool::IBaseInfo {
public:
    explicit TransportLayerInfo(const QString& name) : m_name(name) {}
    QString deviceId() const override { return m_name; }
    QString displayText() const override { return m_name; }

private:
    QString m_name;
};

using BaseInfoPtr = QSharedPointer<Plugin::CameraPool::IBaseInfo>;

constexpr int InfoRole = Qt::UserRole + 1;

BaseInfoPtr infoOf(const QTreeWidgetItem* item)
{
    return item ? item->data(0, InfoRole).value<BaseInfoPtr>() : BaseInfoPtr();
}

}  // namespace

CameraSelectorDock::CameraSelectorDock(ViewerHost& host, QWidget* parent)
    : QDockWidget(tr("Cameras"), parent), m_host(host), m_tree(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("cameraSelectorDock"));
    m_tree->setObjectName(QStringLiteral("cameraList"));
    m_tree->setAccessibleName(tr("Cameras"));
    m_tree->setHeaderLabels({tr("Device"), tr("Model")});
    m_tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tree->setMinimumWidth(330);
    setWidget(m_tree);

    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* current) { onCurrentItemChanged(current); });
    connect(m_tree, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        if (auto camera = infoOf(item).dynamicCast<Plugin::CameraPool::ICameraInfo>())
            emit openRequested(camera);
    });
    connect(m_tree, &QWidget::customContextMenuRequested, this,
            &CameraSelectorDock::showContextMenu);
    refresh();
}

void CameraSelectorDock::refresh()
{
    m_tree->clear();
    auto& pool = m_host.pool();
    for (const QString& layer : pool.transportLayers()) {
        auto* layerItem = new QTreeWidgetItem(m_tree, {layer});
        layerItem->setData(0, InfoRole, QVariant::fromValue(BaseInfoPtr(new TransportLayerInfo(layer))));
        for (const auto& camera : pool.cameras(layer)) {
            auto* item = new QTreeWidgetItem(layerItem, {camera->displayText(), camera->modelName()});
            item->setToolTip(0, camera->identifyingText());
            item->setData(0, Qt::AccessibleTextRole, camera->displayText());
            item->setData(0, InfoRole, QVariant::fromValue(BaseInfoPtr(camera)));
        }
        layerItem->setExpanded(true);
    }
}

bool CameraSelectorDock::selectCamera(const QString& deviceId)
{
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it) {
        auto camera = infoOf(*it).dynamicCast<Plugin::CameraPool::ICameraInfo>();
        if (camera && camera->deviceId() == deviceId) {
            m_tree->setCurrentItem(*it);
            return true;
        }
    }
    return false;
}

void CameraSelectorDock::onCurrentItemChanged(QTreeWidgetItem* item)
{
    m_host.selector().select(infoOf(item));
}

void CameraSelectorDock::showContextMenu(const QPoint& position)
{
    QTreeWidgetItem* item = m_tree->itemAt(position);
    if (!item)
        return;
    m_tree->setCurrentItem(item);
    QMenu menu(this);
    MenuRenderer::fill(&menu, m_host.menus(), Core::CId(MenuIds::CameraContext));
    if (!menu.isEmpty())
        menu.exec(m_tree->viewport()->mapToGlobal(position));
}
