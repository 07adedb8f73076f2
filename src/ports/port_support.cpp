#include "ports/port_support.h"

#include "base/string_table.h"

namespace kestrel {

std::string PortText(PortTextId id)
{
    return Str(static_cast<int>(id));
}

Result PortFailure(PortTextId id, const std::string &more)
{
    return Result::Fail(static_cast<int>(id), PortText(id) + more);
}

Result ValidPortSettings(const PortSettings &s)
{
    if (s.baud < 1 || s.baud > 20'000'000)
        return PortFailure(PortTextId::BadSettings, " (baud " + std::to_string(s.baud) + ")");
    if (s.dataBits < 5 || s.dataBits > 8)
        return PortFailure(PortTextId::BadSettings, " (data bits " + std::to_string(s.dataBits) + ")");
    return Result::Ok();
}

int CharacterBitsTimesTwo(const PortSettings &s)
{
    int stopTimesTwo = 2;
    if (s.stopBits == StopBits::OnePointFive || (s.stopBits == StopBits::Two && s.dataBits == 5))
        stopTimesTwo = 3;
    else if (s.stopBits == StopBits::Two)
        stopTimesTwo = 4;
    const int parity = s.parity == Parity::None ? 0 : 2;
    return 2 /* start bit */ + 2 * s.dataBits + parity + stopTimesTwo;
}

} // namespace kestrel
