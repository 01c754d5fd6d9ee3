#pragma once

#include <QMetaType>

namespace Core {
namespace Logging {

enum ELogLevel { LogLevelDebug = 0, LogLevelInfo = 1, LogLevelWarning = 2, LogLevelError = 3, LogLevelFatal = 4 };

}  // namespace Logging
}  // namespace Core

// Log levels travel through queued signals (session thread to GUI).
Q_DECLARE_METATYPE(Core::Logging::ELogLevel)
