#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

// Local event loops and queued signals need an application object; one per
// test program, made on first use.
inline QCoreApplication* ensureModelTestApp()
{
    if (!QCoreApplication::instance()) {
        static int argc = 1;
        static char name[] = "test_model";
        static char* argv[] = {name, nullptr};
        static QCoreApplication* app = new QCoreApplication(argc, argv);
        return app;
    }
    return QCoreApplication::instance();
}

// Processes events until `done` holds or `timeoutMs` passed; returns `done()`.
template <class F>
bool waitUntil(F done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < timeoutMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return done();
}
