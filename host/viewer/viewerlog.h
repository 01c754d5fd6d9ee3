#pragma once

#include <QLoggingCategory>

/// The viewer's messages ("kalto.viewer"), shown in its log as "@{source};text",
/// so that QT_LOGGING_RULES can switch them on or off.
Q_DECLARE_LOGGING_CATEGORY(viewerLog)
