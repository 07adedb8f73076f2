// kestrel-cli env show FILE.kef: prints an environment (ports, record file,
// header, description, triggers) without starting the window.

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli_common.h"
#include "command.h"
#include "config/data_folder.h"
#include "config/environment.h"
#include "config/record_setup.h"
#include "base/string_table.h"
#include "triggers/trigger_texts.h"

namespace {

using namespace kestrel;
using kestrel::cli::Printable;

void Field(const char *label, const std::string &value)
{
    if (!value.empty())
        std::printf("  %-9s %s\n", label, Printable(value).c_str());
}

// A value no port takes is shown as it stands rather than as the setting a port would fall back to.
void PrintPort(const char *label, const EnvPort &port, const EnvPort &line)
{
    const bool parityKnown = line.Parity >= ParityOrdinal::None && line.Parity <= ParityOrdinal::Space;
    const std::string parity = parityKnown ? "parity " + ParityLetter(line.Parity)
                                           : "parity ordinal " + std::to_string(line.Parity) + " (unknown)";
    const std::string stop = line.StopBits == 1 || line.StopBits == 2
                                 ? StopBitsText(line.StopBits, line.DataBits) + " stop bits"
                                 : "StopBits=" + std::to_string(line.StopBits) + " (unknown)";
    std::printf("%s %s (Device %d%s)  %d baud, %d data bits, %s, %s\n", label, Printable(DevicePathOf(port)).c_str(),
                port.Device, port.DevicePath.empty() ? "" : ", path given", line.CustomBaudRate, line.DataBits,
                parity.c_str(), stop.c_str());
}


void PrintTrigger(const TriggerDef &t)
{
    std::printf("  #%d [%s] \"%s\": %s / %s\n", t.number, t.Active ? "active" : "inactive", Printable(t.Name).c_str(),
                TriggerTypeText(t.Type).c_str(), TriggerEventText(t.Event).c_str());
    if (!t.Description.empty())
        std::printf("     description: %s\n", Printable(t.Description).c_str());
    std::printf("     condition: %s\n", Printable(DescribeTrigger(t)).c_str());
    if (t.PlaySound)
        std::printf("     action: play sound '%s'%s\n", Printable(t.SoundFilePath).c_str(), t.PlaySoundRepeat ? " repeatedly" : "");
    if (t.ExecCommand)
        std::printf("     action: start '%s' %s\n", Printable(t.CommandFilePath).c_str(), Printable(t.CommandParams).c_str());
}

int Show(const std::string &file, const std::optional<std::string> &dataDir)
{
    EnvLoadContext ctx;
    ctx.dataFolder = ResolveDataFolder(dataDir);
    ctx.now = CurrentLocalDateTime();
    const EnvLoadResult r = LoadEnvironment(std::filesystem::path(file), ctx);
    if (!r.existed) {
        std::fprintf(stderr, "kestrel-cli env: '%s' does not exist\n", file.c_str());
        return cli::kExitFailure;
    }
    if (!r.status.ok()) {
        std::fprintf(stderr, "kestrel-cli env: %s\n", r.status.detail.c_str());
        return cli::kExitFailure;
    }
    const Environment &env = r.env;
    std::printf("Environment: %s\n", file.c_str());
    PrintPort("Port A:", env.comA, env.comA);
    PrintPort("Port B:", env.comB, env.comA); // port B always runs with port A's line settings
    std::printf("Record file: %s\n", Printable(env.recordFile).c_str());

    std::printf("General:\n");
    for (const auto &k : kGeneralKeys)
        Field(k.key, env.general.*k.field);
    std::printf("Customer:\n");
    for (const auto &k : kCustomerKeys)
        Field(k.key, env.customer.*k.field);
    std::printf("Description (%zu lines):\n", env.description.size());
    for (const auto &line : env.description)
        std::printf("  | %s\n", Printable(line).c_str());

    std::printf("Triggers (%zu, %zu active):\n", env.triggers.size(), env.triggers.ActiveCount());
    for (const auto &t : env.triggers)
        PrintTrigger(t);
    if (!r.triggersWithExternalActions.empty())
        std::printf("%zu trigger(s) would play a sound or start a program; nothing was run.\n",
                    r.triggersWithExternalActions.size());
    return cli::kExitOk;
}

std::function<int()> DeclareEnv(CLI::App &cmd)
{
    struct Options {
        std::string file;
        std::optional<std::string> dataDir;
        int lang = kLangEnglish;
    };
    auto o = std::make_shared<Options>();
    o->lang = cli::LanguageFromEnvironment();
    cmd.require_subcommand(1);
    CLI::App *show = cmd.add_subcommand("show", "print the ports, record file, header, description and triggers");
    show->footer("Nothing in the file is run: triggers that would play a sound or start a program are listed.");
    show->add_option("FILE.kef", o->file, "the environment")->required()->type_name("");
    show->add_option("--data-dir", o->dataDir, "the data folder used for the default record file")->type_name("DIR");
    cli::AddLanguage(*show, o->lang, "the trigger texts", "--language,--lang");
    return [o] {
        SetGlobalLang(o->lang);
        return Show(o->file, o->dataDir);
    };
}

const cli::Registration kRegistration({"env", "show an environment file (.kef)", DeclareEnv});

} // namespace
