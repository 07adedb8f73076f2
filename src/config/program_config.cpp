#include "config/program_config.h"

#include <algorithm>

#include "config/config_messages.h"
#include "config/environment.h"
#include "config/hardware_profile.h"

namespace kestrel {

namespace {

using C = ProgramConfig;

// Loading groups: each form reads its own part of the file.
enum Group : int { kMainGroup, kGotoGroup, kExportGroup, kReportGroup, kMonitorsGroup };

constexpr const char *kColumn = "Column";
constexpr const char *kGOWindow = "GOWindow";
constexpr const char *kMonitor = "Monitor";
constexpr const char *kSkin = "Skin";

// The installer's hint has been taken once this is the stored value.
constexpr const char *kInstallLangTaken = "xx";
// A style slot of this name is empty.
constexpr const char *kNoSkin = "None";

// --- rules that are not plain keys ---

// [Monitor]: each form under its index and under its name; loading looks the name up.
void LoadMonitors(const IniFile &ini, std::string_view section, C &cfg, const SettingsLoadContext &)
{
    for (auto &form : cfg.monitors)
        form.monitor = ini.ReadInteger(section, form.formName, 0);
}

void StoreMonitors(IniFile &ini, std::string_view section, const C &cfg)
{
    for (std::size_t i = 0; i < cfg.monitors.size(); ++i) {
        ini.WriteInteger(section, std::to_string(i), cfg.monitors[i].monitor);
        if (!cfg.monitors[i].formName.empty())
            ini.WriteInteger(section, cfg.monitors[i].formName, cfg.monitors[i].monitor);
    }
}

// [Skin1] ... [Skin<Max>]: read at start-up, never written. Slot 0 is the plain platform
// look; a slot named "None" falls back to it and gets no menu entry.
void LoadSkinSlots(const IniFile &ini, std::string_view section, C &cfg, const SettingsLoadContext &)
{
    const int slots = std::clamp(cfg.SkinMax, 0, kMaxSkinSlots);
    cfg.skins.assign(1, SkinSlot{});
    for (int n = 1; n <= slots; ++n) {
        const std::string slotSection = NumberedName(section, n);
        SkinSlot slot;
        const std::string name = ini.ReadString(slotSection, "Name", kNoSkin);
        if (name != kNoSkin) {
            slot.Name = name;
            slot.Dark = ini.ReadBool(slotSection, "Dark", false);
            slot.inMenu = true;
        }
        cfg.skins.push_back(std::move(slot));
    }
}

void ResetSkinSlots(C &cfg) { cfg.skins.assign(1, SkinSlot{}); }

// --- the tables ---

template <auto Window>
constexpr auto ToolWindowSettings(const char *section, int group)
{
    return InGroup(SettingsTable(IntSetting<Window, &ToolWindowPlacement::Left>(section, "Left", 100),
                                 IntSetting<Window, &ToolWindowPlacement::Top>(section, "Top", 100),
                                 IntSetting<Window, &ToolWindowPlacement::WindowState>(section, "WindowState", 0),
                                 BoolSetting<Window, &ToolWindowPlacement::Visible>(section, "Visible", false)),
                   group);
}

template <auto Panel>
constexpr auto PanelSettings(const char *section, int left, int top, int width)
{
    return SettingsTable(IntSetting<Panel, &PanelBounds::Left>(section, "Left", left),
                         IntSetting<Panel, &PanelBounds::Top>(section, "Top", top),
                         IntSetting<Panel, &PanelBounds::Width>(section, "Width", width));
}

// Grid view 2 keeps no widths, by design, so it has no section.
template <auto View>
constexpr auto GridViewSettingsOf(const char *section)
{
    return SettingsTable(NumberedIntSetting<View, &GridViewSettings::columnWidths>(section, kColumn, 0),
                         IntSetting<View, &GridViewSettings::CharacterMode1>(section, "CharacterMode1", 1),
                         IntSetting<View, &GridViewSettings::CharacterMode2>(section, "CharacterMode2", 3));
}

constexpr auto kProfile = TextSetting<&C::Profile>("Hardware", "Profile", kDefaultProfileName);
// Loaded by the language rule in LoadMain, not by the table.
constexpr auto kInstallLang = TextSetting<&C::InstallLang>("Modes", "InstallLang", "en").Use(SettingUse::StoreOnly);
constexpr auto kGlobalLang = IntSetting<&C::GlobalLang>("Modes", "GlobalLang", 0).Use(SettingUse::StoreOnly);

constexpr auto kGoWindowSettings =
    SettingsTable(ToolWindowSettings<&C::goWindow>(kGOWindow, kGotoGroup),
                  IntSetting<&C::SearchPageIndex>(kGOWindow, "SearchPageIndex", 0).InGroup(kGotoGroup),
                  IntSetting<&C::ControlSearchPageIndex>(kGOWindow, "ControlSearchPageIndex", 0).InGroup(kGotoGroup));
constexpr auto kExWindowSettings = ToolWindowSettings<&C::exWindow>("EXWindow", kExportGroup);
constexpr auto kReWindowSettings = ToolWindowSettings<&C::reWindow>("REWindow", kReportGroup);

// Kestrel.ini in the order the save writes it.
constexpr auto kProgramConfigSettings = SettingsTable(
    kProfile,
    CommaListSetting<&C::portStandards, &PortValueLists::baudRates>("Port Standards", "Baudrates", StandardBaudRates),
    CommaListSetting<&C::portStandards, &PortValueLists::dataBits>("Port Standards", "Databits", StandardDataBits),
    CommaListSetting<&C::portStandards, &PortValueLists::parities>("Port Standards", "Parities", StandardParities),
    CommaListSetting<&C::portStandards, &PortValueLists::stopBits>("Port Standards", "Stopbits", StandardStopBits),
    kInstallLang, kGlobalLang,
    IntSetting<&C::DefLang>("Modes", "DefLang", 0),
    IntSetting<&C::DisplayMode>("Modes", "DisplayMode", 1),
    IntSetting<&C::RecordMode>("Modes", "RecordMode", 1),
    IntSetting<&C::CharacterControl>("Modes", "CharacterControl", 0),
    IntSetting<&C::SignalMode>("Modes", "SignalMode", 1),
    IntSetting<&C::TimeControl>("Modes", "TimeControl", 0),
    IntSetting<&C::window, &WindowPlacement::Left>("Window", "Left", 0),
    IntSetting<&C::window, &WindowPlacement::Top>("Window", "Top", 0),
    IntSetting<&C::window, &WindowPlacement::Width>("Window", "Width", 800),
    IntSetting<&C::window, &WindowPlacement::Height>("Window", "Height", 600),
    IntSetting<&C::window, &WindowPlacement::WindowState>("Window", "WindowState", 0),
    CustomSetting<C>(kMonitor, nullptr, LoadMonitors, StoreMonitors, nullptr).InGroup(kMonitorsGroup),
    PanelSettings<&C::allBottomPanels>("AllBottomPanels", 0, 325, 1016),
    IntSetting<&C::allBottomPanels, &PanelBounds::Height>("AllBottomPanels", "Height", 300),
    PanelSettings<&C::cCenterPanel>("CCenterPanel", 0, 487, 1032), // no height is kept
    kGoWindowSettings, kExWindowSettings, kReWindowSettings,
    TextSetting<&C::EnvironmentFilename>("Environment", "Filename", kDefaultEnvironmentName),
    IntSetting<&C::GridOptions>("DataGrid", "GridOptions", 0).KeepWhenMissing(),
    IntSetting<&C::GridZoom>("DataGrid", "FontSizePercent", 100),
    // Written, never read: only DisplayHoldOnProgStart holds the display at start.
    BoolSetting<&C::ViewHold>("Display", "ViewHold", false).Use(SettingUse::StoreOnly),
    BoolSetting<&C::Append>("Recorder", "Append", true),
    BoolSetting<&C::Replace>("Recorder", "Replace", false),
    GridViewSettingsOf<&C::dispMode4>("DispMode4"),
    GridViewSettingsOf<&C::dispMode3>("DispMode3"),
    GridViewSettingsOf<&C::dispMode1>("DispMode1"),
    NumberedIntSetting<&C::triggerListColumns>("TriggerList", kColumn, 0),
    BoolSetting<&C::CheckForUpdatesAtProgStart>("WebUpdate", "CheckForUpdatesAtProgStart", false),
    TextSetting<&C::VersionFileUrl>("WebUpdate", "VersionFileUrl", kDefaultVersionFileUrl),
    TextSetting<&C::ReportAddress>("Support", "ReportAddress", kDefaultReportAddress),
    BoolSetting<&C::DisplayHoldOnProgStart>("ProgramStart", "DisplayHoldOnProgStart", false),
    BoolSetting<&C::BeginRecordOnProgStart>("ProgramStart", "BeginRecordOnProgStart", false),
    // Styles: kept in the file by hand or by the installer, never written.
    IntSetting<&C::SkinMax>(kSkin, "Max", 99).Use(SettingUse::LoadOnly),
    CustomSetting<C>(kSkin, nullptr, LoadSkinSlots, nullptr, ResetSkinSlots).Use(SettingUse::LoadOnly),
    IntSetting<&C::SkinCurrent>(kSkin, "Current", 0).Use(SettingUse::LoadOnly));

// The installer's language hint is taken once; after that the user's own choice rules.
// Any hint but "en", "de" and the taken mark changes nothing, and GlobalLang is not read.
void LoadLanguage(const IniFile &ini, C &cfg)
{
    LoadSetting(ini, kInstallLang, cfg);
    cfg.keepStoredLanguage = false;
    if (cfg.InstallLang == kInstallLangTaken) {
        LoadSetting(ini, kGlobalLang, cfg);
    } else if (cfg.InstallLang == "en") {
        cfg.GlobalLang = 10000;
        cfg.InstallLang = kInstallLangTaken;
    } else if (cfg.InstallLang == "de") {
        cfg.GlobalLang = 0;
        cfg.InstallLang = kInstallLangTaken;
    } else {
        cfg.keepStoredLanguage = true;
    }
}

int GroupOfForm(std::string_view formClass)
{
    if (formClass == "TFormMain")
        return kMainGroup;
    if (formClass == "TFormGoto")
        return kGotoGroup;
    if (formClass == "TFormExport")
        return kExportGroup;
    if (formClass == "TFormReport")
        return kReportGroup;
    if (formClass == "TFormMonitors")
        return kMonitorsGroup;
    return -1;
}

} // namespace

ProgramConfig::ProgramConfig() { ResetSettings(ProgramConfigSettings(), *this); }

std::span<const Setting<ProgramConfig>> ProgramConfigSettings() { return kProgramConfigSettings; }
std::span<const Setting<ProgramConfig>> GoWindowSettings() { return kGoWindowSettings; }
std::span<const Setting<ProgramConfig>> ExWindowSettings() { return kExWindowSettings; }
std::span<const Setting<ProgramConfig>> ReWindowSettings() { return kReWindowSettings; }

void LoadProfileName(const IniFile &ini, ProgramConfig &cfg) { LoadSetting(ini, kProfile, cfg); }

int LoadLanguageConfig(const IniFile &ini)
{
    ProgramConfig cfg;
    LoadSetting(ini, kGlobalLang, cfg);
    return cfg.GlobalLang;
}

int LoadLanguageConfig(const std::filesystem::path &configFile)
{
    return LoadLanguageConfig(ReadIniFile(configFile).ini);
}

bool LoadConfiguration(const IniFile &ini, std::string_view formClass, ProgramConfig &cfg)
{
    const int group = GroupOfForm(formClass);
    if (group < 0)
        return false;
    LoadSettings(ini, ProgramConfigSettings(), cfg, {}, {}, group);
    if (group == kMainGroup)
        LoadLanguage(ini, cfg);
    return true;
}

bool LoadConfiguration(const std::filesystem::path &configFile, std::string_view formClass, ProgramConfig &cfg)
{
    return LoadConfiguration(ReadIniFile(configFile).ini, formClass, cfg);
}

int MonitorForForm(int savedMonitor, int monitorCount)
{
    return savedMonitor >= 0 && savedMonitor < monitorCount ? savedMonitor : 0;
}

void StoreConfiguration(const ProgramConfig &cfg, IniFile &ini)
{
    const bool hadLanguage = ini.ValueExists("Modes", "GlobalLang");
    const std::string storedLanguage = ini.ReadString("Modes", "GlobalLang", "");
    StoreSettings(ini, ProgramConfigSettings(), cfg);
    if (!cfg.keepStoredLanguage)
        return;
    if (hadLanguage)
        ini.WriteString("Modes", "GlobalLang", storedLanguage);
    else
        ini.DeleteKey("Modes", "GlobalLang");
}

Result SaveConfiguration(const ProgramConfig &cfg, const std::filesystem::path &configFile)
{
    // Kestrel.ini has a fixed place, so a file there with NUL bytes is a damaged one (a crash
    // on some file systems leaves that), not a recording picked by mistake: write it anew.
    Result saved;
    if (const IniReadResult current = ReadIniFile(configFile); current.status.ok() && current.notSettingsFile) {
        IniFile fresh;
        StoreConfiguration(cfg, fresh);
        saved = WriteIniFile(configFile, fresh);
    } else {
        saved = UpdateIniFile(configFile, [&](IniFile &ini) { StoreConfiguration(cfg, ini); });
    }
    if (!saved.ok())
        saved.code = kMsgConfigNotSaved;
    return saved;
}

} // namespace kestrel
