#include "config/options_confirm.h"

#include "base/error_report.h"
#include "base/string_table.h"

namespace kestrel {

namespace {
constexpr int kTitleConfirmation = 204;
constexpr int kTitleFileOperation = 3000;
constexpr int kMsgOverwriteProfile = 9208;
constexpr int kMsgBadProfileName = 7420;
constexpr int kMsgProfileNotSaved = 7421;
} // namespace

ProfileConfirmResult ConfirmHardwareProfile(Prompter &prompter, const std::filesystem::path &dataFolder,
                                            const std::string &profileName, const HardwareProfile &fields,
                                            const PortValueLists &listsInUse)
{
    ProfileConfirmResult result;
    result.profile = fields;
    if (!IsValidProfileFileName(profileName)) {
        result.error = "'" + profileName + "'";
        ReportError(prompter, kTitleFileOperation, kMsgBadProfileName, {"options_confirm", __LINE__},
                    "\n\n" + result.error);
        return result;
    }

    result.profileName = WithProfileExtension(profileName);
    const auto path = ProfilePath(dataFolder, result.profileName);
    std::error_code ec;
    const bool exists = std::filesystem::exists(path, ec);
    if (exists) {
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

    const FileResult written = WriteHardwareProfile(fields, path);
    if (!written.ok) {
        result.error = written.error;
        ReportError(prompter, kTitleFileOperation, kMsgProfileNotSaved, {"options_confirm", __LINE__},
                    "\n\n" + written.error);
        return result;
    }
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
