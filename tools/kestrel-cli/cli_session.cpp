#include "cli_session.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "base/console_prompter.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "cli_common.h"
#include "ports/port_texts.h"
#include "ports/sim_port.h"
#include "record/record_reader.h"
#include "record/recording_check.h"
#include "trigger_engine/trigger_engine.h"
#include "trigger_engine/trigger_launcher.h"
#include "triggers/trigger_texts.h"

namespace kestrel::cli {
namespace {

// Ctrl-C and SIGTERM reach the event loop through a pipe.
int g_signalPipe[2] = {-1, -1};

void onStopSignal(int)
{
    const char c = 's';
    const int saved = errno;
    [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[1], &c, 1);
    errno = saved;
}

bool installStopSignals()
{
    if (::pipe2(g_signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return false;
    struct sigaction sa {};
    sa.sa_handler = onStopSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    // A file-size limit (quota, ulimit -f) would kill us in the middle of a write; ignored, the
    // write falls short and is reported and handled like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    return ::sigaction(SIGINT, &sa, nullptr) == 0 && ::sigaction(SIGTERM, &sa, nullptr) == 0;
}

// The recorder tells us when it went idle by itself (port lost, disk full).
class CliRecorderView final : public RecorderView {
public:
    void SetRecordOffControls() override
    {
        if (active)
            QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
    }
    bool active = false;
};

// Trigger evaluation tells what it waits for and what fired.
class CliTriggerView final : public TriggerEngineView {
public:
    CliTriggerView(const char *command, std::FILE *out) : command(command), out(out) {}
    const char *command;
    std::FILE *out;
    void triggerStatusText(const std::string &text) override
    {
        if (!text.empty())
            std::fprintf(out, "kestrel-cli %s: %s\n", command, text.c_str());
    }
    void triggerFired(const TriggerDef &t, std::uint32_t mp) override
    {
        std::fprintf(out, "kestrel-cli %s: trigger %d (%s) fired at MP %u: %s\n", command, t.number,
                     Printable(t.Name).c_str(), mp, DescribeTrigger(t).c_str());
        std::fflush(out);
    }
};

} // namespace

// A file that is not a recording is never touched; a recording only with --append or --replace.
std::optional<int> RefuseRecordFile(const char *command, const std::string &output, int mode)
{
    struct stat st {};
    if (::stat(output.c_str(), &st) != 0)
        return std::nullopt; // missing: the recorder makes it (and says why when it cannot)
    RecordReader reader;
    if (const Result opened = reader.open(output); !opened) {
        std::fprintf(stderr, "kestrel-cli %s: cannot use %s: %s\n", command, output.c_str(), opened.detail.c_str());
        return kExitFailure;
    }
    const RecordingCheck found = CheckRecording(reader, CheckDepth::Writable);
    if (found.kind == RecordingKind::NotRecording) {
        std::fprintf(stderr,
                     "kestrel-cli %s: %s is not a Kestrel recording (%s); it is left unchanged. "
                     "Remove it or record into another file.\n",
                     command, output.c_str(), DescribeProblem(found).c_str());
        return kExitFailure;
    }
    if (found.isRecording() && mode == RecordMode::None) {
        std::fprintf(stderr, "kestrel-cli %s: %s holds a recording; use --append or --replace\n", command,
                     output.c_str());
        return kExitUsage;
    }
    return std::nullopt;
}


bool LoadSessionScenario(SessionRun &run, const std::string &file, bool baudGiven)
{
    ScenarioError err;
    run.scenario = LoadScenario(file, err);
    if (!run.scenario) {
        std::fprintf(stderr, "kestrel-cli %s: %s: %s\n", run.command,
                     file.empty() ? "demo scenario" : Printable(file).c_str(), Printable(err.text()).c_str());
        return false;
    }
    // A real UART could not receive faster than it is set; a scenario may.
    if (!baudGiven && run.scenario->baud > ParseBaudText(run.texts.baud).value_or(0))
        run.texts.baud = std::to_string(run.scenario->baud);
    return true;
}

int RunRecordingSession(SessionRun &run)
{
    int argc = 1;
    char name[] = "kestrel-cli";
    char *argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    if (!installStopSignals()) {
        std::fprintf(stderr, "kestrel-cli %s: cannot install signal handlers: %s\n", run.command, std::strerror(errno));
        return kExitFailure;
    }

    ConsolePrompter prompter;
    PromptReporter reporter(prompter);
    std::unique_ptr<RecordingSession> session =
        run.scenario ? RecordingSession::Simulated(std::move(*run.scenario), reporter)
                   : RecordingSession::Serial({run.portA, run.portB}, reporter);
    session->capture().setStoredIndexes(0, 1);
    session->file().setPath(run.output);
    Recorder &recorder = session->recorder();
    CliRecorderView view;
    recorder.setView(&view);
    recorder.setDelay([](std::chrono::milliseconds) {}); // no redraw thread to wait for
    recorder.setAppendReplace(run.mode);
    SimLine *line = session->simLine();

    CliTriggerView triggerView(run.command, run.messages);
    TriggerLauncher launcher(reporter);
    launcher.setAllowed(run.allowActions);
    launcher.setStatusSink([&run](const std::string &text) {
        std::fprintf(stderr, "kestrel-cli %s: %s\n", run.command, text.c_str());
    });
    if (run.triggers.ActiveCount() > 0) {
        auto engine = std::make_unique<TriggerEngine>();
        engine->setTriggers(&run.triggers);
        engine->setActions(&launcher);
        engine->setView(&triggerView);
        session->setTriggerHooks(std::move(engine));
    }

    // Prove the ports and settings before the file is touched: a busy port must not cost a recording.
    bool portsOpen = true;
    for (const Result &r : session->tryPorts(run.texts)) {
        ReportCaptureResult(reporter, r);
        portsOpen = portsOpen && IsCaptureWarning(r);
    }
    if (!portsOpen)
        return kExitFailure;

    session->record();
    if (!session->recording())
        return kExitFailure; // the reason was printed through the reporter
    view.active = true;

    auto stop = [&session] {
        session->drainAndStop();
        QCoreApplication::quit();
    };
    QSocketNotifier signalNotifier(g_signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&signalNotifier, &QSocketNotifier::activated, &app, [&] {
        char buf[16];
        while (::read(g_signalPipe[0], buf, sizeof buf) > 0) {
        }
        stop();
    });
    // A timer's interval is an int of milliseconds: recordings of weeks wait in steps of a day.
    QTimer durationTimer;
    durationTimer.setSingleShot(true);
    durationTimer.setTimerType(Qt::PreciseTimer);
    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::milliseconds(static_cast<std::int64_t>(run.duration.value_or(0) * 1000.0));
    auto armDuration = [&] {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            stop();
        else
            durationTimer.start(static_cast<int>(std::min<std::int64_t>(left.count(), 86'400'000)));
    };
    QObject::connect(&durationTimer, &QTimer::timeout, &app, armDuration);
    if (run.duration)
        armDuration();
    QTimer finishedWatch;
    if (line) {
        line->restart();
        line->start();
        if (!run.duration) {
            QObject::connect(&finishedWatch, &QTimer::timeout, &app, [&] {
                if (line->finished())
                    stop();
            });
            finishedWatch.start(50);
        }
    }

    QTimer tickTimer;
    if (run.tick) {
        QObject::connect(&tickTimer, &QTimer::timeout, &app, [&] {
            if (!run.tick(*session, false))
                stop();
        });
        tickTimer.start(std::max(1, run.tickMs));
    }

    app.exec();
    tickTimer.stop();
    if (line)
        line->stopTimer();
    if (session->loaded())
        session->drainAndStop();
    view.active = false;
    if (run.tick)
        run.tick(*session, true);

    RecordReader check;
    const std::uint64_t mps = check.open(run.output) ? check.recordCount() : 0;
    std::fprintf(run.messages, "kestrel-cli %s: %s: %llu MPs in the file\n", run.command, run.output.c_str(),
                 static_cast<unsigned long long>(mps));
    if (!launcher.skipped().empty()) {
        std::fprintf(run.messages,
                     "kestrel-cli %s: %zu trigger actions were not run (give --allow-actions to run them):\n",
                     run.command, launcher.skipped().size());
        for (const std::string &line : launcher.skipped())
            std::fprintf(run.messages, "  %s\n", Printable(line).c_str());
    }
    if (recorder.writeFailed() || recorder.portLost())
        return kExitFailure;
    return kExitOk;
}

} // namespace kestrel::cli
