#pragma once

#include "core/pluginrecord.h"

#include <QDialog>

class QTreeWidget;

/// Help > About Plug-ins: every plug-in file found, with name, version, vendor
/// and state, and why a refused one did not load.
class AboutPluginsDialog : public QDialog {
    Q_OBJECT
public:
    AboutPluginsDialog(const QList<Core::Plugin::PluginRecord>& plugins, QWidget* parent = nullptr);
    QTreeWidget* list() const { return m_list; }

    /// "Running", or "Not loaded: <reason>".
    static QString stateText(const Core::Plugin::PluginRecord& plugin);

private:
    QTreeWidget* m_list;
};
