#include "chartlog.h"

Q_LOGGING_CATEGORY(chartLog, "colcal.chart", QtInfoMsg)
