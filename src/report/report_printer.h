#pragma once
// Renders a report of a recording onto a paged device: a PDF file here, a
// QPrinter in the report window (it is a QPagedPaintDevice too). Reads the
// recording in pages of MPs, so memory stays flat whatever the range.

#include <filesystem>

#include "base/result.h"
#include "report/report_request.h"

class QPagedPaintDevice;

namespace kestrel {
struct Environment;
}

namespace kestrel::report {

// Lays the report out on the device's page (sets paper and orientation
// itself) and paints it page by page. maxPages 0 = all pages; otherwise the
// first maxPages pages are painted and the outcome says truncated.
[[nodiscard]] Expected<ReportOutcome> PrintReport(QPagedPaintDevice &device, const ReportRequest &request,
                                                  const ReportProgressFn &progress = {}, int maxPages = 0);

// What stands at a report's output path now: the window asks before it replaces a
// PDF; WriteReportPdf refuses the recording, what is not a file, and any other file.
enum class ReportTarget { Absent, Empty, Pdf, OtherFile, NotAFile, TheRecording };
[[nodiscard]] ReportTarget ExamineReportTarget(const std::filesystem::path &out, const std::filesystem::path &recording);

// Writes the report as a PDF. Refuses to replace an existing non-empty file
// that is not a PDF, and never writes onto the recording itself.
[[nodiscard]] Expected<ReportOutcome> WriteReportPdf(const std::filesystem::path &out, const ReportRequest &request,
                                                     const ReportProgressFn &progress = {});

// Header data from an environment file (.kef), for the window and the CLI.
[[nodiscard]] Expected<ReportHeader> ReadReportHeader(const std::filesystem::path &environmentFile);
// The same from an environment the program holds (the window's, saved or not).
[[nodiscard]] ReportHeader HeaderOfEnvironment(const Environment &env);

} // namespace kestrel::report
