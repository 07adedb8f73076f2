#include "trigger_engine/trigger_launcher.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "base/reporter.h"
#include "base/string_table.h"
#include "trigger_engine/command_params.h"
#include "trigger_engine/trigger_engine.h"
#include "trigger_engine/trigger_engine_log.h"

extern char **environ;

namespace kestrel {


int StartDetached(const std::string &program, const std::vector<std::string> &args)
{
    if (program.empty())
        return ENOENT;
    std::vector<char *> argv;
    argv.push_back(const_cast<char *>(program.c_str()));
    for (const std::string &a : args)
        argv.push_back(const_cast<char *>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid = 0;
    // A bare name is looked up on PATH as a shell would; a path is taken as it is.
    const bool bare = program.find('/') == std::string::npos;
    const int rc = bare ? posix_spawnp(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ)
                        : posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ);
    if (rc != 0)
        return rc;
    // Nobody waits for the program; this keeps it from lingering as a zombie when it ends.
    std::thread([pid] { waitpid(pid, nullptr, 0); }).detach();
    return 0;
}

std::string ChimerPath()
{
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    return (ec ? std::filesystem::path("kestrel-chimer") : self.parent_path() / "kestrel-chimer").string();
}

TriggerLauncher::TriggerLauncher(Reporter &reporter) : reporter_(reporter), start_(StartDetached), chimer_(ChimerPath())
{
}

ActionStart TriggerLauncher::playSound(const std::string &file, bool repeat)
{
    ActionStart s{chimer_, {repeat ? "-r" : "-s", file}, 0};
    s.code = start_(s.program, s.args);
    return s;
}

ActionStart TriggerLauncher::startCommand(const TriggerDef &trigger)
{
    ActionStart s;
    s.program = trigger.CommandFilePath;
    const auto words = SplitShellWords(trigger.CommandParams);
    if (!words) {
        s.code = EINVAL;
        s.unclosedQuote = true;
        return s;
    }
    s.args = FillPlaceholders(*words, trigger, TimestampText());
    s.code = start_(s.program, s.args);
    return s;
}

void TriggerLauncher::run(const TriggerDef &trigger)
{
    if (permission_ && !permission_(trigger)) {
        if (status_)
            status_(StrArg(TriggerActionMsg::NotAgreed, std::to_string(trigger.number)));
        if (trigger.PlaySound)
            skipped_.push_back("trigger " + std::to_string(trigger.number) + ": play " + trigger.SoundFilePath);
        if (trigger.ExecCommand)
            skipped_.push_back("trigger " + std::to_string(trigger.number) + ": run " + trigger.CommandFilePath + " " +
                               trigger.CommandParams);
        return;
    }
    if (trigger.PlaySound) {
        const ActionStart s = playSound(trigger.SoundFilePath, trigger.PlaySoundRepeat);
        if (s.code != 0)
            tell(trigger, s);
    }
    if (trigger.ExecCommand) {
        const ActionStart s = startCommand(trigger);
        if (s.code != 0)
            tell(trigger, s);
        else
            qCInfo(lcTriggers) << "trigger" << trigger.number << "started" << s.program.c_str();
    }
}

ActionStart TriggerLauncher::testSound(const std::string &file, bool repeat)
{
    ActionStart s = playSound(file, repeat);
    if (s.code != 0)
        tellInBox(s);
    return s;
}

ActionStart TriggerLauncher::testCommand(const TriggerDef &trigger)
{
    ActionStart s = startCommand(trigger);
    if (s.code != 0)
        tellInBox(s);
    return s;
}

void TriggerLauncher::tell(const TriggerDef &trigger, const ActionStart &failed)
{
    qCWarning(lcTriggers) << "trigger" << trigger.number << "could not start" << failed.program.c_str() << "code"
                          << failed.code;
    if (toldInBox_.insert(trigger.number).second) {
        tellInBox(failed);
        return;
    }
    if (status_)
        status_(Str(TriggerActionMsg::InvalidCommand) + " Result=" + std::to_string(failed.code) + " (" +
                std::to_string(trigger.number) + ": " + failed.program + ")");
}

void TriggerLauncher::tellInBox(const ActionStart &failed)
{
    const Result why = failed.unclosedQuote
                           ? Result::Fail(TriggerActionMsg::UnclosedQuote)
                           : Result::Fail(TriggerActionMsg::InvalidCommand, " Result=" + std::to_string(failed.code));
    reporter_.report(TriggerEngineMsg::Title, why, {}, Severity::Warning);
}

} // namespace kestrel
