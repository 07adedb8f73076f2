#include "export/csv_line.h"

#include <optional>

#include "export/mark_text.h"
#include "present/byte_render.h"
#include "resources/string_table.h"

namespace kestrel {
namespace {

void appendField(std::string &out, std::string_view text, const ExportOptions &o)
{
    AppendFramed(out, text, o.frame);
    out += o.separator;
}

void appendLatin1(std::string &out, std::uint8_t byte)
{
    if (byte < 0x80) {
        out += static_cast<char>(byte);
    } else {
        out += static_cast<char>(0xC0 | (byte >> 6));
        out += static_cast<char>(0x80 | (byte & 0x3F));
    }
}

void appendColumn(std::string &out, std::uint8_t byte, char frame)
{
    if (frame == kNoFrame) {
        appendLatin1(out, byte);
        return;
    }
    out += frame;
    if (byte == static_cast<std::uint8_t>(frame))
        out += frame; // a frame character inside the frame is doubled
    appendLatin1(out, byte);
    out += frame;
}

// Raw and number columns of one data circuit. An MP without a byte on the
// circuit leaves them empty (framed), so the columns stay aligned.
void appendDataColumns(std::string &out, bool valid, std::uint8_t byte, const ExportOptions &o)
{
    const ExportColumns &c = o.columns;
    if (!valid) {
        const int n = 1 + c.hex + c.dec + c.oct + c.bin;
        for (int k = 0; k < n; ++k)
            appendField(out, {}, o);
        return;
    }
    appendColumn(out, byte, o.frame);
    out += o.separator;
    if (c.hex)
        appendField(out, ByteToHex(byte), o);
    if (c.dec)
        appendField(out, ByteToDec(byte), o);
    if (c.oct)
        appendField(out, ByteToOct(byte), o);
    if (c.bin)
        appendField(out, ByteToBin(byte), o);
}

void appendErrorLetters(std::string &out, std::uint8_t pe, std::uint8_t fe, std::uint8_t le, const ExportOptions &o)
{
    std::string letters;
    const std::uint8_t flags[3] = {pe, fe, le};
    for (int k = 0; k < 3; ++k)
        if (flags[k])
            letters += StrIn(ExportText::ParityLetter + k, o.langOffset);
    appendField(out, letters, o);
}

} // namespace

const char *CircuitName(Circuit c, int naming)
{
    static constexpr const char *names[2][8] = {
        {"D1", "D2", "S1", "M1", "S2", "M2", "M5", "M3"},
        {"Tx", "Rx", "DTR", "DSR", "RTS", "CTS", "DCD", "RNG"},
    };
    return names[naming == 1 ? 1 : 0][static_cast<int>(c)];
}

void AppendFramed(std::string &out, std::string_view text, char frame)
{
    if (frame == kNoFrame) {
        out += text;
        return;
    }
    out += frame;
    for (char ch : text) {
        if (ch == frame)
            out += frame;
        out += ch;
    }
    out += frame;
}

std::string BuildCSVColumn(std::uint8_t byte, char frame)
{
    std::string out;
    appendColumn(out, byte, frame);
    return out;
}

std::string BuildCSVHeadLine(const ExportOptions &o)
{
    const ExportColumns &c = o.columns;
    std::string line;
    if (c.prefix)
        appendField(line, StrIn(ExportText::MarkTrigger, o.langOffset), o);
    if (c.mpNo)
        appendField(line, StrIn(ExportText::EventNo, o.langOffset), o);
    if (c.timestamp) {
        const int mode = o.timeMode >= 0 && o.timeMode <= 2 ? o.timeMode : 0;
        appendField(line, StrIn(ExportText::DateTime, o.langOffset) + StrIn(ExportText::TimeModeSuffix + mode, o.langOffset), o);
    }
    for (Circuit circuit : {Circuit::D1, Circuit::D2}) {
        if (!(circuit == Circuit::D1 ? c.d1 : c.d2))
            continue;
        const std::string name = CircuitName(circuit, o.naming);
        appendField(line, name + " [RAW]", o);
        if (c.hex)
            appendField(line, name + " [HEX]", o);
        if (c.dec)
            appendField(line, name + " [DEC]", o);
        if (c.oct)
            appendField(line, name + " [OCT]", o);
        if (c.bin)
            appendField(line, name + " [BIN]", o);
    }
    const bool lines[6] = {c.s1, c.m1, c.s2, c.m2, c.m5, c.m3};
    for (int k = 0; k < 6; ++k)
        if (lines[k])
            appendField(line, CircuitName(static_cast<Circuit>(static_cast<int>(Circuit::S1) + k), o.naming), o);
    if (c.pfl) {
        // No blank before "[PFL]", unlike the data suffixes: the column names have always read so.
        if (c.d1)
            appendField(line, std::string(CircuitName(Circuit::D1, o.naming)) + "[PFL]", o);
        if (c.d2)
            appendField(line, std::string(CircuitName(Circuit::D2, o.naming)) + "[PFL]", o);
    }
    if (c.description)
        appendField(line, StrIn(ExportText::Description, o.langOffset), o);
    return line;
}

void AppendCSVFileLine(std::string &out, const MpRecord &mp, const ExportOptions &o, ExportTimeState &time)
{
    const ExportColumns &c = o.columns;
    if (c.prefix)
        appendField(out, MarkText(mp, o.langOffset), o);
    if (c.mpNo)
        appendField(out, std::to_string(mp.number), o);
    time.noteRead(mp);
    if (c.timestamp) {
        std::string &text = time.scratch;
        text.clear();
        AppendExportTime(text, mp.time, o.timeMode, time);
        appendField(out, text, o);
    }
    time.previous = mp.time;
    if (c.d1)
        appendDataColumns(out, mp.d1Valid != 0, mp.d1, o);
    if (c.d2)
        appendDataColumns(out, mp.d2Valid != 0, mp.d2, o);
    const std::uint8_t levels[6] = {mp.s1, mp.m1, mp.s2, mp.m2, mp.m5, mp.m3};
    const bool lines[6] = {c.s1, c.m1, c.s2, c.m2, c.m5, c.m3};
    for (int k = 0; k < 6; ++k)
        if (lines[k])
            appendField(out, levels[k] ? "1" : "0", o);
    if (c.pfl) {
        if (c.d1)
            appendErrorLetters(out, mp.peD1, mp.feD1, mp.leD1, o);
        if (c.d2)
            appendErrorLetters(out, mp.peD2, mp.feD2, mp.leD2, o);
    }
    if (c.description) {
        const auto d1 = mp.d1Valid ? std::optional<std::uint8_t>(mp.d1) : std::nullopt;
        const auto d2 = mp.d2Valid ? std::optional<std::uint8_t>(mp.d2) : std::nullopt;
        appendField(out, JoinDescriptions(d1, d2, CharMode::Ascii), o);
    }
}

std::string BuildCSVFileLine(const MpRecord &mp, const ExportOptions &o, ExportTimeState &time)
{
    std::string line;
    AppendCSVFileLine(line, mp, o, time);
    return line;
}

} // namespace kestrel
