#pragma once
// Numbers of the alert window's texts in the string table (src/resources/strings.tsv).

namespace kestrel::chimer::AlertText {

inline constexpr int Stop = 9400;
inline constexpr int CannotPlay = 9401;    // %1: why
inline constexpr int NoSoundOutput = 9402;

} // namespace kestrel::chimer::AlertText
