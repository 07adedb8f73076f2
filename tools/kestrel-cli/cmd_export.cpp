// kestrel-cli export: a recording, or a range of it, as CSV lines or as the raw data stream.

#include <atomic>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "cli_common.h"
#include "command.h"
#include "export/export_args.h"
#include "export/export_run.h"
#include "record/recording_check.h"

namespace {

std::atomic<bool> g_stop{false};

extern "C" void onInterrupt(int) { g_stop = true; }

struct ExportCommand {
    std::string input;
    std::string output = "-"; // standard output
    kestrel::ExportOptions options;
    std::optional<kestrel::MpRangeText> range;
};

int runExport(const ExportCommand &cl)
{
    using namespace kestrel;
    std::string error;
    RecordReader reader;
    if (!OpenRecording(reader, cl.input, error))
        return cli::Fail("export", error, cli::kExitFailure);

    ExportRange range = FullRange(reader);
    if (cl.range) {
        range.first = cl.range->first.value_or(0);
        range.last = cl.range->last.value_or(reader.recordCount() - 1);
    }
    if (!ValidateRange(reader, range, error))
        return cli::Fail("export", error, cli::kExitUsage);

    FileSink sink;
    if (!sink.open(cl.output, cl.input))
        return cli::Fail("export", sink.errorText(), cli::kExitFailure);

    ExportTimeState time(TimeLocale::System(), cl.options.langOffset);
    SeedExportTime(reader, range, time);
    ExportHooks hooks;
    hooks.stop = &g_stop;
    std::signal(SIGINT, onInterrupt);
    const ExportResult r = RunExport(reader, cl.options, range, sink, time, hooks);
    std::signal(SIGINT, SIG_DFL);
    switch (r.status) {
    case ExportStatus::Done:
        if (cl.output != "-")
            std::fprintf(stderr, "exported MPs %llu to %llu (%llu MPs) to %s\n",
                         static_cast<unsigned long long>(range.first), static_cast<unsigned long long>(range.last),
                         static_cast<unsigned long long>(r.exported), cl.output.c_str());
        return cli::kExitOk;
    case ExportStatus::Stopped:
        return cli::Fail("export", "stopped after " + std::to_string(r.exported) + " MPs", cli::kExitFailure);
    case ExportStatus::BadRange:
        return cli::Fail("export", r.error, cli::kExitUsage);
    case ExportStatus::WriteFailed:
        return cli::Fail("export", r.error, cli::kExitFailure);
    }
    return cli::kExitFailure;
}

std::function<int()> declareExport(CLI::App &cmd)
{
    using namespace kestrel;
    auto cl = std::make_shared<ExportCommand>();
    ExportOptions &o = cl->options;
    o.langOffset = cli::LanguageFromEnvironment();
    cmd.footer("Writes the MPs of a recording as CSV lines (one per MP, \"\\r\\n\" line ends) or\n"
               "as the raw data stream (the bare D1 and D2 bytes). Without -o the output goes\n"
               "to standard output.\n\n"
               "Columns: mark, mp, time, d1, d2, hex, dec, oct, bin, s1, m1, s2, m2, m5, m3, pfl, desc, all.\n"
               "Names alone switch on exactly those; \"-name\" takes one away: --columns -hex,-oct,-bin");
    cmd.add_option("FILE.ksr", cl->input, "the recording")->required()->type_name("");
    cmd.add_option("-o,--output", cl->output, "file to write (cut to length 0 when it exists); - is standard output")
        ->type_name("OUT");
    cli::AddChoice<ExportFormat>(cmd, "--format", o.format, {{"csv", ExportFormat::Csv}, {"raw", ExportFormat::Raw}},
                                 "default csv");
    cli::AddChoice<char>(cmd, "--separator", o.separator,
                         {{"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"space", ' '}}, "default semicolon");
    cli::AddChoice<char>(cmd, "--frame", o.frame, {{"double", '"'}, {"single", '\''}, {"none", kNoFrame}},
                         "text frame, default double");
    cmd.add_flag_callback("--no-header", [&o] { o.header = false; }, "no head line with the column names");
    cli::AddParsed(cmd, "--columns", o.columns, ParseColumnList, "columns, comma-separated, default all")
        ->type_name("LIST");
    cli::AddParsed(cmd, "--range", cl->range, ParseMpRange, "MPs to export (FIRST: or :LAST leave an end open)")
        ->type_name("FIRST:LAST");
    cli::AddTimeMode(cmd, o.timeMode);
    cli::AddLanguage(cmd, o.langOffset, "the head line and marks");
    cli::AddNaming(cmd, o.naming);
    return [cl] { return runExport(*cl); };
}

const kestrel::cli::Registration reg({"export", "write a recording as CSV or raw data", declareExport});

} // namespace
