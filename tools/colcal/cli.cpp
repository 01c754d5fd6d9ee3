#include "cli.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>
#include <QTextStream>

#include <QPoint>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace cli {

Error::Error(const QString& message, int exitCode)
    : std::runtime_error(message.toStdString()), m_exitCode(exitCode)
{
}

Args::Args(const QStringList& input, const Command& command)
{
    QStringList words = input;
    const bool takesGrid = std::any_of(command.options.begin(), command.options.end(),
                                       [](const Option& o) { return o.name == "grid"; });
    if (takesGrid)
        m_grid = takeGrid(words);

    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    QStringList valued;
    for (const Option& o : command.options) {
        if (o.name == "grid")
            continue;
        parser.addOption(QCommandLineOption(o.name, o.description, o.valueName));
        if (!o.valueName.isEmpty())
            valued << o.name;
    }
    parser.addOption(QCommandLineOption("verbose"));
    if (!parser.parse(QStringList("colcal") + words)) {
        const QStringList unknown = parser.unknownOptionNames();
        if (!unknown.isEmpty())
            throw Error(QString("unknown option %1 (see colcal %2 --help)").arg("--" + unknown.first(), command.name),
                        BadInput);
        for (const QString& name : valued)
            if (parser.errorText().contains("'--" + name + "'"))
                throw Error(QString("option --%1 needs a value").arg(name), BadInput);
        throw Error(parser.errorText(), BadInput);
    }
    m_positional = parser.positionalArguments();
    for (const QString& name : parser.optionNames()) {
        if (!valued.contains(name)) {
            m_flags << name;
        } else if (!m_valuedNames.contains(name)) {
            m_valuedNames << name;
            m_values << parser.value(name);
        }
    }
}

bool Args::has(const QString& name) const
{
    return m_valuedNames.contains(name);
}

QString Args::value(const QString& name, const QString& fallback) const
{
    const int i = m_valuedNames.indexOf(name);
    return i < 0 ? fallback : m_values[i];
}

QString helpText(const Command& command)
{
    QString text = QString("usage: colcal %1%2%3\n\n%4\n\noptions:\n")
                       .arg(command.name, command.options.isEmpty() ? QString() : QString(" [OPTIONS]"),
                            command.arguments.isEmpty() ? QString() : " " + command.arguments, command.summary);
    QVector<Option> all = command.options;
    all << Option{"verbose", {}, "also print the calibration's internal log lines (each once)"}
        << Option{"help", {}, "this text"};
    int width = 0;
    for (const Option& o : all)
        width = std::max(width, int(o.name.size() + (o.valueName.isEmpty() ? 0 : o.valueName.size() + 1)));
    for (const Option& o : all) {
        const QString head = o.valueName.isEmpty() ? o.name : o.name + " " + o.valueName;
        text += QString("  --%1  %2\n").arg(head, -width).arg(o.description);
    }
    text += command.examples.size() > 1 ? "\nexamples:\n" : "\nexample:\n";
    for (const QString& e : command.examples)
        text += "  " + e + "\n";
    text += "\nFILE \"-\" reads standard input. Exit codes: 0 ok, 1 failed, 2 bad input, 3 engine error, 130 interrupted.\n";
    return text;
}

std::vector<std::vector<double>> readNumberRows(const QString& path, int columns, int rows,
                                                double lo, double hi)
{
    QFile file;
    const QString shown = path == "-" ? QString("<stdin>") : path;
    const bool opened = path == "-" ? file.open(stdin, QIODevice::ReadOnly | QIODevice::Text)
                                    : (file.setFileName(path), file.open(QIODevice::ReadOnly | QIODevice::Text));
    if (!opened)
        throw Error(QString("%1: cannot open: %2").arg(shown, file.errorString()), BadInput);

    std::vector<std::vector<double>> out;
    QTextStream in(&file);
    int lineNo = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        ++lineNo;
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const QStringList fields = line.split(',');
        if (fields.size() != columns)
            throw Error(QString("%1:%2: expected %3 comma-separated numbers, found %4")
                            .arg(shown).arg(lineNo).arg(columns).arg(fields.size()),
                        BadInput);
        std::vector<double> row;
        for (const QString& f : fields) {
            bool ok = false;
            const double v = f.trimmed().toDouble(&ok);
            if (!ok || !std::isfinite(v))
                throw Error(QString("%1:%2: not a number: \"%3\"").arg(shown).arg(lineNo).arg(f.trimmed()),
                            BadInput);
            if (v < lo || v > hi)
                throw Error(QString("%1:%2: value %3 outside %4..%5")
                                .arg(shown).arg(lineNo).arg(f.trimmed()).arg(lo).arg(hi),
                            BadInput);
            row.push_back(v);
        }
        out.push_back(row);
        if (rows > 0 && static_cast<int>(out.size()) > rows)
            throw Error(QString("%1:%2: more than %3 rows").arg(shown).arg(lineNo).arg(rows), BadInput);
    }
    if (rows > 0 && static_cast<int>(out.size()) != rows)
        throw Error(QString("%1:%2: expected %3 rows, found %4").arg(shown).arg(lineNo).arg(rows).arg(out.size()),
                    BadInput);
    if (out.empty())
        throw Error(QString("%1: no data rows").arg(shown), BadInput);
    return out;
}

