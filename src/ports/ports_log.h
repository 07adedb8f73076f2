#pragma once
// Logging of the serial port layer: category "kestrel.ports". Debug and info messages are
// off by default; QT_LOGGING_RULES="kestrel.*=true" or --verbose turns them on.

#include <QLoggingCategory>

namespace kestrel {
Q_DECLARE_LOGGING_CATEGORY(lcPorts)
}
