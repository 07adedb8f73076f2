#pragma once
// State of the main window's character panel: the character mode, the
// secondary mode of the dump view, the control overlay, the enabled state of
// the two overlay buttons, and the modes remembered per view.
//
// API overview
//   CharPanelState                 the struct the main window keeps.
//   .ChooseMode(mode)              a mode button (1-6) was pressed in the current view.
//   .ClickCaretButton() / .ClickMnemonicButton() / .ClickResetButton()   the overlay buttons.
//   .SwitchView(view)              a view button: restores that view's remembered pair.
//   .ModesOfView(view)             the remembered pair of a view.
//   ViewNumber::                   the view numbers (1 vertical, 3 data only, 4 dump).
//   After every change the caller re-applies the view, invalidates the grid
//   and refreshes the status line.

#include <array>

#include "present/byte_render.h"

namespace kestrel {

namespace ViewNumber {
inline constexpr int Vertical = 1;
inline constexpr int DataOnly = 3;
inline constexpr int Dump = 4;
} // namespace ViewNumber

struct ViewModes {
    int charMode = CharMode::Ascii;
    int secondaryMode = CharMode::Hex; // used only by the dump view's number columns
    friend bool operator==(const ViewModes &, const ViewModes &) = default;
};

struct CharPanelState {
    int view = ViewNumber::Vertical;
    int charMode = CharMode::Ascii;
    int secondaryMode = CharMode::Hex;
    int overlay = Overlay::None; // 7: caret button down, 8: mnemonic button down
    bool caretButtonEnabled = true;
    bool mnemonicButtonEnabled = true;
    // Slots for view numbers 0..4; views outside that range have no memory.
    std::array<ViewModes, 5> perView{};

    // A mode button. ASCII and EBCDIC always set the character mode; the
    // number modes set it in views 1 and 3, set the secondary mode in view 4
    // and change nothing in other views. The chosen value is also written to
    // the current view's slot.
    void ChooseMode(int mode);

    // Overlay buttons: one exclusive group where all buttons may be up.
    // Pressing a down button raises it again (overlay back to 0).
    void ClickCaretButton();
    void ClickMnemonicButton();
    // The reset button never stays down: overlay 0, all three buttons up.
    void ClickResetButton();

    // Switch to a view and restore its remembered pair; the overlay buttons
    // follow the restored character mode.
    void SwitchView(int newView);

    [[nodiscard]] ViewModes ModesOfView(int v) const;

    // The mode the dump view's number columns use.
    [[nodiscard]] int NumberColumnMode() const { return secondaryMode; }

private:
    [[nodiscard]] ViewModes *slot(int v);
    void UpdateOverlayButtons();
};

} // namespace kestrel
