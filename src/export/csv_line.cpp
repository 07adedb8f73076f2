#include "export/csv_line.h"

#include <charconv>
#include <optional>

#include "present/mark_text.h"
#include "present/byte_render.h"
#include "base/string_table.h"

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
        appendField(line, StrIn(ColumnText::MarkTrigger, o.langOffset), o);
    if (c.mpNo)
        appendField(line, StrIn(ColumnText::EventNo, o.langOffset), o);
    if (c.timestamp) {
        const int mode = o.timeMode >= 0 && o.timeMode <= 2 ? o.timeMode : 0;
        appendField(line, StrIn(ColumnText::DateTime, o.langOffset) + StrIn(ColumnText::TimeModeSuffix + mode, o.langOffset), o);
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
        appendField(line, StrIn(ColumnText::Description, o.langOffset), o);
    return line;
}

CsvLineWriter::CsvLineWriter(const ExportOptions &options) : o_(options)
{
    const ExportColumns &c = o_.columns;
    for (int b = 0; b < 256; ++b) {
        const auto byte = static_cast<std::uint8_t>(b);
        std::string &f = dataColumns_[b];
        appendColumn(f, byte, o_.frame);
        f += o_.separator;
        if (c.hex)
            appendField(f, ByteToHex(byte), o_);
        if (c.dec)
            appendField(f, ByteToDec(byte), o_);
        if (c.oct)
            appendField(f, ByteToOct(byte), o_);
        if (c.bin)
            appendField(f, ByteToBin(byte), o_);
    }
    appendField(emptyField_, {}, o_);
    const int n = 1 + c.hex + c.dec + c.oct + c.bin;
    for (int k = 0; k < n; ++k)
        emptyDataColumns_ += emptyField_;
    appendField(levelField_[0], "0", o_);
    appendField(levelField_[1], "1", o_);
    for (int m = 0; m < 8; ++m)
        appendField(errorField_[m], ErrorLetters(m & 1, m & 2, m & 4, o_.langOffset), o_);
}

void CsvLineWriter::append(std::string &out, const MpRecord &mp, std::uint64_t index, ExportTimeState &time) const
{
    const ExportColumns &c = o_.columns;
    if (c.prefix) {
        if (mp.markCode == 0)
            out += emptyField_;
        else
            appendField(out, MarkText(mp, o_.langOffset), o_);
    }
    if (c.mpNo) {
        char digits[24];
        const auto r = std::to_chars(digits, digits + sizeof digits, index);
        appendField(out, std::string_view(digits, static_cast<std::size_t>(r.ptr - digits)), o_);
    }
    if (c.timestamp) {
        std::string &text = time.scratch;
        text.clear();
        AppendTimeOfNext(text, mp, index, o_.timeMode, time);
        appendField(out, text, o_);
    } else {
        time.noteRead(mp, index);
        time.previous = mp.time;
    }
    // An MP without a byte on a checked circuit keeps its columns, empty, so the columns stay aligned.
    if (c.d1)
        out += mp.d1Valid ? dataColumns_[mp.d1] : emptyDataColumns_;
    if (c.d2)
        out += mp.d2Valid ? dataColumns_[mp.d2] : emptyDataColumns_;
    const std::uint8_t levels[6] = {mp.s1, mp.m1, mp.s2, mp.m2, mp.m5, mp.m3};
    const bool lines[6] = {c.s1, c.m1, c.s2, c.m2, c.m5, c.m3};
    for (int k = 0; k < 6; ++k)
        if (lines[k])
            out += levelField_[levels[k] ? 1 : 0];
    if (c.pfl) {
        if (c.d1)
            out += errorField_[(mp.peD1 ? 1 : 0) | (mp.feD1 ? 2 : 0) | (mp.leD1 ? 4 : 0)];
        if (c.d2)
            out += errorField_[(mp.peD2 ? 1 : 0) | (mp.feD2 ? 2 : 0) | (mp.leD2 ? 4 : 0)];
    }
    if (c.description) {
        const std::string_view n1 = mp.d1Valid ? ControlDescription(mp.d1, CharMode::Ascii) : std::string_view();
        const std::string_view n2 = mp.d2Valid ? ControlDescription(mp.d2, CharMode::Ascii) : std::string_view();
        if (n1.empty() && n2.empty()) {
            out += emptyField_;
        } else {
            std::string &text = time.scratch;
            text.assign(n1);
            if (!n1.empty() && !n2.empty())
                text += kDescriptionJoiner;
            text += n2;
            appendField(out, text, o_);
        }
    }
}

std::string BuildCSVFileLine(const MpRecord &mp, const ExportOptions &o, ExportTimeState &time)
{
    std::string line;
    CsvLineWriter(o).append(line, mp, mp.number, time);
    return line;
}

} // namespace kestrel
