#pragma once
// The MP (measurement point): one 80-byte, little-endian event record, the
// same in the record file and in the live buffer. MP n of a recording lives at
// byte offset n * 80 of its record file.

#include <array>
#include <cstddef>
#include <cstdint>

namespace kestrel {

inline constexpr std::size_t kMpSize = 80;
using MpBytes = std::array<std::uint8_t, kMpSize>;

// Mark kind of a system mark; its mark code says what happened.
inline constexpr std::uint8_t kSystemMarkKind = 99;
namespace SystemMark {
inline constexpr std::uint8_t NewFile = 0;   // first record of a new or replaced file
inline constexpr std::uint8_t Appended = 4;  // recording started by appending
inline constexpr std::uint8_t Stopped = 5;   // recording stopped
inline constexpr std::uint8_t Started = 6;   // recording started on a new or replaced file
} // namespace SystemMark

// Index of the five running counters.
enum class Counter : int { D1 = 0, D2 = 1, PE = 2, FE = 3, LE = 4 };

struct MpRecord {
    std::uint32_t number = 0;
    std::uint8_t reserved1[4] = {};
    double time = 0.0; // days since 1899-12-30 00:00, local time
    std::uint8_t d1 = 0, d2 = 0;
    std::uint8_t d1Valid = 0, d2Valid = 0;
    std::uint8_t s1 = 0, m1 = 0, s2 = 0, m2 = 0, m5 = 0, m3 = 0;
    std::uint8_t peD1 = 0, feD1 = 0, leD1 = 0;
    std::uint8_t peD2 = 0, feD2 = 0, leD2 = 0;
    std::uint64_t counts[5] = {}; // D1, D2, PE, FE, LE (index with Counter)
    std::uint8_t loadActual = 0, loadPeak = 0, quality = 0;
    std::uint8_t markCode = 0, markKind = 0, markExtra = 0;
    std::uint8_t reserved2[2] = {};

    [[nodiscard]] std::uint64_t count(Counter c) const { return counts[static_cast<int>(c)]; }
    [[nodiscard]] bool isSystemMark() const { return markKind == kSystemMarkKind; }
    // A trigger mark carries a mark code 1..3 and is not a system mark.
    [[nodiscard]] bool isTriggerMark() const { return !isSystemMark() && markCode != 0; }
    friend bool operator==(const MpRecord &, const MpRecord &) = default;
};

// Byte offset of every field in the 80-byte record. The codec and the scans
// that read raw records (search) take their offsets from here, and the
// in-memory struct is checked against the same table.
namespace MpField {
inline constexpr std::size_t Number = 0;
inline constexpr std::size_t Reserved1 = 4;
inline constexpr std::size_t Time = 8;
inline constexpr std::size_t D1 = 16, D2 = 17, D1Valid = 18, D2Valid = 19;
inline constexpr std::size_t Levels = 20;   // S1, M1, S2, M2, M5, M3
inline constexpr std::size_t ErrorsD1 = 26; // PE, FE, LE of port B
inline constexpr std::size_t ErrorsD2 = 29; // PE, FE, LE of port A
inline constexpr std::size_t Counts = 32;   // five u64: D1, D2, PE, FE, LE
inline constexpr std::size_t LoadActual = 72, LoadPeak = 73, Quality = 74;
inline constexpr std::size_t MarkCode = 75, MarkKind = 76, MarkExtra = 77;
inline constexpr std::size_t Reserved2 = 78;
} // namespace MpField

// The in-memory struct mirrors the file layout on every host we build for;
// encode/decode still go field by field so the file stays little-endian.
static_assert(sizeof(MpRecord) == kMpSize);
static_assert(offsetof(MpRecord, number) == MpField::Number);
static_assert(offsetof(MpRecord, reserved1) == MpField::Reserved1);
static_assert(offsetof(MpRecord, time) == MpField::Time);
static_assert(offsetof(MpRecord, d1) == MpField::D1 && offsetof(MpRecord, d2) == MpField::D2);
static_assert(offsetof(MpRecord, d1Valid) == MpField::D1Valid && offsetof(MpRecord, d2Valid) == MpField::D2Valid);
static_assert(offsetof(MpRecord, s1) == MpField::Levels && offsetof(MpRecord, m3) == MpField::Levels + 5);
static_assert(offsetof(MpRecord, peD1) == MpField::ErrorsD1 && offsetof(MpRecord, leD1) == MpField::ErrorsD1 + 2);
static_assert(offsetof(MpRecord, peD2) == MpField::ErrorsD2 && offsetof(MpRecord, leD2) == MpField::ErrorsD2 + 2);
static_assert(offsetof(MpRecord, counts) == MpField::Counts);
static_assert(offsetof(MpRecord, loadActual) == MpField::LoadActual && offsetof(MpRecord, quality) == MpField::Quality);
static_assert(offsetof(MpRecord, markCode) == MpField::MarkCode && offsetof(MpRecord, markExtra) == MpField::MarkExtra);
static_assert(offsetof(MpRecord, reserved2) == MpField::Reserved2);

void EncodeMp(const MpRecord &mp, std::uint8_t *out);
[[nodiscard]] MpRecord DecodeMp(const std::uint8_t *in);
[[nodiscard]] inline MpBytes EncodeMp(const MpRecord &mp)
{
    MpBytes b;
    EncodeMp(mp, b.data());
    return b;
}

// Byte offset of MP n in a record file; 64-bit all the way.
[[nodiscard]] constexpr std::uint64_t MpOffset(std::uint64_t n) { return n * kMpSize; }

} // namespace kestrel
