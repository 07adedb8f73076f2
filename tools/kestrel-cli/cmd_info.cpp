// kestrel-cli info FILE.ksr [--json]: what a recording holds.

#include <memory>
#include <cstdio>
#include <string>

#include "cli_common.h"
#include "record/record_reader.h"
#include "record/record_summary.h"

namespace kestrel::cli {
namespace {

std::string markText(const MarkEntry &m)
{
    if (m.system())
        return "system " + std::to_string(m.code) + " (" + SystemMarkName(m.code) + ")";
    return "trigger " + std::to_string(m.code) + " kind " + std::to_string(m.kind) + " trigger no. " +
           std::to_string(m.extra);
}

void printText(const std::string &path, const RecordingSummary &s)
{
    std::printf("file:          %s\n", path.c_str());
    std::printf("size:          %llu bytes (%llu KB)\n", static_cast<unsigned long long>(s.fileSize),
                static_cast<unsigned long long>(s.fileSize >> 10));
    std::printf("MPs:           %llu\n", static_cast<unsigned long long>(s.mpCount));
    if (s.tornBytes)
        std::printf("torn tail:     %llu bytes after the last whole MP (cut when appending)\n",
                    static_cast<unsigned long long>(s.tornBytes));
    if (s.mpCount == 0) {
        std::printf("(no MPs)\n");
        return;
    }
    std::printf("first time:    %s\n", FormatDateTimeIso(s.first.time).c_str());
    std::printf("last time:     %s\n", FormatDateTimeIso(s.last.time).c_str());
    const char *names[5] = {"D1", "D2", "PE", "FE", "LE"};
    for (int i = 0; i < 5; ++i)
        std::printf("%s count:      %llu\n", names[i], static_cast<unsigned long long>(s.last.counts[i]));
    std::printf("load peak:     %u %%\n", s.last.loadPeak);
    std::printf("quality:       %u %%\n", s.last.quality);
    std::printf("marks:         %zu\n", s.marks.size());
    for (const auto &m : s.marks)
        std::printf("  MP %-10llu %s  %s\n", static_cast<unsigned long long>(m.mp),
                    FormatDateTimeIso(m.time).c_str(), markText(m).c_str());
    std::printf("ends:          %s\n", s.endsWithStopMark()
                                           ? "with the stop mark"
                                           : "no stop mark: the recorder was killed, crashed or ran out of space "
                                             "(or is still recording)");
    std::printf("checks:        %s (number gaps %llu, times going back %llu, counter mismatches %llu)\n",
                s.sound() ? "ok" : "FAULTS", static_cast<unsigned long long>(s.numberGaps),
                static_cast<unsigned long long>(s.timeBackwards),
                static_cast<unsigned long long>(s.counterMismatches));
}

void printJson(const std::string &path, const RecordingSummary &s)
{
    auto u = [](std::uint64_t v) { return static_cast<unsigned long long>(v); };
    std::printf("{\n  \"file\": %s,\n  \"size\": %llu,\n  \"mps\": %llu,\n  \"tornBytes\": %llu",
                JsonString(path).c_str(), u(s.fileSize), u(s.mpCount), u(s.tornBytes));
    if (s.mpCount > 0) {
        std::printf(",\n  \"firstTime\": %s,\n  \"firstTimeText\": \"%s\",\n  \"lastTime\": %s,\n"
                    "  \"lastTimeText\": \"%s\",\n",
                    JsonTime(s.first.time).c_str(), FormatDateTimeIso(s.first.time).c_str(), JsonTime(s.last.time).c_str(),
                    FormatDateTimeIso(s.last.time).c_str());
        std::printf("  \"counters\": {\"d1\": %llu, \"d2\": %llu, \"pe\": %llu, \"fe\": %llu, \"le\": %llu},\n",
                    u(s.last.counts[0]), u(s.last.counts[1]), u(s.last.counts[2]), u(s.last.counts[3]),
                    u(s.last.counts[4]));
        std::printf("  \"loadPeak\": %u,\n  \"quality\": %u,\n  \"stopMark\": %s", s.last.loadPeak, s.last.quality,
                    s.endsWithStopMark() ? "true" : "false");
    }
    std::printf(",\n  \"marks\": [");
    for (std::size_t i = 0; i < s.marks.size(); ++i) {
        const auto &m = s.marks[i];
        std::printf("%s\n    {\"mp\": %llu, \"type\": \"%s\", \"code\": %u, \"kind\": %u, \"extra\": %u, "
                    "\"time\": %s}",
                    i ? "," : "", u(m.mp), m.system() ? "system" : "trigger", m.code, m.kind, m.extra,
                    JsonTime(m.time).c_str());
    }
    std::printf("%s],\n", s.marks.empty() ? "" : "\n  ");
    std::printf("  \"checks\": {\"sound\": %s, \"numberGaps\": %llu, \"timeBackwards\": %llu, "
                "\"counterMismatches\": %llu}\n}\n",
                s.sound() ? "true" : "false", u(s.numberGaps), u(s.timeBackwards), u(s.counterMismatches));
}

int runInfo(const std::string &path, bool json)
{
    RecordReader reader;
    if (const Result opened = reader.open(path); !opened) {
        std::fprintf(stderr, "kestrel-cli info: cannot open %s: %s\n", path.c_str(), opened.detail.c_str());
        return kExitFailure;
    }
    const RecordingSummary s = SummarizeRecording(reader);
    if (json)
        printJson(path, s);
    else
        printText(path, s);
    return kExitOk;
}

std::function<int()> declareInfo(CLI::App &cmd)
{
    struct Options {
        std::string path;
        bool json = false;
    };
    auto o = std::make_shared<Options>();
    cmd.footer("MP count, first and last time, the counters, load peak and quality of the\n"
               "last MP, every system and trigger mark with its MP number, and the checks\n"
               "(gap-free numbers, non-decreasing times, counters agreeing with the flags).");
    cmd.add_option("FILE.ksr", o->path, "the recording")->required()->type_name("");
    cmd.add_flag("--json", o->json, "print the same as JSON");
    return [o] { return runInfo(o->path, o->json); };
}

const Registration kInfo({"info", "show what a recording holds (counts, times, marks, checks)", &declareInfo});

} // namespace
} // namespace kestrel::cli
