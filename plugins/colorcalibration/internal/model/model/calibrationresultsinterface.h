#pragma once

#include <QJsonObject>
#include <QString>

/// The results and the ways of keeping them that the last wizard step offers.
class CalibrationResultsInterface {
public:
    virtual ~CalibrationResultsInterface() = default;

    /// Empty object when there is nothing to report.
    virtual QJsonObject GetCalibrationsResultsJson() = 0;
    virtual QJsonObject GetAvailableUserSetsJson() = 0;
    virtual bool StoreSettingsInUserSet(const QString& userSet, bool setAsDefault) = 0;
    virtual bool SaveSettingsToFilePath(const QString& path) = 0;
    virtual bool SaveSummaryToFilePath(const QString& path) = 0;
};
