#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct Result {
    int exitCode;
    QString out, err;
};

Result colcal(const QStringList& args, const QByteArray& stdinData = {})
{
    QProcess p;
    p.start(COLCAL_BINARY, args);
    p.write(stdinData);
    p.closeWriteChannel();
    EXPECT_TRUE(p.waitForFinished(60000));
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
}

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& content)
{
    const QString path = dir.filePath(name);
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(content);
    return path;
}

TEST(ColcalCli, DeltaEReadsStdinAndPrintsJson)
{
    const Result r = colcal({"delta-e", "-", "--json"},
                         "# comment\n50,2.6772,-79.7751,50,0,-82.7485\n50,0,0,60,0,0\n");
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith("{\"pairs\":[{\"dC00\":")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("\"dE00\":2.04245")) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("\"dC00\":0,")) << r.out.toStdString();
}

TEST(ColcalCli, BadDeltaEInputNamesFileAndLine)
{
    QTemporaryDir dir;
    struct Case {
        QByteArray content;
        QString expected;
    };
    const Case cases[] = {
        {"1,2,3,4,5\n", ":1: expected 6"},
        {"# x\n1,2,3,4,5,abc\n", ":2: not a number: \"abc\""},
        {"1,2,3,4,5,nan\n", ":1: not a number: \"nan\""},
        {"", "no data rows"},
    };
    for (const Case& c : cases) {
        const QString path = writeFile(dir, "pairs.csv", c.content);
        const Result r = colcal({"delta-e", path});
        EXPECT_EQ(r.exitCode, 2) << c.expected.toStdString();
        EXPECT_TRUE(r.out.isEmpty());
        EXPECT_TRUE(r.err.contains(c.expected)) << r.err.toStdString();
        EXPECT_EQ(r.err.count('\n'), 1) << r.err.toStdString();
    }
    const Result missing = colcal({"delta-e", dir.filePath("absent.csv")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_TRUE(missing.err.contains("absent.csv: cannot open"));
}

}  // namespace
