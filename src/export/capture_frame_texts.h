#pragma once
// The frame options of a capture file as they are typed: the line settings the
// recording was made with (a record file does not keep them; their character
// time cuts the frames), the idle gap in character times, an end byte and the
// dissector of the second interface. The export window and kestrel-cli read
// them here alike, so both write the same capture file.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "capture/capture.h"
#include "export/pcap_export.h"
#include "frames/frame_rules.h"
#include "ports/port_settings.h"

namespace kestrel {

// Message numbers of what cannot be read (each takes the text as %1).
namespace CaptureFrameMsg {
inline constexpr int BadGap = 7720;
inline constexpr int BadEndByte = 7721;
inline constexpr int BadDissector = 7722;
inline constexpr int BadLine = 7723;
} // namespace CaptureFrameMsg

// The widest frame gap taken, in character times.
inline constexpr double kMaxGapChars = 1e6;

struct CaptureFrameTexts {
    PortComboTexts line;
    std::string gap;       // character times; empty: Modbus RTU's 3.5, at least 1.75 ms above 19,200 baud
    std::string endByte;   // hex (0A), a control name (<ETX>) or quoted ('\n'); empty: none
    std::string dissector; // Wireshark's name (mbrtu, dnp3, ...); empty: no second interface
};

// A number above 0 and at most kMaxGapChars, the whole text.
[[nodiscard]] std::optional<double> ParseGapChars(std::string_view text);
// Exactly one byte.
[[nodiscard]] std::optional<std::uint8_t> ParseEndByte(std::string_view text);
// Baud 50..20,000,000 and data bits, parity and stop bits a port takes; else nothing,
// and `bad` names what could not be read.
[[nodiscard]] std::optional<PortSettings> LineSettingsOf(const PortComboTexts &texts, std::string &bad);
// Modbus RTU's gap for the line unless gapChars is given, and the end byte.
[[nodiscard]] FrameRules LineFrameRules(const PortSettings &line, std::optional<double> gapChars,
                                        std::optional<std::uint8_t> endByte);

// All of it at once into the options of a capture file (pcapng, or classic pcap, which
// holds no second interface and so ignores the dissector); the first text that cannot be
// read fails with its message number and the text.
[[nodiscard]] Expected<PcapExportOptions> CaptureOptionsOf(const CaptureFrameTexts &texts, bool pcapng);

} // namespace kestrel
