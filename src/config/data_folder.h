#pragma once
// The data folder holds Kestrel.ini and the folders recordings/, profiles/ and
// themes/. It is, in this order: --data-dir DIR from the command line, the
// environment variable KESTREL_DATA_DIR, $XDG_DATA_HOME/kestrel/, and
// ~/.local/share/kestrel/.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "config/ini_file.h"

namespace kestrel {

inline constexpr const char *kProfilesFolder = "profiles";
inline constexpr const char *kThemesFolder = "themes";

// Looks up an environment variable; empty optional when unset.
using EnvLookup = std::function<std::optional<std::string>(const char *)>;
[[nodiscard]] EnvLookup ProcessEnvironment();

// Empty values count as unset. Without any of them (no HOME either) the
// current folder's "kestrel-data" is used, so there is always an answer.
[[nodiscard]] std::filesystem::path ResolveDataFolder(const std::optional<std::string> &commandLineDir,
                                                      const EnvLookup &env = ProcessEnvironment());

// Creates the data folder and its three sub-folders where they are missing
// (kMsgDataFolderNotCreated and the folder that failed).
[[nodiscard]] Result EnsureDataFolder(const std::filesystem::path &dataFolder);

// "--data-dir DIR" or "--data-dir=DIR" among the program arguments (argv[0] excluded).
[[nodiscard]] std::optional<std::string> DataDirArgument(int argc, const char *const *argv);

} // namespace kestrel
