#pragma once
// Where a tool window stands between sessions ([EXWindow], [REWindow]): the saved
// place is applied when the window is first shown and read back from the window
// when the configuration is saved.

#include "config/program_config.h"

class QWidget;

namespace kestrel {

class ToolWindowPlace {
public:
    // A place read from the settings; applied at once when the window is showing.
    void set(QWidget &window, const ToolWindowPlacement &placement);
    // The place to save: where the window stands, or what was read if it was never shown.
    [[nodiscard]] ToolWindowPlacement get(const QWidget &window) const;
    // Keeps where the window stands before it hides.
    void remember(const QWidget &window);
    // From the window's show event: the saved place, the first time only.
    void applyOnce(QWidget &window);

private:
    void apply(QWidget &window);

    ToolWindowPlacement placement_;
    bool placed_ = false; // the saved placement has been applied
};

} // namespace kestrel
