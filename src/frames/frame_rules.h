#pragma once
// When a circuit's bytes make a frame: an idle gap of at least gapChars
// character times ends it (never shorter than minGapSeconds), and so does the
// end byte when one is given.
//
// The idle gap between two bytes is the time between the end of the first
// character and the end of the second, less one character time: MPs are
// stamped when a character is complete, so two bytes back to back lie one
// character time apart and are 0 apart in idle time.

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kestrel {

// Time stamps are kept as fractions of a day, good to about a microsecond in
// this century: gaps that differ from the rule's by less count as equal.
inline constexpr double kStampTolerance = 2e-6;

// The longest frame kept: a line that never falls idle still gives frames.
inline constexpr std::size_t kMaxFrameBytes = 65536;

struct FrameRules {
    double charSeconds = 10.0 / 9600.0; // Tchar: 9600 baud, 8N1
    double gapChars = 3.5;
    double minGapSeconds = 0.0;
    std::optional<std::uint8_t> endByte;
    std::size_t maxBytes = kMaxFrameBytes;

    // The idle time that ends a frame.
    [[nodiscard]] double gapSeconds() const
    {
        const double byChars = gapChars * charSeconds;
        return byChars > minGapSeconds ? byChars : minGapSeconds;
    }
};

// Character time in seconds of bitsPerCharacter bits (start, data, parity, stop) at baud.
[[nodiscard]] double CharacterSeconds(long baud, double bitsPerCharacter);

// Modbus RTU's rule: 3.5 character times, but above 19,200 baud never less than 1.75 ms.
// A gapChars given by the user replaces the 3.5 and drops the floor.
[[nodiscard]] FrameRules ModbusRtuRules(long baud, double bitsPerCharacter, std::optional<double> gapChars = {});

} // namespace kestrel
