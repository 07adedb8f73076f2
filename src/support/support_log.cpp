#include "support/support_log.h"

namespace kestrel {
// Warnings and worse by default; what is logged here is info or debug.
Q_LOGGING_CATEGORY(lcSupport, "kestrel.support", QtWarningMsg)
}
