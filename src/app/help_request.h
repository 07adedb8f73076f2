#pragma once
// How a window opens its page of the manual: its help button and F1 call
// ShowHelpFor, which finds the page by the window's object name (or the nearest
// parent's that has one) and shows it in the program's one help window.

class QWidget;

namespace kestrel {

class THelpWindow;

// Opens the page of the window `from` belongs to; the main window's page when none has one.
THelpWindow *ShowHelpFor(QWidget *from);
// F1 inside `window` opens its page (for windows without the main window's Help action).
void InstallHelpKey(QWidget *window);

} // namespace kestrel
