#pragma once
// MP time stamps are the local wall-clock time of the recording machine (days
// since 1899-12-30). Capture files want UTC: the machine's time zone (TZ or
// /etc/localtime) converts them.
//
// Daylight saving: a local time that a change back to standard time repeats
// (the hour 02:00-03:00 that occurs twice) is taken as its first reading, the
// one before the change; a local time that the change to summer time skips is
// read with the offset in force before the change (02:30 becomes 01:30 UTC in
// a zone one hour ahead of UTC in winter).

#include <cstdint>
#include <optional>

namespace kestrel {

// UTC seconds since 1970 of a local time given as seconds since 1970 on the wall clock.
[[nodiscard]] std::int64_t LocalSecondsToUtc(std::int64_t localSeconds);

// The same for MP date-times, to the microsecond; remembers the offset of the
// last quarter hour, so a walk through millions of MPs asks the time zone
// about once per quarter hour.
class LocalToUtc {
public:
    // Microseconds since 1970, UTC; nothing for a stamp that is no date (NaN, far outside any recording).
    [[nodiscard]] std::optional<std::int64_t> micros(double dateTime);

private:
    std::int64_t bucket_ = INT64_MIN;
    std::int64_t offset_ = 0; // local - UTC, seconds
};

} // namespace kestrel
