// kestrel-cli search: find the next MP with given data, signal levels, error flags, time or trigger mark.

#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "cli_common.h"
#include "command.h"
#include "record/recording_check.h"
#include "present/byte_text.h"
#include "search/search.h"
#include "search/search_args.h"
#include "search/search_time.h"

namespace {

struct SearchOptions {
    std::string input;
    kestrel::SearchCriteria criteria;
    bool backward = false;
    std::optional<std::int64_t> from;
    int lang = kestrel::kLangEnglish;
};

int runSearch(const SearchOptions &o)
{
    using namespace kestrel;
    const SearchCriteria &c = o.criteria;
    const int lang = o.lang;
    if (c.kind == SearchKind::Data && !c.data.d1 && !c.data.d2)
        return cli::UsageError("search", cli::MessageText(SearchText::NoLineSelected, lang) + " (--d1, --d2)");

    std::string error;
    RecordReader reader;
    if (!OpenRecording(reader, o.input, error))
        return cli::Fail("search", error, cli::kExitFailure);
    const auto count = static_cast<std::int64_t>(reader.recordCount());
    if (o.from && *o.from >= count)
        return cli::Fail("search",
                         "--from " + std::to_string(*o.from) + " lies outside the recording (MPs 0 to " +
                             std::to_string(count - 1) + ")",
                         cli::kExitUsage);

    SearchRequest r;
    r.criteria = c;
    r.direction = o.backward ? -1 : 1;
    // Without --from the walk covers every MP: it starts just outside the file.
    r.position = o.from ? *o.from : (o.backward ? count : -1);
    r.minimum = -1;
    r.maximum = count;
    const SearchOutcome found = RunSearch(reader, r);
    switch (found.status) {
    case SearchStatus::Found:
        std::printf("%lld\n", static_cast<long long>(found.mp));
        return cli::kExitOk;
    case SearchStatus::NotFound:
        std::printf("%s\n", cli::MessageText(found.messageNo, lang).c_str());
        return cli::kExitNotFound;
    case SearchStatus::NothingToSearch:
        return cli::UsageError("search", cli::MessageText(found.messageNo, lang));
    case SearchStatus::Stopped:
        break;
    }
    return cli::kExitFailure;
}

std::function<int()> declareSearch(CLI::App &cmd)
{
    using namespace kestrel;
    auto o = std::make_shared<SearchOptions>();
    SearchCriteria &c = o->criteria;
    o->lang = cli::LanguageFromEnvironment();
    cmd.footer("The search starts at the MP after (--backward: before) --from; without --from\n"
               "it covers the whole recording. Prints the MP number found, or the not-found\n"
               "text with exit code 1.");
    cmd.add_option("FILE.ksr", o->input, "the recording")->required()->type_name("");

    CLI::App &criterion = *cmd.add_option_group("criterion", "exactly one of these");
    criterion.require_option(1);
    cli::AddParsed(criterion, "--data", c.data.pattern, ParseHexPattern,
                   "a byte sequence on D1 and/or D2 (\"41 42\"; 00 cannot be searched)")
        ->type_name("HEX")
        ->each([&c](const std::string &) { c.kind = SearchKind::Data; });
    // Typed text goes through the same conversion as the search window's text field.
    const auto textPattern = [](const std::string &text) {
        const std::string hex = StrToHexWithControl(Utf8ToByteString(text));
        auto pattern = ParseHexPattern(hex);
        if (!pattern)
            pattern.result.detail = hex.empty() ? "the text '" + text + "' gives no bytes to search for"
                                                : "the text '" + text + "' holds a byte 00, which cannot be searched for";
        return pattern;
    };
    cli::AddParsed(criterion, "--text", c.data.pattern, textPattern,
                   "the same typed as text with caret escapes (\"OK^M^J\", \"\\^\" for ^)")
        ->each([&c](const std::string &) { c.kind = SearchKind::Data; });
    cli::AddParsed(criterion, "--signal", c.signal, ParseSignalCriteria,
                   "levels that must all hold (S1 M1 S2 M2 M5 M3, 1 high, 0 low)")
        ->type_name("S1=1,M2=0")
        ->each([&c](const std::string &) { c.kind = SearchKind::Signal; });
    cli::AddParsed(criterion, "--error", c.error, ParseErrorCriteria, "flags that must all hold on one port (PE FE LE)")
        ->type_name("PE=1,FE=0")
        ->each([&c](const std::string &) { c.kind = SearchKind::Error; });
    const auto dateTime = [](const std::string &text) {
        const auto t = ParseSearchDateTime(text);
        return t ? Expected<double>{*t, {}}
                 : Expected<double>{0, Result::Fail(kMalformedSearchValue,
                                                    "malformed time '" + text +
                                                        "': expected \"YYYY-MM-DD hh:mm:ss[.ffffff]\"")};
    };
    cli::AddParsed(criterion, "--time", c.dateTime, dateTime, "the first MP later (backward: earlier) than that")
        ->type_name("\"YYYY-MM-DD hh:mm:ss[.ffffff]\"")
        ->each([&c](const std::string &) { c.kind = SearchKind::DateTime; });
    // Triggers are numbered from 1; every MP that is not a trigger mark carries 0.
    cli::AddNumber(criterion, "--trigger", c.triggerNumber, 1, 255, "the mark of this trigger number")
        ->each([&c](const std::string &) { c.kind = SearchKind::TriggerPoint; });

    cmd.add_flag("--d1", c.data.d1, "search --data or --text on D1");
    cmd.add_flag("--d2", c.data.d2, "search --data or --text on D2");
    cli::AddNumber<std::int64_t>(cmd, "--from", o->from, 0, std::numeric_limits<std::int64_t>::max(),
                                 "start after (--backward: before) this MP")
        ->type_name("MP");
    cmd.add_flag("--backward", o->backward, "search toward the start");
    cli::AddLanguage(cmd, o->lang, "the messages");
    return [o] { return runSearch(*o); };
}

const kestrel::cli::Registration reg({"search", "find data, levels, errors, a time or a trigger mark", declareSearch});

} // namespace
