#include "viewerlog.h"

Q_LOGGING_CATEGORY(viewerLog, "kalto.viewer")
