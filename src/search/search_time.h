#pragma once
// Date-time values as the record stores them: days since 1899-12-30 00:00,
// the fraction being the local time of day. No time zone is involved: the
// wall-clock fields map straight to the value.

#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrel {

// The value of a local date and time; microseconds 0..999999.
[[nodiscard]] double MakeDateTime(int year, int month, int day, int hour, int minute, int second,
                                  std::int64_t microsecond = 0);

// "YYYY-MM-DD hh:mm:ss" with an optional fraction ".f" up to six digits
// ("T" may stand for the blank); nothing when the text is malformed or a
// field is out of range (month 13, 31 February, hour 24 ...).
[[nodiscard]] std::optional<double> ParseSearchDateTime(std::string_view text);

} // namespace kestrel
