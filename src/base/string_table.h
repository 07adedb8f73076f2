#pragma once
// Every user-visible text is a numbered entry: German under n, English under
// n + 10000. Callers pass the German number; the language offset is added here.

#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

inline constexpr int kLangGerman = 0;
inline constexpr int kLangEnglish = 10000;

// The language offset (0 or 10000) added to every look-up.
[[nodiscard]] int GlobalLang();
void SetGlobalLang(int offset);

// Text n in the active language; a missing entry gives a visible marker "[#n]".
[[nodiscard]] std::string Str(int n);
// Text n in the given language offset, whatever the active one is.
[[nodiscard]] std::string StrIn(int n, int langOffset);
// Text n with its first "%1" replaced by value.
[[nodiscard]] std::string StrArg(int n, std::string_view value);

// Exact look-up of an absolute number (no offset added); empty when missing.
[[nodiscard]] std::optional<std::string> FindStr(int absoluteNumber);

// Parses one table in the data file format (tests use it on crafted input).
// Lines: "number<TAB>German<TAB>English"; '#' starts a comment line; "\n", "\t"
// and "\\" inside a text stand for line break, tab and backslash.
struct StringTableEntry {
    int number = 0;
    std::string german;
    std::string english;
};
[[nodiscard]] bool ParseStringTableLine(std::string_view line, StringTableEntry &out);

} // namespace kestrel