// "--grid" takes eight numbers as separate words; they are taken out before the
// remaining words are parsed.
QVector<QPoint> takeGrid(QStringList& words)
{
    const int at = words.indexOf("--grid");
    if (at < 0)
        return {};
    if (words.size() < at + 9)
        throw cli::Error("--grid needs eight numbers: x1 y1 x2 y2 x3 y3 x4 y4 (top-left, top-right, "
                         "bottom-left, bottom-right)",
                         cli::BadInput);
    QVector<QPoint> corners;
    for (int i = 0; i < 4; ++i) {
        int xy[2];
        for (int k = 0; k < 2; ++k) {
            const QString w = words[at + 1 + 2 * i + k];
            bool ok = false;
            const double v = w.toDouble(&ok);
            if (!ok || !std::isfinite(v) || std::fabs(v) > 1e7)
                throw cli::Error(QString("--grid: not a number: \"%1\"").arg(w), cli::BadInput);
            xy[k] = int(std::lround(v));
        }
        corners << QPoint(xy[0], xy[1]);
    }
    words.erase(words.begin() + at, words.begin() + at + 9);
    return corners;
}

namespace {

// The outline top-left, top-right, bottom-right, bottom-left must turn the same
// way at every corner, and clockwise on screen (y down) as the chart is seen;
// a crossed, folded or mirrored grid does not.
bool isConvexClockwise(const QVector<QPoint>& c)
{
    const QPoint ring[4] = {c[0], c[1], c[3], c[2]};
    for (int i = 0; i < 4; ++i) {
        const QPoint a = ring[(i + 1) % 4] - ring[i], b = ring[(i + 2) % 4] - ring[(i + 1) % 4];
        if (qint64(a.x()) * b.y() - qint64(a.y()) * b.x() <= 0)
            return false;
    }
    return true;
}

}  // namespace

void checkGrid(const QVector<QPoint>& corners, const QSize& size, const QString& what)
{
    for (const QPoint& p : corners)
        if (p.x() < 0 || p.y() < 0 || p.x() > size.width() || p.y() > size.height())
            throw Error(QString("%1: grid corner (%2, %3) lies outside the %4 x %5 image")
                            .arg(what).arg(p.x()).arg(p.y()).arg(size.width()).arg(size.height()),
                        BadInput);
    if (corners.size() != 4 || !isConvexClockwise(corners))
        throw Error(QString("%1: grid corners cross each other, coincide or are mirrored (order: top-left, "
                            "top-right, bottom-left, bottom-right)")
                        .arg(what),
                    BadInput);
}

QByteArray readSettingsFile(const QString& path)
{
    QFile file;
    const QString shown = path == "-" ? QString("<stdin>") : path;
    const bool opened = path == "-" ? file.open(stdin, QIODevice::ReadOnly) : (file.setFileName(path), file.open(QIODevice::ReadOnly));
    if (!opened)
        throw Error(QString("%1: cannot open: %2").arg(shown, file.errorString()), BadInput);
    // Read one byte past the limit rather than trusting a size a pipe lacks.
    QByteArray text = file.read(kMaxSettingsBytes + 1);
    if (text.size() > kMaxSettingsBytes)
        throw Error(QString("%1: larger than %2 bytes, not a settings file").arg(shown).arg(kMaxSettingsBytes), BadInput);
    if (file.error() != QFileDevice::NoError)
        throw Error(QString("%1: cannot read: %2").arg(shown, file.errorString()), BadInput);
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    return text;
}

void printJson(const QJsonObject& object)
{
    print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + "\n");
}

void print(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

}  // namespace cli
