#pragma once
// The delta-time measurement between two MPs: both absolute times, the time
// between them as a duration text, and that time rounded to whole seconds,
// milliseconds and microseconds.
//
// Rounding: the two stamps are taken to the microsecond as their texts show
// them, and the difference in whole microseconds is exact; milliseconds and
// seconds are that difference rounded half away from zero (1.5 ms -> 2,
// -1.5 ms -> -2). The difference is stop - start, negative when the stop MP
// lies before the start MP.

#include <cstdint>
#include <string>

#include "present/time_text.h"

namespace kestrel {

struct DeltaMeasure {
    std::string startText;  // absolute time of the start MP
    std::string stopText;   // absolute time of the stop MP
    std::string deltaText;  // "0 day(s)  00:00:01,250000 " (a minus sign in front when negative)
    std::int64_t seconds = 0;
    std::int64_t milliseconds = 0;
    std::int64_t microseconds = 0;
    bool valid = false; // both times are dates (a damaged stamp gives texts but no numbers)
};

[[nodiscard]] DeltaMeasure MeasureDelta(double start, double stop, const TimeLocale &locale,
                                        const std::string &dayWord);

} // namespace kestrel
