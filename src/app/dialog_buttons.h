#pragma once
// The OK / Cancel / Help row at the foot of a dialog: OK is the default button,
// Help never reacts to Enter and opens the dialog's page of the manual, and F1
// does the same anywhere in the dialog. The texts are the dialog's to set.

class QDialog;
class QHBoxLayout;
class QPushButton;

namespace kestrel {

struct DialogButtons {
    QPushButton *ok;
    QPushButton *cancel;
    QPushButton *help;
    QHBoxLayout *row; // right-aligned; the caller places it
};

// The cancel button's object name is the dialog's own ("btnCancel", "btnAbort").
[[nodiscard]] DialogButtons MakeDialogButtons(QDialog *dialog, const char *cancelName = "btnCancel");

} // namespace kestrel
