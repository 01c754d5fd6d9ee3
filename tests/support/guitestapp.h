#pragma once

#include <QString>
#include <QVariant>

class QApplication;

/// The one QApplication of a test program, in the sandbox TestApp describes.
namespace GuiTestApp {

/// Creates the application on first call; later calls return the same one.
QApplication* instance();
/// The sandbox folder.
QString sandbox();
/// Writes one key of the group "ColCalPlugin" in the default settings, e.g. "EnableDemoMode".
void setPluginSetting(const QString& key, const QVariant& value);
/// Removes every key of the group "ColCalPlugin".
void clearPluginSettings();

}  // namespace GuiTestApp
