// kestrel-cli export: a recording, or a range of it, as CSV lines or as the raw data stream.

#include <atomic>
#include <csignal>
#include <cstdio>

#include "cli_common.h"
#include "command.h"
#include "export/export_args.h"
#include "export/export_run.h"
#include "export/recording_check.h"

namespace {

std::atomic<bool> g_stop{false};

extern "C" void onInterrupt(int) { g_stop = true; }

constexpr const char *kUsage =
    "usage: kestrel-cli export FILE.ksr [-o OUT] [options]\n"
    "\n"
    "Writes the MPs of a recording as CSV lines (one per MP, \"\\r\\n\" line ends) or\n"
    "as the raw data stream (the bare D1 and D2 bytes). Without -o the output goes\n"
    "to standard output.\n"
    "\n"
    "  -o, --output OUT       file to write (cut to length 0 when it exists)\n"
    "  --format csv|raw       default csv\n"
    "  --separator comma|semicolon|tab|space   default semicolon\n"
    "  --frame double|single|none              text frame, default double\n"
    "  --no-header            no head line with the column names\n"
    "  --columns LIST         columns, comma-separated, default all:\n"
    "                         mark, mp, time, d1, d2, hex, dec, oct, bin,\n"
    "                         s1, m1, s2, m2, m5, m3, pfl, desc\n"
    "                         \"-name\" takes one away: --columns -hex,-oct,-bin\n"
    "  --range FIRST:LAST     MPs to export (FIRST: or :LAST leave an end open)\n"
    "  --time absolute|relative|delta          default absolute\n"
    "  --language de|en       texts of the head line and marks (default from LANG)\n"
    "  --naming v24|rs232     circuit names D1/D2/S1... or Tx/Rx/DTR...\n";

int runExport(const std::vector<std::string> &args)
{
    using namespace kestrel;
    ExportCommandLine cl;
    cl.options.langOffset = cli::LanguageFromEnvironment();
    std::string error;
    if (!ParseExportArgs(args, cl, error))
        return cli::UsageError("export", error, kUsage);
    if (cl.help) {
        std::fputs(kUsage, stdout);
        return cli::kExitOk;
    }
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

const kestrel::cli::Registration reg({"export", "write a recording as CSV or raw data", runExport});

} // namespace
