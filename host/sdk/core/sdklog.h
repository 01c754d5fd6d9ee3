#pragma once

#include <QLoggingCategory>

/// The camera SDK's and host platform's messages ("kalto.sdk"), so that
/// QT_LOGGING_RULES can switch them on or off.
Q_DECLARE_LOGGING_CATEGORY(sdkLog)
