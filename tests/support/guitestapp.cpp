#include "guitestapp.h"

#include "testapp.h"

#include <QApplication>
#include <QSettings>

#include <stdexcept>

namespace GuiTestApp {

QApplication* instance()
{
    if (auto* existing = qobject_cast<QApplication*>(QCoreApplication::instance()))
        return existing;
    if (QCoreApplication::instance())
        throw std::logic_error("a QCoreApplication already runs: a widget test needs the GUI test main");
    TestApp::prepareSandbox();
    static int argc = 1;
    static char name[] = "colcal_test";
    static char* argv[] = {name, nullptr};
    return new QApplication(argc, argv);
}

QString sandbox()
{
    return TestApp::sandbox();
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
