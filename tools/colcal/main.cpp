#include "cli.h"
#include "commands.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <functional>
#include <map>

namespace {

struct Command {
    std::function<int(const QStringList&)> run;
    const char* usage;
};

const std::map<QString, Command>& commands()
{
    static const std::map<QString, Command> table = {
        {"calibrate", {runCalibrate, "calibrate [--camera ID] [--grid x1 y1 ... x4 y4|--find-chart|--stored-grid] [--load-settings FILE] [--settings-dir DIR] [--report-dir DIR] [--user-set NAME [--set-default]] [--json]   the whole calibration of a camera"}},
        {"cameras", {runCameras, "cameras [--json]            the cameras of every backend and whether the calibration supports them"}},
        {"grab", {runGrab, "grab [--camera ID] --out FRAME.png [--json]   one frame as the camera delivers it, converted for display"}},
        {"settings", {runSettings, "settings save|load [--camera ID] FILE [--user-set NAME] [--json]   the camera's feature-persistence text"}},
        {"delta-e", {runDeltaE, "delta-e FILE [--json]      CIEDE2000 dE and dC of Lab pairs (L1,a1,b1,L2,a2,b2 rows)"}},
        {"engine", {runEngineCommand, "engine FILE [--json]       calibrate a measured chart (24 rows R,G,B, linear 0..255)"}},
        {"analyze", {runAnalyze, "analyze IMAGE [--grid x1 y1 x2 y2 x3 y3 x4 y4] [--linear|--srgb] [--overlay OUT.png] [--json]   measure the chart in an image and calibrate"}},
        {"find-chart", {runFindChart, "find-chart IMAGE [--overlay OUT.png] [--json]   locate the 24-patch chart in an image"}},
    };
    return table;
}

void usage(FILE* to)
{
    std::fprintf(to, "usage: colcal COMMAND [ARGS]\n\ncommands:\n");
    for (const auto& [name, cmd] : commands())
        std::fprintf(to, "  %s\n", cmd.usage);
    std::fprintf(to, "\nFILE \"-\" reads standard input. Exit codes: 0 ok, 1 failed, 2 bad input, 3 engine error.\n");
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // The viewer's settings (the stored grid position per camera) are shared with it.
    QCoreApplication::setOrganizationName("Ostrel");
    QCoreApplication::setApplicationName("KaltoViewer");
    QStringList words = app.arguments().mid(1);
    if (words.isEmpty() || words.first() == "--help" || words.first() == "-h") {
        usage(words.isEmpty() ? stderr : stdout);
        return words.isEmpty() ? cli::BadInput : cli::Ok;
    }
    const QString name = words.takeFirst();
    const auto it = commands().find(name);
    if (it == commands().end()) {
        std::fprintf(stderr, "colcal: unknown command \"%s\"\n", qPrintable(name));
        usage(stderr);
        return cli::BadInput;
    }
    try {
        return it->second.run(words);
    } catch (const cli::Error& e) {
        std::fprintf(stderr, "colcal %s: %s\n", qPrintable(name), e.what());
        return e.exitCode();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "colcal %s: %s\n", qPrintable(name), e.what());
        return cli::Failed;
    }
}
