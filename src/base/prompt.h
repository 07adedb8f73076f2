#pragma once
// Every question and report goes through this interface, so that core code
// and tests never need a window. The main window answers it with its message
// box; kestrel-cli with the console; tests with a scripted double.

#include <string>

namespace kestrel {

// Button sets of the message box.
namespace Buttons {
inline constexpr int Ok = 0;          // "OK"
inline constexpr int YesNoCancel = 3; // "Ja", "Nein", "Abbrechen"
inline constexpr int YesNo = 4;       // "Ja", "Nein"
inline constexpr int YesNoDefaultNo = 5; // "Ja", "Nein" with "Nein" the default: a question that risks data
} // namespace Buttons

// Icon kinds, numbered as the platform's message-dialog types.
namespace Icon {
inline constexpr int Warning = 0;
inline constexpr int Error = 1;
inline constexpr int Information = 2;
inline constexpr int Confirmation = 3;
} // namespace Icon

// Modal results.
namespace MsgResult {
inline constexpr int None = 0;
inline constexpr int Ok = 1;
inline constexpr int Cancel = 2;
inline constexpr int Yes = 6;
inline constexpr int No = 7;
inline constexpr int UnlistedOk = -1; // OK of a box opened with an unlisted button set
} // namespace MsgResult

class Prompter {
public:
    virtual ~Prompter() = default;
    // Blocks until the user answers; returns one of MsgResult.
    virtual int ShowMessage(const std::string &title, const std::string &text, int buttons, int icon) = 0;
    // Windows that stay on top are lowered around an error report.
    virtual void NormalizeTopMosts() {}
    virtual void RestoreTopMosts() {}
};

// The result an OK/Yes/No/Cancel button gives for a button set (1, 2, 3 = btn1, btn2, btn3);
// MsgResult::None when that button is not part of the set.
[[nodiscard]] int ButtonResult(int buttons, int buttonIndex);

} // namespace kestrel
