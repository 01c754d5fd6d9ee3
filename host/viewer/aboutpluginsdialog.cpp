#include "aboutpluginsdialog.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

AboutPluginsDialog::AboutPluginsDialog(const QList<Core::Plugin::PluginRecord>& plugins, QWidget* parent)
    : QDialog(parent), m_list(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("aboutPlugins"));
    setWindowTitle(tr("About Plug-ins"));
    m_list->setObjectName(QStringLiteral("pluginList"));
    m_list->setAccessibleName(tr("Plug-ins"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Name"), tr("Version"), tr("Vendor"), tr("State"), tr("File")});
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    for (const auto& plugin : plugins) {
        const QString name = plugin.name.isEmpty() ? QFileInfo(plugin.fileName).fileName() : plugin.name;
        auto* item = new QTreeWidgetItem(m_list, {name, plugin.version.toString(), plugin.vendor,
                                                  stateText(plugin), plugin.fileName});
        item->setToolTip(0, plugin.description);
        item->setToolTip(3, stateText(plugin));
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
    resize(760, 320);
}

QString AboutPluginsDialog::stateText(const Core::Plugin::PluginRecord& plugin)
{
    return plugin.running ? tr("Running") : tr("Not loaded: %1").arg(plugin.error);
}
