#pragma once
// Confirming the options dialog's hardware profile: an existing profile file is
// overwritten only after the user says yes; a new name creates the file; a file
// that holds the fields already is taken as it is, without a question.
// The dialog calls this, acts on the outcome and shows a failed one's result.

#include <filesystem>
#include <string>
#include <vector>

#include "base/prompt.h"
#include "base/result.h"
#include "config/hardware_profile.h"
#include "config/program_config.h"

namespace kestrel {

enum class ProfileConfirmOutcome {
    Written,  // the profile file holds the fields and is the profile in use; close the dialog
    Unchanged, // the file held the fields already: nothing asked or written; it is the profile in use
    Declined, // the user kept the file: profile holds its values again and the dialog stays open
    Failed,   // bad name or the file could not be written (see status); the dialog stays open
};

struct ProfileConfirmResult {
    ProfileConfirmOutcome outcome = ProfileConfirmOutcome::Failed;
    bool createdNew = false;
    std::string profileName;                // the file name in profiles/ that was used (".ksh" added when typed without)
    HardwareProfile profile;                // the values the dialog's fields should show now
    std::vector<std::string> profileList;   // the refreshed list of profiles after a write
    Result status; // Failed: kMsgBadProfileName or kMsgProfileNotSaved, and the name or the reason
};

// profileName is the text of the profile box, a file name inside profiles/; a name
// without the ".ksh" extension gets it, so the profile list offers it again. The
// overwrite question goes to the prompter; nothing else does.
[[nodiscard]] ProfileConfirmResult ConfirmHardwareProfile(Prompter &prompter, const std::filesystem::path &dataFolder,
                                                          const std::string &profileName,
                                                          const HardwareProfile &fields,
                                                          const PortValueLists &listsInUse);

// After a written profile: it becomes the one in use and its lists the offered values.
void ApplyConfirmedProfile(ProgramConfig &cfg, const std::string &profileName, const HardwareProfile &fields);

} // namespace kestrel
