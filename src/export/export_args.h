#pragma once
// The command-line form of an export's settings (kestrel-cli export):
//
//   FILE.ksr [-o OUT] [--format csv|raw] [--separator comma|semicolon|tab|space]
//   [--frame double|single|none] [--no-header] [--columns LIST]
//   [--range FIRST:LAST] [--time absolute|relative|delta] [--language de|en]
//   [--naming v24|rs232]
//
// LIST names the dialog's check boxes, comma-separated:
//   mark, mp, time, d1, d2, hex, dec, oct, bin, s1, m1, s2, m2, m5, m3, pfl, desc
// Names alone switch on exactly those columns; "all" switches on every one;
// a name with a leading '-' switches one off ("-hex,-bin": all but those two).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export/export_options.h"

namespace kestrel {

// "FIRST:LAST", "FIRST:" (to the end), ":LAST" or a single MP "N".
struct MpRangeText {
    std::optional<std::uint64_t> first;
    std::optional<std::uint64_t> last;
};

[[nodiscard]] bool ParseMpRange(std::string_view text, MpRangeText &out, std::string &error);
[[nodiscard]] bool ParseColumnList(std::string_view list, ExportColumns &out, std::string &error);

struct ExportCommandLine {
    std::string input;
    std::string output = "-"; // standard output
    ExportOptions options;
    std::optional<MpRangeText> range;
    bool help = false;
};

// False with error set for an unknown option, a missing or malformed value.
[[nodiscard]] bool ParseExportArgs(const std::vector<std::string> &args, ExportCommandLine &out, std::string &error);

// Shared by the commands: "de" / "en" to a language offset, "absolute"... to a time mode.
[[nodiscard]] std::optional<int> ParseLanguage(std::string_view text);
[[nodiscard]] std::optional<int> ParseTimeMode(std::string_view text);
// "v24" -> 0 (D1, D2, S1 ...), "rs232" -> 1 (Tx, Rx, DTR ...).
[[nodiscard]] std::optional<int> ParseNaming(std::string_view text);

} // namespace kestrel
