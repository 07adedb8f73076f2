#pragma once
// Logging of the record grid widget and its redraw thread: category "kestrel.grid". Debug and info messages are
// off by default; QT_LOGGING_RULES="kestrel.*=true" or --verbose turns them on.

#include <QLoggingCategory>

namespace kestrel {
Q_DECLARE_LOGGING_CATEGORY(lcGrid)
}
