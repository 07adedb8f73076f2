#pragma once
// The line timing the MP writer needs, from a port's settings: port A's
// settings rule, port B always copies them.

#include <cstdint>

#include "ports/port_settings.h"
#include "record/line_timing.h"

namespace kestrel {

// Bits on the wire per character: start + data + stop + parity (1.5 stop bits count as 2).
[[nodiscard]] int BitsPerCharacter(const PortSettings &settings);
[[nodiscard]] LineTiming ComputeLineTiming(const PortSettings &settings, std::int64_t counterFrequency);

} // namespace kestrel
