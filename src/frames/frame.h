#pragma once
// A frame: the bytes of one circuit (D1 or D2) that belong together because
// no idle gap of the rule's length (or no end byte) came between them, with
// the MPs they came from, their times, and the line errors and status-line
// changes that happened while they were on the line.

#include <cstdint>
#include <vector>

#include "record/mp_record.h"

namespace kestrel {

enum class FrameCircuit : std::uint8_t { D1 = 0, D2 = 1 };

// The six status lines of an MP as one byte: bit 0 S1, 1 M1, 2 S2, 3 M2, 4 M5, 5 M3.
namespace LevelBit {
inline constexpr std::uint8_t S1 = 0x01, M1 = 0x02, S2 = 0x04, M2 = 0x08, M5 = 0x10, M3 = 0x20;
} // namespace LevelBit
[[nodiscard]] inline std::uint8_t LevelBits(const MpRecord &mp)
{
    return static_cast<std::uint8_t>((mp.s1 ? LevelBit::S1 : 0) | (mp.m1 ? LevelBit::M1 : 0) |
                                     (mp.s2 ? LevelBit::S2 : 0) | (mp.m2 ? LevelBit::M2 : 0) |
                                     (mp.m5 ? LevelBit::M5 : 0) | (mp.m3 ? LevelBit::M3 : 0));
}

// Line error flags of one circuit as one byte.
namespace ErrorBit {
inline constexpr std::uint8_t PE = 0x01, FE = 0x02, LE = 0x04;
} // namespace ErrorBit
[[nodiscard]] inline std::uint8_t ErrorBits(const MpRecord &mp, FrameCircuit c)
{
    return c == FrameCircuit::D1
               ? static_cast<std::uint8_t>((mp.peD1 ? ErrorBit::PE : 0) | (mp.feD1 ? ErrorBit::FE : 0) |
                                           (mp.leD1 ? ErrorBit::LE : 0))
               : static_cast<std::uint8_t>((mp.peD2 ? ErrorBit::PE : 0) | (mp.feD2 ? ErrorBit::FE : 0) |
                                           (mp.leD2 ? ErrorBit::LE : 0));
}

// A line error reported for the byte at `beforeByte` of the frame: a receiver
// reports the error of a character before it hands the character over, so
// the error's MP comes just before that byte's MP.
struct FrameError {
    std::uint64_t mp = 0;
    double time = 0.0;
    std::uint32_t beforeByte = 0;
    std::uint8_t kinds = 0; // ErrorBit
    friend bool operator==(const FrameError &, const FrameError &) = default;
};

// The status lines after a change at MP `mp` (LevelBit).
struct SignalChange {
    std::uint64_t mp = 0;
    double time = 0.0;
    std::uint8_t levels = 0;
    friend bool operator==(const SignalChange &, const SignalChange &) = default;
};

// Why a frame ended.
enum class FrameEnd : std::uint8_t {
    Gap,       // the circuit was idle for the rule's gap
    EndByte,   // its last byte is the end byte
    Full,      // it reached the longest frame kept; the next byte starts another
    Interrupt, // the recording stopped or the walk ended
};

struct Frame {
    FrameCircuit circuit = FrameCircuit::D1;
    std::uint64_t firstMp = 0, lastMp = 0; // places in the file of the first and last byte
    double startTime = 0.0, endTime = 0.0; // their stamps (days since 1899-12-30, local)
    std::uint8_t levelsAtStart = 0;        // LevelBit on the first byte's MP
    std::vector<std::uint8_t> bytes;
    std::vector<FrameError> errors;    // in MP order
    std::vector<SignalChange> lineChanges; // changes on the MPs from firstMp to lastMp
    FrameEnd end = FrameEnd::Gap;
};

} // namespace kestrel
