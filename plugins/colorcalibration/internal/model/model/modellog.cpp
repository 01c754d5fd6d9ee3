#include "modellog.h"

Q_LOGGING_CATEGORY(lcSession, "colcal.session")
