#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct Result {
    int exitCode;
    QString out, err;
};

// Each run is a power cycle of the emulated cameras; their flash lives in `data`.
Result colcal(const QStringList& args, const QString& data)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", data);
    p.setProcessEnvironment(env);
    p.start(COLCAL_BINARY, args);
    EXPECT_TRUE(p.waitForFinished(120000));
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
}

TEST(ColcalCameraCli, CamerasListsTheEmulatedModelsWithCompatibility)
{
    QTemporaryDir dir;
    const Result r = colcal({"cameras", "--json"}, dir.path());
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QJsonArray cams = QJsonDocument::fromJson(r.out.toUtf8()).object().value("cameras").toArray();
    ASSERT_EQ(cams.size(), 3);
    struct Row {
        const char* id;
        const char* sfnc;
        bool compatible;
    };
    const Row rows[] = {{"emu-cmed-0", "2.3.0", true}, {"emu-custom-1", "1.5.1", true}, {"emu-legacy-2", "1.5.1", false}};
    for (int i = 0; i < 3; ++i) {
        const QJsonObject c = cams[i].toObject();
        EXPECT_EQ(c.value("id").toString(), rows[i].id);
        EXPECT_EQ(c.value("sfncVersion").toString(), rows[i].sfnc);
        EXPECT_EQ(c.value("compatible").toBool(), rows[i].compatible) << rows[i].id;
        EXPECT_FALSE(c.value("model").toString().isEmpty());
    }
    const Result table = colcal({"cameras"}, dir.path());
    EXPECT_TRUE(table.out.contains("emu-legacy-2")) << table.out.toStdString();
}

TEST(ColcalCameraCli, GrabWritesADisplayFrame)
{
    QTemporaryDir dir;
    const QString out = dir.filePath("frame.png");
    // A full-size first frame renders the whole scene; under sanitizers on a
    // busy machine that takes longer than the default wait.
    const Result r =
        colcal({"grab", "--camera", "emu-custom-1", "--out", out, "--json", "--timeout-ms", "60000"}, dir.path());
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QImage image(out);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(1920, 1200));
    // The chart's white patch is far brighter than its black body.
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(o.value("pixelFormat").toString(), "BGR8");
    int darkest = 255, brightest = 0;
    for (int y = 0; y < image.height(); y += 40)
        for (int x = 0; x < image.width(); x += 40) {
            const int g = qGray(image.pixel(x, y));
            darkest = std::min(darkest, g);
            brightest = std::max(brightest, g);
        }
    EXPECT_GT(brightest - darkest, 100);
}

TEST(ColcalCameraCli, BadCameraAndMissingOptions)
{
    QTemporaryDir dir;
    Result r = colcal({"grab", "--camera", "nope", "--out", dir.filePath("x.png")}, dir.path());
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_TRUE(r.err.contains("no camera \"nope\"")) << r.err.toStdString();
    r = colcal({"grab"}, dir.path());
    EXPECT_EQ(r.exitCode, 2);
    r = colcal({"settings", "copy", "x"}, dir.path());
    EXPECT_EQ(r.exitCode, 2);
    r = colcal({"settings", "load", dir.filePath("missing.pfs")}, dir.path());
    EXPECT_EQ(r.exitCode, 2);
}

TEST(ColcalCameraCli, SettingsRoundTripAndRejectedLines)
{
    QTemporaryDir dir;
    for (const char* cam : {"emu-cmed-0", "emu-custom-1"}) {
        const QString file = dir.filePath(QString(cam) + ".pfs");
        Result r = colcal({"settings", "save", "--camera", cam, file}, dir.path());
        ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        const QByteArray text = f.readAll();
        EXPECT_TRUE(text.startsWith("#"));
        EXPECT_TRUE(text.contains("\nGamma\t0.7\n")) << cam;
        r = colcal({"settings", "load", "--camera", cam, file}, dir.path());
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();

        const int lines = text.count('\n');
        QFile bad(dir.filePath("bad.pfs"));
        ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
        bad.write(text + "NoSuchFeature\t1\nGamma\tsoft\nno tab here\n\x01\x02\xff\n");
        bad.close();
        r = colcal({"settings", "load", "--camera", cam, bad.fileName()}, dir.path());
        EXPECT_EQ(r.exitCode, 1);
        for (int k = 1; k <= 4; ++k)
            EXPECT_TRUE(r.err.contains(QString("bad.pfs:%1:").arg(lines + k))) << r.err.toStdString();
    }
}

TEST(ColcalCameraCli, LoadIntoAUserSetSurvivesTheProcess)
{
    QTemporaryDir dir;
    const QString file = dir.filePath("s.pfs");
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("# settings\nGamma\t0.5\n");
    f.close();
    Result r = colcal({"settings", "load", "--camera", "emu-cmed-0", "--user-set", "UserSet3", file, "--json"}, dir.path());
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    QFile memory(dir.filePath("kalto-emulator/emu-cmed-0.json"));
    ASSERT_TRUE(memory.open(QIODevice::ReadOnly));
    const QJsonObject sets = QJsonDocument::fromJson(memory.readAll()).object().value("userSets").toObject();
    EXPECT_TRUE(sets.value("UserSet3").toString().contains("\nGamma\t0.5\n"));
}

}  // namespace
