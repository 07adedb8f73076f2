#pragma once
// Text forms of export and dump settings that kestrel-cli takes as one value each:
//
//   ranges   "FIRST:LAST", "FIRST:" (to the end), ":LAST" or a single MP "N"
//   columns  the dialog's check boxes, comma-separated:
//            mark, mp, time, d1, d2, hex, dec, oct, bin, s1, m1, s2, m2, m5, m3, pfl, desc
//            Names alone switch on exactly those columns; "all" switches on every one;
//            a name with a leading '-' switches one off ("-hex,-bin": all but those two).
//
// Each parser returns the value, or kMalformedExportValue with the whole message as detail.

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/result.h"
#include "export/export_options.h"

namespace kestrel {

// A text the command line cannot use. The table has no text for it: only kestrel-cli parses
// these forms, it speaks English like its option names, and the detail is the whole message.
inline constexpr int kMalformedExportValue = 8590;

struct MpRangeText {
    std::optional<std::uint64_t> first;
    std::optional<std::uint64_t> last;
};

[[nodiscard]] Expected<MpRangeText> ParseMpRange(std::string_view text);
[[nodiscard]] Expected<ExportColumns> ParseColumnList(std::string_view list);

} // namespace kestrel
