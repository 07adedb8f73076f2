#pragma once
// The display modes the main window keeps for the record grid: the character
// panel (character mode, secondary mode, overlay, view, per-view memory), the
// time mode, the signal naming set, the grid-line options and the waveform
// fill. The window's buttons call these handlers and then pass the state to
// the grid.

#include "present/char_panel.h"

namespace kestrel::grid {

inline constexpr int kTimeAbsolute = 0;
inline constexpr int kTimeRelative = 1;
inline constexpr int kTimeDelta = 2;

enum class GridLines { All, Horizontal, Vertical, None };

struct GridLineOptions {
    bool vertical = true;   // lines between the data cells' columns
    bool horizontal = true; // lines between the data cells' rows
    friend bool operator==(const GridLineOptions &, const GridLineOptions &) = default;
};

class GridModes {
public:
    CharPanelState panel; // character mode, secondary, overlay, view and its memory

    [[nodiscard]] int view() const { return panel.view; }
    [[nodiscard]] int charMode() const { return panel.charMode; }
    [[nodiscard]] int secondaryMode() const { return panel.secondaryMode; }
    [[nodiscard]] int overlay() const { return panel.overlay; }
    [[nodiscard]] int timeMode() const { return timeMode_; }
    [[nodiscard]] int namingSet() const { return namingSet_; }
    [[nodiscard]] GridLineOptions gridLines() const { return gridLines_; }
    [[nodiscard]] bool fillWaveform() const { return fillWaveform_; }

    // View buttons 1, 3 and 4; any other number is refused (false). The
    // horizontal button has no view of its own and never comes here.
    bool SelectView(int view);

    // Time buttons. Absolute always sets 0; relative and delta set their mode
    // when their button ends up down and fall back to absolute when it is up.
    void ClickTimeAbsolute();
    void ClickTimeRelative(bool down);
    void ClickTimeDelta(bool down);
    // A mode read from a settings file; out-of-range values give absolute.
    void SetTimeMode(int mode);

    // The "Switch PIN labels" command.
    void ToggleNaming() { namingSet_ = namingSet_ == 0 ? 1 : 0; }
    void SetNaming(int set) { namingSet_ = set == 1 ? 1 : 0; }

    // Grid-line actions set both inner-line options at once.
    void SetGridLines(GridLines lines);
    void SetFillWaveform(bool on) { fillWaveform_ = on; }

private:
    int timeMode_ = kTimeAbsolute;
    int namingSet_ = 0;
    GridLineOptions gridLines_;
    bool fillWaveform_ = true;
};

} // namespace kestrel::grid
