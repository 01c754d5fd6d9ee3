#include "emulatorlog.h"

Q_LOGGING_CATEGORY(emulatorLog, "kalto.emulator")
