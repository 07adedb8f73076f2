#pragma once
// Styles are Qt style sheets (*.qss) in themes/ of the data folder. Kestrel.ini
// names them in numbered slots ([Skin1] Name, Dark); slot 0 is the platform's own
// look, and [Skin] Current is the slot in use. Two styles, a light and a dark one,
// ship with the program and are put in place on the first start, as an installer
// would. This part reads and writes files only; applying a sheet is the window's.

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "config/program_config.h"

namespace kestrel {

inline constexpr const char *kStyleExtension = ".qss";
// Style sheets beyond this size are no style sheets.
inline constexpr std::uintmax_t kMaxStyleSheetBytes = 1024u * 1024u;

// Reasons a style cannot be used (string numbers; the detail names the file).
inline constexpr int kMsgStyleUnusable = 9243;    // %1 the style's name; the reason follows
inline constexpr int kMsgStyleFileMissing = 9244;
inline constexpr int kMsgStyleFileNotRead = 9245;
inline constexpr int kMsgStyleFileNotText = 9246;
inline constexpr int kMsgStyleSheetInvalid = 9247;

struct ShippedStyle {
    const char *name; // the slot name and the file name without ".qss"
    bool dark;
    std::string_view sheet;
};
[[nodiscard]] std::span<const ShippedStyle> ShippedStyles();

// The first start: Kestrel.ini has no [Skin] section (or does not exist yet). The
// shipped style files are written to themes/, where no file of that name is yet
// (one the user made stays as it is), and [Skin] Max and Current and a slot for
// each shipped style are written to Kestrel.ini. A Kestrel.ini that cannot be
// read, or is damaged, is left alone. installed tells whether the slots were written.
struct StyleInstall {
    bool installed = false;
    Result status; // the first thing that could not be written
};
StyleInstall InstallShippedStylesOnFirstStart(const std::filesystem::path &dataFolder);

// themes/<name>.qss of the data folder, name and extension matched without regard to case.
[[nodiscard]] std::optional<std::filesystem::path> FindStyleFile(const std::filesystem::path &dataFolder,
                                                                 std::string_view name);

// The text of a style sheet, or why it cannot be used: kMsgStyleFileMissing,
// kMsgStyleFileNotRead (a folder, a pipe or device, no permission) or
// kMsgStyleFileNotText (larger than kMaxStyleSheetBytes, NUL bytes), with the path.
[[nodiscard]] Expected<std::string> ReadStyleSheet(const std::filesystem::path &file);

// The slot a number stands for: a named slot is itself; 0, a slot named "None" and a
// number out of range are the platform look (0).
[[nodiscard]] int StyleSlotInUse(const ProgramConfig &cfg, int slot);
// The slots a user can choose: 0 first, then every named slot in slot order.
[[nodiscard]] std::vector<int> StyleChoices(const ProgramConfig &cfg);

// Writes [Skin] Current and nothing else: confirming the options keeps the chosen style.
[[nodiscard]] Result SaveCurrentStyle(const std::filesystem::path &configFile, int slot);

} // namespace kestrel
