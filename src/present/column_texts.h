#pragma once
// Column names that the grid, the CSV export, the dump and the report share,
// so that a column reads alike everywhere (German under n, English under
// n + 10000), and the letters of an MP's line errors.

#include <string>

namespace kestrel {

namespace ColumnText {
inline constexpr int MarkTrigger = 8155;
inline constexpr int EventNo = 8156;
inline constexpr int DateTime = 8157;
inline constexpr int TimeModeSuffix = 8176; // + time mode: "-Absolute/Local", "-Relative", "-Delta"
inline constexpr int Description = 8158;
inline constexpr int ParityLetter = 4291;   // "P"; 4292 "F", 4293 "L"
} // namespace ColumnText

// "P", "F", "L" (texts 4291-4293) for the flags that are set, in that order.
[[nodiscard]] std::string ErrorLetters(bool pe, bool fe, bool le, int langOffset);

} // namespace kestrel
