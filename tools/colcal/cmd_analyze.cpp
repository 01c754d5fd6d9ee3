#include "chartimage.h"
#include "chartreport.h"
#include "cli.h"
#include "commands.h"
#include "enginereport.h"

#include "chartcolors.h"
#include "chartdiscriminator.h"
#include "colorcalibrationv1.h"
#include "colorcorrectionautochartfinder.h"

#include <QJsonArray>

#include <cstdio>

int runAnalyze(const cli::Args& args)
{
    const QVector<QPoint>& gridCorners = args.grid();
    if (args.positional().size() != 1)
        throw cli::Error("expects one IMAGE file", cli::BadInput);
    if (args.flag("linear") && args.flag("srgb"))
        throw cli::Error("--linear and --srgb exclude each other", cli::BadInput);
    const QString path = args.positional().first();
    const PublishedChart published = publishedChart(args);
    const ChartImage::Encoding encoding = args.flag("linear") ? ChartImage::Encoding::Linear
                                          : args.flag("srgb") ? ChartImage::Encoding::Srgb
                                                              : ChartImage::Encoding::ByDepth;
    ChartImage image = ChartImage::load(path, encoding);

    CTrapezoid grid;
    if (!gridCorners.isEmpty()) {
        cli::checkGrid(gridCorners, image.size(), path);
        grid = CTrapezoid(gridCorners[0], gridCorners[1], gridCorners[2], gridCorners[3]);
    } else {
        ColorCorrectionAutoChartFinder finder;
        const ColorCorrectionAutoChartFinderResult found = finder.GetChartPosition(image.display());
        if (!found.valid)
            throw cli::Error(QString("%1: no chart found (give the corners with --grid)").arg(path), cli::Failed);
        grid = CTrapezoid(found.topLeft, found.topRight, found.bottomLeft, found.bottomRight);
    }

    ChartDiscriminator discriminator(70);
    discriminator.setGridPosition(grid);
    discriminator.updateColorPatchValues(&image.sdkImage());
    QVector<QColor> colours;
    discriminator.getColorPatchValues(colours);
    if (colours.size() != ChartLayout::kPatches)
        throw cli::Error(QString("%1: only %2 of 24 patches are large enough to measure").arg(path).arg(colours.size()),
                         cli::Failed);

    const QVector<int> clipped = clippedPatches(colours);
    if (!clipped.isEmpty())
        std::fprintf(stderr, "colcal analyze: %s\n", qPrintable(clippedWarning(clipped)));

    const dlib::matrix<double, ChartLayout::kPatches, 3> measured = chartFromColors(colours, image.srgbEncoded());
    QJsonArray patches;
    for (int k = 0; k < ChartLayout::kPatches; ++k)
        patches.append(QJsonArray{measured(k, 0), measured(k, 1), measured(k, 2)});

    if (args.has("overlay")) {
        QVector<CTrapezoid> quads;
        discriminator.getChartPositions(quads);
        ChartReport::saveOverlay(ChartReport::overlay(image.display(), grid, quads), args.value("overlay"));
    }

    ColorCalibrationV1 engine;
    runEngine(engine, measured);
    if (args.flag("json")) {
        QJsonObject out = engineReportJson(engine, published);
        out.insert("corners", ChartReport::cornersJson(grid));
        out.insert("patches", patches);
        out.insert("clippedPatches", numbersJson(clipped));
        cli::printJson(out);
    } else {
        QString text = QString("%1: grid %2\nmeasured patches (linear RGB, 0..255):\n")
                           .arg(path, ChartReport::cornersText(grid));
        for (int k = 0; k < ChartLayout::kPatches; ++k)
            text += QString("%1 %2 %3 %4 %5\n")
                        .arg(k + 1, 3)
                        .arg(patchName(k), -16)
                        .arg(measured(k, 0), 8, 'f', 2)
                        .arg(measured(k, 1), 8, 'f', 2)
                        .arg(measured(k, 2), 8, 'f', 2);
        cli::print(text + "\n" + engineReportTable(engine, published));
    }
    return cli::Ok;
}
