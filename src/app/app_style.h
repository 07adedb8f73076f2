#pragma once
// Applying a style to the whole program: the palette it builds on (Kestrel's light
// or dark one as its slot's Dark key says; the platform's own for slot 0) and its
// Qt style sheet from themes/. The record grids forget the colours the previous
// sheet gave them first. A style that cannot be used changes nothing.

#include <filesystem>

#include <QPalette>

#include "base/result.h"

namespace kestrel {

struct ProgramConfig;

// Kestrel's palettes under a style: calm greys, a muted blue for selections.
[[nodiscard]] QPalette StylePalette(bool dark);

// Applies slot `slot` of cfg.skins (StyleSlotInUse decides: an empty slot or a number
// out of range is the platform look). A failure is kMsgStyleUnusable with the style's
// name and the reason in the detail (the file's path, or what Qt found wrong), in the
// current language; the look is then the one before.
[[nodiscard]] Result ApplyStyle(const ProgramConfig &cfg, const std::filesystem::path &dataFolder, int slot);

// The slot applied last (0 before any).
[[nodiscard]] int AppliedStyle();

} // namespace kestrel
