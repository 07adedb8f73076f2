// CSV and raw export throughput over a generated recording of 10 million MPs
// (800 MB), with every column on, written to /dev/null.

#include <cstdio>

#include "bench_recording.h"
#include "export/export_run.h"

using namespace kestrel;

int main()
{
    const std::string path = bench::BenchFilePath("kestrel-bench-export.ksr");
    const std::uint64_t count = bench::BenchMpCount();
    RecordReader reader;
    if (!bench::MakeBenchRecording(path, count, reader))
        return 1;
    bench::CatMbPerSecond(path); // into the page cache

    auto run = [&](const ExportOptions &o, const char *name) {
        FileSink sink;
        if (!sink.open("/dev/null"))
            return;
        ExportTimeState time(TimeLocale::Fixed(), kLangEnglish);
        const ExportRange range = FullRange(reader);
        SeedExportTime(reader, range, time);
        const auto t0 = std::chrono::steady_clock::now();
        const ExportResult r = RunExport(reader, o, range, sink, time);
        const double s = bench::Seconds(t0);
        std::printf("%s_mp_per_s: %.0f MP/s\n", name, static_cast<double>(r.exported) / s);
        std::printf("%s_seconds: %.2f s\n", name, s);
    };
    for (int mode = 0; mode < 3; ++mode) {
        ExportOptions all;
        all.timeMode = mode;
        static const char *names[] = {"export_csv_all_absolute", "export_csv_all_relative", "export_csv_all_delta"};
        run(all, names[mode]);
    }
    ExportOptions raw;
    raw.format = ExportFormat::Raw;
    run(raw, "export_raw");
    std::printf("export_peak_rss: %.1f MB\n", bench::PeakRssMb());
    std::printf("export_recording_mps: %llu MPs\n", static_cast<unsigned long long>(count));
    std::remove(path.c_str());
    return 0;
}
