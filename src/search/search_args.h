#pragma once
// Text forms of the search criteria for the command line:
//   levels  "S1=1,M2=0"  (S1 M1 S2 M2 M5 M3, or DTR DSR RTS CTS DCD RNG/RI; 1 high, 0 low)
//   errors  "PE=1,FE=0"  (PE FE LE, or P F L; 1 set, 0 not set)
//   data    "41 42 0D"   hex digit pairs, blanks allowed between pairs
// Names are matched without regard to case; a line not named is ignored.
// Each parser returns the criterion, or a code with the whole message as detail.

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "search/search_criteria.h"

namespace kestrel {

// A criterion text that cannot be read. The table has no text for it: only kestrel-cli parses
// these forms, it speaks English like its option names, and the detail is the whole message.
inline constexpr int kMalformedSearchValue = 7302;

[[nodiscard]] Expected<SignalCriteria> ParseSignalCriteria(std::string_view text);
[[nodiscard]] Expected<ErrorCriteria> ParseErrorCriteria(std::string_view text);
// Rejects odd digit counts and non-hex characters; a pattern that is empty or holds the byte 00
// (which cannot be searched for) fails with SearchText::BadPattern, the window's text for it.
[[nodiscard]] Expected<std::vector<std::uint8_t>> ParseHexPattern(std::string_view text);

} // namespace kestrel
