// kestrel: the main window program.

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

#include "app/main_form.h"
#include "app/startup_args.h"
#include "config/data_folder.h"
#include "config/program_config.h"
#include "base/string_table.h"

namespace {

int g_signalPipe[2] = {-1, -1};
kestrel::TFormMain *g_window = nullptr; // set once the window is built

void onTerminate(int)
{
    const char c = 1;
    [[maybe_unused]] const auto n = ::write(g_signalPipe[1], &c, 1);
}

// SIGTERM / SIGINT end a recording cleanly (stop mark written) and close the window.
// Installed before the window is built: a signal during start-up (a question
// open, nothing recorded yet) simply ends the program.
void installTerminationHandler(QApplication &app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [notifier] {
        char c = 0;
        [[maybe_unused]] const auto n = ::read(g_signalPipe[0], &c, 1);
        notifier->setEnabled(false);
        if (g_window == nullptr)
            ::_exit(0);
        g_window->quitCleanly();
    });
    struct sigaction sa {};
    sa.sa_handler = onTerminate;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);
}

// KESTREL_LATENCY_PROBE=1 (for benchmarks): a 10 ms timer measures how late
// the event loop answers while a recording runs, and the worst and mean
// lateness are printed on stdout at exit. Ticks around a start or stop of the
// recording are not counted: those steps block on purpose (the unload waits
// 500 ms for the redraw thread).
struct LatencyProbe {
    static constexpr int kTickMs = 10;
    QTimer timer;
    QElapsedTimer since;
    bool wasRecording = false;
    double worst = 0.0, sum = 0.0;
    long ticks = 0;

    void start()
    {
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            const double late = static_cast<double>(since.nsecsElapsed()) / 1e6 - kTickMs;
            since.restart();
            const bool recording = g_window != nullptr && g_window->isRecording();
            if (recording && wasRecording) {
                worst = std::max(worst, late);
                sum += std::max(0.0, late);
                ++ticks;
            }
            wasRecording = recording;
        });
        since.start();
        timer.start(kTickMs);
    }
    void print() const
    {
        std::printf("window_probe_ticks: %ld ticks\n", ticks);
        std::printf("window_max_loop_latency_ms: %.1f ms\n", worst);
        std::printf("window_mean_loop_latency_ms: %.2f ms\n", ticks > 0 ? sum / static_cast<double>(ticks) : 0.0);
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Kestrel");

    std::vector<std::string> args;
    for (const QString &a : QApplication::arguments())
        args.push_back(a.toStdString());
    kestrel::StartupArgs parsed = kestrel::ParseStartupArgs(args);
    const char *usage = "usage: kestrel [--simulate [SCENARIO.ksc]] [--record] [--data-dir DIR] "
                        "[--quit-after SECONDS] [--verbose] [FILE.kef] [FILE.ksr]\n";
    if (parsed.help) {
        std::printf("%s", usage);
        return 0;
    }
    if (!parsed.errors.empty()) {
        for (const std::string &e : parsed.errors)
            std::fprintf(stderr, "kestrel: %s\n", e.c_str());
        std::fprintf(stderr, "%s", usage);
        return 2;
    }

    if (parsed.verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("kestrel.*=true"));

    kestrel::MainFormOptions options;
    const std::filesystem::path dataFolder = kestrel::ResolveDataFolder(parsed.dataDir);
    const kestrel::Result made = kestrel::EnsureDataFolder(dataFolder);
    if (!made.ok())
        std::fprintf(stderr, "kestrel: cannot create the data folder %s: %s\n", dataFolder.c_str(),
                     made.detail.c_str());
    options.dataFolder = dataFolder.string();
    if (options.dataFolder.empty() || options.dataFolder.back() != '/')
        options.dataFolder += '/';
    // The language first, so that every window comes up in it.
    kestrel::SetGlobalLang(kestrel::LoadLanguageConfig(dataFolder / kestrel::kConfigFileName) == kestrel::kLangEnglish
                               ? kestrel::kLangEnglish
                               : kestrel::kLangGerman);
    options.args = std::move(parsed);

    installTerminationHandler(app);
    kestrel::TFormMain window(std::move(options));
    g_window = &window;
    window.show();
    std::unique_ptr<LatencyProbe> probe;
    if (const char *p = std::getenv("KESTREL_LATENCY_PROBE"); p != nullptr && *p != '\0' && *p != '0') {
        probe = std::make_unique<LatencyProbe>();
        probe->start();
    }
    const int rc = QApplication::exec();
    g_window = nullptr;
    if (probe)
        probe->print();
    return rc;
}
