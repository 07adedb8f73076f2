// pcapng export throughput over a generated recording of 10 million MPs
// (800 MB), with the frames tagged for a dissector as well, written to
// /dev/null; and the peak memory, which stays flat whatever the recording.

#include <cstdio>
#include <optional>

#include "bench_recording.h"
#include "export/pcap_export.h"

using namespace kestrel;

int main()
{
    const std::string path = bench::BenchFilePath("kestrel-bench-pcapng.ksr");
    const std::uint64_t count = bench::BenchMpCount();
    RecordReader reader;
    if (!bench::MakeBenchRecording(path, count, reader))
        return 1;
    bench::CatMbPerSecond(path); // into the page cache
    const double rssBefore = bench::PeakRssMb();

    auto run = [&](bool pcapng, const char *dissector, const char *name, std::optional<std::uint8_t> endByte = {}) {
        FileSink sink;
        if (!sink.open("/dev/null"))
            return;
        PcapExportOptions o;
        o.pcapng = pcapng;
        o.rules = ModbusRtuRules(115200, 10); // the recording's line
        o.dissector = dissector;
        o.rules.endByte = endByte;
        const auto t0 = std::chrono::steady_clock::now();
        PcapCounts counts;
        const ExportResult r = RunPcapExport(reader, o, FullRange(reader), sink, {}, &counts);
        double packets = static_cast<double>(counts.upperPdu);
        for (const std::uint64_t n : counts.events)
            packets += static_cast<double>(n);
        const double s = bench::Seconds(t0);
        std::printf("%s_mp_per_s: %.0f MP/s\n", name, static_cast<double>(r.exported) / s);
        std::printf("%s_seconds: %.2f s\n", name, s);
        std::printf("%s_packets: %.0f\n", name, packets);
    };
    run(true, "mbrtu", "pcapng_export");
    run(false, "", "pcap_export");
    // The line never falls idle: with 'A' as end byte D1 gives a frame every hundred bytes or so.
    run(true, "mbrtu", "pcapng_export_short_frames", std::uint8_t{'A'});
    std::printf("pcapng_export_peak_rss_growth: %.1f MB\n", bench::PeakRssMb() - rssBefore);
    std::printf("pcapng_export_recording_mps: %llu MPs\n", static_cast<unsigned long long>(count));
    std::remove(path.c_str());
    return 0;
}
