// The export window on a generated recording of 10 million MPs (CSV, every
// column, into a file beside the recording): how late the window's event loop
// answers while the export runs (a 10 ms timer, largest gap between two of
// its ticks), the window's export rate against RunExport alone into the same
// kind of file, and how long an export goes on after Stop is clicked.
// KESTREL_BENCH_MPS and KESTREL_BENCH_DIR change size and place.
//
// Prints: export_window_max_loop_gap_ms, export_window_mean_loop_gap_ms,
// export_runexport_mp_per_s, export_window_mp_per_s, export_window_rate_ratio,
// export_window_stop_ms.

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/export_form.h"
#include "base/prompt.h"
#include "bench_recording.h"
#include "loop_gaps.h"
#include "export/export_run.h"

using namespace kestrel;

namespace {

// Every question answered yes (replace the last run's file), every message noted.
class YesPrompter final : public Prompter {
public:
    int ShowMessage(const std::string &, const std::string &text, int, int) override
    {
        std::fprintf(stderr, "message: %s\n", text.c_str());
        return MsgResult::Yes;
    }
};

} // namespace

int main(int argc, char **argv)
{
    if (std::getenv("QT_QPA_PLATFORM") == nullptr)
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);

    const std::string path = bench::BenchFilePath("kestrel-bench-export-window.ksr");
    const std::string out = bench::BenchFilePath("kestrel-bench-export-window.csv");
    const std::uint64_t count = bench::BenchMpCount();
    RecordReader reader;
    if (!bench::MakeBenchRecording(path, count, reader))
        return 1;
    bench::CatMbPerSecond(path); // into the page cache

    // RunExport alone, as kestrel-cli export runs it.
    double engineRate = 0;
    {
        FileSink sink;
        if (!sink.open(out))
            return 1;
        ExportTimeState time(TimeLocale::System(), GlobalLang());
        const ExportRange range = FullRange(reader);
        SeedExportTime(reader, range, time);
        const auto t0 = std::chrono::steady_clock::now();
        const ExportResult r = RunExport(reader, ExportOptions{}, range, sink, time);
        engineRate = static_cast<double>(r.exported) / bench::Seconds(t0);
        std::printf("export_runexport_mp_per_s: %.0f MP/s\n", engineRate);
    }

    YesPrompter prompter;
    TFormExport form(prompter);
    form.setSourceProvider([&] { return ExportSource{path, 0, 0}; });
    form.setFileChooser([&](const ExportFileQuestion &) { return QString::fromStdString(out); });
    form.show();
    auto *exportButton = form.findChild<QPushButton *>("btnExport");
    auto *stopButton = form.findChild<QPushButton *>("btnStop");

    // A whole export through the window, with the loop watched.
    bench::LoopGaps gaps;
    QCoreApplication::processEvents();
    gaps.start();
    const auto t0 = std::chrono::steady_clock::now();
    exportButton->click();
    const double windowSeconds = bench::Seconds(t0);
    gaps.stop();
    const double windowRate = static_cast<double>(count) / windowSeconds;
    std::printf("export_window_max_loop_gap_ms: %.1f ms\n", static_cast<double>(gaps.worst) / 1e6);
    std::printf("export_window_mean_loop_gap_ms: %.2f ms\n",
                gaps.ticks ? static_cast<double>(gaps.sum) / static_cast<double>(gaps.ticks) / 1e6 : 0.0);
    std::printf("export_window_mp_per_s: %.0f MP/s\n", windowRate);
    std::printf("export_window_rate_ratio: %.2f x\n", windowRate / engineRate);

    // Stop clicked a second into a second export: how long until the export has ended.
    form.show();
    QElapsedTimer sinceStop;
    QTimer::singleShot(1000, [&] {
        sinceStop.start();
        stopButton->click();
    });
    exportButton->click();
    const double stopMs = sinceStop.isValid() ? static_cast<double>(sinceStop.nsecsElapsed()) / 1e6 : -1.0;
    std::printf("export_window_stop_ms: %.1f ms\n", stopMs);
    std::printf("export_window_state: %s\n", form.stateText().toStdString().c_str());
    std::printf("export_window_recording_mps: %llu MPs\n", static_cast<unsigned long long>(count));

    std::remove(out.c_str());
    std::remove(path.c_str());
    return 0;
}
