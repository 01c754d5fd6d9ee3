#pragma once

#include <QCoreApplication>
#include <QDebug>
#include <QString>

// User-facing log lines of the camera-control classes: category "default",
// "@{source};message", both UTF-8, so that the host's log window can split
// them.
namespace modellog {

inline QByteArray sourceTag()
{
    return QCoreApplication::translate("ColorCalibration", "kalto Color Calibrator").toUtf8();
}

inline void debug(const QString& message)
{
    qDebug("@{%s};%s", sourceTag().constData(), message.toUtf8().constData());
}

inline void warning(const QString& message)
{
    qWarning("@{%s};%s", sourceTag().constData(), message.toUtf8().constData());
}

}  // namespace modellog
