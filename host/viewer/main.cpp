// kaltoviewer: a camera viewer that loads the host's plug-ins.
#include "kaltoviewer.h"

#include "aboutpluginsdialog.h"

#include "arvtransportlayer.h"
#include "emulatortransportlayer.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdio>

int main(int argc, char* argv[])
{
    // Listing plug-ins, help and version need no screen: they must answer on a
    // machine without a display too.
    for (int i = 1; i < argc; ++i)
        for (const char* noScreen : {"--list-plugins", "--help", "-h", "--help-all", "--version", "-v"})
            if (qstrcmp(argv[i], noScreen) == 0 && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
                qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("kaltoviewer"));
    QApplication::setOrganizationName(QStringLiteral("Ostrel"));
    QApplication::setApplicationVersion(QStringLiteral("6.2.4"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Camera viewer with plug-ins."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption language({QStringLiteral("language")},
                                      QStringLiteral("User interface language: de, en, ja, ko or zh."),
                                      QStringLiteral("lang"));
    const QCommandLineOption listPlugins({QStringLiteral("list-plugins")},
                                         QStringLiteral("Print the plug-ins with version and state, then exit."));
    const QCommandLineOption camera({QStringLiteral("camera")},
                                    QStringLiteral("Select and open this camera at start."), QStringLiteral("id"));
    const QCommandLineOption runCommand({QStringLiteral("run-command")},
                                        QStringLiteral("Trigger this menu command once started, "
                                                       "e.g. ColorCalibration.Start."),
                                        QStringLiteral("command"));
    const QCommandLineOption pluginDir({QStringLiteral("plugin-dir")},
                                       QStringLiteral("Load plug-ins from this folder instead."),
                                       QStringLiteral("folder"));
    const QCommandLineOption genicam({QStringLiteral("genicam")},
                                     QStringLiteral("Also list GenICam cameras (GigE Vision, USB3 Vision) through "
                                                    "Aravis; discovery broadcasts on every network interface. "
                                                    "KALTO_GENICAM=1 does the same."));
    parser.addOptions({language, listPlugins, camera, runCommand, pluginDir, genicam});
    parser.process(app);
    if (ArvTransportLayer::enabledBy(parser.isSet(genicam))) {
        // After the emulator, so that its ids never send a lookup onto the network.
        EmulatorTransportLayer::registerDefault();
        ArvTransportLayer::registerDefault();
    }

    KaltoViewer::Options options;
    options.pluginFolders =
        parser.isSet(pluginDir) ? parser.values(pluginDir) : KaltoViewer::defaultPluginFolders();
    options.language = parser.value(language);
    options.cameraId = parser.value(camera);
    options.runCommand = parser.value(runCommand);
    if (!options.language.isEmpty() &&
        !QStringList{"de", "en", "ja", "ko", "zh"}.contains(options.language)) {
        std::fprintf(stderr, "kaltoviewer: unknown language \"%s\" (de, en, ja, ko, zh)\n",
                     qPrintable(options.language));
        return 2;
    }
    if (!options.runCommand.isEmpty() && options.cameraId.isEmpty()) {
        std::fprintf(stderr, "kaltoviewer: --run-command needs --camera\n");
        return 2;
    }

    QTranslator qtTranslator;
    if (!options.language.isEmpty() &&
        qtTranslator.load(QStringLiteral("qtbase_") + options.language,
                          QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtTranslator);

    KaltoViewer viewer(options);
    if (parser.isSet(listPlugins)) {
        for (const auto& plugin : viewer.plugins())
            std::printf("%s\t%s\t%s\n",
                        qPrintable(plugin.name.isEmpty() ? QFileInfo(plugin.fileName).fileName() : plugin.name),
                        qPrintable(plugin.version.toString()),
                        qPrintable(AboutPluginsDialog::stateText(plugin)));
        return 0;
    }
    if (!viewer.start())
        return 1;
    return app.exec();
}
