#include "config/styles.h"

#include <array>
#include <fstream>
#include <iterator>

#include "config/data_folder.h"
#include "config/ini_file.h"

namespace kestrel {

namespace detail {
extern const unsigned char kLightStyleSheet[];
extern const std::size_t kLightStyleSheetSize;
extern const unsigned char kDarkStyleSheet[];
extern const std::size_t kDarkStyleSheetSize;
} // namespace detail

namespace {

constexpr const char *kSkin = "Skin";
// Slots read at start-up when [Skin] Max is missing; the installer writes the same,
// so that a slot added by hand is read without touching Max.
constexpr int kInstalledSkinMax = 99;

std::string_view Sheet(const unsigned char *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

} // namespace

std::span<const ShippedStyle> ShippedStyles()
{
    static const std::array<ShippedStyle, 2> styles{{
        {"Light", false, Sheet(detail::kLightStyleSheet, detail::kLightStyleSheetSize)},
        {"Dark", true, Sheet(detail::kDarkStyleSheet, detail::kDarkStyleSheetSize)},
    }};
    return styles;
}

StyleInstall InstallShippedStylesOnFirstStart(const std::filesystem::path &dataFolder)
{
    StyleInstall done;
    const auto configFile = dataFolder / kConfigFileName;
    const IniReadResult config = ReadIniFile(configFile);
    if (!config.status.ok() || config.notSettingsFile || config.ini.SectionExists(kSkin))
        return done;

    std::error_code ec;
    std::filesystem::create_directories(dataFolder / kThemesFolder, ec);
    for (const ShippedStyle &style : ShippedStyles()) {
        if (FindStyleFile(dataFolder, style.name))
            continue; // the user's own file of that name wins
        const auto file = dataFolder / kThemesFolder / (std::string(style.name) + kStyleExtension);
        if (Result written = WriteFileAtomic(file, style.sheet); !written.ok() && done.status.ok())
            done.status = written;
    }
    const Result slots = UpdateIniFile(configFile, [](IniFile &ini) {
        ini.WriteInteger(kSkin, "Max", kInstalledSkinMax);
        ini.WriteInteger(kSkin, "Current", 0);
        int n = 0;
        for (const ShippedStyle &style : ShippedStyles()) {
            const std::string section = NumberedName(kSkin, ++n);
            ini.WriteString(section, "Name", style.name);
            ini.WriteBool(section, "Dark", style.dark);
        }
    });
    done.installed = slots.ok();
    if (!slots.ok() && done.status.ok())
        done.status = slots;
    return done;
}

std::optional<std::filesystem::path> FindStyleFile(const std::filesystem::path &dataFolder, std::string_view name)
{
    std::error_code ec;
    std::optional<std::filesystem::path> found;
    for (const auto &entry : std::filesystem::directory_iterator(dataFolder / kThemesFolder, ec)) {
        const auto &path = entry.path();
        if (!EqualsNoCase(path.extension().string(), kStyleExtension) || !EqualsNoCase(path.stem().string(), name))
            continue;
        if (path.stem().string() == name)
            return path; // the exact spelling before another case of it
        if (!found)
            found = path;
    }
    return found;
}

Expected<std::string> ReadStyleSheet(const std::filesystem::path &file)
{
    Expected<std::string> out;
    const std::string shown = "'" + file.string() + "'";
    std::error_code ec;
    const auto status = std::filesystem::status(file, ec);
    if (ec || !std::filesystem::exists(status)) {
        out.result = Result::Fail(kMsgStyleFileMissing, shown);
        return out;
    }
    // A pipe or a device would block or never end; a folder has no text.
    if (!std::filesystem::is_regular_file(status)) {
        out.result = Result::Fail(kMsgStyleFileNotRead, shown);
        return out;
    }
    const auto size = std::filesystem::file_size(file, ec);
    if (!ec && size > kMaxStyleSheetBytes) {
        out.result = Result::Fail(kMsgStyleFileNotText, shown);
        return out;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        out.result = Result::Fail(kMsgStyleFileNotRead, shown);
        return out;
    }
    std::string text;
    text.reserve(static_cast<std::size_t>(ec ? 0 : size));
    char buffer[16384];
    while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
        text.append(buffer, static_cast<std::size_t>(in.gcount()));
        if (text.size() > kMaxStyleSheetBytes) // grew while being read
            break;
    }
    if (in.bad()) {
        out.result = Result::Fail(kMsgStyleFileNotRead, shown);
        return out;
    }
    if (text.size() > kMaxStyleSheetBytes || text.find('\0') != std::string::npos) {
        out.result = Result::Fail(kMsgStyleFileNotText, shown);
        return out;
    }
    out.value = std::move(text);
    return out;
}

int StyleSlotInUse(const ProgramConfig &cfg, int slot)
{
    if (slot <= 0 || slot >= static_cast<int>(cfg.skins.size()))
        return 0;
    return cfg.skins[static_cast<std::size_t>(slot)].inMenu ? slot : 0;
}

std::vector<int> StyleChoices(const ProgramConfig &cfg)
{
    std::vector<int> slots{0};
    for (std::size_t n = 1; n < cfg.skins.size(); ++n)
        if (cfg.skins[n].inMenu)
            slots.push_back(static_cast<int>(n));
    return slots;
}

Result SaveCurrentStyle(const std::filesystem::path &configFile, int slot)
{
    return UpdateIniFile(configFile, [slot](IniFile &ini) { ini.WriteInteger(kSkin, "Current", slot); });
}

} // namespace kestrel
