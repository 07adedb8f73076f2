#pragma once
// Character time of the monitored line: the minimum spacing of two MPs in
// counter ticks (Tchar) and the characters per second (Cps) used for the
// line load. Both come from port A's settings; port B always copies them.

#include <cstdint>

#include "capture/port_settings.h"

namespace kestrel {

struct LineTiming {
    std::int64_t tchar = 1; // counter ticks
    double cps = 0.0;
};

// Bits on the wire per character: start + data + stop + parity (1.5 stop bits count as 2).
[[nodiscard]] int BitsPerCharacter(const PortSettings &settings);
[[nodiscard]] LineTiming ComputeLineTiming(const PortSettings &settings, std::int64_t counterFrequency);

} // namespace kestrel
