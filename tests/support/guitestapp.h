#pragma once

#include <QString>
#include <QVariant>

class QApplication;

/// The one QApplication of a test program, offscreen and with the software
/// scene graph unless the environment already says otherwise. Settings
/// (native and INI, user scope), XDG_DATA_HOME, XDG_CONFIG_HOME and
/// HOME/Documents point into one temporary folder that lives as long as the
/// program, so no test reads or writes the real user's files.
namespace GuiTestApp {

/// Creates the application and the sandbox on first call; later calls return the same one.
QApplication* instance();
/// The sandbox folder (created by instance()).
QString sandbox();
/// Writes one key of the group "ColCalPlugin" in the default settings, e.g. "EnableDemoMode".
void setPluginSetting(const QString& key, const QVariant& value);
/// Removes every key of the group "ColCalPlugin".
void clearPluginSettings();

}  // namespace GuiTestApp
