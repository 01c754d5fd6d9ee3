#include "cli.h"
#include "commands.h"
#include "enginereport.h"

#include "colorcalibrationv1.h"

int runEngineCommand(const cli::Args& args)
{
    if (args.positional().size() != 1)
        throw cli::Error("expects one FILE of 24 R,G,B rows (\"-\" for stdin)", cli::BadInput);

    const PublishedChart published = publishedChart(args);
    const auto rows = cli::readNumberRows(args.positional().first(), 3, ChartLayout::kPatches, 0.0, 255.0);
    ColorCalibrationV1 engine;
    runEngine(engine, chartFromRows(rows));
    if (args.flag("json"))
        cli::printJson(engineReportJson(engine, published));
    else
        cli::print(engineReportTable(engine, published));
    return cli::Ok;
}
