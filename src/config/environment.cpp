#include "config/environment.h"

#include <cctype>

#include "config/date_time_text.h"

namespace kestrel {

namespace {

constexpr const char *kFiles = "Files";
constexpr const char *kRecordData = "Record data";
constexpr const char *kGeneral = "General";
constexpr const char *kCustomer = "Customer";
constexpr const char *kDescription = "Description";
constexpr const char *kTrigger = "Trigger";

void LoadPort(const IniFile &ini, const char *section, int defaultDevice, EnvPort &port)
{
    port.Device = ini.ReadInteger(section, "Device", defaultDevice);
    port.DevicePath = ini.ReadString(section, kDevicePathKey, "");
    port.CustomBaudRate = ini.ReadInteger(section, "CustomBaudRate", 9600);
    port.DataBits = ini.ReadInteger(section, "DataBits", 8);
    port.Parity = ini.ReadInteger(section, "Parity", ParityOrdinal::None);
    port.StopBits = ini.ReadInteger(section, "StopBits", 1);
}

void StorePort(IniFile &ini, const char *section, const EnvPort &port)
{
    ini.WriteInteger(section, "Device", port.Device);
    if (!port.DevicePath.empty())
        ini.WriteString(section, kDevicePathKey, port.DevicePath);
    else
        ini.DeleteKey(section, kDevicePathKey); // an old path must not override the chosen number
    ini.WriteInteger(section, "CustomBaudRate", port.CustomBaudRate);
    ini.WriteInteger(section, "DataBits", port.DataBits);
    ini.WriteInteger(section, "Parity", port.Parity);
    ini.WriteInteger(section, "StopBits", port.StopBits);
}

// A record path written on Windows ("C:\...\x.ksr", "\\server\share\x.ksr") names no file
// here (it would become a file with backslashes in its name in the working folder):
// the file keeps its name and goes to recordings/ of the data folder.
std::string LocalRecordPath(const std::string &stored, const std::filesystem::path &dataFolder)
{
    const bool drive = stored.size() >= 3 && std::isalpha(static_cast<unsigned char>(stored[0])) && stored[1] == ':' &&
                       (stored[2] == '\\' || stored[2] == '/');
    const bool share = stored.rfind("\\\\", 0) == 0;
    if (!drive && !share)
        return stored;
    const std::string name = stored.substr(stored.find_last_of("\\/") + 1);
    return (dataFolder / kRecordingsFolder / (name.empty() ? kDefaultRecordFileName : name)).string();
}

} // namespace

std::string DefaultRecordFile(const std::filesystem::path &dataFolder)
{
    return (dataFolder / kRecordingsFolder / kDefaultRecordFileName).string();
}

std::string EffectiveRecordFile(const std::string &fromEnvironment, const std::optional<std::string> &commandLineRecord)
{
    if (commandLineRecord && !commandLineRecord->empty())
        return *commandLineRecord;
    return fromEnvironment;
}

void StoreTrigger(const TriggerDef &t, const std::string &section, IniFile &ini)
{
    ini.WriteString(section, "Name", t.Name);
    ini.WriteString(section, "Description", t.Description);
    ini.WriteBool(section, "Active", t.Active);
    ini.WriteInteger(section, "Type", t.Type);
    ini.WriteInteger(section, "Event", t.Event);
    ini.WriteBool(section, "D1", t.D1);
    ini.WriteBool(section, "D2", t.D2);
    ini.WriteString(section, "Data", t.Data);
    for (const auto &k : kSignalEdgeKeys)
        ini.WriteInteger(section, k.key, t.*k.field);
    for (const auto &k : kErrorKeys)
        ini.WriteBool(section, k.key, t.*k.field);
    ini.WriteString(section, "TimeReached", FormatSettingsDateTime(t.TimeReached));
    ini.WriteInteger(section, "InActivityTime", t.InActivityTime);
    for (const auto &k : kInactivityEventKeys)
        ini.WriteBool(section, k.key, t.*k.field);
    ini.WriteBool(section, "PlaySound", t.PlaySound);
    ini.WriteString(section, "SoundFilePath", t.SoundFilePath);
    ini.WriteBool(section, "PlaySoundRepeat", t.PlaySoundRepeat);
    ini.WriteBool(section, "ExecCommand", t.ExecCommand);
    ini.WriteString(section, "CommandFilePath", t.CommandFilePath);
    ini.WriteString(section, "CommandParams", t.CommandParams);
}

TriggerDef LoadTrigger(const IniFile &ini, const std::string &section, double now)
{
    TriggerDef t;
    t.Name = ini.ReadString(section, "Name", "");
    t.Description = ini.ReadString(section, "Description", "");
    t.Active = ini.ReadBool(section, "Active", false);
    t.Type = ini.ReadInteger(section, "Type", 0);
    t.Event = ini.ReadInteger(section, "Event", 0);
    t.D1 = ini.ReadBool(section, "D1", false);
    t.D2 = ini.ReadBool(section, "D2", false);
    t.Data = ini.ReadString(section, "Data", "");
    for (const auto &k : kSignalEdgeKeys)
        t.*k.field = ini.ReadInteger(section, k.key, 0);
    for (const auto &k : kErrorKeys)
        t.*k.field = ini.ReadBool(section, k.key, false);
    const auto time = ParseSettingsDateTime(ini.ReadString(section, "TimeReached", ""));
    t.TimeReached = time ? *time : now;
    t.InActivityTime = ini.ReadInteger(section, "InActivityTime", 1);
    for (const auto &k : kInactivityEventKeys)
        t.*k.field = ini.ReadBool(section, k.key, false);
    t.PlaySound = ini.ReadBool(section, "PlaySound", false);
    t.SoundFilePath = ini.ReadString(section, "SoundFilePath", "");
    t.PlaySoundRepeat = ini.ReadBool(section, "PlaySoundRepeat", false);
    t.ExecCommand = ini.ReadBool(section, "ExecCommand", false);
    t.CommandFilePath = ini.ReadString(section, "CommandFilePath", "");
    t.CommandParams = ini.ReadString(section, "CommandParams", "");
    return t;
}

EnvLoadResult LoadEnvironment(const IniFile &ini, const EnvLoadContext &ctx)
{
    EnvLoadResult result;
    Environment &env = result.env;
    LoadPort(ini, "ComA", 1, env.comA);
    LoadPort(ini, "ComB", 2, env.comB);

    env.recordFile = EffectiveRecordFile(
        LocalRecordPath(ini.ReadString(kFiles, kRecordData, DefaultRecordFile(ctx.dataFolder)), ctx.dataFolder),
        ctx.commandLineRecord);

    for (const auto &k : kGeneralKeys)
        env.general.*k.field = ini.ReadString(kGeneral, k.key, "");
    for (const auto &k : kCustomerKeys)
        env.customer.*k.field = ini.ReadString(kCustomer, k.key, "");

    // The first missing line number ends the description.
    for (long long i = 0;; ++i) {
        const std::string key = NumberedName("Line", i);
        if (!ini.ValueExists(kDescription, key))
            break;
        env.description.push_back(ini.ReadString(kDescription, key, ""));
    }

    for (long long i = 0;; ++i) {
        const std::string section = NumberedName(kTrigger, i);
        if (!ini.SectionExists(section))
            break;
        env.triggers.Append(LoadTrigger(ini, section, ctx.now));
    }
    result.triggersWithExternalActions = env.triggers.TriggersWithExternalActions();
    return result;
}

EnvLoadResult LoadEnvironment(const std::filesystem::path &file, const EnvLoadContext &ctx)
{
    IniReadResult read = ReadIniFile(file);
    EnvLoadResult result = LoadEnvironment(read.ini, ctx);
    result.existed = read.existed;
    result.status = read.status;
    return result;
}

void StoreEnvironment(const Environment &env, IniFile &ini)
{
    StorePort(ini, "ComA", env.comA);
    StorePort(ini, "ComB", env.comB);
    ini.WriteString(kFiles, kRecordData, env.recordFile);
    for (const auto &k : kGeneralKeys)
        ini.WriteString(kGeneral, k.key, env.general.*k.field);
    for (const auto &k : kCustomerKeys)
        ini.WriteString(kCustomer, k.key, env.customer.*k.field);

    // Erase first so that a shorter description leaves no lines of the older one.
    ini.EraseSection(kDescription);
    for (std::size_t i = 0; i < env.description.size(); ++i)
        ini.WriteString(kDescription, NumberedName("Line", static_cast<long long>(i)), env.description[i]);

    std::size_t i = 0;
    for (const auto &t : env.triggers)
        StoreTrigger(t, NumberedName(kTrigger, static_cast<long long>(i++)), ini);
    // Stale sections of a longer older list go; the first missing number ends the clean-up.
    for (;; ++i) {
        const std::string section = NumberedName(kTrigger, static_cast<long long>(i));
        if (!ini.SectionExists(section))
            break;
        ini.EraseSection(section);
    }
}

FileResult SaveEnvironment(const Environment &env, const std::filesystem::path &file)
{
    return UpdateIniFile(file, [&](IniFile &ini) { StoreEnvironment(env, ini); });
}

} // namespace kestrel
