#pragma once

#include <QLoggingCategory>

/// The emulated cameras' messages ("kalto.emulator"), so that
/// QT_LOGGING_RULES can switch them on or off.
Q_DECLARE_LOGGING_CATEGORY(emulatorLog)
