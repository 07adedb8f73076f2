#pragma once
// Line settings of a monitored port. Port B always copies port A's settings.

#include <string>

namespace kestrel {

enum class Parity { None, Odd, Even, Mark, Space };
enum class StopBits { One, OnePointFive, Two };

struct PortSettings {
    long baud = 9600;
    int dataBits = 8; // 5..8
    Parity parity = Parity::None;
    StopBits stopBits = StopBits::One;
    friend bool operator==(const PortSettings &, const PortSettings &) = default;
};

// Modem status word bits, in the layout of the UART modem status register.
namespace Msr {
inline constexpr unsigned TeriRi = 0x04; // trailing edge of RI
inline constexpr unsigned Cts = 0x10;
inline constexpr unsigned Dsr = 0x20;
inline constexpr unsigned Ri = 0x40;
inline constexpr unsigned Dcd = 0x80;
} // namespace Msr

// Line error word bits as the port reports them: PE = (word & 3) != 0, FE = (word & 4) != 0.
namespace LineError {
inline constexpr unsigned Overrun = 0x01;
inline constexpr unsigned Parity = 0x02;
inline constexpr unsigned Framing = 0x04;
inline constexpr unsigned Break = 0x08;
} // namespace LineError

} // namespace kestrel
