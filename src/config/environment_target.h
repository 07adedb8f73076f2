#pragma once
// What an environment save or load meets at a path: nothing yet, an empty file,
// a Kestrel environment, or a file of another kind. Kestrel writes its sections
// only into a file of its own (or an empty one) unless the user agreed, and never
// loads another kind of file over the set-up in use.

#include <filesystem>
#include <string>

#include "base/prompt.h"
#include "base/result.h"
#include "config/ini_file.h"

namespace kestrel {

enum class EnvFileKind {
    Missing,     // no file there yet
    Empty,       // nothing but blanks and line ends
    Environment, // holds a section or key that only an environment has
    Foreign,     // readable text of another kind: another program's INI, Kestrel.ini, notes
    Refused,     // never a settings file: a folder, pipe or device, unreadable, binary or too large
};

struct EnvFileCheck {
    EnvFileKind kind = EnvFileKind::Missing;
    Result status; // Refused: the reason, when reading said one
};

// [ComA], [ComB], [Customer], [Description] or [Trigger0], or [Files] with "Record data".
// [General] alone does not count: many programs' INI files have one.
[[nodiscard]] bool HoldsEnvironment(const IniFile &ini);
[[nodiscard]] EnvFileCheck CheckEnvironmentFile(const std::filesystem::path &file);

// The file dialogs' default extension: ".kef" is added to a name that has no extension.
[[nodiscard]] std::string WithEnvironmentExtension(const std::string &path);

// Asks before a save would write into a file that is not an environment (default No),
// or replace another environment than the one in use. A missing or empty file, and the
// environment's own file, are saved without a question; so is a Refused one, whose
// save fails and says why. true: go on and save.
[[nodiscard]] bool MaySaveEnvironmentTo(Prompter &prompter, const std::filesystem::path &file,
                                        const std::filesystem::path &current);

} // namespace kestrel
