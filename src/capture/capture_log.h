#pragma once
// Logging of capture, the recorder and the recording session: category "kestrel.capture". Debug and info messages are
// off by default; QT_LOGGING_RULES="kestrel.*=true" or --verbose turns them on.

#include <QLoggingCategory>

namespace kestrel {
Q_DECLARE_LOGGING_CATEGORY(lcCapture)
}
