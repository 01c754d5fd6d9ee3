#include "cli.h"
#include "commands.h"

#include "colorspace.h"

#include <QJsonArray>

int runDeltaE(const cli::Args& args)
{
    if (args.positional().size() != 1)
        throw cli::Error("expects one FILE (\"-\" for stdin)", cli::BadInput);

    const auto rows = cli::readNumberRows(args.positional().first(), 6, 0, -1e6, 1e6);
    const ColorSpace cs;
    QJsonArray pairs;
    QString table = QString("%1 %2 %3\n").arg("pair", 4).arg("dE00", 10).arg("dC00", 10);
    int n = 0;
    for (const auto& r : rows) {
        const pixel_lab a{r[0], r[1], r[2]}, b{r[3], r[4], r[5]};
        const double dE = cs.DeltaE2000(a, b, false);
        const double dC = cs.DeltaC2000(a, b);
        pairs.append(QJsonObject{{"dE00", dE}, {"dC00", dC}});
        table += QString("%1 %2 %3\n").arg(++n, 4).arg(dE, 10, 'f', 4).arg(dC, 10, 'f', 4);
    }
    if (args.flag("json"))
        cli::printJson({{"pairs", pairs}});
    else
        cli::print(table);
    return cli::Ok;
}
