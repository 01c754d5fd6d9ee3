#pragma once

namespace Core {
namespace Logging {

enum ELogLevel { LogLevelDebug = 0, LogLevelInfo = 1, LogLevelWarning = 2, LogLevelError = 3, LogLevelFatal = 4 };

}  // namespace Logging
}  // namespace Core
