#include "ports/port_timing.h"

namespace kestrel {

int BitsPerCharacter(const PortSettings &settings)
{
    const int stop = settings.stopBits == StopBits::One ? 1 : 2;
    return settings.dataBits + stop + (settings.parity == Parity::None ? 0 : 1) + 1;
}

LineTiming ComputeLineTiming(const PortSettings &settings, std::int64_t counterFrequency)
{
    LineTiming t;
    const std::int64_t baud = settings.baud > 0 ? settings.baud : 1;
    const std::int64_t bits = BitsPerCharacter(settings);
    t.cps = static_cast<double>(baud) / static_cast<double>(bits);
    t.tchar = bits * counterFrequency / baud + 1;
    return t;
}

} // namespace kestrel
