#pragma once
// Turns a failed operation into a message-box report with texts from the
// string table: an ordinary report (a message number is given) or the
// detailed application-error report (no message number).

#include <string>
#include <string_view>

#include "base/prompt.h"

namespace kestrel {

struct ErrorReport {
    std::string title;
    std::string text;
};

struct ErrorSource {
    std::string_view unit; // source unit, e.g. "MainForm"
    int line = 0;
};

// Title 0 or below gives "No title available"; fatal replaces the title with the fatal one.
[[nodiscard]] ErrorReport BuildErrorReport(int titleNumber, int messageNumber, ErrorSource source,
                                           std::string_view extra, bool fatal = false);

// Shows the report (OK button, error icon) with top-most windows lowered around it.
void ReportError(Prompter &prompter, int titleNumber, int messageNumber, ErrorSource source,
                 std::string_view extra, bool fatal = false);

// The running program's file path (for the PROG line of the detailed report).
[[nodiscard]] std::string ProgramPath();

} // namespace kestrel
