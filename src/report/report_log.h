#pragma once
// The report library's logging category.

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcReport)
