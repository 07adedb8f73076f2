#pragma once
// Field access straight on a raw 80-byte record, for scans that look at a few
// bytes of millions of MPs and must not decode the whole record each time.
// The offsets are the record layout's own (MpField in record/mp_record.h).

#include <bit>
#include <cstdint>

#include "record/mp_record.h"

namespace kestrel::mpraw {

inline constexpr int kOffTime = MpField::Time;
inline constexpr int kOffD1 = MpField::D1, kOffD2 = MpField::D2;
inline constexpr int kOffD1Valid = MpField::D1Valid, kOffD2Valid = MpField::D2Valid;
inline constexpr int kOffLevels = MpField::Levels;
inline constexpr int kOffErrorsD1 = MpField::ErrorsD1;
inline constexpr int kOffErrorsD2 = MpField::ErrorsD2;
inline constexpr int kOffMarkCode = MpField::MarkCode, kOffMarkKind = MpField::MarkKind;
inline constexpr int kOffMarkExtra = MpField::MarkExtra;

[[nodiscard]] inline double Time(const std::uint8_t *r)
{
    std::uint64_t bits = 0;
    for (int i = 7; i >= 0; --i)
        bits = (bits << 8) | r[kOffTime + i];
    return std::bit_cast<double>(bits);
}

} // namespace kestrel::mpraw
