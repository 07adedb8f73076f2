#include "config/environment_save.h"

#include "base/error_report.h"

namespace kestrel {

namespace {
constexpr int kTitleFileOperation = 3000;
constexpr int kMsgEnvironmentNotSaved = 7422;
} // namespace

bool SaveEnvironmentReported(Prompter &prompter, const Environment &env, const std::filesystem::path &file,
                             EnvironmentChangeFlag &flag)
{
    const FileResult saved = SaveEnvironment(env, file);
    if (!saved.ok) {
        ReportError(prompter, kTitleFileOperation, kMsgEnvironmentNotSaved, {"environment_save", __LINE__},
                    "\n\n" + saved.error);
        return false;
    }
    flag.SetEnvironmentUnchanged();
    return true;
}

} // namespace kestrel
