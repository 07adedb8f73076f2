// Responsiveness of the main window under a full-speed line: both ports of
// the simulated line at 921,600 baud, recorded by the window for a while
// (60 s by default, --seconds N for a shorter run). A 10 ms timer measures how
// late the event loop answers; at the end the bytes the line delivered are
// compared with the data bytes in the record file.
//
// Prints: live_cpu_percent (user + system time of the whole process over the
// recording's wall time, in percent of one core), live_max_timer_latency_ms,
// live_mean_timer_latency_ms, live_bytes_delivered, live_bytes_recorded,
// live_mps_recorded.

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QTimer>
#include <QToolButton>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>

#include "base/console_prompter.h"
#include "app/main_form.h"
#include "record/record_reader.h"
#include "capture/recording_session.h"
#include "full_speed_line.h"
#include "ports/sim_port.h"

namespace {

constexpr int kChunk = kestrel::bench::kFullSpeedChunk;
constexpr int kTickMs = 10;

// User plus system time of this process so far, in seconds.
double processCpuSeconds()
{
    rusage u{};
    ::getrusage(RUSAGE_SELF, &u);
    const auto sec = [](const timeval &t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
    return sec(u.ru_utime) + sec(u.ru_stime);
}


} // namespace

int main(int argc, char **argv)
{
    double seconds = 60.0;
    for (int i = 1; i + 1 < argc; ++i)
        if (std::string(argv[i]) == "--seconds")
            seconds = std::atof(argv[i + 1]);
    if (!(seconds > 0.0))
        seconds = 60.0;
    if (std::getenv("QT_QPA_PLATFORM") == nullptr)
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);

    const auto dir = std::filesystem::temp_directory_path() / ("kestrel-bench-live-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir / "recordings");
    const std::string scenario = (dir / "full-speed.ksc").string();
    {
        std::ofstream f(scenario);
        f << kestrel::bench::FullSpeedScenario();
    }

    kestrel::MainFormOptions o;
    o.args = kestrel::ParseStartupArgs({"kestrel", "--simulate", scenario, (dir / "recordings" / "Live.ksr").string()});
    o.dataFolder = dir.string() + "/";
    o.skipUnloadDelay = false;
    kestrel::ConsolePrompter prompter(kestrel::MsgResult::Yes); // any message shows on stderr
    o.prompter = &prompter;
    auto *w = new kestrel::TFormMain(std::move(o));
    w->resize(1280, 900);
    w->show();
    w->FormShow();
    w->findChild<QComboBox *>("cbPortBaudRate")->setCurrentText("921600");

    // The bench feeds the line itself, so it can count what was handed over.
    kestrel::SimLine *line = w->session().simLine();
    line->stopTimer();
    std::uint64_t events = 0;
    QTimer feeder;
    QObject::connect(&feeder, &QTimer::timeout, [&] { events += line->poll(); });

    double maxLate = 0.0, sumLate = 0.0;
    std::uint64_t ticks = 0;
    QElapsedTimer since;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        const double late = since.nsecsElapsed() / 1e6 - kTickMs;
        since.restart();
        if (ticks++ > 0) {
            maxLate = std::max(maxLate, late);
            sumLate += std::max(0.0, late);
        }
    });

    w->findChild<QToolButton *>("btnREC")->click();
    if (!w->isRecording()) {
        std::fprintf(stderr, "bench_live: recording did not start\n");
        return 1;
    }
    const std::uint64_t droppedBefore = line->droppedBytes();
    line->restart();
    feeder.start(2);
    since.start();
    probe.start(kTickMs);
    QElapsedTimer wall;
    wall.start();
    const double cpuStart = processCpuSeconds();
    double cpuPercent = 0.0;

    QTimer::singleShot(static_cast<int>(seconds * 1000), [&] {
        feeder.stop();
        probe.stop();
        cpuPercent = (processCpuSeconds() - cpuStart) * 100.0 / (static_cast<double>(wall.nsecsElapsed()) / 1e9);
        w->findChild<QToolButton *>("btnSTOP")->click();
        QCoreApplication::exit(0); // quit() would ask the window to close
    });
    QApplication::exec();

    const std::uint64_t dropped = line->droppedBytes() - droppedBefore;
    const std::uint64_t delivered = events * kChunk - dropped;
    kestrel::RecordReader r;
    std::uint64_t recorded = 0, mps = 0;
    if (r.open(w->recordFile())) {
        mps = r.recordCount();
        std::vector<kestrel::MpRecord> block;
        for (std::uint64_t first = 0; first < mps; first += 100000) {
            r.readBlock(first, 100000, block);
            for (const auto &mp : block)
                recorded += mp.d1Valid + mp.d2Valid;
        }
    }
    std::printf("live_seconds: %.1f s\n", seconds);
    std::printf("live_cpu_percent: %.1f %%\n", cpuPercent);
    std::printf("live_max_timer_latency_ms: %.1f ms\n", maxLate);
    std::printf("live_mean_timer_latency_ms: %.2f ms\n", ticks > 1 ? sumLate / static_cast<double>(ticks - 1) : 0.0);
    std::printf("live_bytes_delivered: %llu bytes\n", static_cast<unsigned long long>(delivered));
    std::printf("live_bytes_recorded: %llu bytes\n", static_cast<unsigned long long>(recorded));
    std::printf("live_mps_recorded: %llu MP\n", static_cast<unsigned long long>(mps));
    delete w;
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    return delivered == recorded && maxLate <= 100.0 ? 0 : 1;
}
