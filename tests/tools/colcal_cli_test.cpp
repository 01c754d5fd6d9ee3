#include "publishedchart.h"
#include "testprocess.h"

#include <gtest/gtest.h>

#include <QDataStream>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

TestProcess::Result colcal(const QStringList& args, const QByteArray& input = {})
{
    return TestProcess(COLCAL_BINARY).run(args, input);
}

TEST(ColcalCli, DeltaEReadsStdinAndPrintsJson)
{
    const TestProcess::Result r = colcal({"delta-e", "-", "--json"},
                         "# comment\n50,2.6772,-79.7751,50,0,-82.7485\n50,0,0,60,0,0\n");
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith("{\"pairs\":[{\"dC00\":")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("\"dE00\":2.04245")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("\"dC00\":0,")) << r.out.toStdString();
}

QByteArray sampleChart()
{
    QFile f(COLCAL_SAMPLE_CHART);
    f.open(QIODevice::ReadOnly);
    return f.readAll();
}

// Every step of the engine, and the measured chart scored against the
// published values of the chosen edition beside the engine's own figures; an
// unknown edition is bad input.
TEST(ColcalCli, EngineReportsEveryStepAndScoresAgainstThePublishedChartOfEitherEdition)
{
    std::vector<dlib::matrix<double, 1, 3>> measured;
    for (const QByteArray& line : sampleChart().split('\n'))
        if (!line.isEmpty() && !line.startsWith('#')) {
            const QList<QByteArray> v = line.split(',');
            dlib::matrix<double, 1, 3> rgb;
            rgb = v[0].toDouble(), v[1].toDouble(), v[2].toDouble();
            measured.push_back(rgb);
        }
    ASSERT_EQ(measured.size(), 24u);
    for (const PublishedChart::Edition edition : {PublishedChart::Edition::Post2014, PublishedChart::Edition::Pre2014}) {
        const QString name = PublishedChart::editionName(edition);
        const QStringList args = edition == PublishedChart::Edition::Post2014
                                     ? QStringList{"engine", "-", "--json"}  // the default
                                     : QStringList{"engine", "-", "--json", "--published-chart", name};
        const TestProcess::Result r = colcal(args, sampleChart());
        ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
        const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
        EXPECT_EQ(o["bc6x2"].toArray().size(), 12);
        EXPECT_EQ(o["gamma"].toDouble(), 0.45);
        const QJsonArray steps = o["steps"].toArray();
        ASSERT_EQ(steps.size(), 5);
        const char* names[] = {"Original", "DigitalGain", "WhiteBalance", "Matrix3x3", "Bc6x2"};
        for (int i = 0; i < 5; ++i) {
            const QJsonObject step = steps[i].toObject();
            EXPECT_EQ(step["step"].toString(), names[i]);
            for (const char* key : {"chart", "deltaE", "deltaC"})
                EXPECT_EQ(step[key].toArray().size(), 24) << names[i] << " " << key;
        }
        for (const auto& row : o["matrix"].toArray()) {  // the rows keep greys grey
            const QJsonArray r3 = row.toArray();
            EXPECT_NEAR(r3[0].toDouble() + r3[1].toDouble() + r3[2].toDouble(), 1.0, 1e-9);
        }
        EXPECT_EQ(o["whiteBalance"].toArray().size(), 3);
        EXPECT_EQ(o["digitalGain"].type(), QJsonValue::Double);
        const QJsonObject dE = o["meanDeltaE"].toObject();
        EXPECT_LT(dE["final"].toDouble(), dE["original"].toDouble());
        EXPECT_TRUE(o["meanDeltaC"].isObject());
        double finalSum = 0;
        for (const auto& v : steps[4].toObject()["deltaE"].toArray())
            finalSum += v.toDouble();
        EXPECT_NEAR(dE["final"].toDouble(), finalSum / 24.0, 1e-9);

        const QJsonObject pub = o["publishedChart"].toObject();
        EXPECT_EQ(pub["edition"].toString(), name);
        EXPECT_TRUE(pub["label"].toString().contains("published chart values (D50, " + name)) << name.toStdString();
        const PublishedChart chart(edition);
        double sum = 0;
        for (const char* key : {"deltaEBefore", "deltaEAfter", "deltaCBefore", "deltaCAfter"})
            EXPECT_EQ(pub[key].toArray().size(), 24) << key;
        for (int k = 0; k < 24; ++k) {
            EXPECT_NEAR(pub["deltaEBefore"].toArray()[k].toDouble(), chart.deltaE(k, measured[k]), 1e-9) << k;
            sum += pub["deltaEAfter"].toArray()[k].toDouble();
        }
        EXPECT_NEAR(pub["meanDeltaE"].toObject()["after"].toDouble(), sum / 24, 1e-9);
        // the calibration brings the chart close to the published values too, if not as close as to its own
        EXPECT_LT(pub["meanDeltaE"].toObject()["after"].toDouble(), 3.0);
        EXPECT_GE(pub["meanDeltaE"].toObject()["after"].toDouble(), o["meanDeltaE"].toObject()["final"].toDouble());

        const TestProcess::Result table = colcal({"engine", "-", "--published-chart", name}, sampleChart());
        EXPECT_TRUE(table.out.contains(QString("Mean dE00 %1 before, %2 after")
                                           .arg(pub["meanDeltaE"].toObject()["before"].toDouble(), 0, 'f', 2)
                                           .arg(pub["meanDeltaE"].toObject()["after"].toDouble(), 0, 'f', 2)))
            << table.out.toStdString();
        for (const char* words : {"White balance", "20 neutral 8", "mean"})
            EXPECT_TRUE(table.out.contains(words)) << words;
    }
    const TestProcess::Result bad = colcal({"engine", "-", "--published-chart", "2013"}, sampleChart());
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_TRUE(bad.err.contains("--published-chart: \"2013\" is neither post-2014 nor pre-2014")) << bad.err.toStdString();
}

