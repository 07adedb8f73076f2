// kestrel-cli record: records a line (real ports or the simulated line) into a
// record file through the same capture, recorder and writer as the window.

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cerrno>
#include <charconv>
#include <csignal>
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
#include "capture/capture_wiring.h"
#include "record/clock.h"
#include "record/record_file.h"
#include "record/record_store.h"
#include "capture/recorder.h"
#include "ports/scenario.h"
#include "ports/sim_port.h"
#include "ports/termios_port.h"
#include "config/data_folder.h"
#include "config/date_time_text.h"
#include "config/record_setup.h"
#include "base/string_table.h"
#include "command.h"

namespace kestrel::cli {
namespace {

const char *kRecordUsage =
    "usage: kestrel-cli record -o FILE.ksr (--simulate [SCENARIO] | --port-a DEV --port-b DEV)\n"
    "                          [--baud N] [--data-bits 5|6|7|8] [--parity N|E|O|M|S]\n"
    "                          [--stop-bits 1|1.5|2] [--append|--replace] [--duration SECONDS]\n"
    "       kestrel-cli record --env FILE.kef [any option above]\n"
    "  --env takes both ports, their line settings and the record file from an environment;\n"
    "  options given on the command line win over it.\n"
    "  Records until --duration has passed, the scenario has ended, or Ctrl-C / SIGTERM;\n"
    "  every received byte is in the file and the stop mark is written in each case.\n"
    "  --simulate without a SCENARIO file plays the built-in demo line.\n"
    "  An existing recording needs --append or --replace.\n";

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
    int mode = RecordMode::None;
    std::optional<double> duration;
};

int usageError(const std::string &what)
{
    std::fprintf(stderr, "kestrel-cli record: %s\n%s", what.c_str(), kRecordUsage);
    return kExitUsage;
}

bool isNumber(const std::string &s, long lo, long hi)
{
    long v = 0;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    return ec == std::errc() && end == s.data() + s.size() && v >= lo && v <= hi;
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
    if (!o.simulate) {
        if (o.portA.empty())
            o.portA = setup.portA.device;
        if (o.portB.empty())
            o.portB = setup.portB.device;
    }
    const std::string from = "the environment '" + o.environment + "' has ";
    if (!o.given.baud) {
        if (!isNumber(setup.portA.baud, 50, 20'000'000))
            return usageError(from + "baud rate " + setup.portA.baud + "; give --baud");
        o.texts.baud = setup.portA.baud;
    }
    if (!o.given.dataBits) {
        if (!isNumber(setup.portA.dataBits, 5, 8))
            return usageError(from + setup.portA.dataBits + " data bits; give --data-bits");
        o.texts.dataBits = setup.portA.dataBits;
    }
    if (!o.given.parity)
        o.texts.parity = setup.portA.parity;
    if (!o.given.stopBits)
        o.texts.stopBits = setup.portA.stopBits;
    return std::nullopt;
}

// Parses the options; returns an exit code when they are not usable.
std::optional<int> parseOptions(const std::vector<std::string> &args, RecordOptions &o)
{
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &a = args[i];
        auto value = [&](std::string &out) {
            if (i + 1 >= args.size() || args[i + 1].empty())
                return false;
            out = args[++i];
            return true;
        };
        std::string v;
        if (a == "--help" || a == "-h") {
            std::fputs(kRecordUsage, stdout);
            return kExitOk;
        } else if (a == "-o" || a == "--output") {
            if (!value(o.output))
                return usageError(a + " needs a file name");
        } else if (a == "--simulate") {
            o.simulate = true;
            if (i + 1 < args.size() && !args[i + 1].empty() && args[i + 1][0] != '-')
                o.scenario = args[++i];
        } else if (a == "--port-a") {
            if (!value(o.portA))
                return usageError("--port-a needs a device");
        } else if (a == "--port-b") {
            if (!value(o.portB))
                return usageError("--port-b needs a device");
        } else if (a == "--baud") {
            if (!value(v) || !isNumber(v, 50, 20'000'000))
                return usageError("--baud needs a whole number from 50 to 20000000");
            o.texts.baud = v;
            o.given.baud = true;
        } else if (a == "--data-bits") {
            if (!value(v) || !isNumber(v, 5, 8))
                return usageError("--data-bits must be 5, 6, 7 or 8");
            o.texts.dataBits = v;
            o.given.dataBits = true;
        } else if (a == "--parity") {
            if (!value(v) || v.size() != 1 || !std::strchr("NEOMSneoms", v[0]))
                return usageError("--parity must be N, E, O, M or S");
            o.texts.parity = std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(v[0]))));
            o.given.parity = true;
        } else if (a == "--stop-bits") {
            if (!value(v) || (v != "1" && v != "1.5" && v != "2"))
                return usageError("--stop-bits must be 1, 1.5 or 2");
            o.texts.stopBits = v;
            o.given.stopBits = true;
        } else if (a == "--env") {
            if (!value(o.environment))
                return usageError("--env needs an environment file");
        } else if (a == "--append" || a == "--replace") {
            const int m = a == "--append" ? RecordMode::Append : RecordMode::Replace;
            if (o.mode != RecordMode::None && o.mode != m)
                return usageError("--append and --replace exclude each other");
            o.mode = m;
        } else if (a == "--duration") {
            double d = 0;
            if (!value(v))
                return usageError("--duration needs a number of seconds");
            const auto [end, ec] = std::from_chars(v.data(), v.data() + v.size(), d);
            if (ec != std::errc() || end != v.data() + v.size() || !(d > 0) || d > 1e7)
                return usageError("--duration needs a positive number of seconds, not '" + v + "'");
            o.duration = d;
        } else {
            return usageError("unknown option '" + a + "'");
        }
    }
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

