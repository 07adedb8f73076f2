#include "present/grid/grid_log.h"

namespace kestrel {
// Warnings and worse by default; what is logged here is info or debug.
Q_LOGGING_CATEGORY(lcGrid, "kestrel.grid", QtWarningMsg)
}
