#include "guitestapp.h"

#include <QApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

#include <stdexcept>

namespace GuiTestApp {
namespace {

QTemporaryDir* sandboxDir()
{
    // Leaked on purpose: the folder must outlive every static that may still write settings at exit.
    static QTemporaryDir* dir = new QTemporaryDir();
    return dir;
}

void setDefault(const char* name, const char* value)
{
    if (qEnvironmentVariableIsEmpty(name))
        qputenv(name, value);
}

}  // namespace

QApplication* instance()
{
    if (auto* existing = qobject_cast<QApplication*>(QCoreApplication::instance()))
        return existing;
    QTemporaryDir* dir = sandboxDir();
    if (!dir->isValid())
        throw std::runtime_error("no temporary folder for the test sandbox");
    const QDir root(dir->path());
    for (const char* sub : {"data", "config", "home/Documents", "settings"})
        root.mkpath(sub);
    setDefault("QT_QPA_PLATFORM", "offscreen");
    setDefault("QT_QUICK_BACKEND", "software");
    qputenv("XDG_DATA_HOME", root.filePath("data").toUtf8());
    qputenv("XDG_CONFIG_HOME", root.filePath("config").toUtf8());
    qputenv("HOME", root.filePath("home").toUtf8());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, root.filePath("settings"));
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, root.filePath("settings"));
    QCoreApplication::setOrganizationName("Ostrel");
    QCoreApplication::setApplicationName("KaltoViewerTest");

    static int argc = 1;
    static char name[] = "colcal_test";
    static char* argv[] = {name, nullptr};
    return new QApplication(argc, argv);
}

QString sandbox()
{
    instance();
    return sandboxDir()->path();
}

void setPluginSetting(const QString& key, const QVariant& value)
{
    instance();
    QSettings settings;
    settings.beginGroup("ColCalPlugin");
    settings.setValue(key, value);
    settings.sync();
}

void clearPluginSettings()
{
    instance();
    QSettings settings;
    settings.remove("ColCalPlugin");
    settings.sync();
}

}  // namespace GuiTestApp