// Messages in German when the locale asks for it, else in English.
void chooseLanguageFromLocale()
{
    const char *lang = nullptr;
    for (const char *var : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        lang = std::getenv(var);
        if (lang && *lang)
            break;
    }
    SetGlobalLang(lang && std::strncmp(lang, "de", 2) == 0 ? kLangGerman : kLangEnglish);
}

int runRecord(const std::vector<std::string> &args)
{
    chooseLanguageFromLocale();
    RecordOptions o;
    if (const auto exit = parseOptions(args, o))
        return *exit;

    std::error_code ec;
    const std::string output = std::filesystem::absolute(o.output, ec).lexically_normal().string();
    {
        RecordFile probe;
        probe.setPath(output);
        if (probe.exists() && probe.recordCount() > 0 && o.mode == RecordMode::None) {
            std::fprintf(stderr, "kestrel-cli record: %s holds a recording; use --append or --replace\n",
                         output.c_str());
            return kExitUsage;
        }
    }

    std::optional<Scenario> scenario;
    if (o.simulate) {
        ScenarioError err;
        scenario = o.scenario.empty() ? ParseScenario(DemoScenarioText(), err) : LoadScenarioFile(o.scenario, err);
        if (!scenario) {
            std::fprintf(stderr, "kestrel-cli record: %s:%d: %s\n",
                         o.scenario.empty() ? "demo scenario" : o.scenario.c_str(), err.line, err.reason.c_str());
            return kExitUsage;
        }
    }

    int argc = 1;
    char name[] = "kestrel-cli";
    char *argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    if (!installStopSignals()) {
        std::fprintf(stderr, "kestrel-cli record: cannot install signal handlers: %s\n", std::strerror(errno));
        return kExitFailure;
    }

    SystemClock clock;
    std::unique_ptr<SimLine> line;
    std::unique_ptr<ComPort> deviceA, deviceB;
    ComPort *portA = nullptr, *portB = nullptr;
    if (o.simulate) {
        line = std::make_unique<SimLine>(std::move(*scenario), clock);
        portA = &line->portA();
        portB = &line->portB();
    } else {
        deviceA = std::make_unique<TermiosPort>(o.portA);
        deviceB = std::make_unique<TermiosPort>(o.portB);
        portA = deviceA.get();
        portB = deviceB.get();
    }

    ConsolePrompter prompter;
    RecordStore store(clock);
    RecordFile file;
    file.setPath(output);
    ReceiveEvent receiveEvent;
    Capture capture(*portA, *portB, store.pending(), prompter);
    CaptureRecorderPorts ports(capture);
    Recorder recorder(store, file, ports, prompter);
    CliRecorderView view;
    recorder.setView(&view);
    recorder.setDelay([](std::chrono::milliseconds) {}); // no redraw thread to wait for
    recorder.setPoster([](std::function<void()> work) { QTimer::singleShot(0, qApp, std::move(work)); });
    recorder.setAppendReplace(o.mode);
    ConnectCaptureToRecorder(capture, recorder, store, receiveEvent);

    capture.setPortList(o.simulate ? std::vector<std::string>{portA->device(), portB->device()}
                                   : std::vector<std::string>{o.portA, o.portB});
    capture.setStoredIndexes(0, 1);
    // Prove the ports and settings before the file is touched: a busy port must not cost a recording.
    if (!capture.TryToOpenPorts(o.texts))
        return kExitFailure;

    recorder.btnRecordClick();
    if (!recorder.recording())
        return kExitFailure; // the reason was printed through the prompter
    view.active = true;

    auto stop = [&recorder] {
        recorder.drainAndStop();
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
    if (recorder.loaded())
        recorder.drainAndStop();
    view.active = false;

    RecordReader check;
    const std::uint64_t mps = check.open(output) ? check.recordCount() : 0;
    std::printf("kestrel-cli record: %s: %llu MPs in the file\n", output.c_str(),
                 static_cast<unsigned long long>(mps));
    if (recorder.writeFailed() || recorder.portLost())
        return kExitFailure;
    return kExitOk;
}

const Registration kRecord({"record", "record a line (real ports or the simulated line) into a record file",
                            &runRecord});

} // namespace
} // namespace kestrel::cli
