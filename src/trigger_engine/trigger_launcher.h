#pragma once
// The actions of a fired trigger: the alert program plays its sound, the
// trigger's command is started with its filled-in parameters. Programs are
// started directly (no shell) and not waited for. A start that fails is told
// in a box the first time for that trigger in a recording; later failures of
// the same trigger go to the status line and the log, so an inactivity
// trigger that fails every period overnight does not pile up boxes.

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "trigger_engine/trigger_actions.h"

namespace kestrel {

class Reporter;

// Starts program with args, detached; 0 or the errno of the failure (2: no such file).
using ProgramStarter = std::function<int(const std::string &program, const std::vector<std::string> &args)>;
[[nodiscard]] int StartDetached(const std::string &program, const std::vector<std::string> &args);

// The alert program beside the running executable.
[[nodiscard]] std::string ChimerPath();

// Message numbers of the actions.
namespace TriggerActionMsg {
inline constexpr int InvalidCommand = 7452; // + " Result=" + the code
inline constexpr int InvalidSound = 7453;
inline constexpr int UnclosedQuote = 7455;  // the parameter line has an open quote
inline constexpr int NotAgreed = 7459;      // %1 = trigger number: its action was not run
} // namespace TriggerActionMsg

// What starting one action gives: the program, its arguments, and 0 or the failure code.
struct ActionStart {
    std::string program;
    std::vector<std::string> args;
    int code = 0;
    bool unclosedQuote = false; // the parameter line could not be split
};

class TriggerLauncher final : public TriggerActions {
public:
    explicit TriggerLauncher(Reporter &reporter);

    void setStarter(ProgramStarter starter) { start_ = std::move(starter); }
    void setChimer(std::string path) { chimer_ = std::move(path); }
    // Later failures, for the status line.
    void setStatusSink(std::function<void(const std::string &)> sink) { status_ = std::move(sink); }
    // Which triggers' actions the user agreed to run; the others are only listed
    // (skipped()) and told on the status line.
    using Permission = std::function<bool(const TriggerDef &)>;
    void setPermission(Permission permission) { permission_ = std::move(permission); }
    void setAllowed(bool allowed)
    {
        permission_ = [allowed](const TriggerDef &) { return allowed; };
    }

    void newRecording() override { toldInBox_.clear(); }
    void run(const TriggerDef &trigger) override;

    // The editor's test buttons: the action as it would run, failures always in a box.
    ActionStart testSound(const std::string &file, bool repeat);
    ActionStart testCommand(const TriggerDef &trigger);

    // Actions not run because they were not allowed, one line each.
    [[nodiscard]] const std::vector<std::string> &skipped() const { return skipped_; }

private:
    ActionStart playSound(const std::string &file, bool repeat);
    ActionStart startCommand(const TriggerDef &trigger);
    void tell(const TriggerDef &trigger, const ActionStart &failed);
    void tellInBox(const ActionStart &failed);

    Reporter &reporter_;
    ProgramStarter start_;
    std::string chimer_;
    std::function<void(const std::string &)> status_;
    Permission permission_;
    std::set<int> toldInBox_; // triggers whose failure was shown in a box this recording
    std::vector<std::string> skipped_;
};

} // namespace kestrel
