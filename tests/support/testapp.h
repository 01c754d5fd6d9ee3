#pragma once

#include <QString>

class QCoreApplication;

/// The sandbox every test program runs in, and its application object. The
/// first call points the QSettings user scope (native and INI), HOME,
/// XDG_DATA_HOME, XDG_CONFIG_HOME and XDG_RUNTIME_DIR into one temporary folder
/// that lives as long as the program, selects the offscreen platform and the
/// software scene graph unless the environment already names others (an empty
/// QT_QUICK_BACKEND keeps Qt's default, OpenGL, which video output needs), so
/// no test reads or writes the real user's files. The emulated cameras keep
/// their flash under XDG_DATA_HOME.
namespace TestApp {

/// Sets up the sandbox once; later calls do nothing. Call before any application object exists.
void prepareSandbox();
/// The running application, or a new QCoreApplication in the sandbox when there is none yet.
QCoreApplication* instance();
/// The sandbox folder.
QString sandbox();
/// A new empty folder in the sandbox that XDG_DATA_HOME points to from now on:
/// cameras made afterwards start from a fresh flash, as if new from the factory.
QString freshDataHome();

}  // namespace TestApp
