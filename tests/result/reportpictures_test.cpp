#include "reportpictures.h"

#include "colorspace.h"
#include "publishedchart.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <QMap>
#include <QXmlStreamReader>

namespace {

QString rgbText(const QColor& c)
{
    return QString("R: %1 G: %2 B: %3").arg(c.redF(), 0, 'f', 4).arg(c.greenF(), 0, 'f', 4).arg(c.blueF(), 0, 'f', 4);
}

// 24 patches with distinct colours; the error after grows with the patch number.
QJsonObject preciseColors()
{
    QJsonObject precise;
    for (int k = 0; k < 24; ++k)
        precise.insert(QString("Patch%1").arg(k + 1, 2, 10, QChar('0')),
                       QJsonObject{{"Target", rgbText(QColor::fromHsv(k * 15, 200, 200))},
                                   {"Initial", rgbText(QColor::fromHsv(k * 15, 120, 160))},
                                   {"Current", rgbText(QColor::fromHsv(k * 15, 190, 195))},
                                   {"DeltaE", QString::number(0.25 * (k + 1), 'f', 6)},
                                   {"DeltaC", "0.100000"}});
    return precise;
}

struct Parsed {
    QMap<QString, int> groups;               // class -> count
    QVector<QStringList> patchFills;         // per patch group, its rect fills
    QMap<QString, QVector<double>> heights;  // "bar before"/"bar after" -> bar heights in order
};

Parsed parse(const QString& svg)
{
    Parsed p;
    QXmlStreamReader xml(svg);
    QString group;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto a = xml.attributes();
        if (xml.name() == QLatin1String("g")) {
            group = a.value("class").toString();
            ++p.groups[group];
            if (group == "patch")
                p.patchFills.append(QStringList());
        } else if (xml.name() == QLatin1String("rect")) {
            if (group == "patch")
                p.patchFills.last() << a.value("fill").toString();
            else if (group.startsWith("bar "))
                p.heights[group] << a.value("height").toDouble();
        }
    }
    if (xml.hasError())
        ADD_FAILURE() << xml.errorString().toStdString() << " at " << xml.lineNumber() << ":" << xml.columnNumber();
    return p;
}

TEST(ReportPictures, SvgsParseWithEveryPatchSplitAndTwoBarsPerPatch)
{
    const QJsonObject precise = preciseColors();
    const ReportPictures pictures(precise);
    ASSERT_TRUE(pictures.isValid());

    const Parsed swatches = parse(pictures.patchesSvg());
    ASSERT_EQ(swatches.groups.value("patch"), 24);
    for (int k = 0; k < 24; ++k) {
        // target, before, after, in that order, in the colours of the document
        EXPECT_EQ(swatches.patchFills[k], (QStringList{QColor::fromHsv(k * 15, 200, 200).name(),
                                                       QColor::fromHsv(k * 15, 120, 160).name(),
                                                       QColor::fromHsv(k * 15, 190, 195).name()}))
            << k;
    }

    const Parsed bars = parse(pictures.errorSvg());
    ASSERT_EQ(bars.heights.value("bar before").size() + bars.heights.value("bar after").size(), 48);
    // Bar heights are to scale (pixels per dE00 from the last bar; after = 0.25 * patch number).
    const QVector<double> after = bars.heights.value("bar after"), before = bars.heights.value("bar before");
    const double scale = after[23] / 6.0;
    for (int k = 0; k < 24; ++k) {
        EXPECT_NEAR(after[k], 0.25 * (k + 1) * scale, 0.02) << k;
        EXPECT_NEAR(before[k], pictures.deltaEBefore(k) * scale, 0.02) << k;
        EXPECT_GT(pictures.deltaEBefore(k), 0.0);
    }
    EXPECT_EQ(bars.groups.value("mean before"), 1);
    EXPECT_EQ(bars.groups.value("mean after"), 1);

    // The images are drawn, not blank.
    const QImage image = pictures.patchesImage();
    EXPECT_EQ(image.pixelColor(20 + 10, 20 + 30 + 10).name(), QColor::fromHsv(0, 200, 200).name());
}

// The third picture scores the same colours against the published chart
// values of the chosen edition and says which; its bars are to scale.
TEST(ReportPictures, PublishedErrorPictureFollowsTheChosenEdition)
{
    const ColorSpace cs;
    for (const PublishedChartEdition edition : {PublishedChartEdition::Post2014, PublishedChartEdition::Pre2014}) {
        const ReportPictures pictures(preciseColors(), edition);
        ASSERT_TRUE(pictures.isValid());
        const QString svg = pictures.publishedErrorSvg();
        const Parsed bars = parse(svg);
        const QVector<double> before = bars.heights.value("bar before"), after = bars.heights.value("bar after");
        ASSERT_EQ(before.size(), 24);
        ASSERT_EQ(after.size(), 24);
        const PublishedChart published(edition);
        const double scale = after[0] / pictures.publishedDeltaEAfter(0);
        for (int k = 0; k < 24; ++k) {
            const QColor initial = QColor::fromHsv(k * 15, 120, 160), current = QColor::fromHsv(k * 15, 190, 195);
            dlib::matrix<double, 1, 3> linear, srgb;
            linear = initial.redF() * 255.0, initial.greenF() * 255.0, initial.blueF() * 255.0;
            srgb = current.redF() * 255.0, current.greenF() * 255.0, current.blueF() * 255.0;
            // the document's 4-decimal colours, so within their rounding
            EXPECT_NEAR(pictures.publishedDeltaEBefore(k), published.deltaE(k, linear), 0.05) << k;
            EXPECT_NEAR(pictures.publishedDeltaEAfter(k), published.deltaE(k, cs.sRGB_to_RGB(srgb)), 0.05) << k;
            EXPECT_NEAR(before[k], pictures.publishedDeltaEBefore(k) * scale, 0.02) << k;
            EXPECT_NEAR(after[k], pictures.publishedDeltaEAfter(k) * scale, 0.02) << k;
        }
        EXPECT_TRUE(svg.contains(QString("published chart values (D50, %1 chart;")
                                     .arg(PublishedChart::editionName(edition))));
    }
    EXPECT_NE(ReportPictures(preciseColors(), PublishedChartEdition::Pre2014).publishedDeltaEAfter(2),
              ReportPictures(preciseColors(), PublishedChartEdition::Post2014).publishedDeltaEAfter(2));
}

TEST(ReportPictures, IncompleteDocumentsGiveNoPictures)
{
    QJsonObject missing = preciseColors();
    missing.remove("Patch24");
    QJsonObject garbled = preciseColors();
    garbled.insert("Patch05", QJsonObject{{"Target", "R: x"}, {"Initial", "#102030"}, {"Current", "#102030"}});
    for (const QJsonObject& doc : {QJsonObject(), missing, garbled})
        EXPECT_FALSE(ReportPictures(doc).isValid());
}

}  // namespace
