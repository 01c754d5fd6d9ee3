#include "testapp.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <stdexcept>

namespace TestApp {
namespace {

QTemporaryDir* sandboxDir()
{
    // Leaked on purpose: the folder must outlive every static that may still write settings at exit.
    static QTemporaryDir* dir = new QTemporaryDir();
    return dir;
}

void setDefault(const char* name, const char* value)
{
    if (!qEnvironmentVariableIsSet(name))
        qputenv(name, value);
}

}  // namespace

void prepareSandbox()
{
    static bool prepared = false;
    if (prepared)
        return;
    QTemporaryDir* dir = sandboxDir();
    if (!dir->isValid())
        throw std::runtime_error("no temporary folder for the test sandbox");
    const QDir root(dir->path());
    for (const char* sub : {"data", "config", "home/Documents", "settings", "runtime"})
        root.mkpath(sub);
    QFile::setPermissions(root.filePath("runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    setDefault("QT_QPA_PLATFORM", "offscreen");
    setDefault("QT_QUICK_BACKEND", "software");
    qputenv("XDG_DATA_HOME", root.filePath("data").toUtf8());
    qputenv("XDG_CONFIG_HOME", root.filePath("config").toUtf8());
    qputenv("HOME", root.filePath("home").toUtf8());
    qputenv("XDG_RUNTIME_DIR", root.filePath("runtime").toUtf8());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, root.filePath("settings"));
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, root.filePath("settings"));
    QCoreApplication::setOrganizationName("Ostrel");
    QCoreApplication::setApplicationName("KaltoViewerTest");
    prepared = true;
}

QCoreApplication* instance()
{
    if (QCoreApplication* existing = QCoreApplication::instance())
        return existing;
    prepareSandbox();
    static int argc = 1;
    static char name[] = "colcal_test";
    static char* argv[] = {name, nullptr};
    return new QCoreApplication(argc, argv);
}

QString sandbox()
{
    prepareSandbox();
    return sandboxDir()->path();
}

QString freshDataHome()
{
    static int count = 0;
    const QString path = QDir(sandbox()).filePath(QString("data-%1").arg(++count));
    if (!QDir().mkpath(path))
        throw std::runtime_error("cannot make " + path.toStdString());
    qputenv("XDG_DATA_HOME", path.toUtf8());
    return path;
}

}  // namespace TestApp
