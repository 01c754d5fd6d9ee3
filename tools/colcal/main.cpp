#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"

#include "arvtransportlayer.h"

#include <QGuiApplication>
#include <QSet>

#include <cstdio>
#include <map>

namespace {

struct Entry {
    int (*run)(const cli::Args&);
    cli::Command command;
};

const cli::Option kJson{"json", {}, "one JSON object on stdout instead of the table"};
const cli::Option kPublished{"published-chart", "EDITION",
                             "also score against the published chart values (D50): post-2014 (default) or pre-2014"};
const cli::Option kCamera{"camera", "ID", "the camera (default emu-cmed-0; `colcal cameras` lists them)"};

const std::map<QString, Entry>& commands()
{
    static const std::map<QString, Entry> table = {
        {"calibrate",
         {runCalibrate,
          {"calibrate", {}, "The whole calibration of a camera, as the wizard does it. Backup, neutral settings, white "
                            "balance,\nautomatic brightness, calibration, results and what is to be kept; a failure or "
                            "Ctrl-C puts the\ncamera's settings back. Progress goes to stderr, the results to stdout.",
           {kCamera,
            {"grid", "x1 y1 x2 y2 x3 y3 x4 y4", "the chart's corners: top-left, top-right, bottom-left, bottom-right"},
            {"find-chart", {}, "locate the chart in the image (the default)"},
            {"stored-grid", {}, "keep the grid stored for this camera"},
            {"load-settings", "FILE", "apply a settings file before the neutral settings"},
            {"settings-dir", "DIR", "save the calibrated settings file in a new folder under DIR"},
            {"report-dir", "DIR", "save the HTML report in a new folder under DIR"},
            {"user-set", "NAME", "store the calibrated settings in the camera's user set NAME"},
            {"set-default", {}, "make that user set the one the camera starts with"},
            {"timeout-s", "SECONDS", "longest wait for the automatic brightness (default 120)"},
            kPublished, kJson},
           {"colcal calibrate --camera emu-cmed-0 --report-dir out/reports --settings-dir out/settings"}}}},
        {"cameras",
         {runCameras,
          {"cameras", {}, "The cameras of every backend, with model, SFNC version and whether the calibration supports them.",
           {kJson}, {"colcal cameras --json"}}}},
        {"grab",
         {runGrab,
          {"grab", {}, "One frame as the camera delivers it, converted for display, saved as an image.",
           {kCamera, {"out", "FRAME.png", "where the frame goes (required)"},
            {"timeout-ms", "MS", "longest wait for the frame (default 10000)"}, kJson},
           {"colcal grab --camera emu-cmed-0 --out frame.png"}}}},
        {"settings",
         {runSettings,
          {"settings", "save|load FILE", "The camera's feature-persistence text: save it to FILE (`-`: standard output) or load FILE into the camera.",
           {kCamera, {"user-set", "NAME", "load: also store the result in the user set NAME"}, kJson},
           {"colcal settings save --camera emu-cmed-0 camera.pfs", "colcal settings load --camera emu-cmed-0 camera.pfs"}}}},
        {"delta-e",
         {runDeltaE,
          {"delta-e", "FILE", "CIEDE2000 dE and dC of Lab pairs: rows L1,a1,b1,L2,a2,b2 (lines starting with # skipped).",
           {kJson}, {"echo 50,2.68,-79.78,50,0,-82.75 | colcal delta-e -"}}}},
        {"engine",
         {runEngineCommand,
          {"engine", "FILE", "Calibrate a measured chart. 24 rows R,G,B (linear, 0..255, chart order) give gains, "
                             "matrix,\nhue/saturation, gamma and each step's chart and errors.",
           {kPublished, kJson}, {"colcal engine tools/colcal/samples/measured_chart.csv"}}}},
        {"analyze",
         {runAnalyze,
          {"analyze", "IMAGE", "Find the 24-patch chart in a photo (or take --grid), measure the patches and calibrate them.",
           {{"grid", "x1 y1 x2 y2 x3 y3 x4 y4", "the chart's corners: top-left, top-right, bottom-left, bottom-right"},
            {"linear", {}, "the image holds linear values"},
            {"srgb", {}, "the image is sRGB-encoded (default: 8-bit images are sRGB, deeper ones linear)"},
            {"overlay", "OUT.png", "draw the grid and the patches on the image"},
            kPublished, kJson},
           {"colcal analyze chart.jpg --overlay chart_overlay.png"}}}},
        {"find-chart",
         {runFindChart,
          {"find-chart", "IMAGE", "Locate the 24-patch chart in an image and print its four corners.",
           {{"overlay", "OUT.png", "draw the grid and the patches on the image"}, kJson},
           {"colcal find-chart chart.jpg --json"}}}},
    };
    return table;
}

QString firstSentence(const QString& text)
{
    QString first = text.section(". ", 0, 0).section(".\n", 0, 0);
    return first.endsWith('.') ? first.chopped(1) : first;
}

void usage(FILE* to)
{
    std::fprintf(to, "usage: colcal COMMAND [OPTIONS] [ARGS]\n       colcal COMMAND --help\n\ncommands:\n");
    for (const auto& [name, entry] : commands())
        std::fprintf(to, "  %-11s %s\n", qPrintable(name), qPrintable(firstSentence(entry.command.summary)));
    std::fprintf(to, "\noptions:\n  --help     this text\n  --version  the tool's version\n"
                     "  --genicam  also reach GenICam cameras (GigE Vision, USB3 Vision) through Aravis;\n"
                     "             discovery broadcasts on every network interface (KALTO_GENICAM=1 does the same)\n"
                     "\nFILE \"-\" reads standard input. Exit codes: 0 ok, 1 failed, 2 bad input, 3 engine error, "
                     "130 interrupted.\n");
}

bool g_verbose = false;

// The calibration's classes log "@{source};message" lines for the host's log
// window; on a terminal they are noise unless asked for, and a loop repeats
// them, so each is shown once.
void messageHandler(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    static QSet<QString> seen;
    if (message.startsWith("@{")) {
        if (!g_verbose || seen.contains(message))
            return;
        seen.insert(message);
        const int cut = message.indexOf("};");
        std::fprintf(stderr, "  log: %s\n", qPrintable(cut < 0 ? message : message.mid(cut + 2)));
        return;
    }
    // Qt's notes about the session environment (XDG_RUNTIME_DIR and so on) are no news to a user.
    if ((type == QtDebugMsg || message.startsWith("QStandardPaths:")) && !g_verbose)
        return;
    std::fprintf(stderr, "colcal: %s\n", qPrintable(message));
    if (type == QtFatalMsg)
        std::abort();
}

}  // namespace

