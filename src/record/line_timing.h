#pragma once
// Character time of the monitored line: the minimum spacing of two MPs in
// counter ticks (Tchar) and the characters per second (Cps) used for the
// line load. The port layer computes both from port A's settings.

#include <cstdint>

namespace kestrel {

struct LineTiming {
    std::int64_t tchar = 1; // counter ticks
    double cps = 0.0;
};

} // namespace kestrel
