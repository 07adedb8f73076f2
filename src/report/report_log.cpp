#include "report/report_log.h"

Q_LOGGING_CATEGORY(lcReport, "kestrel.report", QtWarningMsg)
