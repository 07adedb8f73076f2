#pragma once
// Which language the user reads: the locale variables decide between German and English.

namespace kestrel {

// kLangGerman when the locale names German, kLangEnglish otherwise. The variables are read in
// POSIX order: the first of LC_ALL, LC_MESSAGES and LANG that is set and not empty decides.
[[nodiscard]] int LanguageFromEnvironment();

} // namespace kestrel
