// The translation catalogues: every text the wizard's QML shows is in the
// tool catalogue, every catalogue translates every text it holds, the
// translations keep the markup and the trailing spaces the code relies on, and
// the compiled catalogues are where the plug-in loads them from.
#include "reportpictures.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTranslator>
#include <QXmlStreamReader>

namespace {

struct Message {
    QString context;
    QString source;
    QString translation;
    QString type;  // "unfinished", "obsolete", "vanished" or empty
};

QList<Message> readCatalogue(const QString& path)
{
    QList<Message> messages;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return messages;
    QXmlStreamReader xml(&file);
    QString context;
    Message current;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("message")) {
            current = Message{context, {}, {}, {}};
        } else if (xml.name() == QLatin1String("source")) {
            current.source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            current.type = xml.attributes().value("type").toString();
            current.translation = xml.readElementText();
            messages.append(current);
        }
    }
    EXPECT_FALSE(xml.hasError()) << path.toStdString() << ": " << xml.errorString().toStdString();
    return messages;
}

QString tsPath(const QString& catalogue, const QString& lang)
{
    return QStringLiteral(COLCAL_TS_DIR "/%1_%2.ts").arg(catalogue, lang);
}

// Markup whose loss would change what a box shows: line breaks, bold, paragraphs.
QStringList tags(const QString& text)
{
    QStringList found;
    QRegularExpressionMatchIterator it = QRegularExpression("<[^>]+>").globalMatch(text);
    while (it.hasNext())
        found << it.next().captured(0);
    return found;
}

// Every literal the QML documents and the step script pass to qsTr.
QSet<QString> qmlTexts()
{
    QSet<QString> texts;
    const QRegularExpression call(R"(qsTr\(\s*"((?:[^"\\]|\\.)*)\"\s*\))");
    QDirIterator it(QStringLiteral(COLCAL_QML_DIR), {"*.qml", "*.js"}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString code = QString::fromUtf8(file.readAll());
        QRegularExpressionMatchIterator m = call.globalMatch(code);
        while (m.hasNext())
            texts.insert(m.next().captured(1).replace("\\\"", "\"").replace("\\\\", "\\"));
    }
    return texts;
}

struct Catalogue {
    const char* name;
    QStringList languages;
};

const Catalogue kCatalogues[] = {
    {"ColorCorrectionToolPlugin", {"de", "en", "ja", "ko", "zh"}},
    {"ColorCalibration", {"en", "ja", "ko", "zh"}},
};

}  // namespace

// ... and compiled where the plug-in loads it from.
TEST(Translations, EveryTextOfEveryCatalogueIsTranslatedWithItsMarkup)
{
    Q_INIT_RESOURCE(colcal_translations);
    for (const Catalogue& c : kCatalogues) {
        QSet<QString> english;
        for (const Message& m : readCatalogue(tsPath(c.name, "en")))
            english.insert(m.context + '\n' + m.source);
        ASSERT_FALSE(english.isEmpty()) << c.name;
        for (const QString& lang : c.languages) {
            SCOPED_TRACE(QString("%1_%2").arg(c.name, lang).toStdString());
            EXPECT_TRUE(QTranslator().load(QString(":/ColCal/translations/%1_%2.qm").arg(c.name, lang)));
            const QList<Message> messages = readCatalogue(tsPath(c.name, lang));
            QSet<QString> keys;
            for (const Message& m : messages) {
                SCOPED_TRACE(m.source.toStdString());
                keys.insert(m.context + '\n' + m.source);
                EXPECT_TRUE(m.type.isEmpty()) << "marked " << m.type.toStdString();
                EXPECT_FALSE(m.translation.trimmed().isEmpty());
                EXPECT_EQ(tags(m.translation), tags(m.source));
                // Texts that the code continues with a path or a name end in a space.
                if (m.source.endsWith(' ') && lang != "ja" && lang != "zh") {
                    EXPECT_TRUE(m.translation.endsWith(' '));
                }
                if (lang != "en" && m.source.size() > 12) {
                    EXPECT_NE(m.translation, m.source) << "left in English";
                }
            }
            EXPECT_EQ(keys, english) << "the languages of a catalogue hold different texts";
        }
    }
}

TEST(Translations, EveryWizardTextIsInTheToolCatalogue)
{
    QSet<QString> catalogued;
    for (const Message& m : readCatalogue(tsPath("ColorCorrectionToolPlugin", "de")))
        catalogued.insert(m.source);
    const QSet<QString> texts = qmlTexts();
    ASSERT_GT(texts.size(), 50);
    for (const QString& text : texts)
        EXPECT_TRUE(catalogued.contains(text)) << "not in the catalogue (run the colcal_lupdate target): "
                                               << text.toStdString();
}

// The report's pictures and the wizard take their titles and captions from the
// tool catalogue, in the language the wizard runs in.
TEST(Translations, ReportPicturesSpeakTheToolsLanguage)
{
    Q_INIT_RESOURCE(colcal_translations);
    QJsonObject precise;
    for (int k = 1; k <= 24; ++k)
        precise.insert(QString("Patch%1").arg(k, 2, 10, QChar('0')),
                       QJsonObject{{"Initial", "R: 0.1000 G: 0.2000 B: 0.3000"}, {"Target", "#ff8000"},
                                   {"Current", "R: 0.5 G: 0.5 B: 0.5"}, {"DeltaE", "1.000000"}});
    const QMap<QString, QString> brightnessTitles = {
        {"de", QString::fromUtf8("Helligkeit einstellen")}, {"en", "Adjust Brightness"},
        {"ja", QString::fromUtf8("明るさの調整")},           {"ko", QString::fromUtf8("밝기 조정")},
        {"zh", QString::fromUtf8("调整亮度")}};
    for (const QString& lang : brightnessTitles.keys()) {
        SCOPED_TRACE(lang.toStdString());
        QMap<QString, QString> catalogue;
        for (const Message& m : readCatalogue(tsPath("ColorCorrectionToolPlugin", lang)))
            if (m.context == "CalibrationResult")
                catalogue.insert(m.source, m.translation);
        QTranslator translator;
        ASSERT_TRUE(translator.load(QString(":/ColCal/translations/ColorCorrectionToolPlugin_%1.qm").arg(lang)));
        EXPECT_EQ(translator.translate("main", "Adjust Brightness"), brightnessTitles.value(lang));
        QCoreApplication::installTranslator(&translator);
        EXPECT_EQ(ReportPictures::patchesTitle(), catalogue.value("Patches"));
        EXPECT_EQ(ReportPictures::errorTitle(), catalogue.value("Colour error"));
        EXPECT_EQ(ReportPictures::publishedErrorTitle(), catalogue.value("Colour error against the published chart values"));
        const ReportPictures pictures(precise, PublishedChartEdition::Pre2014);
        ASSERT_TRUE(pictures.isValid());
        const QString caption = catalogue.value("dE00 per patch against the published chart values (D50, %1 chart; "
                                                "measured colours adapted from D65 by Bradford)");
        ASSERT_FALSE(caption.isEmpty());
        EXPECT_TRUE(pictures.publishedErrorSvg().contains(caption.arg("pre-2014").toHtmlEscaped()));
        EXPECT_TRUE(pictures.patchesSvg().contains(
            catalogue.value("Each patch: target (top), before (bottom left), after (bottom right)").toHtmlEscaped()));
        QCoreApplication::removeTranslator(&translator);
    }
}
