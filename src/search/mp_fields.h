#pragma once
// Field access straight on a raw 80-byte record, for scans that look at a few
// bytes of millions of MPs and must not decode the whole record each time.
// Offsets are those of MpRecord (static_asserts in capture/mp_record.h).

#include <bit>
#include <cstdint>

namespace kestrel::mpraw {

inline constexpr int kOffTime = 8;
inline constexpr int kOffD1 = 16, kOffD2 = 17, kOffD1Valid = 18, kOffD2Valid = 19;
inline constexpr int kOffLevels = 20;   // S1, M1, S2, M2, M5, M3
inline constexpr int kOffErrorsD1 = 26; // PE, FE, LE of port B
inline constexpr int kOffErrorsD2 = 29; // PE, FE, LE of port A
inline constexpr int kOffMarkCode = 75, kOffMarkKind = 76, kOffMarkExtra = 77;

[[nodiscard]] inline double Time(const std::uint8_t *r)
{
    std::uint64_t bits = 0;
    for (int i = 7; i >= 0; --i)
        bits = (bits << 8) | r[kOffTime + i];
    return std::bit_cast<double>(bits);
}

} // namespace kestrel::mpraw
