// kestrel-cli record: records a line (real ports or the simulated line) into a
// record file through the same capture, recorder and writer as the window.

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <sys/stat.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <fcntl.h>
#include <unistd.h>

#include "base/console_prompter.h"
#include "capture/capture.h"
#include "capture/recording_session.h"
#include "record/clock.h"
#include "record/record_file.h"
#include "record/recording_check.h"
#include "record/record_store.h"
#include "capture/recorder.h"
#include "ports/port_texts.h"
#include "ports/scenario.h"
#include "ports/sim_port.h"
#include "ports/termios_port.h"
#include "config/data_folder.h"
#include "config/date_time_text.h"
#include "config/record_setup.h"
#include "base/string_table.h"
#include "trigger_engine/trigger_engine.h"
#include "trigger_engine/trigger_launcher.h"
#include "triggers/trigger_texts.h"
#include "cli_common.h"
#include "cli_line.h"

namespace kestrel::cli {
namespace {

struct RecordOptions {
    std::string output;
    bool simulate = false;
    std::string scenario;
    std::string portA, portB;
    PortComboTexts texts;
    struct {
        bool baud = false, dataBits = false, parity = false, stopBits = false;
    } given; // line settings named on the command line win over an environment's
    std::string environment;
    TriggerList triggers; // the environment's; the active ones gate the recording
    bool allowActions = false;
    int mode = RecordMode::None;
    std::optional<double> duration;
};

int usageError(const std::string &what)
{
    return UsageError("record", what);
}

// Fills what the command line left open from the environment file, if one was named.
std::optional<int> applyEnvironment(RecordOptions &o)
{
    if (o.environment.empty())
        return std::nullopt;
    EnvLoadContext ctx;
    ctx.dataFolder = ResolveDataFolder(std::nullopt);
    ctx.now = CurrentLocalDateTime();
    const EnvLoadResult env = LoadEnvironment(std::filesystem::path(o.environment), ctx);
    if (!env.existed || !env.status.ok()) {
        std::fprintf(stderr, "kestrel-cli record: %s\n",
                     env.existed ? env.status.detail.c_str()
                                 : ("environment '" + o.environment + "' does not exist").c_str());
        return kExitFailure;
    }
    const RecordSetup setup = RecordSetupFromEnvironment(
        env.env, o.output.empty() ? std::nullopt : std::optional<std::string>(o.output));
    std::string recordFile = setup.recordFile;
    if (o.output.empty() && !recordFile.empty() && std::filesystem::path(recordFile).parent_path().empty())
        recordFile = (ctx.dataFolder / kRecordingsFolder / recordFile).string(); // a bare name lives in recordings/
    if (o.output.empty() && recordFile.rfind((ctx.dataFolder / kRecordingsFolder).string(), 0) == 0) {
        if (const Result made = EnsureDataFolder(ctx.dataFolder); !made.ok()) {
            std::fprintf(stderr, "kestrel-cli record: %s\n", made.detail.c_str());
            return kExitFailure;
        }
    }
    o.output = recordFile;
    o.triggers = env.env.triggers;
    const std::string from = "the environment '" + o.environment + "' has ";
    if (!o.simulate) {
        // Saved while the simulated line ran, it names sim:A and sim:B: that line is recorded
        // again, unless the command line names real ports.
        const bool simA = setup.portA.device == kSimDeviceA;
        const bool simB = setup.portB.device == kSimDeviceB;
        if (simA && simB && o.portA.empty() && o.portB.empty()) {
            o.simulate = true;
            std::fprintf(stderr,
                         "kestrel-cli record: the environment '%s' was saved on the simulated line; recording "
                         "the built-in demo line (give --port-a and --port-b to record real ports)\n",
                         Printable(o.environment).c_str());
        } else {
            if (o.portA.empty() && simA)
                return usageError(from + "port A on the simulated line (" + kSimDeviceA + "); give --port-a");
            if (o.portB.empty() && simB)
                return usageError(from + "port B on the simulated line (" + kSimDeviceB + "); give --port-b");
            if (o.portA.empty())
                o.portA = setup.portA.device;
            if (o.portB.empty())
                o.portB = setup.portB.device;
        }
    }
    if (!o.given.baud) {
        if (!kBaudRule(setup.portA.baud).empty())
            return usageError(from + "baud rate " + setup.portA.baud + "; give --baud");
        o.texts.baud = setup.portA.baud;
    }
    if (!o.given.dataBits) {
        if (!kDataBitsRule(setup.portA.dataBits).empty())
            return usageError(from + setup.portA.dataBits + " data bits; give --data-bits");
        o.texts.dataBits = setup.portA.dataBits;
    }
    if (!o.given.parity)
        o.texts.parity = setup.portA.parity;
    if (!o.given.stopBits)
        o.texts.stopBits = setup.portA.stopBits;
    return std::nullopt;
}

// Fills in what an environment gives and checks what only all options together tell; returns an
// exit code when they are not usable.
std::optional<int> completeOptions(RecordOptions &o)
{
    if (const auto exit = applyEnvironment(o))
        return exit;
    if (o.output.empty())
        return usageError("-o FILE.ksr (or --env FILE.kef) is required");
    if (o.simulate == (!o.portA.empty() || !o.portB.empty()))
        return usageError("give either --simulate or --port-a and --port-b");
    if (!o.simulate && (o.portA.empty() || o.portB.empty()))
        return usageError("both --port-a and --port-b are needed");
    if (!o.simulate && o.portA == o.portB)
        return usageError("port A and port B must be different devices");
    return std::nullopt;
}

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
    void triggerStatusText(const std::string &text) override
    {
        if (!text.empty())
            std::printf("kestrel-cli record: %s\n", text.c_str());
    }
    void triggerFired(const TriggerDef &t, std::uint32_t mp) override
    {
        std::printf("kestrel-cli record: trigger %d (%s) fired at MP %u: %s\n", t.number, Printable(t.Name).c_str(), mp,
                    DescribeTrigger(t).c_str());
        std::fflush(stdout);
    }
};

// A file that is not a recording is never touched; a recording only with --append or --replace.
std::optional<int> refuseOutput(const std::string &output, int mode)
{
    struct stat st {};
    if (::stat(output.c_str(), &st) != 0)
        return std::nullopt; // missing: the recorder makes it (and says why when it cannot)
    RecordReader reader;
    if (const Result opened = reader.open(output); !opened) {
        std::fprintf(stderr, "kestrel-cli record: cannot use %s: %s\n", output.c_str(), opened.detail.c_str());
        return kExitFailure;
    }
    const RecordingCheck found = CheckRecording(reader, CheckDepth::Writable);
    if (found.kind == RecordingKind::NotRecording) {
        std::fprintf(stderr,
                     "kestrel-cli record: %s is not a Kestrel recording (%s); it is left unchanged. "
                     "Remove it or record into another file.\n",
                     output.c_str(), DescribeProblem(found).c_str());
        return kExitFailure;
    }
    if (found.isRecording() && mode == RecordMode::None) {
        std::fprintf(stderr, "kestrel-cli record: %s holds a recording; use --append or --replace\n", output.c_str());
        return kExitUsage;
    }
    return std::nullopt;
}

int runRecord(RecordOptions o)
{
    SetGlobalLang(cli::LanguageFromEnvironment()); // messages in German when the locale asks for it
    if (const auto exit = completeOptions(o))
        return *exit;

    std::error_code ec;
    const std::string output = std::filesystem::absolute(o.output, ec).lexically_normal().string();
    if (const auto refused = refuseOutput(output, o.mode))
        return *refused;

    std::optional<Scenario> scenario;
    if (o.simulate) {
        ScenarioError err;
        scenario = o.scenario.empty() ? ParseScenario(DemoScenarioText(), err) : LoadScenarioFile(o.scenario, err);
        if (!scenario) {
            std::fprintf(stderr, "kestrel-cli record: %s: %s\n",
                         o.scenario.empty() ? "demo scenario" : Printable(o.scenario).c_str(), Printable(err.text()).c_str());
            return kExitUsage;
        }
        // A scenario faster than the line settings is recorded at its own rate unless --baud
        // says otherwise (a real UART could not receive faster than it is set).
        if (!o.given.baud && scenario->baud > ParseBaudText(o.texts.baud).value_or(0))
            o.texts.baud = std::to_string(scenario->baud);
    }

    int argc = 1;
    char name[] = "kestrel-cli";
    char *argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    if (!installStopSignals()) {
        std::fprintf(stderr, "kestrel-cli record: cannot install signal handlers: %s\n", std::strerror(errno));
        return kExitFailure;
    }

    ConsolePrompter prompter;
    PromptReporter reporter(prompter);
    std::unique_ptr<RecordingSession> session =
        o.simulate ? RecordingSession::Simulated(std::move(*scenario), reporter)
                   : RecordingSession::Serial({o.portA, o.portB}, reporter);
    session->capture().setStoredIndexes(0, 1);
    session->file().setPath(output);
    Recorder &recorder = session->recorder();
    CliRecorderView view;
    recorder.setView(&view);
    recorder.setDelay([](std::chrono::milliseconds) {}); // no redraw thread to wait for
    recorder.setAppendReplace(o.mode);
    SimLine *line = session->simLine();

    CliTriggerView triggerView;
    TriggerLauncher launcher(reporter);
    launcher.setAllowed(o.allowActions);
    launcher.setStatusSink([](const std::string &text) { std::fprintf(stderr, "kestrel-cli record: %s\n", text.c_str()); });
    if (o.triggers.ActiveCount() > 0) {
        auto engine = std::make_unique<TriggerEngine>();
        engine->setTriggers(&o.triggers);
        engine->setActions(&launcher);
        engine->setView(&triggerView);
        session->setTriggerHooks(std::move(engine));
    }

    // Prove the ports and settings before the file is touched: a busy port must not cost a recording.
    bool portsOpen = true;
    for (const Result &r : session->tryPorts(o.texts)) {
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
                          std::chrono::milliseconds(static_cast<std::int64_t>(o.duration.value_or(0) * 1000.0));
    auto armDuration = [&] {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            stop();
        else
            durationTimer.start(static_cast<int>(std::min<std::int64_t>(left.count(), 86'400'000)));
    };
    QObject::connect(&durationTimer, &QTimer::timeout, &app, armDuration);
    if (o.duration)
        armDuration();
    QTimer finishedWatch;
    if (line) {
        line->restart();
        line->start();
        if (!o.duration) {
            QObject::connect(&finishedWatch, &QTimer::timeout, &app, [&] {
                if (line->finished())
                    stop();
            });
            finishedWatch.start(50);
        }
    }

    app.exec();
    if (line)
        line->stopTimer();
    if (session->loaded())
        session->drainAndStop();
    view.active = false;

    RecordReader check;
    const std::uint64_t mps = check.open(output) ? check.recordCount() : 0;
    std::printf("kestrel-cli record: %s: %llu MPs in the file\n", output.c_str(),
                 static_cast<unsigned long long>(mps));
    if (!launcher.skipped().empty()) {
        std::printf("kestrel-cli record: %zu trigger actions were not run (give --allow-actions to run them):\n",
                    launcher.skipped().size());
        for (const std::string &line : launcher.skipped())
            std::printf("  %s\n", Printable(line).c_str());
    }
    if (recorder.writeFailed() || recorder.portLost())
        return kExitFailure;
    return kExitOk;
}

// A number of seconds above 0, at most 10^7 (nearly four months).
const CLI::Validator kSecondsRule(
    [](std::string &text) {
        double d = 0;
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), d);
        if (ec != std::errc() || end != text.data() + text.size() || !(d > 0) || d > 1e7)
            return "needs a positive number of seconds, not '" + text + "'";
        return std::string();
    },
    "");