// Bad input of each reading command is named by file and line (a message
// starting with ':' follows the file's path), on one line of stderr, exit 2;
// a chart the engine cannot take exits 3 with the engine's message.
TEST(ColcalCli, BadInputIsNamedByFileAndLine)
{
    QTemporaryDir dir;
    QList<QByteArray> rows;
    for (const QByteArray& l : sampleChart().split('\n'))
        if (!l.isEmpty() && !l.startsWith('#'))
            rows << l;
    ASSERT_EQ(rows.size(), 24);
    auto chartWith = [&rows](int row, const QByteArray& line) {
        QList<QByteArray> changed = rows;
        changed[row] = line;
        return changed.join('\n');
    };
    // A BMP header declaring 12000 x 12000 pixels of 24 bits, followed by a few bytes.
    QByteArray hugeBmp;
    QDataStream header(&hugeBmp, QIODevice::WriteOnly);
    header.setByteOrder(QDataStream::LittleEndian);
    header.writeRawData("BM", 2);
    header << quint32(54 + 64) << quint32(0) << quint32(54) << quint32(40) << quint32(12000) << quint32(12000)
           << quint16(1) << quint16(24) << quint32(0) << quint32(0) << quint32(0) << quint32(0) << quint32(0) << quint32(0);
    hugeBmp.append(QByteArray(64, '\x7f'));
    struct Case {
        const char* command;
        QByteArray content;  // null: no such file
        int exitCode;
        QString expected;
    };
    const Case cases[] = {
        {"delta-e", "1,2,3,4,5\n", 2, ":1: expected 6"},
        {"delta-e", "# x\n1,2,3,4,5,abc\n", 2, ":2: not a number: \"abc\""},
        {"delta-e", "1,2,3,4,5,nan\n", 2, ":1: not a number: \"nan\""},
        {"delta-e", "", 2, "no data rows"},
        {"delta-e", {}, 2, ": cannot open"},
        {"engine", rows.mid(0, 23).join('\n'), 2, ":23: expected 24 rows, found 23"},
        {"engine", (rows + rows.mid(23)).join('\n'), 2, ":25: more than 24 rows"},
        {"engine", chartWith(4, "12,abc,3"), 2, ":5: not a number: \"abc\""},
        {"engine", chartWith(6, "12,NaN,3"), 2, ":7: not a number: \"NaN\""},
        {"engine", chartWith(0, "12,256,3"), 2, ":1: value 256 outside 0..255"},
        {"engine", chartWith(23, "-0.5,1,1"), 2, ":24: value -0.5 outside 0..255"},
        {"engine", chartWith(2, "1,2"), 2, ":3: expected 3 comma-separated numbers, found 2"},
        {"engine", {}, 2, ": cannot open"},
        // sampled from a black gap: stays grey through every gain and the matrix
        {"engine", chartWith(5, "0,0,0"), 3, "Cannot determine hue sector on gray image"},
        // refused from its header, before a pixel is decoded
        {"analyze", hugeBmp, 2, "12000 x 12000 pixels is more than the 100 megapixels"},
        {"find-chart", hugeBmp, 2, "12000 x 12000 pixels is more than the 100 megapixels"},
    };
    int n = 0;
    for (const Case& c : cases) {
        const QString path = dir.filePath(QString("input%1.csv").arg(++n));
        QFile file(path);
        if (!c.content.isNull())
            ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(c.content) == c.content.size());
        file.close();
        const TestProcess::Result r = colcal({c.command, path, "--json"});
        SCOPED_TRACE(c.expected.toStdString());
        EXPECT_EQ(r.exitCode, c.exitCode);
        EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
        EXPECT_TRUE(r.err.contains(c.expected.startsWith(':') ? path + c.expected : c.expected)) << r.err.toStdString();
        if (c.exitCode == 2)
            EXPECT_EQ(r.err.count('\n'), 1) << r.err.toStdString();
    }
}

