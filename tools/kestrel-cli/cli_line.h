#pragma once
// Options of the commands that need the line settings: record (the ports'),
// and frames and export (the settings a recording was made with, which the
// record file does not keep: they give the character time that frames are
// cut by), and the frame rule itself (--gap, --end-byte).

#include <optional>
#include <string>

#include "capture/capture.h"
#include "cli_common.h"
#include "export/capture_frame_texts.h"
#include "frames/frame_rules.h"
#include "ports/port_support.h"
#include "ports/scenario.h"

namespace kestrel::cli {

struct LineOptionHandles {
    CLI::Option *baud, *dataBits, *parity, *stopBits;
};

// The rules a baud rate and data bits must meet, on the command line and in an environment.
inline const CLI::Validator kBaudRule = WholeNumber(50L, 20'000'000L);
inline const CLI::Validator kDataBitsRule = WholeNumber(5L, 8L);

inline LineOptionHandles AddLineSettings(CLI::App &cmd, PortComboTexts &texts)
{
    LineOptionHandles h{};
    h.baud = cmd.add_option("--baud", texts.baud, "baud rate (default 9600)")->type_name("50..20000000")->check(kBaudRule);
    h.dataBits = cmd.add_option("--data-bits", texts.dataBits, "data bits (default 8)")->type_name("5..8")->check(kDataBitsRule);
    h.parity = cmd.add_option("--parity", texts.parity, "none, even, odd, mark or space (default N)")
                   ->type_name("N|E|O|M|S")
                   ->transform(CLI::IsMember({"N", "E", "O", "M", "S"}, CLI::ignore_case).description(""));
    h.stopBits = cmd.add_option("--stop-bits", texts.stopBits, "stop bits (default 1)")
                     ->type_name("1|1.5|2")
                     ->check(CLI::IsMember({"1", "1.5", "2"}).description(""));
    return h;
}

struct FrameOptions {
    PortComboTexts line;
    std::optional<double> gapChars;
    std::optional<std::uint8_t> endByte;
};

// A number of character times above 0, at most 10^6.
inline const CLI::Validator kGapRule = PositiveNumber(kMaxGapChars, "character times");

inline void AddFrameOptions(CLI::App &cmd, FrameOptions &o)
{
    AddLineSettings(cmd, o.line);
    cmd.add_option_function<std::string>(
           "--gap",
           [&o](const std::string &text) { o.gapChars = ParseGapChars(text); },
           "idle character times that end a frame (default 3.5, and at least 1.75 ms above 19200 baud)")
        ->type_name("N")
        ->check(kGapRule);
    cmd.add_option_function<std::string>(
           "--end-byte",
           [&o](const std::string &text) {
               o.endByte = ParseEndByte(text);
               if (!o.endByte)
                   throw CLI::ValidationError("--end-byte", "takes one byte (0A, <ETX>, '\\n'), not '" + text + "'");
           },
           "a byte that ends a frame as well: hex (0A), a control name (<ETX>) or quoted ('\\n')")
        ->type_name("BYTE");
}

// The frame rule of the options: Modbus RTU's gap unless --gap, the end byte if given.
inline FrameRules RulesOf(const FrameOptions &o, PortSettings *settings = nullptr)
{
    const PortSettings s = SettingsFromTexts(o.line);
    if (settings)
        *settings = s;
    return LineFrameRules(s, o.gapChars, o.endByte);
}

} // namespace kestrel::cli
