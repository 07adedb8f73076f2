#pragma once
// Logging of trigger evaluation and trigger actions: category "kestrel.triggers".

#include <QLoggingCategory>

namespace kestrel {
Q_DECLARE_LOGGING_CATEGORY(lcTriggers)
}
