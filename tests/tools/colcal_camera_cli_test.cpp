#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <utility>

namespace {

struct Result {
    int exitCode;
    QString out, err;
};

// Each run is a power cycle of the emulated cameras; their flash lives in `data`.
// A `maxFileBytes` above 0 lets files grow only so far, as on a disk that fills up.
Result colcal(const QStringList& args, const QString& data, int maxFileBytes = 0)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", data);
    p.setProcessEnvironment(env);
    if (maxFileBytes > 0)  // an ignored SIGXFSZ turns the limit into failing writes
        p.start("/bin/sh", QStringList{"-c", "trap '' XFSZ; exec prlimit --fsize=$0 \"$@\"",
                                       QString::number(maxFileBytes), COLCAL_BINARY} + args);
    else
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
    const Result r = colcal({"grab", "--camera", "emu-custom-1", "--out", out, "--json"}, dir.path());
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

QByteArray contentOf(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

TEST(ColcalCameraCli, FailedWritesExitNonZeroAndKeepThePreviousFile)
{
    QTemporaryDir dir;
    const QString settings = dir.filePath("camera.pfs");
    ASSERT_EQ(colcal({"settings", "save", settings}, dir.path()).exitCode, 0);
    const QByteArray good = contentOf(settings);
    ASSERT_GT(good.size(), 8192);
    const QString overlay = dir.filePath("overlay.png");
    ASSERT_TRUE(QFile(overlay).open(QIODevice::WriteOnly));
    // The camera's memory: one user set stored, to be kept when the next store fails.
    ASSERT_EQ(colcal({"settings", "load", "--user-set", "UserSet1", settings}, dir.path()).exitCode, 0);
    const QString memory = dir.filePath("kalto-emulator/emu-cmed-0.json");
    const QByteArray memoryBefore = contentOf(memory);
    ASSERT_FALSE(memoryBefore.isEmpty());

    struct Case {
        const char* what;
        QStringList args;
        int maxFileBytes;
        QString file;
        QByteArray before;
    };
    const Case cases[] = {
        {"settings onto a full device", {"settings", "save", "/dev/full"}, 0, {}, {}},
        {"settings on a full disk", {"settings", "save", settings}, 8192, settings, good},
        {"user set on a full disk", {"settings", "load", "--user-set", "UserSet2", settings}, 4096, memory, memoryBefore},
        {"overlay on a full disk",
         {"find-chart", COLCAL_TESTDATA_DIR "/charts/jarrelscy_printed_desk_perspective.jpg", "--overlay", overlay}, 8192, overlay, {}},
    };
    for (const Case& c : cases) {
        // Renaming a finished temporary file onto the device would replace it.
        ASSERT_FALSE(QFileInfo("/dev/full").isFile()) << "/dev/full is no longer a device";
        const Result r = colcal(c.args, dir.path(), c.maxFileBytes);
        EXPECT_NE(r.exitCode, 0) << c.what;
        EXPECT_TRUE(r.err.contains("cannot write")) << c.what << ": " << r.err.toStdString();
        if (!c.file.isEmpty())
            EXPECT_EQ(contentOf(c.file), c.before) << c.what;
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({"camera.pfs", "overlay.png"}));
    EXPECT_FALSE(QFileInfo("/dev/full").isFile());
}

TEST(ColcalCameraCli, SettingsLoadTakesAByteOrderMarkAndStdinAndRefusesHugeFiles)
{
    QTemporaryDir dir;
    const QString plain = dir.filePath("plain.pfs"), marked = dir.filePath("marked.pfs"), huge = dir.filePath("huge.pfs");
    for (const auto& [path, content] : {std::make_pair(plain, QByteArray("Gamma\t0.8\n")),
                                        std::make_pair(marked, QByteArray("\xEF\xBB\xBFGamma\t0.8\n"))}) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    QFile big(huge);
    ASSERT_TRUE(big.open(QIODevice::WriteOnly) && big.resize(300LL * 1024 * 1024));  // sparse
    big.close();

    for (const QString& path : {plain, marked}) {
        const Result r = colcal({"settings", "load", path, "--json"}, dir.path());
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains("\"applied\":1,\"file\"") || r.out.contains("\"applied\":1")) << r.out.toStdString();
        EXPECT_TRUE(r.out.contains("\"rejected\":0")) << r.out.toStdString();
    }
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", dir.path());
    p.setProcessEnvironment(env);
    p.setStandardInputFile(marked);
    p.start(COLCAL_BINARY, {"settings", "load", "-", "--json"});
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 0);
    EXPECT_TRUE(QString::fromUtf8(p.readAllStandardOutput()).contains("\"rejected\":0"));

    const Result r = colcal({"settings", "load", huge}, dir.path());
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_TRUE(r.err.contains("huge.pfs: larger than")) << r.err.toStdString();
}

}  // namespace
