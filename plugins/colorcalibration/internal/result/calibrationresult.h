#pragma once

#include "publishedchartedition.h"

#include <QImage>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

/// The camera settings before ("stored") and after ("actual") a calibration,
/// cut down to the colour features, parsed into a results document and written
/// out as a settings file or a full HTML report.
class CalibrationResult {
public:
    /// `cameraLabel` names the camera in the report's title and in folder names.
    explicit CalibrationResult(QString cameraLabel);
    virtual ~CalibrationResult();

    void SetStoredSettings(QString& settings);
    void SetActualSettings(QString& settings);
    /// Keeps the lines naming a colour feature (substring match) and every "#" line.
    QString FilterSettings(QString& settings);
    /// One branch of the results document; every leaf null or the value text.
    QJsonObject ParseSettings(QString& settings);
    /// {"Original": stored, "Calibrated": actual}.
    QJsonObject GetResultsJson();
    /// Display title of a row key; empty for keys it does not know.
    QString BeautifyRowTitle(QString key);
    /// "#FF8000" -> "R: 255 G: 128 B: 0"; text that is not hexadecimal reads as 0.
    QString ConvertHexToRgb(QString text);
    /// Copy of a three-level object with every hex colour leaf ("#rrggbb") on the
    /// third level turned into "R: G: B:" text; other leaves are kept.
    QJsonObject ConvertColorJsonObjectToRGB(QJsonObject object);

    /// A new folder "Camera_Settings_Ostrel_<camera>_<time>" under `path` with "Calibrated.pfs".
    bool SaveSettingsToFilePath(const QString& path);
    /// A new folder "Calibration_Report_<camera>_<time>" under `path` with both settings
    /// files, the HTML report and the two images.
    bool SaveSummaryToFilePath(const QString& path, const QImage& calibrated, const QImage& original,
                               QJsonObject results);

    /// The published chart values the report's extra error picture compares with.
    void SetPublishedChartEdition(PublishedChartEdition edition) { m_publishedEdition = edition; }

    QString GetStoredSettings() const { return m_storedSettings; }
    QString GetActualSettings() const { return m_actualSettings; }

protected:
    virtual bool CreateOutputFolder(QString base, QString stem, QString& folder);
    /// Written whole or not at all (temporary file, then rename).
    virtual bool CreateTextFile(QString folder, QString fileName, QString& text);
    /// PNG by file name, written whole or not at all.
    virtual bool CreateImageFile(QString folder, QString fileName, const QImage& image);
    QString GetFileContent(QString path);
    QString GetBase64OfImage(QString path);
    void GenerateSummary(QStringList& html, QJsonObject results);
    /// One table: a row per name in `rowOrder` (comma-separated keys of `rows`, titled
    /// through BeautifyRowTitle), a column per leaf of the object under `key` in that
    /// row ("A/B" descends). Tables wider than 12 columns are split in two halves;
    /// `secondHalf` picks which one.
    void BuildHTMLTable(QStringList& html, QString rowOrder, QJsonObject rows, QString key, bool secondHalf);
    void BuildColorTable(QStringList& html, QJsonObject results);

private:
    /// The camera label made safe as one path component.
    QString folderSafeLabel() const;

    QString m_storedSettings;
    QString m_actualSettings;
    QString m_cameraLabel;
    QMap<QString, QString> m_rowTitles;
    PublishedChartEdition m_publishedEdition = PublishedChartEdition::Post2014;
};
