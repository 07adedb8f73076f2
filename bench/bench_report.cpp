// A PDF report of a 100,000-MP range (some 1,700 pages in the vertical view):
// pages, MPs per second, and how much the peak memory grows over a short
// report of the same recording (it should not grow with the range).

#include <QGuiApplication>
#include <cstdio>

#include "base/string_table.h"
#include "bench_recording.h"
#include "report/report_printer.h"

using namespace kestrel;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const std::uint64_t range = 100000;
    const std::string path = bench::BenchFilePath("kestrel-bench-report.ksr");
    const std::string pdf = bench::BenchFilePath("kestrel-bench-report.pdf");
    if (!bench::WriteBenchRecording(path, range + 10))
        return 1;

    report::ReportRequest rq;
    rq.recording = path;
    rq.lang = kLangEnglish;
    // A short report first: fonts, glyph caches and the PDF writer reach their working size.
    rq.last = 4999;
    if (!report::WriteReportPdf(pdf, rq).ok())
        return 1;
    const double rssBefore = bench::PeakRssMb();

    rq.last = range - 1;
    const auto t0 = std::chrono::steady_clock::now();
    const auto written = report::WriteReportPdf(pdf, rq);
    const double s = bench::Seconds(t0);
    if (!written.ok()) {
        std::fprintf(stderr, "report failed: %d %s\n", written.result.code, written.result.detail.c_str());
        return 1;
    }
    std::printf("report_pages: %d pages\n", written.value.pages);
    std::printf("report_mp_per_s: %.0f MP/s\n", static_cast<double>(range) / s);
    std::printf("report_seconds: %.2f s\n", s);
    std::printf("report_peak_rss_growth: %.1f MiB\n", bench::PeakRssMb() - rssBefore);
    std::remove(path.c_str());
    std::remove(pdf.c_str());
    return 0;
}
