#include "testprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace {

// Each run is a power cycle of the emulated cameras; their flash lives in the
// runner's home, which stays the same for one test.
struct ColcalCameraCli : ::testing::Test {
    QString file(const QString& name) { return QDir(colcal.home()).filePath(name); }
    QString memory() { return file("data/kalto-emulator/emu-cmed-0.json"); }
    QString write(const QString& name, const QByteArray& content)
    {
        QFile f(file(name));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
        return f.fileName();
    }
    QByteArray contentOf(const QString& path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    TestProcess colcal{COLCAL_BINARY};
};

TEST_F(ColcalCameraCli, CamerasListsTheEmulatedModelsWithCompatibility)
{
    const TestProcess::Result r = colcal.run({"cameras", "--json"});
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
    EXPECT_TRUE(colcal.run({"cameras"}).out.contains("emu-legacy-2"));
}

TEST_F(ColcalCameraCli, GrabWritesADisplayFrame)
{
    const QString out = file("frame.png");
    // A full-size first frame renders the whole scene; under sanitizers on a
    // busy machine that takes longer than the default wait.
    const TestProcess::Result r =
        colcal.run({"grab", "--camera", "emu-custom-1", "--out", out, "--json", "--timeout-ms", "60000"});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QImage image(out);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(1920, 1200));
    EXPECT_EQ(QJsonDocument::fromJson(r.out.toUtf8()).object().value("pixelFormat").toString(), "BGR8");
    // The chart's white patch is far brighter than its black body.
    int darkest = 255, brightest = 0;
    for (int y = 0; y < image.height(); y += 40)
        for (int x = 0; x < image.width(); x += 40) {
            const int g = qGray(image.pixel(x, y));
            darkest = std::min(darkest, g);
            brightest = std::max(brightest, g);
        }
    EXPECT_GT(brightest - darkest, 100);
}

TEST_F(ColcalCameraCli, BadCameraOptionsAndFilesExitTwo)
{
    const QString huge = write("huge.pfs", {});
    ASSERT_TRUE(QFile::resize(huge, 300LL * 1024 * 1024));  // sparse
    const std::pair<QStringList, QString> cases[] = {  // arguments, what stderr says
        {{"grab", "--camera", "nope", "--out", file("x.png")}, "no camera \"nope\""},
        {{"grab"}, "usage: grab [--camera ID] --out FRAME.png"},
        {{"settings", "copy", "x"}, "usage: settings save|load"},
        {{"settings", "load", file("missing.pfs")}, "missing.pfs: cannot open"},
        {{"settings", "load", huge}, "huge.pfs: larger than"},
        {{"settings", "save", "-", "--json"}, "--json and - would both write standard output"},
    };
    for (const auto& [args, says] : cases) {
        const TestProcess::Result r = colcal.run(args);
        EXPECT_EQ(r.exitCode, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(r.err.contains(says)) << r.err.toStdString();
    }
}

TEST_F(ColcalCameraCli, SettingsRoundTripAndRejectedLines)
{
    for (const char* cam : {"emu-cmed-0", "emu-custom-1"}) {
        const QString saved = file(QString(cam) + ".pfs");
        TestProcess::Result r = colcal.run({"settings", "save", "--camera", cam, saved});
        ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
        const QByteArray text = contentOf(saved);
        EXPECT_TRUE(text.startsWith("#"));
        EXPECT_TRUE(text.contains("\nGamma\t0.7\n")) << cam;
        // "-" writes the same text to standard output, and no file.
        colcal.process().setWorkingDirectory(colcal.home());
        r = colcal.run({"settings", "save", "--camera", cam, "-"});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        EXPECT_EQ(r.out.toUtf8(), text);
        EXPECT_FALSE(QFileInfo::exists(file("-")));
        r = colcal.run({"settings", "load", "--camera", cam, saved});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();

        const int lines = text.count('\n');
        const QString bad = write("bad.pfs", text + "NoSuchFeature\t1\nGamma\tsoft\nno tab here\n\x01\x02\xff\n");
        r = colcal.run({"settings", "load", "--camera", cam, bad});
        EXPECT_EQ(r.exitCode, 1);
        for (int k = 1; k <= 4; ++k)
            EXPECT_TRUE(r.err.contains(QString("bad.pfs:%1:").arg(lines + k))) << r.err.toStdString();
    }
}

TEST_F(ColcalCameraCli, FailedWritesExitNonZeroAndKeepThePreviousFile)
{
    const QString settings = file("camera.pfs");
    ASSERT_EQ(colcal.run({"settings", "save", settings}).exitCode, 0);
    const QByteArray good = contentOf(settings);
    ASSERT_GT(good.size(), 8192);
    const QString overlay = write("overlay.png", {});
    // The camera's memory: one user set stored, to be kept when the next store fails.
    ASSERT_EQ(colcal.run({"settings", "load", "--user-set", "UserSet1", settings}).exitCode, 0);
    const QByteArray memoryBefore = contentOf(memory());
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
        {"user set on a full disk", {"settings", "load", "--user-set", "UserSet2", settings}, 4096, memory(), memoryBefore},
        {"overlay on a full disk",
         {"find-chart", COLCAL_TESTDATA_DIR "/charts/jarrelscy_printed_desk_perspective.jpg", "--overlay", overlay}, 8192, overlay, {}},
    };
    for (const Case& c : cases) {
        // Renaming a finished temporary file onto the device would replace it.
        ASSERT_FALSE(QFileInfo("/dev/full").isFile()) << "/dev/full is no longer a device";
        colcal.setFileSizeLimit(c.maxFileBytes);
        const TestProcess::Result r = colcal.run(c.args);
        EXPECT_NE(r.exitCode, 0) << c.what;
        EXPECT_TRUE(r.err.contains("cannot write")) << c.what << ": " << r.err.toStdString();
        if (!c.file.isEmpty()) {
            EXPECT_EQ(contentOf(c.file), c.before) << c.what;
        }
    }
    EXPECT_EQ(QDir(colcal.home()).entryList(QDir::Files), QStringList({"camera.pfs", "overlay.png"}));
    EXPECT_FALSE(QFileInfo("/dev/full").isFile());
}

// The last load, from stdin, goes into a user set, which outlives the process.
TEST_F(ColcalCameraCli, SettingsLoadTakesAByteOrderMarkAndStdinAndStoresAUserSet)
{
    const QString plain = write("plain.pfs", "Gamma\t0.8\n"), marked = write("marked.pfs", "\xEF\xBB\xBFGamma\t0.5\n");
    for (const QString& path : {plain, marked, QString("-")}) {
        QStringList args{"settings", "load", path, "--json"};
        if (path == "-") {
            colcal.setInputFile(marked);
            args << "--user-set" << "UserSet3";
        }
        const TestProcess::Result r = colcal.run(args);
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains("\"applied\":1")) << r.out.toStdString();
        EXPECT_TRUE(r.out.contains("\"rejected\":0")) << r.out.toStdString();
    }
    const QJsonObject sets = QJsonDocument::fromJson(contentOf(memory())).object().value("userSets").toObject();
    EXPECT_TRUE(sets.value("UserSet3").toString().contains("\nGamma\t0.5\n"));
}

}  // namespace
