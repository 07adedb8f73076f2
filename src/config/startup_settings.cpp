#include "config/startup_settings.h"

namespace kestrel {

HardwareProfile LoadMainConfiguration(const std::filesystem::path &dataFolder, ProgramConfig &cfg)
{
    const IniFile ini = ReadIniFile(dataFolder / kConfigFileName).ini;
    LoadProfileName(ini, cfg);
    HardwareProfile profile;
    if (IsValidProfileFileName(cfg.Profile))
        profile = ReadHardwareProfile(ProfilePath(dataFolder, cfg.Profile), cfg.portStandards);
    else
        profile.lists = cfg.portStandards;
    cfg.portStandards = profile.lists;
    LoadConfiguration(ini, "TFormMain", cfg);
    return profile;
}

} // namespace kestrel
