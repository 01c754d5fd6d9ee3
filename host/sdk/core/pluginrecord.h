#pragma once

#include <QList>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QVersionNumber>

namespace Core {
namespace Plugin {

class IPlugin;

/// What the plug-in manager knows of one plug-in file.
struct PluginRecord {
    QString fileName;
    QString name;
    QVersionNumber version;
    QString vendor;
    QString description;
    QList<QPair<QString, QVersionNumber>> dependencies;  ///< name, least version
    bool running = false;
    QString error;  ///< why it was refused; empty when running
    QPointer<IPlugin> instance;
};

}  // namespace Plugin
}  // namespace Core
