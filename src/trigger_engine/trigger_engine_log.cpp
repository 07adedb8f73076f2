#include "trigger_engine/trigger_engine_log.h"

namespace kestrel {
// Warnings and worse by default; firings are logged as info.
Q_LOGGING_CATEGORY(lcTriggers, "kestrel.triggers", QtWarningMsg)
}
