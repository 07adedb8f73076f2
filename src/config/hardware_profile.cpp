#include "config/hardware_profile.h"

#include <algorithm>

#include "config/config_messages.h"
#include "config/data_folder.h"

namespace kestrel {

namespace {

using P = HardwareProfile;

constexpr const char *kInterface = "Interface";

// The four lists keep the lists in use when their keys are missing, so a profile may
// carry only a name; exactly Port1 ... Port16 are read.
constexpr auto kHardwareProfileSettings = SettingsTable(
    TextSetting<&P::Name>("Hardware", "Name", "Default Profile"),
    TextSetting<&P::Manufacturer>("Hardware", "Manufacturer", "Quorv"),
    CommaListSetting<&P::lists, &PortValueLists::baudRates>(kInterface, "BaudRates", nullptr),
    CommaListSetting<&P::lists, &PortValueLists::dataBits>(kInterface, "DataBits", nullptr),
    CommaListSetting<&P::lists, &PortValueLists::parities>(kInterface, "Parity", nullptr),
    CommaListSetting<&P::lists, &PortValueLists::stopBits>(kInterface, "StopBits", nullptr),
    NumberedTextSetting<&P::ports>("Registry", "Port", 1, ""));

} // namespace

HardwareProfile::HardwareProfile() { ResetSettings(HardwareProfileSettings(), *this); }

std::span<const Setting<HardwareProfile>> HardwareProfileSettings() { return kHardwareProfileSettings; }

HardwareProfile ReadHardwareProfile(const IniFile &ini, const PortValueLists &inUse)
{
    HardwareProfile p;
    p.lists = inUse;
    LoadSettings(ini, HardwareProfileSettings(), p);
    return p;
}

HardwareProfile ReadHardwareProfile(const std::filesystem::path &file, const PortValueLists &inUse)
{
    return ReadHardwareProfile(ReadIniFile(file).ini, inUse);
}

void StoreHardwareProfile(const HardwareProfile &profile, IniFile &ini)
{
    StoreSettings(ini, HardwareProfileSettings(), profile);
}

Result WriteHardwareProfile(const HardwareProfile &profile, const std::filesystem::path &file)
{
    Result written = UpdateIniFile(file, [&](IniFile &ini) { StoreHardwareProfile(profile, ini); });
    if (!written.ok())
        written.code = kMsgProfileNotSaved;
    return written;
}

std::vector<std::string> ListHardwareProfiles(const std::filesystem::path &dataFolder)
{
    std::vector<std::string> names;
    std::error_code ec;
    std::filesystem::directory_iterator it(dataFolder / kProfilesFolder, ec);
    if (ec)
        return names;
    for (const auto &entry : it) {
        std::error_code typeEc;
        if (!entry.is_regular_file(typeEc))
            continue;
        const auto &path = entry.path();
        if (EqualsNoCase(path.extension().string(), kProfileExtension))
            names.push_back(path.filename().string());
    }
    // Alphabetical without regard to case, as the profile box shows them; ties in byte order.
    std::sort(names.begin(), names.end(), [](const std::string &a, const std::string &b) {
        const std::string la = AsciiLower(a), lb = AsciiLower(b);
        return la != lb ? la < lb : a < b;
    });
    return names;
}

bool IsValidProfileFileName(const std::string &name)
{
    if (name.empty() || name == "." || name == "..")
        return false;
    return name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

std::string WithProfileExtension(const std::string &name)
{
    const std::string_view ext = kProfileExtension;
    if (name.size() >= ext.size() && EqualsNoCase(std::string_view(name).substr(name.size() - ext.size()), ext))
        return name;
    return name + kProfileExtension;
}

std::filesystem::path ProfilePath(const std::filesystem::path &dataFolder, const std::string &name)
{
    return dataFolder / kProfilesFolder / name;
}

} // namespace kestrel
