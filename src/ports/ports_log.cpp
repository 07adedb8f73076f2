#include "ports/ports_log.h"

namespace kestrel {
// Warnings and worse by default; what is logged here is info or debug.
Q_LOGGING_CATEGORY(lcPorts, "kestrel.ports", QtWarningMsg)
}