// Every subcommand with the options its README line and help promise.
TEST(ColcalCli, EverySubcommandExplainsItselfAndNamesUnknownOptions)
{
    struct Row {
        QString name;
        QStringList options;
    };
    const Row rows[] = {
        {"calibrate", {"--camera ID", "--grid x1 y1 x2 y2 x3 y3 x4 y4", "--find-chart", "--stored-grid",
                       "--load-settings FILE", "--settings-dir DIR", "--report-dir DIR", "--user-set NAME",
                       "--set-default", "--timeout-s SECONDS", "--json"}},
        {"cameras", {"--json"}},
        {"grab", {"--camera ID", "--out FRAME.png", "--timeout-ms MS", "--json"}},
        {"settings", {"--camera ID", "--user-set NAME", "--json"}},
        {"delta-e", {"--json"}},
        {"engine", {"--json"}},
        {"analyze", {"--grid x1 y1 x2 y2 x3 y3 x4 y4", "--linear", "--srgb", "--overlay OUT.png", "--json"}},
        {"find-chart", {"--overlay OUT.png", "--json"}},
    };
    const TestProcess::Result top = colcal({"--help"});
    EXPECT_EQ(top.exitCode, 0);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name.toStdString());
        EXPECT_TRUE(top.out.contains("\n  " + row.name + " ")) << top.out.toStdString();

        for (const QString& help : {QString("--help"), QString("-h")}) {
            const TestProcess::Result r = colcal({row.name, help});
            EXPECT_EQ(r.exitCode, 0);
            EXPECT_TRUE(r.err.isEmpty()) << r.err.toStdString();
            EXPECT_TRUE(r.out.startsWith("usage: colcal " + row.name)) << r.out.toStdString();
            for (const QString& option : row.options + QStringList{"--verbose", "--help"})
                EXPECT_TRUE(r.out.contains("\n  " + option + " ")) << option.toStdString() << "\n" << r.out.toStdString();
            const QString example = r.out.section("example", 1).section('\n', 1, 1);
            EXPECT_TRUE(example.startsWith("  colcal " + row.name + " ") || example.contains("| colcal " + row.name))
                << r.out.toStdString();
        }

        // Rejected before anything is opened or read, naming the word.
        const TestProcess::Result bad = colcal({row.name, "--no-such-option", "x"});
        EXPECT_EQ(bad.exitCode, 2);
        EXPECT_TRUE(bad.out.isEmpty());
        EXPECT_EQ(bad.err, QString("colcal %1: unknown option --no-such-option (see colcal %1 --help)\n").arg(row.name));
    }
    const TestProcess::Result version = colcal({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.startsWith("colcal ") && version.out.count('.') == 2) << version.out.toStdString();
    const TestProcess::Result none = colcal({});
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_TRUE(none.out.isEmpty());
    EXPECT_TRUE(none.err.startsWith("usage: colcal COMMAND"));
}

}  // namespace
