#pragma once
// Which trigger actions the user agreed to run. An environment file from
// elsewhere may carry triggers that play sounds or start programs; those run
// only after the user said yes to a question that lists them. The agreement
// is kept per environment file and per exact action (a changed command, sound
// file or parameter line asks again), one fingerprint a line in a small file
// of the data folder. Actions the user made in the editor count as agreed.

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "base/result.h"
#include "triggers/trigger_list.h"

namespace kestrel {

// The action of one trigger in one environment file; empty when it has none.
[[nodiscard]] std::string ActionFingerprint(const std::string &environmentFile, const TriggerDef &trigger);

// One line per action: "3 dial: run /usr/bin/notify-send 'call %TRIG_NAME%'".
[[nodiscard]] std::vector<std::string> DescribeActions(const std::vector<const TriggerDef *> &triggers);

class ActionConsent {
public:
    // file: where agreements are kept; empty keeps them for this run only.
    explicit ActionConsent(std::filesystem::path file = {});

    [[nodiscard]] bool agreed(const std::string &environmentFile, const TriggerDef &trigger) const;
    // The triggers of the list whose actions are not agreed yet.
    [[nodiscard]] std::vector<const TriggerDef *> pending(const std::string &environmentFile,
                                                          const TriggerList &triggers) const;
    // Remembers the actions (and writes them to the file); a failure to write is returned,
    // the agreement holds for this run anyway.
    Result agree(const std::string &environmentFile, const std::vector<const TriggerDef *> &triggers);

private:
    std::filesystem::path file_;
    std::set<std::string> agreed_;
};

} // namespace kestrel
