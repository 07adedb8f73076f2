#include "base/error_report.h"

#include <filesystem>
#include <system_error>

#include "base/reporter.h"
#include "base/string_table.h"

namespace kestrel {

int ButtonResult(int buttons, int buttonIndex)
{
    switch (buttons) {
    case Buttons::Ok:
        return buttonIndex == 2 ? MsgResult::Ok : MsgResult::None;
    case Buttons::YesNoCancel:
        return buttonIndex == 1 ? MsgResult::Yes
             : buttonIndex == 2 ? MsgResult::No
             : buttonIndex == 3 ? MsgResult::Cancel
                                : MsgResult::None;
    case Buttons::YesNo:
    case Buttons::YesNoDefaultNo:
        return buttonIndex == 1 ? MsgResult::Yes : buttonIndex == 3 ? MsgResult::No : MsgResult::None;
    default:
        // Unlisted sets show a single OK that answers -1; callers only test for Yes.
        return buttonIndex == 2 ? MsgResult::UnlistedOk : MsgResult::None;
    }
}

std::string ProgramPath()
{
    std::error_code ec;
    auto p = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string("kestrel") : p.string();
}

ErrorReport BuildErrorReport(int titleNumber, int messageNumber, ErrorSource source,
                             std::string_view extra, bool fatal)
{
    ErrorReport r;
    if (fatal)
        r.title = Str(21);
    else if (titleNumber > 0)
        r.title = Str(titleNumber);
    else
        r.title = Str(23);

    if (messageNumber > 0 && !fatal) {
        // Ordinary report: the message, its detail, then where it failed.
        r.text = Str(messageNumber);
        r.text += extra;
        if (!source.unit.empty()) {
            r.text += "\n\n";
            r.text += Str(4279) + std::string(source.unit) + "\n";
            r.text += Str(4270) + std::to_string(source.line);
        }
        return r;
    }

    // Detailed report of an unexpected error; a message number, if any, leads the error line.
    std::string error = messageNumber > 0 ? Str(messageNumber) : std::string();
    error += extra;
    r.text = Str(4275);
    r.text += Str(4276) + error + "\n";
    r.text += Str(4277) + Str(1) + "\n";
    r.text += Str(4278) + ProgramPath() + "\n";
    r.text += Str(4279) + std::string(source.unit) + "\n";
    r.text += Str(4270) + std::to_string(source.line) + "\n\n";
    r.text += Str(22) + Str(31) + Str(32) + Str(33) + Str(34) + Str(35);
    return r;
}

void ReportError(Prompter &prompter, int titleNumber, int messageNumber, ErrorSource source,
                 std::string_view extra, bool fatal)
{
    const ErrorReport r = BuildErrorReport(titleNumber, messageNumber, source, extra, fatal);
    prompter.NormalizeTopMosts();
    prompter.ShowMessage(r.title, r.text, Buttons::Ok, Icon::Error);
    prompter.RestoreTopMosts();
}

} // namespace kestrel

namespace kestrel {

void PromptReporter::report(int title, const Result &result, ErrorSource source, Severity severity)
{
    if (severity == Severity::Error) {
        ReportError(prompter_, title, result.code, source, result.detail);
        return;
    }
    prompter_.ShowMessage(Str(title), Str(result.code) + result.detail, Buttons::Ok,
                          severity == Severity::Warning ? Icon::Warning : Icon::Information);
}

} // namespace kestrel
