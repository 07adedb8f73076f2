// kestrel-cli report: a recording, or a range of it, as a PDF report (header,
// details, the grid's view of the MPs, summary), painted without a display.

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <unistd.h>

#include "cli_common.h"
#include "command.h"
#include "export/export_args.h"
#include "present/byte_render.h"
#include "record/record_reader.h"
#include "report/report_printer.h"
#include "report/report_texts.h"

namespace {

using namespace kestrel;

struct ReportCommand {
    std::string input;
    std::string output;
    std::string environment;
    std::optional<MpRangeText> range;
    report::ReportRequest request;
    bool force = false;
};

int Failure(const Result &r, int lang)
{
    const int code = r.code == report::txt::kRangeOutside || r.code == report::txt::kNotPdf ||
                             r.code == report::txt::kOntoRecording
                         ? cli::kExitUsage
                         : cli::kExitFailure;
    std::string text = cli::MessageText(r.code, lang);
    if (!r.detail.empty())
        text += " " + cli::Printable(r.detail);
    if (r.code == report::txt::kNotPdf)
        text += " (--force replaces it)";
    return cli::Fail("report", text, code);
}

int runReport(ReportCommand &cl)
{
    report::ReportRequest &rq = cl.request;
    rq.recording = cl.input;
    rq.replaceNonPdf = cl.force;
    if (!cl.environment.empty()) {
        auto header = report::ReadReportHeader(cl.environment);
        if (!header)
            return Failure(header.result, rq.lang);
        rq.header = std::move(header.value);
    }
    {
        // The range's open ends need the recording's length.
        RecordReader reader;
        if (const Result opened = reader.open(cl.input); !opened)
            return cli::Fail("report", "cannot open " + cli::Printable(cl.input) + ": " + opened.detail,
                             cli::kExitFailure);
        const std::uint64_t count = reader.recordCount();
        if (count == 0)
            return Failure(Result::Fail(report::txt::kNoMps, cl.input), rq.lang);
        rq.first = cl.range && cl.range->first ? *cl.range->first : 0;
        rq.last = cl.range && cl.range->last ? *cl.range->last : count - 1;
    }

    // Fonts need a GUI application; the offscreen platform needs no display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argc = 1;
    char name[] = "kestrel-cli";
    char *argv[] = {name, nullptr};
    QGuiApplication app(argc, argv);

    const bool terminal = ::isatty(STDERR_FILENO) == 1;
    report::ReportProgressFn progress;
    if (terminal)
        progress = [](const report::ReportProgress &p) {
            if (p.total > 0)
                std::fprintf(stderr, "\r%3llu %%", static_cast<unsigned long long>(p.done * 100 / p.total));
            return true;
        };
    const auto written = report::WriteReportPdf(cl.output, rq, progress);
    if (terminal)
        std::fputs("\r     \r", stderr);
    if (!written)
        return Failure(written.result, rq.lang);
    std::fprintf(stderr, "wrote MPs %llu to %llu on %d pages to %s\n", static_cast<unsigned long long>(rq.first),
                 static_cast<unsigned long long>(rq.last), written.value.pages, cli::Printable(cl.output).c_str());
    return cli::kExitOk;
}

std::function<int()> declareReport(CLI::App &cmd)
{
    auto cl = std::make_shared<ReportCommand>();
    report::ReportRequest &rq = cl->request;
    rq.lang = cli::LanguageFromEnvironment();
    rq.charMode = CharMode::Ascii;
    cmd.footer("Writes a PDF report: the header from the environment (title, author, company,\n"
               "customer, description), the recording's details (file, size, times, port settings,\n"
               "counters, marks and triggers in the range), the MPs as the grid shows them\n"
               "(vertical, dump or data only), a summary and page numbers. An existing OUT that\n"
               "is not a PDF is replaced only with --force; the recording never.");
    cmd.add_option("FILE.ksr", cl->input, "the recording")->required()->type_name("");
    cmd.add_option("-o,--output", cl->output, "the PDF file to write")->required()->type_name("OUT.pdf")
        ->check(cli::kNotEmpty);
    cmd.add_option("--env", cl->environment, "environment file (.kef) whose header and port settings to show")
        ->type_name("FILE.kef");
    cli::AddParsed(cmd, "--range", cl->range, ParseMpRange, "MPs to report (FIRST: or :LAST leave an end open)")
        ->type_name("FIRST:LAST");
    cli::AddChoice<report::ReportBody>(cmd, "--body", rq.body,
                                       {{"vertical", report::ReportBody::Vertical},
                                        {"dump", report::ReportBody::Dump},
                                        {"data", report::ReportBody::DataOnly}},
                                       "the grid view of the MPs, default vertical");
    cli::AddCharMode(cmd, rq.charMode);
    cli::AddControlMode(cmd, rq.controlMode);
    cli::AddChoice<int>(cmd, "--numbers", rq.secondaryMode,
                        {{"hex", CharMode::Hex}, {"dec", CharMode::Dec}, {"oct", CharMode::Oct}, {"bin", CharMode::Bin}},
                        "the dump's number columns, default hex");
    cli::AddTimeMode(cmd, rq.timeMode);
    cli::AddLanguage(cmd, rq.lang, "the report");
    cli::AddNaming(cmd, rq.namingSet);
    cli::AddChoice<report::PaperSize>(cmd, "--paper", rq.paper,
                                      {{"a4", report::PaperSize::A4}, {"letter", report::PaperSize::Letter}},
                                      "default a4");
    cmd.add_flag("--landscape", rq.landscape, "pages in landscape");
    cmd.add_flag("--force", cl->force, "replace an existing OUT even if it is not a PDF");
    return [cl] { return runReport(*cl); };
}

const kestrel::cli::Registration reg({"report", "write a recording as a PDF report", declareReport});

} // namespace
