#include "trigger_engine/trigger_form_rules.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "trigger_engine/command_params.h"

namespace kestrel {

bool RegularFileExists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::is_regular_file(path, ec);
}

FileLookup FileLookup::System()
{
    FileLookup files;
    if (const char *path = std::getenv("PATH"))
        files.searchPath = path;
    return files;
}

bool CommandExists(const std::string &command, const FileLookup &files)
{
    if (command.empty())
        return false;
    if (command.find('/') != std::string::npos)
        return files.exists(command);
    std::string_view rest = files.searchPath;
    while (true) {
        const std::size_t colon = rest.find(':');
        const std::string_view folder = rest.substr(0, colon);
        const std::string candidate = (folder.empty() ? std::string(".") : std::string(folder)) + "/" + command;
        if (files.exists(candidate))
            return true;
        if (colon == std::string_view::npos)
            return false;
        rest.remove_prefix(colon + 1);
    }
}

std::optional<int> CheckTriggerForOk(const TriggerDef &t, const FileLookup &files)
{
    if (t.PlaySound && !files.exists(t.SoundFilePath))
        return TrigFormMsg::InvalidSound;
    if (t.ExecCommand && !CommandExists(t.CommandFilePath, files))
        return TrigFormMsg::InvalidCommand;
    if (t.Name.find_first_not_of(" \t") == std::string::npos)
        return TrigFormMsg::NoName;
    if (ContainsPlaceholder(t.Name) || ContainsPlaceholder(t.Description))
        return TrigFormMsg::PlaceholderInName;
    if (t.ExecCommand && !SplitShellWords(t.CommandParams))
        return TrigFormMsg::UnclosedQuote;
    return std::nullopt;
}

std::int32_t EventOfCondition(std::int32_t type, int eventBoxIndex)
{
    if (type == TriggerType::Inactivity)
        return TriggerEvent::Inactivity;
    return EventBoxIndexOf(eventBoxIndex);
}

int EventBoxIndexOf(std::int32_t event)
{
    return event >= TriggerEvent::Data && event <= TriggerEvent::TimeReached ? event : TriggerEvent::Data;
}

int ConditionBoxIndexOf(std::int32_t type)
{
    return type >= TriggerType::StartRecording && type <= TriggerType::Inactivity ? type
                                                                                    : TriggerType::StartRecording;
}

std::int32_t InActivitySecondsFromText(std::string_view text)
{
    long long value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            break;
        value = value * 10 + (c - '0');
        if (value > kMaxInActivitySeconds)
            return kMaxInActivitySeconds; // no need to read on, and no overflow
    }
    return ClampInActivitySeconds(value);
}

DateTimeParts SplitDateTime(double dateTime)
{
    const double whole = std::trunc(dateTime);
    return {static_cast<std::int64_t>(whole), std::fabs(dateTime - whole)};
}

double ComposeTimeReached(double datePart, double timePart)
{
    const std::int64_t day = SplitDateTime(datePart).day;
    const double time = SplitDateTime(timePart).time;
    // Before 1899-12-30 the whole days count back and the time of day still counts forward.
    return datePart < 0 && day <= 0 ? static_cast<double>(day) - time : static_cast<double>(day) + time;
}

} // namespace kestrel
