#include "config/environment_target.h"

#include <algorithm>
#include <cctype>

#include "base/string_table.h"

namespace kestrel {

namespace {
constexpr int kTitleConfirmation = 204;
constexpr int kTitleWarning = 205;
constexpr int kMsgNotAnEnvironment = 7970;
constexpr int kMsgReplaceEnvironment = 7971;

bool Blank(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

bool SameFile(const std::filesystem::path &a, const std::filesystem::path &b)
{
    std::error_code ec;
    if (std::filesystem::equivalent(a, b, ec))
        return true;
    return std::filesystem::absolute(a, ec).lexically_normal() == std::filesystem::absolute(b, ec).lexically_normal();
}
} // namespace

bool HoldsEnvironment(const IniFile &ini)
{
    for (const char *section : {"ComA", "ComB", "Customer", "Description", "Trigger0"})
        if (ini.SectionExists(section))
            return true;
    return ini.ValueExists("Files", "Record data");
}

EnvFileCheck CheckEnvironmentFile(const std::filesystem::path &file)
{
    IniReadResult read = ReadIniFile(file);
    EnvFileCheck check;
    if (!read.existed)
        return check;
    if (!read.status.ok() || read.notSettingsFile) {
        check.kind = EnvFileKind::Refused;
        check.status = read.status;
        return check;
    }
    if (HoldsEnvironment(read.ini))
        check.kind = EnvFileKind::Environment;
    else
        check.kind = Blank(read.ini.ToText()) ? EnvFileKind::Empty : EnvFileKind::Foreign;
    return check;
}

std::string WithEnvironmentExtension(const std::string &path)
{
    const std::filesystem::path p(path);
    if (p.filename().empty() || p.has_extension())
        return path;
    return path + ".kef";
}

bool MaySaveEnvironmentTo(Prompter &prompter, const std::filesystem::path &file, const std::filesystem::path &current)
{
    switch (CheckEnvironmentFile(file).kind) {
    case EnvFileKind::Foreign:
        return prompter.ShowMessage(Str(kTitleWarning), StrArg(kMsgNotAnEnvironment, file.string()),
                                    Buttons::YesNoDefaultNo, Icon::Warning) == MsgResult::Yes;
    case EnvFileKind::Environment:
        if (SameFile(file, current))
            return true;
        return prompter.ShowMessage(Str(kTitleConfirmation), StrArg(kMsgReplaceEnvironment, file.string()),
                                    Buttons::YesNo, Icon::Confirmation) == MsgResult::Yes;
    case EnvFileKind::Missing:
    case EnvFileKind::Empty:
    case EnvFileKind::Refused:
        break;
    }
    return true;
}

} // namespace kestrel
