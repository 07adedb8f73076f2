// libFuzzer target: any bytes given as a settings file must load without a
// crash, and what was loaded must survive being stored and read back.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "config/date_time_text.h"
#include "config/environment.h"
#include "config/hardware_profile.h"
#include "config/ini_file.h"
#include "config/program_config.h"
#include "config/settings_encoding.h"

using namespace kestrel;

namespace {

void Check(bool ok)
{
    if (!ok)
        std::abort();
}

ProgramConfig LoadAll(const IniFile &ini)
{
    ProgramConfig cfg;
    cfg.monitors = {{"FormMain", 0}, {"FormGoto", 0}};
    for (const char *form : {"TFormMain", "TFormGoto", "TFormExport", "TFormReport", "TFormMonitors"})
        LoadConfiguration(ini, form, cfg);
    return cfg;
}

} // namespace

static void EnvironmentSurvivesStoring(const IniFile &ini)
{
    const EnvLoadContext ctx{"/data", std::nullopt, 46347.5};
    const Environment env = LoadEnvironment(ini, ctx).env;
    IniFile stored = ini;
    StoreEnvironment(env, stored);
    Check(LoadEnvironment(stored, ctx).env == env);
    Check(LoadEnvironment(IniFile::Parse(stored.ToText()), ctx).env == env);
}

static void ConfigurationSurvivesStoring(const IniFile &ini)
{
    const ProgramConfig cfg = LoadAll(ini);
    IniFile stored = ini;
    StoreConfiguration(cfg, stored);
    Check(LoadAll(IniFile::Parse(stored.ToText())) == cfg);
}

static void ProfileSurvivesStoring(const IniFile &ini)
{
    const PortValueLists inUse = StandardPortValueLists();
    const HardwareProfile profile = ReadHardwareProfile(ini, inUse);
    IniFile stored = ini;
    StoreHardwareProfile(profile, stored);
    Check(ReadHardwareProfile(IniFile::Parse(stored.ToText()), inUse) == profile);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const IniFile ini = IniFile::Parse(text);

    // Every entry reads back the same from the document's own text.
    const IniFile again = IniFile::Parse(ini.ToText());
    Check(again.SectionNames() == ini.SectionNames());
    for (const auto &section : ini.SectionNames()) {
        Check(again.KeyNames(section) == ini.KeyNames(section));
        for (const auto &key : ini.KeyNames(section))
            Check(again.ReadString(section, key, "") == ini.ReadString(section, key, ""));
    }

    // The first byte picks one reader per run, so each run stays quick.
    switch (size ? data[0] % 3u : 0u) {
    case 0:
        EnvironmentSurvivesStoring(ini);
        break;
    case 1:
        ConfigurationSurvivesStoring(ini);
        break;
    default:
        ProfileSurvivesStoring(ini);
        break;
    }

    if (const auto t = ParseSettingsDateTime(text))
        Check(ParseSettingsDateTime(FormatSettingsDateTime(*t)) == t);
    // Whatever the encoding, the result is UTF-8 that converts to itself.
    const std::string utf8 = SettingsTextToUtf8(std::string(text));
    Check(SettingsTextToUtf8(utf8) == utf8);
    const auto items = SplitCommaText(text);
    Check(SplitCommaText(JoinCommaText(items)) == items);
    return 0;
}
