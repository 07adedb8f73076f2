// kestrel-cli record: records a line (real ports or the simulated line) into a
// record file through the same capture, recorder and writer as the window.

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "base/string_table.h"
#include "capture/capture.h"
#include "capture/recorder.h"
#include "cli_common.h"
#include "cli_line.h"
#include "cli_session.h"
#include "config/data_folder.h"
#include "config/date_time_text.h"
#include "config/record_setup.h"
#include "ports/port_texts.h"
#include "ports/scenario.h"
#include "ports/sim_port.h"
#include "triggers/trigger_list.h"

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

int runRecord(RecordOptions o)
{
    SetGlobalLang(cli::LanguageFromEnvironment()); // messages in German when the locale asks for it
    if (const auto exit = completeOptions(o))
        return *exit;

    std::error_code ec;
    SessionRun run;
    run.output = std::filesystem::absolute(o.output, ec).lexically_normal().string();
    if (const auto refused = RefuseRecordFile("record", run.output, o.mode))
        return *refused;

    run.texts = o.texts;
    if (o.simulate && !LoadSessionScenario(run, o.scenario, o.given.baud))
        return kExitUsage;
    run.portA = o.portA;
    run.portB = o.portB;
    run.mode = o.mode;
    run.duration = o.duration;
    run.triggers = o.triggers;
    run.allowActions = o.allowActions;
    return RunRecordingSession(run);
}

// A number of seconds above 0, at most 10^7 (nearly four months).
const CLI::Validator kSecondsRule = PositiveNumber(1e7, "seconds");

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
