#include "config/environment.h"

#include <cctype>

#include "config/config_messages.h"

namespace kestrel {

namespace {

using E = Environment;
using T = TriggerDef;

// --- rules that are not plain keys ---

// DevicePath beside the integer Device: written only when set, and deleted otherwise so
// that an old path does not override the port number chosen since.
template <auto Port>
void LoadDevicePath(const IniFile &ini, std::string_view section, E &env, const SettingsLoadContext &)
{
    (env.*Port).DevicePath = ini.ReadString(section, kDevicePathKey, "");
}

template <auto Port>
void StoreDevicePath(IniFile &ini, std::string_view section, const E &env)
{
    const std::string &path = (env.*Port).DevicePath;
    if (!path.empty())
        ini.WriteString(section, kDevicePathKey, path);
    else
        ini.DeleteKey(section, kDevicePathKey);
}

template <auto Port>
void ResetDevicePath(E &env)
{
    (env.*Port).DevicePath.clear();
}

template <auto Port>
constexpr auto PortSettings(const char *section, int device)
{
    return SettingsTable(IntSetting<Port, &EnvPort::Device>(section, "Device", device),
                         CustomSetting<E>(section, kDevicePathKey, LoadDevicePath<Port>, StoreDevicePath<Port>,
                                          ResetDevicePath<Port>),
                         IntSetting<Port, &EnvPort::CustomBaudRate>(section, "CustomBaudRate", 9600),
                         IntSetting<Port, &EnvPort::DataBits>(section, "DataBits", 8),
                         IntSetting<Port, &EnvPort::Parity>(section, "Parity", ParityOrdinal::None),
                         IntSetting<Port, &EnvPort::StopBits>(section, "StopBits", 1));
}

// One trigger section, in the order of writing; its name is Trigger0, Trigger1, ...
constexpr auto kTriggerSettings = SettingsTable(
    TextSetting<&T::Name>(nullptr, "Name", ""),
    TextSetting<&T::Description>(nullptr, "Description", ""),
    BoolSetting<&T::Active>(nullptr, "Active", false),
    IntSetting<&T::Type>(nullptr, "Type", 0),
    IntSetting<&T::Event>(nullptr, "Event", 0),
    BoolSetting<&T::D1>(nullptr, "D1", false),
    BoolSetting<&T::D2>(nullptr, "D2", false),
    TextSetting<&T::Data>(nullptr, "Data", ""),
    SettingsFromKeyList<kSignalEdgeKeys>(nullptr, 0),
    SettingsFromKeyList<kErrorKeys>(nullptr, false),
    DateTimeSetting<&T::TimeReached>(nullptr, "TimeReached"), // missing: the moment of loading
    IntSetting<&T::InActivityTime>(nullptr, "InActivityTime", 1),
    SettingsFromKeyList<kInactivityEventKeys>(nullptr, false),
    BoolSetting<&T::PlaySound>(nullptr, "PlaySound", false),
    TextSetting<&T::SoundFilePath>(nullptr, "SoundFilePath", ""),
    BoolSetting<&T::PlaySoundRepeat>(nullptr, "PlaySoundRepeat", false),
    BoolSetting<&T::ExecCommand>(nullptr, "ExecCommand", false),
    TextSetting<&T::CommandFilePath>(nullptr, "CommandFilePath", ""),
    TextSetting<&T::CommandParams>(nullptr, "CommandParams", ""));

// Trigger0, Trigger1, ...: one section per trigger in list order. Loading ends at the
// first missing number; storing erases the sections of a longer older list, up to the
// first missing number.
void LoadTriggers(const IniFile &ini, std::string_view base, E &env, const SettingsLoadContext &ctx)
{
    env.triggers.Clear();
    for (long long i = 0;; ++i) {
        const std::string section = NumberedName(base, i);
        if (!ini.SectionExists(section))
            break;
        TriggerDef t;
        LoadSettings<T>(ini, kTriggerSettings, t, ctx, section);
        env.triggers.Append(std::move(t));
    }
}

void StoreTriggers(IniFile &ini, std::string_view base, const E &env)
{
    long long i = 0;
    for (const auto &t : env.triggers)
        StoreSettings<T>(ini, kTriggerSettings, t, NumberedName(base, i++));
    for (;; ++i) {
        const std::string section = NumberedName(base, i);
        if (!ini.SectionExists(section))
            break;
        ini.EraseSection(section);
    }
}

void ResetTriggers(E &env) { env.triggers.Clear(); }

// The record file's default depends on the data folder: loading puts it in first.
constexpr auto kEnvironmentSettings = SettingsTable(
    PortSettings<&E::comA>("ComA", 1),
    PortSettings<&E::comB>("ComB", 2),
    TextSetting<&E::recordFile>("Files", "Record data", "").KeepWhenMissing(),
    SettingsFromKeyList<kGeneralKeys, &E::general>("General", ""),
    SettingsFromKeyList<kCustomerKeys, &E::customer>("Customer", ""),
    TextLinesSetting<&E::description>("Description", "Line"),
    CustomSetting<E>("Trigger", nullptr, LoadTriggers, StoreTriggers, ResetTriggers));

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

Environment::Environment() { ResetSettings(EnvironmentSettings(), *this); }

std::span<const Setting<Environment>> EnvironmentSettings() { return kEnvironmentSettings; }
std::span<const Setting<TriggerDef>> TriggerSettings() { return kTriggerSettings; }

EnvLoadResult LoadEnvironment(const IniFile &ini, const EnvLoadContext &ctx)
{
    EnvLoadResult result;
    Environment &env = result.env;
    env.recordFile = DefaultRecordFile(ctx.dataFolder);
    LoadSettings(ini, EnvironmentSettings(), env, SettingsLoadContext{ctx.now});
    env.recordFile = EffectiveRecordFile(LocalRecordPath(env.recordFile, ctx.dataFolder), ctx.commandLineRecord);
    result.triggersWithExternalActions = env.triggers.TriggersWithExternalActions();
    return result;
}

EnvLoadResult LoadEnvironment(const std::filesystem::path &file, const EnvLoadContext &ctx)
{
    IniReadResult read = ReadIniFile(file);
    EnvLoadResult result = LoadEnvironment(read.ini, ctx);
    result.existed = read.existed;
    result.status = read.status;
    if (!result.status.ok())
        result.status.code = kMsgEnvironmentNotRead;
    return result;
}

void StoreEnvironment(const Environment &env, IniFile &ini) { StoreSettings(ini, EnvironmentSettings(), env); }

Result SaveEnvironment(const Environment &env, const std::filesystem::path &file)
{
    Result saved = UpdateIniFile(file, [&](IniFile &ini) { StoreEnvironment(env, ini); });
    if (!saved.ok())
        saved.code = kMsgEnvironmentNotSaved;
    return saved;
}

} // namespace kestrel
