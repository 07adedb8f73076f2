#pragma once
// Date-times as the settings files keep them: a double counting days since
// 1899-12-30 (fraction = time of day; before that day the fraction is still the
// time of day, counted forward), written as text.
//
// Written form: "yyyy-mm-dd hh:nn:ss" with as many fractional-second digits as it
// takes (none, 3, 6, 9, ... up to 18) for the text to read back to the very same
// double. Read forms: that one (also with 'T' between date and time), and the
// Windows short form "dd.mm.yyyy hh:nn:ss" (time or seconds may be left out).

#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

[[nodiscard]] std::string FormatSettingsDateTime(double days);
[[nodiscard]] std::optional<double> ParseSettingsDateTime(std::string_view text);

// Days since 1899-12-30 of a civil date (proleptic Gregorian).
[[nodiscard]] long long DaysSince18991230(int year, int month, int day);

// The local wall clock now, as days since 1899-12-30.
[[nodiscard]] double CurrentLocalDateTime();

} // namespace kestrel
