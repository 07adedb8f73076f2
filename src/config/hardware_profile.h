#pragma once
// Hardware profiles (.ksh in profiles/): the monitoring interface's name and
// maker, the port values it offers and its 16 port entries.

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "config/ini_file.h"
#include "config/port_value_lists.h"
#include "config/settings_table.h"

namespace kestrel {

inline constexpr const char *kDefaultProfileName = "default.ksh";
inline constexpr const char *kProfileExtension = ".ksh";
inline constexpr int kProfilePortCount = 16;

struct HardwareProfile {
    HardwareProfile(); // the defaults a missing file gives: its name and maker, empty lists, no ports

    std::string Name;
    std::string Manufacturer;
    PortValueLists lists;
    std::array<std::string, kProfilePortCount> ports; // Port1 ... Port16
    friend bool operator==(const HardwareProfile &, const HardwareProfile &) = default;
};

// Missing list keys keep the lists in use (inUse); only Port1..Port16 are read.
// The keys of a profile in the order of writing; see settings_table.h.
[[nodiscard]] std::span<const Setting<HardwareProfile>> HardwareProfileSettings();

[[nodiscard]] HardwareProfile ReadHardwareProfile(const IniFile &ini, const PortValueLists &inUse);
// A missing file reads as all defaults with the lists in use.
[[nodiscard]] HardwareProfile ReadHardwareProfile(const std::filesystem::path &file, const PortValueLists &inUse);

void StoreHardwareProfile(const HardwareProfile &profile, IniFile &ini);
// A failure is kMsgProfileNotSaved with the reason.
[[nodiscard]] Result WriteHardwareProfile(const HardwareProfile &profile, const std::filesystem::path &file);

// File names (not paths) of the profiles in dataFolder/profiles/, sorted without regard to case; only ".ksh" files.
[[nodiscard]] std::vector<std::string> ListHardwareProfiles(const std::filesystem::path &dataFolder);

// The file name must stay inside profiles/: no folder part, not empty, not "." or "..".
[[nodiscard]] bool IsValidProfileFileName(const std::string &name);

// "cable" -> "cable.ksh"; a name that ends with ".ksh" (any case) stays as it is.
[[nodiscard]] std::string WithProfileExtension(const std::string &name);

// dataFolder/profiles/name
[[nodiscard]] std::filesystem::path ProfilePath(const std::filesystem::path &dataFolder, const std::string &name);

} // namespace kestrel
