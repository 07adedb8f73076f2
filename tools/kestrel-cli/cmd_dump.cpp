// kestrel-cli dump: the vertical view of a recording as text lines for the terminal.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <optional>
#include <vector>

#include "cli_common.h"
#include "command.h"
#include "export/csv_line.h"
#include "export/export_args.h"
#include "export/export_run.h"
#include "present/mark_text.h"
#include "record/recording_check.h"
#include "present/byte_render.h"
#include "present/time_text.h"

namespace {

// Width on a terminal: code points, not bytes.
std::size_t displayWidth(const std::string &s)
{
    std::size_t n = 0;
    for (unsigned char c : s)
        n += (c & 0xC0) != 0x80;
    return n;
}

void pad(std::string &line, const std::string &field, std::size_t width)
{
    line += field;
    for (std::size_t w = displayWidth(field); w < width; ++w)
        line += ' ';
    line += "  ";
}

// Control bytes that a glyph table leaves as themselves must not reach the
// terminal raw (a CR or ESC would garble the output): show them as blanks.
std::string printable(std::string s)
{
    for (char &c : s)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = ' ';
    return s;
}

struct DumpOptions {
    std::string input;
    std::optional<kestrel::MpRangeText> rangeText;
    int charMode = kestrel::CharMode::Ascii;
    int overlay = kestrel::Overlay::None;
    int timeMode = kestrel::TimeMode::Absolute;
    int naming = 0;
    int lang = kestrel::kLangEnglish;
};

int runDump(const DumpOptions &o)
{
    using namespace kestrel;
    const std::string &input = o.input;
    const auto &rangeText = o.rangeText;
    const int charMode = o.charMode, overlay = o.overlay, timeMode = o.timeMode, naming = o.naming, lang = o.lang;
    std::string error;
    RecordReader reader;
    if (!OpenRecording(reader, input, error))
        return cli::Fail("dump", error, cli::kExitFailure);
    const std::uint64_t count = reader.recordCount();
    std::uint64_t first = 0, last = count - 1;
    if (rangeText) {
        first = rangeText->first.value_or(0);
        last = rangeText->last.value_or(count - 1);
    }
    if (first > last || last >= count)
        return cli::Fail("dump",
                         "the range " + std::to_string(first) + ":" + std::to_string(last) +
                             " lies outside the recording (MPs 0 to " + std::to_string(count - 1) + ")",
                         cli::kExitUsage);

    // The time column follows the export's rules: base from MP 1, delta from the MP before the range.
    ExportTimeState time(TimeLocale::System(), lang);
    SeedExportTime(reader, {first, last}, time);

    const std::size_t numberWidth = std::max<std::size_t>(2, std::to_string(last).size());
    const std::size_t byteWidth = charMode == CharMode::Bin ? 8 : 3;
    const std::size_t markWidth = 16;
    std::size_t timeWidth = 0;
    {
        // The head line is as wide as a time text of the chosen mode.
        std::string sample;
        time.formatter.AppendText(sample, timeMode, 45000.5, 45000.0, 45000.0);
        timeWidth = displayWidth(sample);
    }
    std::string line;
    pad(line, "MP", numberWidth);
    pad(line, cli::MessageText(ColumnText::MarkTrigger, lang), markWidth);
    pad(line, StrIn(ColumnText::DateTime, lang) + StrIn(ColumnText::TimeModeSuffix + timeMode, lang), timeWidth);
    for (int c = 0; c < 8; ++c)
        pad(line, CircuitName(static_cast<Circuit>(c), naming), c < 2 ? byteWidth : 3);
    pad(line, std::string(CircuitName(Circuit::D1, naming)) + "Err", 5);
    pad(line, std::string(CircuitName(Circuit::D2, naming)) + "Err", 5);
    line += StrIn(ColumnText::Description, lang);
    std::puts(line.c_str());

    std::vector<MpRecord> block;
    for (std::uint64_t i = first; i <= last;) {
        const std::uint64_t want = std::min<std::uint64_t>(4096, last - i + 1);
        const std::uint64_t got = reader.readBlock(i, want, block);
        for (std::uint64_t k = 0; k < block.size(); ++k) {
            const MpRecord &r = block[k];
            const std::uint64_t index = i + k; // the place, not the 32-bit number that wraps
            line.clear();
            pad(line, std::to_string(index), numberWidth);
            pad(line, MarkText(r, lang), markWidth);
            std::string t;
            AppendTimeOfNext(t, r, index, timeMode, time);
            pad(line, t, timeWidth);
            pad(line, r.d1Valid ? printable(RenderByteText(r.d1, charMode, overlay)) : "", byteWidth);
            pad(line, r.d2Valid ? printable(RenderByteText(r.d2, charMode, overlay)) : "", byteWidth);
            for (std::uint8_t level : {r.s1, r.m1, r.s2, r.m2, r.m5, r.m3})
                pad(line, level ? "1" : "0", 3);
            for (const std::string &letters :
                 {ErrorLetters(r.peD1, r.feD1, r.leD1, lang), ErrorLetters(r.peD2, r.feD2, r.leD2, lang)})
                pad(line, letters.empty() ? "-" : letters, 5);
            const auto d1 = r.d1Valid ? std::optional<std::uint8_t>(r.d1) : std::nullopt;
            const auto d2 = r.d2Valid ? std::optional<std::uint8_t>(r.d2) : std::nullopt;
            line += JoinDescriptions(d1, d2, charMode);
            while (!line.empty() && line.back() == ' ')
                line.pop_back();
            if (std::puts(line.c_str()) < 0)
                return cli::Fail("dump", "cannot write to standard output", cli::kExitFailure);
        }
        i += got;
        if (got < want)
            break; // the file was cut while we read it
    }
    return cli::kExitOk;
}

std::function<int()> declareDump(CLI::App &cmd)
{
    using namespace kestrel;
    auto o = std::make_shared<DumpOptions>();
    o->lang = cli::LanguageFromEnvironment();
    cmd.footer("Prints one line per MP: number, mark, time, D1, D2, the six levels, the\n"
               "error flags of D1 and D2 (P parity, F framing, L line) and the description.");
    cmd.add_option("FILE.ksr", o->input, "the recording")->required()->type_name("");
    cli::AddParsed(cmd, "--range", o->rangeText, ParseMpRange, "MPs to print (default all)")->type_name("FIRST:LAST");
    cli::AddCharMode(cmd, o->charMode);
    cli::AddControlMode(cmd, o->overlay);
    cli::AddTimeMode(cmd, o->timeMode);
    cli::AddLanguage(cmd, o->lang, "the head line and marks");
    cli::AddNaming(cmd, o->naming);
    return [o] { return runDump(*o); };
}

const kestrel::cli::Registration reg({"dump", "print a recording as text lines (the vertical view)", declareDump});

} // namespace
