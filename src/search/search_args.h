#pragma once
// Text forms of the search criteria for the command line:
//   levels  "S1=1,M2=0"  (S1 M1 S2 M2 M5 M3, or DTR DSR RTS CTS DCD RNG/RI; 1 high, 0 low)
//   errors  "PE=1,FE=0"  (PE FE LE, or P F L; 1 set, 0 not set)
//   data    "41 42 0D"   hex digit pairs, blanks allowed between pairs
// Names are matched without regard to case; a line not named is ignored.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "search/search_criteria.h"

namespace kestrel {

[[nodiscard]] bool ParseSignalCriteria(std::string_view text, SignalCriteria &out, std::string &error);
[[nodiscard]] bool ParseErrorCriteria(std::string_view text, ErrorCriteria &out, std::string &error);
// Rejects odd digit counts, non-hex characters and the byte 00 (which cannot be searched for).
[[nodiscard]] bool ParseHexPattern(std::string_view text, std::vector<std::uint8_t> &out, std::string &error);

} // namespace kestrel
