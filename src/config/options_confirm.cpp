#include "config/options_confirm.h"

#include "base/string_table.h"
#include "config/config_messages.h"

namespace kestrel {

namespace {
constexpr int kTitleConfirmation = 204;
constexpr int kMsgOverwriteProfile = 9208;
} // namespace

ProfileConfirmResult ConfirmHardwareProfile(Prompter &prompter, const std::filesystem::path &dataFolder,
                                            const std::string &profileName, const HardwareProfile &fields,
                                            const PortValueLists &listsInUse)
{
    ProfileConfirmResult result;
    result.profile = fields;
    if (!IsValidProfileFileName(profileName)) {
        result.status = Result::Fail(kMsgBadProfileName, "'" + profileName + "'");
        return result;
    }

    result.profileName = WithProfileExtension(profileName);
    const auto path = ProfilePath(dataFolder, result.profileName);
    std::error_code ec;
    const bool exists = std::filesystem::exists(path, ec);
    if (exists) {
        // Nothing edited (or edited back): no question that says it was changed.
        const IniReadResult current = ReadIniFile(path);
        if (current.status.ok() && !current.notSettingsFile &&
            ReadHardwareProfile(current.ini, listsInUse) == fields) {
            result.outcome = ProfileConfirmOutcome::Unchanged;
            result.profileList = ListHardwareProfiles(dataFolder);
            return result;
        }
        const int answer = prompter.ShowMessage(Str(kTitleConfirmation), Str(kMsgOverwriteProfile), Buttons::YesNo,
                                                Icon::Confirmation);
        if (answer != MsgResult::Yes) {
            // Drop the edits: the fields show the file again and the dialog stays open.
            result.outcome = ProfileConfirmOutcome::Declined;
            result.profile = ReadHardwareProfile(path, listsInUse);
            return result;
        }
    } else {
        std::filesystem::create_directories(path.parent_path(), ec);
    }

    result.status = WriteHardwareProfile(fields, path);
    if (!result.status.ok())
        return result;
    result.outcome = ProfileConfirmOutcome::Written;
    result.createdNew = !exists;
    result.profileList = ListHardwareProfiles(dataFolder);
    return result;
}

void ApplyConfirmedProfile(ProgramConfig &cfg, const std::string &profileName, const HardwareProfile &fields)
{
    cfg.Profile = profileName;
    cfg.portStandards = fields.lists;
}

} // namespace kestrel
