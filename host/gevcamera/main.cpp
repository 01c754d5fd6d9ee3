#include "gevcamera.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <stdexcept>

// kalto-gev-camera: the emulated medical colour camera as a GigE Vision device.
// GigE Vision discovery answers broadcasts on the interface it serves; keep it
// on loopback (the default) unless a real network is meant.
int main(int argc, char** argv)
{
    // Ctrl-C and SIGTERM are taken by sigwait below; blocked before any thread
    // starts, so that none of the library's threads receives them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("kalto-gev-camera");
    const GevCamera::Options defaults;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "An emulated colour camera (the medical model, SFNC 2.x) served over GigE Vision until Ctrl-C or SIGTERM.\n"
        "Its user sets are kept like an emulated camera's, under $XDG_DATA_HOME/kalto-emulator/gev-<serial>.json.");
    parser.addHelpOption();
    parser.addOption({"interface", "network interface to serve on, by name or IPv4 address (default lo)", "NAME",
                      QString::fromStdString(defaults.interfaceName)});
    parser.addOption({"serial", "serial number, 1 to 15 characters (default " +
                                    QString::fromStdString(defaults.serial) + ")",
                      "SERIAL", QString::fromStdString(defaults.serial)});
    parser.addOption({"model", "model name, 1 to 31 characters (default \"" +
                                   QString::fromStdString(defaults.model) + "\")",
                      "NAME", QString::fromStdString(defaults.model)});
    parser.process(app);
    if (!parser.positionalArguments().isEmpty()) {
        std::fprintf(stderr, "kalto-gev-camera: unexpected argument \"%s\" (see --help)\n",
                     qPrintable(parser.positionalArguments().first()));
        return 2;
    }

    GevCamera::Options options;
    options.interfaceName = parser.value("interface").toStdString();
    options.serial = parser.value("serial").toStdString();
    options.model = parser.value("model").toStdString();
    try {
        GevCamera camera(options);
        std::printf("kalto-gev-camera: serving %s on %s\n", camera.deviceId().c_str(), options.interfaceName.c_str());
        std::fflush(stdout);
        int signal = 0;
        sigwait(&stopSignals, &signal);
        std::fprintf(stderr, "kalto-gev-camera: %s, stopping\n", signal == SIGINT ? "interrupted" : "terminated");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "kalto-gev-camera: %s\n", e.what());
        return 1;
    }
    return 0;
}
