#pragma once

#include <QCoreApplication>

// Signals delivered through queued connections need an application object;
// one per test program, made on first use.
inline QCoreApplication* ensureQtApp()
{
    if (!QCoreApplication::instance()) {
        static int argc = 1;
        static char name[] = "test_sdk";
        static char* argv[] = {name, nullptr};
        static QCoreApplication* app = new QCoreApplication(argc, argv);
        return app;
    }
    return QCoreApplication::instance();
}
