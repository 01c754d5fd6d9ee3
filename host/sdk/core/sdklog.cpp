#include "core/sdklog.h"

Q_LOGGING_CATEGORY(sdkLog, "kalto.sdk")
