#include "app/app_log.h"

namespace kestrel {
// Warnings and worse by default; what is logged here is info or debug.
Q_LOGGING_CATEGORY(lcApp, "kestrel.app", QtWarningMsg)
}
