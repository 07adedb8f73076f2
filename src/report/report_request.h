#pragma once
// What a report of a recording is asked to show: the recording and its MP
// range, the descriptive header, which parts to include, the body's view and
// display modes, the language and the paper. The report window and
// kestrel-cli fill it in; PrintReport (report_printer.h) renders it.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kestrel::report {

// The body shows the grid's views: vertical, dump or data only.
enum class ReportBody { Vertical, Dump, DataOnly };
enum class PaperSize { A4, Letter };

// One port's line settings as the environment keeps them.
struct ReportPortSettings {
    std::string name;   // "A" or "B"
    std::string device; // device path, or "COM n" when the environment names a number only
    int baud = 0, dataBits = 8, parity = 0, stopBits = 1; // parity: 0 N, 1 O, 2 E, 3 M, 4 S
};

// The environment's descriptive data; empty fields are left out of the page.
struct ReportHeader {
    std::string title, author, company, customer;
    std::vector<std::string> description;
    std::vector<ReportPortSettings> ports; // shown among the details; none without an environment
};

struct ReportRequest {
    std::filesystem::path recording;
    ReportHeader header;                // from the environment; empty fields are left out
    std::uint64_t first = 0, last = 0;  // MP range, inclusive
    ReportBody body = ReportBody::Vertical;
    bool withHeader = true, withDetails = true, withBody = true, withSummary = true, withFooter = true;
    // The grid's numbering (present/byte_render.h, present/grid/view_modes.h):
    // charMode CharMode:: (1 ASCII .. 6 BIN; 0 counts as ASCII), controlMode the
    // control overlay Overlay:: (0 none, 7 caret, 8 mnemonic), secondaryMode the
    // dump view's number columns (CharMode::Hex = 3), timeMode 0 absolute,
    // 1 relative, 2 delta.
    int charMode = 0, controlMode = 0, secondaryMode = 3, timeMode = 0;
    int lang = 0;                       // 0 German, 10000 English
    PaperSize paper = PaperSize::A4;
    bool landscape = false;
    int namingSet = 0;                  // circuit names: 0 D1, D2, S1 ...; 1 Tx, Rx, DTR ...
    // WriteReportPdf replaces an existing file that is not a PDF only when the
    // user said so (kestrel-cli --force); the recording itself never.
    bool replaceNonPdf = false;
};

struct ReportProgress {
    std::uint64_t done = 0, total = 0;  // MPs of the range laid out so far, and all of them
};
// Return false to stop.
using ReportProgressFn = std::function<bool(const ReportProgress &)>;

struct ReportOutcome {
    int pages = 0;          // pages painted
    bool stopped = false;   // the progress callback said stop
    bool truncated = false; // maxPages reached before the end of the report
};

} // namespace kestrel::report
