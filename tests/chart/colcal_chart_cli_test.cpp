#include "colorchecker.h"
#include "colorspace.h"
#include "testprocess.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

using Result = TestProcess::Result;

Result colcal(const QStringList& args)
{
    return TestProcess(COLCAL_BINARY).run(args);
}

QString chart(const char* name)
{
    return QString(COLCAL_TESTDATA_DIR "/charts/") + name;
}

QJsonObject json(const Result& r)
{
    return QJsonDocument::fromJson(r.out.toUtf8()).object();
}

QString writeBytes(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    QFile f(dir.filePath(name));
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
    return f.fileName();
}

// The result as JSON and as text, saying which search found the chart; the
// overlay is the photograph's size.
TEST(ColcalFindChart, ReportsTheCornersAndTheSearchOrNoChart)
{
    QTemporaryDir dir;
    const QString overlay = dir.filePath("overlay.png");
    const struct {
        const char* file;
        int exitCode;
        const char* search;
        const char* text;
    } rows[] = {
        {"pedrodiamel_handheld_sunlight.jpg", 0, "standard", "by the standard search"},
        {"plantcv_small_corner_black_cloth.jpg", 0, "extended", "by the extended search"},
        {"plantcv_negative_no_chart.jpg", 1, "none", "no chart found in"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        const Result r = colcal({"find-chart", chart(row.file), "--json", "--overlay", overlay});
        ASSERT_EQ(r.exitCode, row.exitCode) << r.err.toStdString();
        const QJsonObject o = json(r);
        EXPECT_EQ(o["valid"].toBool(row.exitCode != 0), row.exitCode == 0);
        EXPECT_EQ(o["search"].toString(), row.search);
        const QJsonObject corners = o["corners"].toObject();
        for (const char* key : {"topLeft", "topRight", "bottomLeft", "bottomRight"})
            EXPECT_EQ(corners[key].toArray().size(), 2) << key;
        const Result text = colcal({"find-chart", chart(row.file)});
        EXPECT_EQ(text.exitCode, row.exitCode);
        EXPECT_TRUE(text.out.contains(row.text)) << text.out.toStdString();
        if (row.exitCode != 0)
            continue;
        EXPECT_GE(o["milliseconds"].toDouble(), 0.0);
        if (row.search == QLatin1String("standard")) {  // the upright chart: each corner under its own key
            EXPECT_LT(corners["topLeft"].toArray()[0].toInt(), corners["topRight"].toArray()[0].toInt());
        }
        const QImage drawn(overlay);
        EXPECT_EQ(drawn.size(), QSize(o["imageSize"].toArray()[0].toInt(), o["imageSize"].toArray()[1].toInt()));
        EXPECT_FALSE(drawn.isNull());
    }
}

struct BadImageRow {
    const char* name;
    QByteArray bytes;
    const char* message;
};

TEST(ColcalFindChart, BadImagesGiveOneLineNamingTheFile)
{
    QTemporaryDir dir;
    QFile jpeg(chart("pedrodiamel_handheld_sunlight.jpg"));
    ASSERT_TRUE(jpeg.open(QIODevice::ReadOnly));
    const QByteArray whole = jpeg.readAll();
    QFile pngFile(chart("plantcv_chamber_rot90cw_source1.png"));
    ASSERT_TRUE(pngFile.open(QIODevice::ReadOnly));
    const QByteArray png = pngFile.readAll();
    const BadImageRow rows[] = {
        {"empty.png", QByteArray(), "cannot read image"},
        {"text.jpg", QByteArray("this is not an image\n"), "cannot read image"},
        {"truncated.jpg", whole.left(whole.size() / 2), "truncated"},
        {"truncated.png", png.left(png.size() / 3), "image"},
        {"header-only.png", png.left(40), "image"},
    };
    for (const BadImageRow& row : rows) {
        const QString path = writeBytes(dir, row.name, row.bytes);
        for (const char* command : {"find-chart", "analyze"}) {
            const Result r = colcal({command, path, "--json"});
            EXPECT_EQ(r.exitCode, 2) << row.name << " " << command << ": " << r.err.toStdString();
            EXPECT_TRUE(r.err.contains(path)) << r.err.toStdString();
            EXPECT_TRUE(r.err.contains(row.message)) << r.err.toStdString();
            EXPECT_EQ(r.err.count('\n'), 1) << r.err.toStdString();
            EXPECT_TRUE(r.out.isEmpty());
        }
    }
    const Result missing = colcal({"find-chart", dir.filePath("missing.png")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_TRUE(missing.err.contains("no such file"));
}

TEST(ColcalAnalyze, FindsMeasuresAndCalibrates)
{
    const Result r = colcal({"analyze", chart("pedrodiamel_handheld_sunlight.jpg"), "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QJsonObject o = json(r);
    ASSERT_EQ(o["patches"].toArray().size(), 24);
    EXPECT_TRUE(o["corners"].toObject().contains("bottomRight"));
    EXPECT_EQ(o["matrix"].toArray().size(), 3);
    EXPECT_EQ(o["whiteBalance"].toArray().size(), 3);
    // Linearised sRGB: white is far brighter than black and the greys fall in order.
    const QJsonArray p = o["patches"].toArray();
    for (int k = 19; k < 24; ++k)
        EXPECT_GT(p[k - 1].toArray()[1].toDouble(), p[k].toArray()[1].toDouble()) << k;
    EXPECT_LT(o["meanDeltaE"].toObject()["final"].toDouble(), o["meanDeltaE"].toObject()["original"].toDouble());
    // and against the published chart values, by default those of charts made after 2014
    const QJsonObject published = o["publishedChart"].toObject();
    EXPECT_EQ(published["edition"].toString(), "post-2014");
    EXPECT_EQ(published["deltaEAfter"].toArray().size(), 24);
    EXPECT_LT(published["meanDeltaE"].toObject()["after"].toDouble(), published["meanDeltaE"].toObject()["before"].toDouble());
}

// The chart's target colours on a 6 x 4 grid of 100 px cells: 16-bit files
// hold them linear, 8-bit files sRGB-encoded.
// `exposure` scales the linear values, clipping at full scale as a sensor does.
QImage syntheticChart(bool sixteenBit, double exposure = 1.0)
{
    const ColorSpace cs;
    const dlib::matrix<double, 24, 3> t = dlib::min_pointwise(ColorChecker().GetTargetRgb() * exposure,
                                                              dlib::uniform_matrix<double>(24, 3, 255.0));
    QImage img(600, 400, sixteenBit ? QImage::Format_RGBX64 : QImage::Format_RGB32);
    img.fill(Qt::black);
    for (int k = 0; k < 24; ++k) {
        const int c = k % 6, r = k / 6;
        QColor colour;
        if (sixteenBit)
            colour = QColor::fromRgba64(qRound(t(k, 0) / 255.0 * 65535), qRound(t(k, 1) / 255.0 * 65535),
                                        qRound(t(k, 2) / 255.0 * 65535));
        else
            colour = QColor(qRound(cs.RGB_to_sRGB(t(k, 0))), qRound(cs.RGB_to_sRGB(t(k, 1))), qRound(cs.RGB_to_sRGB(t(k, 2))));
        for (int y = r * 100 + 10; y < r * 100 + 90; ++y)
            for (int x = c * 100 + 10; x < c * 100 + 90; ++x)
                img.setPixelColor(x, y, colour);
    }
    return img;
}

TEST(ColcalAnalyze, GridOptionSamplesTheGivenPatchesWithTheRightEncoding)
{
    QTemporaryDir dir;
    const QString png16 = dir.filePath("chart16.png");
    const QString png8 = dir.filePath("chart8.png");
    ASSERT_TRUE(syntheticChart(true).save(png16));
    ASSERT_TRUE(syntheticChart(false).save(png8));
    const QStringList grid = {"--grid", "0", "0", "600", "0", "0", "400", "600", "400"};
    const dlib::matrix<double, 24, 3> t = ColorChecker().GetTargetRgb();

    const Result linear = colcal(QStringList{"analyze", png16, "--json"} + grid);
    ASSERT_EQ(linear.exitCode, 0) << linear.err.toStdString();
    const QJsonArray p16 = json(linear)["patches"].toArray();
    ASSERT_EQ(p16.size(), 24);
    const Result srgb = colcal(QStringList{"analyze", png8, "--json"} + grid);
    ASSERT_EQ(srgb.exitCode, 0) << srgb.err.toStdString();
    const QJsonArray p8 = json(srgb)["patches"].toArray();
    ASSERT_EQ(p8.size(), 24);
    // Nothing near full scale: nothing named overexposed.
    EXPECT_TRUE(json(srgb)["clippedPatches"].toArray().isEmpty());
    EXPECT_TRUE(srgb.err.isEmpty()) << srgb.err.toStdString();
    for (int k = 0; k < 24; ++k)
        for (int c = 0; c < 3; ++c) {
            // 16-bit: exact but for the 65536 full scale; 8-bit: sRGB quantisation.
            EXPECT_NEAR(p16[k].toArray()[c].toDouble(), t(k, c) * 65535.0 / 65536.0, 0.01) << k << "," << c;
            EXPECT_NEAR(p8[k].toArray()[c].toDouble(), t(k, c), 0.03 * t(k, c) + 0.2) << k << "," << c;
        }
    // The chart's own colours calibrate to almost nothing.
    EXPECT_LT(json(linear)["meanDeltaE"].toObject()["final"].toDouble(), 1.0);

    // Forcing the other reading: an 8-bit file taken as linear stays darker in
    // the mid-tones than linearised; a 16-bit file taken as sRGB gets darker.
    const Result forcedLinear = colcal(QStringList{"analyze", png8, "--json", "--linear"} + grid);
    ASSERT_EQ(forcedLinear.exitCode, 0) << forcedLinear.err.toStdString();
    const double grey8Linear = json(forcedLinear)["patches"].toArray()[21].toArray()[1].toDouble();
    EXPECT_NEAR(grey8Linear, qRound(ColorSpace().RGB_to_sRGB(t(21, 1))) * 257 / 65536.0 * 255.0, 0.01);
    const Result forcedSrgb = colcal(QStringList{"analyze", png16, "--json", "--srgb"} + grid);
    ASSERT_EQ(forcedSrgb.exitCode, 0) << forcedSrgb.err.toStdString();
    EXPECT_NEAR(json(forcedSrgb)["patches"].toArray()[21].toArray()[1].toDouble(),
                ColorSpace().sRGB_to_RGB(qRound(t(21, 1) / 255.0 * 65535) / 65536.0 * 255.0), 0.01);

    const Result text = colcal(QStringList{"analyze", png8} + grid);
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_TRUE(text.out.contains("dark skin"));
}

TEST(ColcalAnalyze, BadGridsAndOptionsAreRefused)
{
    QTemporaryDir dir;
    const QString png = dir.filePath("chart.png");
    ASSERT_TRUE(syntheticChart(false).save(png));
    struct Row {
        QStringList words;
        const char* message;
    };
    const Row rows[] = {
        {{"--grid", "0", "0", "601", "0", "0", "400", "600", "400"}, "outside"},
        {{"--grid", "0", "-1", "600", "0", "0", "400", "600", "400"}, "outside"},
        {{"--grid", "0", "0", "600", "0", "600", "400", "0", "400"}, "cross"},
        {{"--grid", "0", "0", "0", "0", "0", "400", "600", "400"}, "cross"},
        {{"--grid", "0", "0", "600", "0", "0", "400", "600"}, "eight numbers"},
        {{"--grid", "0", "0", "x", "0", "0", "400", "600", "400"}, "not a number"},
        {{"--linear", "--srgb"}, "exclude"},
        {{"--bogus"}, "unknown option"},
    };
    for (const Row& row : rows) {
        const Result r = colcal(QStringList{"analyze", png} + row.words);
        EXPECT_EQ(r.exitCode, 2) << row.words.join(' ').toStdString();
        EXPECT_TRUE(r.err.contains(row.message)) << r.err.toStdString();
        EXPECT_EQ(r.err.count('\n'), 1) << r.err.toStdString();
    }
    const Result none = colcal({"analyze", chart("plantcv_negative_no_chart.jpg")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_TRUE(none.err.contains("no chart found")) << none.err.toStdString();
}

// The chart as published is nowhere near full scale; 60 % more light clips
// white and the brightest colours (yellow, orange) but never the black patch.
TEST(ColcalAnalyze, OverexposedPatchesAreNamed)
{
    QTemporaryDir dir;
    const QString png = dir.filePath("chart.png");
    ASSERT_TRUE(syntheticChart(false, 1.6).save(png));
    const Result r = colcal({"analyze", png, "--json", "--grid", "0", "0", "600", "0", "0", "400", "600", "400"});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QJsonArray clipped = json(r)["clippedPatches"].toArray();
    EXPECT_TRUE(clipped.contains(16) && clipped.contains(19) && !clipped.contains(20) && !clipped.contains(24));
    EXPECT_TRUE(r.err.contains("16 yellow, 19 white are")) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("overexposed")) << r.err.toStdString();
    EXPECT_EQ(r.err.count('\n'), 1) << r.err.toStdString();
}

}  // namespace
