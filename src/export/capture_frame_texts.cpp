#include "export/capture_frame_texts.h"

#include <charconv>

#include "ports/port_support.h"
#include "ports/scenario.h"

namespace kestrel {

namespace {

std::string_view Trimmed(std::string_view t)
{
    while (!t.empty() && (t.front() == ' ' || t.front() == '\t'))
        t.remove_prefix(1);
    while (!t.empty() && (t.back() == ' ' || t.back() == '\t'))
        t.remove_suffix(1);
    return t;
}

} // namespace

std::optional<double> ParseGapChars(std::string_view text)
{
    text = Trimmed(text);
    double d = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), d);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size() || !(d > 0) || d > kMaxGapChars)
        return std::nullopt;
    return d;
}

std::optional<std::uint8_t> ParseEndByte(std::string_view text)
{
    std::string why;
    const auto bytes = ParseByteItems(Trimmed(text), why);
    if (!bytes || bytes->size() != 1)
        return std::nullopt;
    return bytes->front();
}

std::optional<PortSettings> LineSettingsOf(const PortComboTexts &texts, std::string &bad)
{
    bad.clear();
    const PortSettings s = SettingsFromTexts(texts, &bad);
    if (bad.empty() && (s.baud < 50 || s.baud > 20'000'000))
        bad = "baud '" + texts.baud + "'";
    if (!bad.empty())
        return std::nullopt;
    return s;
}

FrameRules LineFrameRules(const PortSettings &line, std::optional<double> gapChars, std::optional<std::uint8_t> endByte)
{
    FrameRules r = ModbusRtuRules(line.baud, CharacterBitsTimesTwo(line) / 2.0, gapChars);
    r.endByte = endByte;
    return r;
}

Expected<PcapExportOptions> CaptureOptionsOf(const CaptureFrameTexts &texts, bool pcapng)
{
    Expected<PcapExportOptions> out;
    std::string bad;
    const auto line = LineSettingsOf(texts.line, bad);
    if (!line) {
        out.result = Result::Fail(CaptureFrameMsg::BadLine, bad);
        return out;
    }
    std::optional<double> gap;
    if (!Trimmed(texts.gap).empty() && !(gap = ParseGapChars(texts.gap))) {
        out.result = Result::Fail(CaptureFrameMsg::BadGap, texts.gap);
        return out;
    }
    std::optional<std::uint8_t> endByte;
    if (!Trimmed(texts.endByte).empty() && !(endByte = ParseEndByte(texts.endByte))) {
        out.result = Result::Fail(CaptureFrameMsg::BadEndByte, texts.endByte);
        return out;
    }
    const std::string_view dissector = Trimmed(texts.dissector);
    if (pcapng && !dissector.empty() && !ValidDissectorName(dissector)) {
        out.result = Result::Fail(CaptureFrameMsg::BadDissector, texts.dissector);
        return out;
    }
    out.value.pcapng = pcapng;
    out.value.rules = LineFrameRules(*line, gap, endByte);
    if (pcapng)
        out.value.dissector = std::string(dissector);
    return out;
}

} // namespace kestrel
