#pragma once
// Logging of the update check and the problem report: category "kestrel.support". Debug
// and info messages are off by default; QT_LOGGING_RULES="kestrel.*=true" or --verbose
// turns them on.

#include <QLoggingCategory>

namespace kestrel {
Q_DECLARE_LOGGING_CATEGORY(lcSupport)
}
