#include "present/char_panel.h"

namespace kestrel {

ViewModes *CharPanelState::slot(int v)
{
    if (v < 0 || v >= static_cast<int>(perView.size()))
        return nullptr;
    return &perView[static_cast<std::size_t>(v)];
}

ViewModes CharPanelState::ModesOfView(int v) const
{
    if (v < 0 || v >= static_cast<int>(perView.size()))
        return ViewModes{};
    return perView[static_cast<std::size_t>(v)];
}

void CharPanelState::ChooseMode(int mode)
{
    ViewModes *mine = slot(view);
    if (mode == CharMode::Ascii || mode == CharMode::Reserved) {
        charMode = mode;
        if (mine)
            mine->charMode = mode;
        caretButtonEnabled = true;
        mnemonicButtonEnabled = true;
        return;
    }
    if (mode == CharMode::Ebcdic) {
        charMode = mode;
        if (mine)
            mine->charMode = mode;
        caretButtonEnabled = false; // no caret names for EBCDIC
        mnemonicButtonEnabled = true;
        return;
    }
    if (!IsNumberMode(mode))
        return;
    if (view == ViewNumber::Vertical || view == ViewNumber::DataOnly) {
        charMode = mode;
        if (mine)
            mine->charMode = mode;
    } else if (view == ViewNumber::Dump) {
        // The dump view keeps its text columns and switches its number columns.
        secondaryMode = mode;
        if (mine)
            mine->secondaryMode = mode;
    }
    if (view != ViewNumber::Dump) {
        caretButtonEnabled = false;
        mnemonicButtonEnabled = false;
    }
}

void CharPanelState::ClickCaretButton()
{
    overlay = overlay == Overlay::Caret ? Overlay::None : Overlay::Caret;
}

void CharPanelState::ClickMnemonicButton()
{
    overlay = overlay == Overlay::Mnemonic ? Overlay::None : Overlay::Mnemonic;
}

void CharPanelState::ClickResetButton()
{
    overlay = Overlay::None;
}

void CharPanelState::SwitchView(int newView)
{
    view = newView;
    if (const ViewModes *mine = slot(view)) {
        charMode = mine->charMode;
        secondaryMode = mine->secondaryMode;
    }
    UpdateOverlayButtons();
}

void CharPanelState::UpdateOverlayButtons()
{
    if (charMode == CharMode::Ebcdic) {
        caretButtonEnabled = false;
        mnemonicButtonEnabled = true;
    } else if (IsNumberMode(charMode)) {
        caretButtonEnabled = mnemonicButtonEnabled = false;
    } else {
        caretButtonEnabled = mnemonicButtonEnabled = true;
    }
}

} // namespace kestrel
