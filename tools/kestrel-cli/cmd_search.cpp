// kestrel-cli search: find the next MP with given data, signal levels, error flags, time or trigger mark.

#include <charconv>
#include <cstdio>

#include "cli_common.h"
#include "command.h"
#include "export/export_args.h"
#include "export/recording_check.h"
#include "present/byte_text.h"
#include "search/search.h"
#include "search/search_args.h"
#include "search/search_time.h"

namespace {

constexpr const char *kUsage =
    "usage: kestrel-cli search FILE.ksr CRITERION [--from MP] [--backward]\n"
    "\n"
    "CRITERION is one of:\n"
    "  --data HEX --d1 --d2   a byte sequence on D1 and/or D2 (\"41 42\"; 00 cannot be searched)\n"
    "  --text TEXT --d1 --d2  the same typed as text with caret escapes (\"OK^M^J\", \"\\^\" for ^)\n"
    "  --signal S1=1,M2=0     levels that must all hold (S1 M1 S2 M2 M5 M3, 1 high, 0 low)\n"
    "  --error PE=1,FE=0      flags that must all hold on one port (PE FE LE)\n"
    "  --time \"YYYY-MM-DD hh:mm:ss[.ffffff]\"  the first MP later (backward: earlier) than that\n"
    "  --trigger N            the mark of trigger number N\n"
    "\n"
    "The search starts at the MP after (--backward: before) --from; without --from\n"
    "it covers the whole recording. Prints the MP number found, or the not-found\n"
    "text with exit code 1.\n"
    "  --language de|en       language of the messages (default from LANG)\n";

bool parseMp(const std::string &s, std::int64_t &v)
{
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    return !s.empty() && r.ec == std::errc() && r.ptr == s.data() + s.size() && v >= 0;
}

int runSearch(const std::vector<std::string> &args)
{
    using namespace kestrel;
    auto usage = [](const std::string &error) { return cli::UsageError("search", error, kUsage); };
    std::string input, error;
    SearchCriteria c;
    int kinds = 0;
    bool backward = false;
    std::int64_t from = -1;
    bool haveFrom = false;
    int lang = cli::LanguageFromEnvironment();
    for (std::size_t k = 0; k < args.size(); ++k) {
        const std::string &a = args[k];
        std::string v;
        auto value = [&]() {
            if (k + 1 >= args.size())
                return false;
            v = args[++k];
            return true;
        };
        if (a == "-h" || a == "--help") {
            std::fputs(kUsage, stdout);
            return cli::kExitOk;
        } else if (a == "--d1") {
            c.data.d1 = true;
        } else if (a == "--d2") {
            c.data.d2 = true;
        } else if (a == "--backward") {
            backward = true;
        } else if (a == "--data" || a == "--text" || a == "--signal" || a == "--error" || a == "--time" || a == "--trigger" ||
                   a == "--from" || a == "--language") {
            if (!value())
                return usage("option " + a + " needs a value");
            if (a == "--data" || a == "--text") {
                c.kind = SearchKind::Data;
                ++kinds;
                // Typed text goes through the same conversion as the search window's text field.
                const std::string hex = a == "--text" ? StrToHexWithControl(Utf8ToByteString(v)) : v;
                if (a == "--text" && hex.empty())
                    return usage("the text '" + v + "' gives no bytes to search for");
                if (!ParseHexPattern(hex, c.data.pattern, error))
                    return usage(a == "--text" ? "the text '" + v + "' holds a byte 00, which cannot be searched for"
                                               : error);
            } else if (a == "--signal") {
                c.kind = SearchKind::Signal;
                ++kinds;
                if (!ParseSignalCriteria(v, c.signal, error))
                    return usage(error);
            } else if (a == "--error") {
                c.kind = SearchKind::Error;
                ++kinds;
                if (!ParseErrorCriteria(v, c.error, error))
                    return usage(error);
            } else if (a == "--time") {
                c.kind = SearchKind::DateTime;
                ++kinds;
                const auto t = ParseSearchDateTime(v);
                if (!t)
                    return usage("malformed time '" + v + "': expected \"YYYY-MM-DD hh:mm:ss[.ffffff]\"");
                c.dateTime = *t;
            } else if (a == "--trigger") {
                c.kind = SearchKind::TriggerPoint;
                ++kinds;
                std::int64_t n = 0;
                // Triggers are numbered from 1; every MP that is not a trigger mark carries 0.
                if (!parseMp(v, n) || n < 1 || n > 255)
                    return usage("--trigger takes a trigger number 1 to 255, not '" + v + "'");
                c.triggerNumber = static_cast<int>(n);
            } else if (a == "--from") {
                if (!parseMp(v, from))
                    return usage("--from takes an MP number, not '" + v + "'");
                haveFrom = true;
            } else {
                const auto l = ParseLanguage(v);
                if (!l)
                    return usage("--language takes de or en, not '" + v + "'");
                lang = *l;
            }
        } else if (!a.empty() && a[0] == '-') {
            return usage("unknown option " + a);
        } else if (input.empty()) {
            input = a;
        } else {
            return usage("more than one recording named ('" + input + "', '" + a + "')");
        }
    }
    if (input.empty())
        return usage("no recording named");
    if (kinds != 1)
        return usage(kinds == 0 ? "no criterion given" : "give exactly one criterion");
    if (c.kind == SearchKind::Data && !c.data.d1 && !c.data.d2)
        return usage(cli::MessageText(SearchText::NoLineSelected, lang) + " (--d1, --d2)");

    RecordReader reader;
    if (!OpenRecording(reader, input, error))
        return cli::Fail("search", error, cli::kExitFailure);
    const auto count = static_cast<std::int64_t>(reader.recordCount());
    if (haveFrom && from >= count)
        return cli::Fail("search",
                         "--from " + std::to_string(from) + " lies outside the recording (MPs 0 to " +
                             std::to_string(count - 1) + ")",
                         cli::kExitUsage);

    SearchRequest r;
    r.criteria = c;
    r.direction = backward ? -1 : 1;
    // Without --from the walk covers every MP: it starts just outside the file.
    r.position = haveFrom ? from : (backward ? count : -1);
    r.minimum = -1;
    r.maximum = count;
    const SearchOutcome o = RunSearch(reader, r);
    switch (o.status) {
    case SearchStatus::Found:
        std::printf("%lld\n", static_cast<long long>(o.mp));
        return cli::kExitOk;
    case SearchStatus::NotFound:
        std::printf("%s\n", cli::MessageText(o.messageNo, lang).c_str());
        return cli::kExitNotFound;
    case SearchStatus::NothingToSearch:
        return usage(cli::MessageText(o.messageNo, lang));
    case SearchStatus::Stopped:
        break;
    }
    return cli::kExitFailure;
}

const kestrel::cli::Registration reg({"search", "find data, levels, errors, a time or a trigger mark", runSearch});

} // namespace
