#pragma once
// Where the core's failures go when nobody is waiting for a return value: a
// port lost in the middle of a recording, a disk that filled up, a port that
// refused to open when the record button was pressed. The window shows them
// in its message box, kestrel-cli on standard error, tests keep them.

#include "base/error_report.h"
#include "base/result.h"

namespace kestrel {

enum class Severity { Error, Warning, Information };

class Reporter {
public:
    virtual ~Reporter() = default;
    // title: its text number (2000 port, 3000 file, 205 warning, 203 information);
    // result.code: the number of the message text, followed by result.detail as it stands.
    // An error names the unit and line where it failed (source); warnings and notes do not.
    virtual void report(int title, const Result &result, ErrorSource source = {},
                        Severity severity = Severity::Error) = 0;
};

// Reports through a prompter: an error as ReportError shows it, a warning or a
// note as a plain message with its icon and an OK button.
class PromptReporter final : public Reporter {
public:
    explicit PromptReporter(Prompter &prompter) : prompter_(prompter) {}
    void report(int title, const Result &result, ErrorSource source = {},
                Severity severity = Severity::Error) override;

private:
    Prompter &prompter_;
};

} // namespace kestrel
