#pragma once

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QString>

/// The calibration session's log lines (camera control, automatic
/// brightness, result writes): QT_LOGGING_RULES="colcal.session.debug=false"
/// keeps its step-by-step lines out.
Q_DECLARE_LOGGING_CATEGORY(lcSession)

// User-facing log lines of the camera-control classes: "@{source};message",
// both UTF-8, so that the host's log window can split them.
namespace modellog {

inline QByteArray sourceTag()
{
    return QCoreApplication::translate("ColorCalibration", "kalto Color Calibrator").toUtf8();
}

inline void debug(const QString& message)
{
    qCDebug(lcSession, "@{%s};%s", sourceTag().constData(), message.toUtf8().constData());
}

inline void warning(const QString& message)
{
    qCWarning(lcSession, "@{%s};%s", sourceTag().constData(), message.toUtf8().constData());
}

}  // namespace modellog
