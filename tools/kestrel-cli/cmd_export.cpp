// kestrel-cli export: a recording, or a range of it, as CSV lines, as the raw data stream,
// or as a capture file for Wireshark (pcapng, pcap).

#include <atomic>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <sys/stat.h>

#include "cli_common.h"
#include "cli_line.h"
#include "command.h"
#include "export/export_args.h"
#include "export/export_run.h"
#include "export/pcap_export.h"
#include "record/recording_check.h"

namespace {

std::atomic<bool> g_stop{false};

extern "C" void onInterrupt(int) { g_stop = true; }

enum class Format { Csv, Raw, Pcapng, Pcap };

struct ExportCommand {
    std::string input;
    std::string output = "-"; // standard output
    Format format = Format::Csv;
    kestrel::ExportOptions options;
    std::optional<kestrel::MpRangeText> range;
    kestrel::cli::FrameOptions frames;
    std::string dissector;
    bool overwrite = false;
};

// A capture file replaces nothing that is there unless asked: the file may be someone's capture.
std::optional<int> refuseExisting(const ExportCommand &cl)
{
    struct stat st {};
    if (cl.overwrite || cl.output == "-" || ::stat(cl.output.c_str(), &st) != 0 || !S_ISREG(st.st_mode) ||
        st.st_size == 0)
        return std::nullopt;
    return kestrel::cli::Fail("export", cl.output + " exists; give --overwrite to replace it", kestrel::cli::kExitUsage);
}

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

    const bool capture = cl.format == Format::Pcapng || cl.format == Format::Pcap;
    if (capture) {
        if (!cl.dissector.empty() && cl.format == Format::Pcap)
            return cli::UsageError("export", "--protocol needs --format pcapng (a pcap file holds one link type)");
        if (const auto refused = refuseExisting(cl))
            return *refused;
    }
    FileSink sink;
    if (!sink.open(cl.output, cl.input))
        return cli::Fail("export", sink.errorText(), cli::kExitFailure);

    ExportHooks hooks;
    hooks.stop = &g_stop;
    std::signal(SIGINT, onInterrupt);
    ExportResult r;
    if (capture) {
        PcapExportOptions o;
        o.pcapng = cl.format == Format::Pcapng;
        o.rules = cli::RulesOf(cl.frames);
        o.dissector = cl.dissector;
        o.langOffset = cl.options.langOffset;
        r = RunPcapExport(reader, o, range, sink, hooks);
    } else {
        ExportOptions o = cl.options;
        o.format = cl.format == Format::Raw ? ExportFormat::Raw : ExportFormat::Csv;
        ExportTimeState time(TimeLocale::System(), o.langOffset);
        SeedExportTime(reader, range, time);
        r = RunExport(reader, o, range, sink, time, hooks);
    }
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
    cmd.footer("Writes the MPs of a recording as CSV lines (one per MP, \"\\r\\n\" line ends),\n"
               "as the raw data stream (the bare D1 and D2 bytes), or as a capture file for\n"
               "Wireshark: pcapng (the frames of D1 and D2 as TX and RX packets, status changes,\n"
               "parity and framing errors, and marks as comments; with --protocol the frames again\n"
               "for that dissector, e.g. mbrtu or dnp3) or pcap (link type 250 alone). Frames are cut\n"
               "as by 'kestrel-cli frames' (--gap, --end-byte, and the line settings the recording\n"
               "was made with). Without -o the output goes to standard output; an existing capture\n"
               "file is replaced only with --overwrite.\n\n"
               "Columns: mark, mp, time, d1, d2, hex, dec, oct, bin, s1, m1, s2, m2, m5, m3, pfl, desc, all.\n"
               "Names alone switch on exactly those; \"-name\" takes one away: --columns -hex,-oct,-bin");
    cmd.add_option("FILE.ksr", cl->input, "the recording")->required()->type_name("");
    cmd.add_option("-o,--output", cl->output, "file to write (cut to length 0 when it exists); - is standard output")
        ->type_name("OUT");
    cli::AddChoice<Format>(cmd, "--format", cl->format,
                           {{"csv", Format::Csv}, {"raw", Format::Raw}, {"pcapng", Format::Pcapng}, {"pcap", Format::Pcap}},
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
    cli::AddFrameOptions(cmd, cl->frames);
    cmd.add_option_function<std::string>(
           "--protocol",
           [cl](const std::string &name) {
               if (!ValidDissectorName(name))
                   throw CLI::ValidationError("--protocol", "takes a Wireshark dissector name (mbrtu, dnp3, ...), not '" +
                                                                cli::Printable(name) + "'");
               cl->dissector = name;
           },
           "pcapng: the frames again for this Wireshark dissector")
        ->type_name("mbrtu|dnp3|...");
    cmd.add_flag("--overwrite", cl->overwrite, "pcapng, pcap: replace an existing file");
    return [cl] { return runExport(*cl); };
}

const kestrel::cli::Registration reg({"export", "write a recording as CSV, raw data, pcapng or pcap", declareExport});

} // namespace