std::function<int()> declareRecord(CLI::App &cmd)
{
    auto o = std::make_shared<RecordOptions>();
    cmd.footer("Records a line (real ports or the simulated line) into a record file through the same\n"
               "capture, recorder and writer as the window, until --duration has passed, the scenario\n"
               "has ended, or Ctrl-C / SIGTERM; every received byte is in the file and the stop mark\n"
               "is written in each case.\n\n"
               "Give -o FILE.ksr (or --env FILE.kef) and either --simulate or --port-a and --port-b.\n"
               "--env takes both ports, their line settings and the record file from an environment;\n"
               "options given on the command line win over it; one saved on the simulated line\n"
               "records that line again unless --port-a and --port-b name real ports. An existing\n"
               "recording needs --append or --replace.\n\n"
               "The environment's active triggers gate the recording as in the window: nothing is\n"
               "recorded before a start trigger fires, and a chain that ends with a stop trigger ends\n"
               "the command (exit code 0). Their sounds and commands run only with --allow-actions.");
    cmd.add_option("-o,--output", o->output, "the record file")->type_name("FILE.ksr")->check(kNotEmpty);
    CLI::Option *simulate =
        cmd.add_option("--simulate", o->scenario, "record the simulated line; without SCENARIO the built-in demo")
            ->type_name("[SCENARIO]")
            ->expected(0, 1);
    CLI::Option *portA = cmd.add_option("--port-a", o->portA, "device of port A")->type_name("DEV")->check(kNotEmpty);
    CLI::Option *portB = cmd.add_option("--port-b", o->portB, "device of port B")->type_name("DEV")->check(kNotEmpty);
    simulate->excludes(portA)->excludes(portB);
    const LineOptionHandles line = AddLineSettings(cmd, o->texts);
    line.baud->each([o](const std::string &) { o->given.baud = true; });
    line.dataBits->each([o](const std::string &) { o->given.dataBits = true; });
    line.parity->each([o](const std::string &) { o->given.parity = true; });
    line.stopBits->each([o](const std::string &) { o->given.stopBits = true; });
    CLI::Option *append =
        cmd.add_flag_callback("--append", [o] { o->mode = RecordMode::Append; }, "add to an existing recording");
    CLI::Option *replace =
        cmd.add_flag_callback("--replace", [o] { o->mode = RecordMode::Replace; }, "replace an existing recording");
    append->excludes(replace);
    cmd.add_option("--env", o->environment, "take ports, line settings and record file from an environment")
        ->type_name("FILE.kef")
        ->check(kNotEmpty);
    cmd.add_flag("--allow-actions", o->allowActions,
                 "let the environment's triggers play sounds and start commands (not run without it)");
    const auto setDuration = [o](const std::string &text) {
        double seconds = 0;
        std::from_chars(text.data(), text.data() + text.size(), seconds);
        o->duration = seconds;
    };
    cmd.add_option_function<std::string>("--duration", setDuration, "stop after this many seconds")
        ->type_name("SECONDS")
        ->check(kSecondsRule);
    return [o, simulate] {
        o->simulate = simulate->count() > 0;
        return runRecord(*o);
    };
}

const Registration kRecord({"record", "record a line (real ports or the simulated line) into a record file",
                            &declareRecord});

} // namespace
} // namespace kestrel::cli
