#include "report/report_lines.h"

#include <filesystem>
#include <system_error>

#include "base/string_table.h"
#include "export/export_options.h"
#include "present/grid/grid_layout.h"
#include "present/mark_text.h"
#include "report/report_texts.h"

namespace kestrel::report {

namespace {

std::string Replace(std::string text, std::string_view marker, const std::string &value)
{
    if (const auto at = text.find(marker); at != std::string::npos)
        text.replace(at, marker.size(), value);
    return text;
}

std::string Arg(int number, int lang, const std::string &a, const std::string &b = {})
{
    return Replace(Replace(StrIn(number, lang), "%1", a), "%2", b);
}

// 1234567 -> "1 234 567": counts of a long recording read at a glance in either language.
std::string Grouped(std::uint64_t v)
{
    std::string digits = std::to_string(v), out;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            out += ' ';
        out += digits[i];
    }
    return out;
}

char ParityLetter(int parity)
{
    static constexpr char kLetters[] = {'N', 'O', 'E', 'M', 'S'};
    return parity >= 0 && parity < 5 ? kLetters[parity] : '?';
}

void AddField(std::vector<TextLine> &lines, int label, int lang, std::string value)
{
    if (!value.empty())
        lines.push_back({LineKind::Field, StrIn(label, lang), std::move(value)});
}

} // namespace

std::vector<TextLine> HeaderLines(const ReportRequest &rq)
{
    const int lang = rq.lang;
    const ReportHeader &h = rq.header;
    std::vector<TextLine> lines;
    lines.push_back({LineKind::Title, h.title.empty() ? StrIn(txt::kReport, lang) : h.title, {}});
    AddField(lines, txt::kAuthor, lang, h.author);
    AddField(lines, txt::kCompany, lang, h.company);
    AddField(lines, txt::kCustomer, lang, h.customer);
    bool first = true;
    for (const std::string &line : h.description) {
        lines.push_back({LineKind::Field, first ? StrIn(txt::kDescription, lang) : std::string(), line});
        first = false;
    }
    return lines;
}

std::vector<TextLine> DetailLines(const ReportRequest &rq, const RecordingFacts &rec, const RangeFacts &range)
{
    const int lang = rq.lang;
    std::vector<TextLine> lines;
    lines.push_back({LineKind::Heading, StrIn(txt::kDetails, lang), {}});
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(rq.recording, ec);
    AddField(lines, txt::kFile, lang, (ec ? rq.recording : absolute).lexically_normal().string());
    AddField(lines, txt::kSize, lang, Grouped(rec.fileSize) + " " + StrIn(txt::kBytes, lang));
    AddField(lines, txt::kMpCount, lang, Grouped(rec.mpCount));
    AddField(lines, txt::kRangeLabel, lang, Arg(txt::kRange, lang, std::to_string(rq.first), std::to_string(rq.last)));
    AddField(lines, txt::kFirstTime, lang, FormatDateTimeIso(rec.first.time));
    AddField(lines, txt::kLastTime, lang, FormatDateTimeIso(rec.last.time));
    for (const ReportPortSettings &port : rq.header.ports) {
        const std::string settings = Arg(txt::kPortSettings, lang, std::to_string(port.baud),
                                         std::to_string(port.dataBits));
        lines.push_back({LineKind::Field, Arg(txt::kPort, lang, port.name),
                         port.device + ", " +
                             Replace(Replace(settings, "%3", std::string(1, ParityLetter(port.parity))), "%4",
                                     std::to_string(port.stopBits))});
    }
    const MpRecord &last = rec.last;
    AddField(lines, txt::kCounters, lang,
             "D1 " + Grouped(last.count(Counter::D1)) + "   D2 " + Grouped(last.count(Counter::D2)) + "   PE " +
                 Grouped(last.count(Counter::PE)) + "   FE " + Grouped(last.count(Counter::FE)) + "   LE " +
                 Grouped(last.count(Counter::LE)));
    AddField(lines, txt::kLoadPeak, lang, std::to_string(last.loadPeak) + " %");
    AddField(lines, txt::kQuality, lang, std::to_string(last.quality) + " %");
    AddField(lines, txt::kMarks, lang, range.markCount == 0 ? StrIn(txt::kNone, lang) : Grouped(range.markCount));
    for (const MarkEntry &m : range.marks) {
        MpRecord mp;
        mp.time = m.time;
        mp.markCode = m.code;
        mp.markKind = m.kind;
        mp.markExtra = m.extra;
        lines.push_back({LineKind::Field, "  MP " + std::to_string(m.mp),
                         FormatDateTimeIso(m.time) + "   " + MarkText(mp, lang)});
    }
    if (range.markCount > range.marks.size())
        lines.push_back({LineKind::Field, {}, Arg(txt::kMoreMarks, lang, Grouped(range.markCount - range.marks.size()))});
    return lines;
}

std::vector<TextLine> SummaryLines(const ReportRequest &rq, const RangeFacts &range)
{
    const int lang = rq.lang;
    const int naming = rq.namingSet;
    std::vector<TextLine> lines;
    lines.push_back({LineKind::Heading, StrIn(txt::kSummary, lang), {}});
    AddField(lines, txt::kCharacters, lang,
             std::string(grid::CircuitName(false, naming)) + " " + Grouped(range.d1) + "   " +
                 grid::CircuitName(true, naming) + " " + Grouped(range.d2));
    AddField(lines, txt::kErrors, lang,
             "PE " + Grouped(range.pe) + "   FE " + Grouped(range.fe) + "   LE " + Grouped(range.le));
    std::string changes;
    std::uint64_t total = 0;
    for (std::size_t s = 0; s < 6; ++s) {
        total += range.signalChanges[s];
        changes += std::string(s ? "   " : "") + CircuitName(static_cast<Circuit>(s + 2), naming) + " " + Grouped(range.signalChanges[s]);
    }
    AddField(lines, txt::kSignalChanges, lang, Grouped(total) + "  (" + changes + ")");
    AddField(lines, txt::kBusiestSecond, lang,
             range.busiestCount == 0
                 ? StrIn(txt::kNone, lang)
                 : FormatDateTimeIso(range.busiestSecond).substr(0, 19) + "   " +
                       Arg(txt::kCharacterCount, lang, Grouped(range.busiestCount)));
    return lines;
}

} // namespace kestrel::report