int main(int argc, char** argv)
{
    // A GUI application for the fonts of the report's pictures. colcal opens no
    // window, so it never needs a display, whatever the session's platform.
    qputenv("QT_QPA_PLATFORM", "minimal:enable_fonts");
    for (int i = 2; i < argc; ++i)
        g_verbose = g_verbose || QByteArray(argv[i]) == "--verbose";
    qInstallMessageHandler(messageHandler);
    QGuiApplication app(argc, argv);
    // The viewer's settings (the stored grid position per camera) are shared with it.
    QCoreApplication::setOrganizationName("Ostrel");
    QCoreApplication::setApplicationName("KaltoViewer");
    QStringList words = app.arguments().mid(1);
    // A global switch: taken out wherever it stands, before or after the command.
    const bool genicam = words.removeAll("--genicam") > 0;
    EmulatedCameras::setGenicamEnabled(ArvTransportLayer::enabledBy(genicam));
    if (words.isEmpty() || words.first() == "--help" || words.first() == "-h") {
        usage(words.isEmpty() ? stderr : stdout);
        return words.isEmpty() ? cli::BadInput : cli::Ok;
    }
    if (words.first() == "--version") {
        std::printf("colcal %s\n", COLCAL_VERSION);
        return cli::Ok;
    }
    const QString name = words.takeFirst();
    const auto it = commands().find(name);
    if (it == commands().end()) {
        std::fprintf(stderr, "colcal: unknown command \"%s\"\n", qPrintable(name));
        usage(stderr);
        return cli::BadInput;
    }
    if (words.contains("--help") || words.contains("-h")) {
        cli::print(cli::helpText(it->second.command));
        return cli::Ok;
    }
    try {
        return it->second.run(cli::Args(words, it->second.command));
    } catch (const cli::Error& e) {
        std::fprintf(stderr, "colcal %s: %s\n", qPrintable(name), e.what());
        return e.exitCode();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "colcal %s: %s\n", qPrintable(name), e.what());
        return cli::Failed;
    }
}
