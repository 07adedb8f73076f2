#pragma once
// The texts of the line settings — the values of the port settings boxes and
// of the environment's keys — read one way wherever they are read: capture and
// the environment save agree on what a text means, and on which texts mean
// nothing (then the line runs the default, and capture says so).

#include <optional>
#include <string_view>

#include "ports/port_settings.h"

namespace kestrel {

// A whole number above 0; blanks around it are allowed.
[[nodiscard]] std::optional<long> ParseBaudText(std::string_view text);
// 5, 6, 7 or 8.
[[nodiscard]] std::optional<int> ParseDataBitsText(std::string_view text);
// N, O, E, M or S, in either case.
[[nodiscard]] std::optional<Parity> ParseParityText(std::string_view text);
// "1", "1.5" or "2", as chosen (the line takes "1" with five data bits as 1.5).
enum class StopBitsChoice { One, OnePointFive, Two };
[[nodiscard]] std::optional<StopBitsChoice> ParseStopBitsText(std::string_view text);

} // namespace kestrel
