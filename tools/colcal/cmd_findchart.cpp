#include "chartimage.h"
#include "chartreport.h"
#include "cli.h"
#include "commands.h"

#include "chartdiscriminator.h"
#include "colorcorrectionautochartfinder.h"

#include <QElapsedTimer>
#include <QJsonArray>

int runFindChart(const cli::Args& args)
{
    if (args.positional().size() != 1)
        throw cli::Error("expects one IMAGE file", cli::BadInput);
    const QString path = args.positional().first();
    ChartImage image = ChartImage::load(path, ChartImage::Encoding::ByDepth);

    ColorCorrectionAutoChartFinder finder;
    QElapsedTimer timer;
    timer.start();
    const ColorCorrectionAutoChartFinderResult found = finder.GetChartPosition(image.display());
    const double ms = timer.nsecsElapsed() / 1e6;

    const char* search = found.foundBy == ColorCorrectionAutoChartFinderResult::Search::Standard   ? "standard"
                         : found.foundBy == ColorCorrectionAutoChartFinderResult::Search::Extended ? "extended"
                                                                                                   : "none";
    const CTrapezoid grid(found.topLeft, found.topRight, found.bottomLeft, found.bottomRight);
    if (args.has("overlay")) {
        QVector<CTrapezoid> patches;
        if (found.valid) {
            ChartDiscriminator d(70);
            d.setGridPosition(grid);
            d.getChartPositions(patches);
        }
        ChartReport::saveOverlay(ChartReport::overlay(image.display(), found.valid ? grid : CTrapezoid(), patches),
                                 args.value("overlay"));
    }
    if (args.flag("json")) {
        cli::printJson({{"valid", found.valid},
                        {"corners", ChartReport::cornersJson(grid)},
                        {"imageSize", QJsonArray{image.size().width(), image.size().height()}},
                        {"milliseconds", ms},
                        {"search", search}});
    } else if (found.valid) {
        cli::print(QString("chart found in %1 (%2 x %3) by the %4 search in %5 ms\n%6\n")
                       .arg(path).arg(image.size().width()).arg(image.size().height()).arg(search).arg(ms, 0, 'f', 1)
                       .arg(ChartReport::cornersText(grid)));
    } else {
        cli::print(QString("no chart found in %1 (%2 x %3) in %4 ms\n")
                       .arg(path).arg(image.size().width()).arg(image.size().height()).arg(ms, 0, 'f', 1));
    }
    return found.valid ? cli::Ok : cli::Failed;
}
