#include "config/hardware_profile.h"

#include <algorithm>

#include "config/data_folder.h"

namespace kestrel {

namespace {
constexpr const char *kHardware = "Hardware";
constexpr const char *kInterface = "Interface";
constexpr const char *kRegistry = "Registry";
} // namespace

HardwareProfile ReadHardwareProfile(const IniFile &ini, const PortValueLists &inUse)
{
    HardwareProfile p;
    p.Name = ini.ReadString(kHardware, "Name", "Default Profile");
    p.Manufacturer = ini.ReadString(kHardware, "Manufacturer", "Quorv");
    p.lists.baudRates = ini.ReadCommaList(kInterface, "BaudRates", inUse.baudRates);
    p.lists.dataBits = ini.ReadCommaList(kInterface, "DataBits", inUse.dataBits);
    p.lists.parities = ini.ReadCommaList(kInterface, "Parity", inUse.parities);
    p.lists.stopBits = ini.ReadCommaList(kInterface, "StopBits", inUse.stopBits);
    for (int i = 0; i < kProfilePortCount; ++i)
        p.ports[static_cast<std::size_t>(i)] = ini.ReadString(kRegistry, NumberedName("Port", i + 1), "");
    return p;
}

HardwareProfile ReadHardwareProfile(const std::filesystem::path &file, const PortValueLists &inUse)
{
    return ReadHardwareProfile(ReadIniFile(file).ini, inUse);
}

void StoreHardwareProfile(const HardwareProfile &profile, IniFile &ini)
{
    ini.WriteString(kHardware, "Name", profile.Name);
    ini.WriteString(kHardware, "Manufacturer", profile.Manufacturer);
    ini.WriteCommaList(kInterface, "BaudRates", profile.lists.baudRates);
    ini.WriteCommaList(kInterface, "DataBits", profile.lists.dataBits);
    ini.WriteCommaList(kInterface, "Parity", profile.lists.parities);
    ini.WriteCommaList(kInterface, "StopBits", profile.lists.stopBits);
    for (int i = 0; i < kProfilePortCount; ++i)
        ini.WriteString(kRegistry, NumberedName("Port", i + 1), profile.ports[static_cast<std::size_t>(i)]);
}

FileResult WriteHardwareProfile(const HardwareProfile &profile, const std::filesystem::path &file)
{
    return UpdateIniFile(file, [&](IniFile &ini) { StoreHardwareProfile(profile, ini); });
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
