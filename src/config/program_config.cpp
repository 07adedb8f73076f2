#include "config/program_config.h"

#include <algorithm>

namespace kestrel {

namespace {

constexpr const char *kHardware = "Hardware";
constexpr const char *kPortStandards = "Port Standards";
constexpr const char *kModes = "Modes";
constexpr const char *kWindow = "Window";
constexpr const char *kMonitor = "Monitor";
constexpr const char *kAllBottomPanels = "AllBottomPanels";
constexpr const char *kCCenterPanel = "CCenterPanel";
constexpr const char *kGOWindow = "GOWindow";
constexpr const char *kEXWindow = "EXWindow";
constexpr const char *kREWindow = "REWindow";
constexpr const char *kEnvironment = "Environment";
constexpr const char *kDataGrid = "DataGrid";
constexpr const char *kDisplay = "Display";
constexpr const char *kRecorder = "Recorder";
constexpr const char *kTriggerList = "TriggerList";
constexpr const char *kWebUpdate = "WebUpdate";
constexpr const char *kProgramStart = "ProgramStart";
constexpr const char *kSkin = "Skin";

// The installer's hint has been taken once this is the stored value.
constexpr const char *kInstallLangTaken = "xx";

void LoadToolWindow(const IniFile &ini, const char *section, ToolWindowPlacement &w)
{
    w.Left = ini.ReadInteger(section, "Left", 100);
    w.Top = ini.ReadInteger(section, "Top", 100);
    w.WindowState = ini.ReadInteger(section, "WindowState", 0);
    w.Visible = ini.ReadBool(section, "Visible", false);
}

void StoreToolWindow(IniFile &ini, const char *section, const ToolWindowPlacement &w)
{
    ini.WriteInteger(section, "Left", w.Left);
    ini.WriteInteger(section, "Top", w.Top);
    ini.WriteInteger(section, "WindowState", w.WindowState);
    ini.WriteBool(section, "Visible", w.Visible);
}

void LoadColumns(const IniFile &ini, const char *section, std::vector<int> &widths)
{
    for (std::size_t i = 0; i < widths.size(); ++i)
        widths[i] = ini.ReadInteger(section, NumberedName("Column", static_cast<long long>(i)), widths[i]);
}

void StoreColumns(IniFile &ini, const char *section, const std::vector<int> &widths)
{
    for (std::size_t i = 0; i < widths.size(); ++i)
        ini.WriteInteger(section, NumberedName("Column", static_cast<long long>(i)), widths[i]);
}

void LoadGridView(const IniFile &ini, const char *section, GridViewSettings &view)
{
    LoadColumns(ini, section, view.columnWidths);
    view.CharacterMode1 = ini.ReadInteger(section, "CharacterMode1", 1);
    view.CharacterMode2 = ini.ReadInteger(section, "CharacterMode2", 3);
}

void StoreGridView(IniFile &ini, const char *section, const GridViewSettings &view)
{
    StoreColumns(ini, section, view.columnWidths);
    ini.WriteInteger(section, "CharacterMode1", view.CharacterMode1);
    ini.WriteInteger(section, "CharacterMode2", view.CharacterMode2);
}

void LoadSkins(const IniFile &ini, ProgramConfig &cfg)
{
    cfg.SkinMax = ini.ReadInteger(kSkin, "Max", 99);
    const int slots = std::clamp(cfg.SkinMax, 0, kMaxSkinSlots);
    cfg.skins.assign(1, SkinSlot{}); // slot 0: the plain platform look
    for (int n = 1; n <= slots; ++n) {
        const std::string section = NumberedName(kSkin, n);
        SkinSlot slot;
        const std::string name = ini.ReadString(section, "Name", "None");
        if (name != "None") {
            slot.Name = name;
            slot.Dark = ini.ReadBool(section, "Dark", false);
            slot.inMenu = true;
        }
        cfg.skins.push_back(std::move(slot));
    }
    cfg.SkinCurrent = ini.ReadInteger(kSkin, "Current", 0);
}

void LoadMain(const IniFile &ini, ProgramConfig &cfg)
{
    cfg.Profile = ini.ReadString(kHardware, "Profile", "default.ksh");

    cfg.portStandards.baudRates = ini.ReadCommaList(kPortStandards, "Baudrates", StandardBaudRates());
    cfg.portStandards.dataBits = ini.ReadCommaList(kPortStandards, "Databits", StandardDataBits());
    cfg.portStandards.parities = ini.ReadCommaList(kPortStandards, "Parities", StandardParities());
    cfg.portStandards.stopBits = ini.ReadCommaList(kPortStandards, "Stopbits", StandardStopBits());

    // The installer's language hint is taken once; after that the user's own choice rules.
    cfg.InstallLang = ini.ReadString(kModes, "InstallLang", "en");
    if (cfg.InstallLang != kInstallLangTaken) {
        if (cfg.InstallLang == "en") {
            cfg.GlobalLang = 10000;
            cfg.InstallLang = kInstallLangTaken;
        } else if (cfg.InstallLang == "de") {
            cfg.GlobalLang = 0;
            cfg.InstallLang = kInstallLangTaken;
        }
    } else {
        cfg.GlobalLang = ini.ReadInteger(kModes, "GlobalLang", 0);
    }

    cfg.DefLang = ini.ReadInteger(kModes, "DefLang", 0);
    cfg.DisplayMode = ini.ReadInteger(kModes, "DisplayMode", 1);
    cfg.RecordMode = ini.ReadInteger(kModes, "RecordMode", 1);
    cfg.CharacterControl = ini.ReadInteger(kModes, "CharacterControl", 0);
    cfg.SignalMode = ini.ReadInteger(kModes, "SignalMode", 1);
    cfg.TimeControl = ini.ReadInteger(kModes, "TimeControl", 0);

    LoadSkins(ini, cfg);

    cfg.window.Left = ini.ReadInteger(kWindow, "Left", 0);
    cfg.window.Top = ini.ReadInteger(kWindow, "Top", 0);
    cfg.window.Width = ini.ReadInteger(kWindow, "Width", 800);
    cfg.window.Height = ini.ReadInteger(kWindow, "Height", 600);
    cfg.window.WindowState = ini.ReadInteger(kWindow, "WindowState", 0);
    cfg.allBottomPanels.Left = ini.ReadInteger(kAllBottomPanels, "Left", 0);
    cfg.allBottomPanels.Top = ini.ReadInteger(kAllBottomPanels, "Top", 325);
    cfg.allBottomPanels.Width = ini.ReadInteger(kAllBottomPanels, "Width", 1016);
    cfg.allBottomPanels.Height = ini.ReadInteger(kAllBottomPanels, "Height", 300);
    cfg.cCenterPanel.Left = ini.ReadInteger(kCCenterPanel, "Left", 0);
    cfg.cCenterPanel.Top = ini.ReadInteger(kCCenterPanel, "Top", 487);
    cfg.cCenterPanel.Width = ini.ReadInteger(kCCenterPanel, "Width", 1032);

    cfg.EnvironmentFilename = ini.ReadString(kEnvironment, "Filename", "Default.kef");
    cfg.GridOptions = ini.ReadInteger(kDataGrid, "GridOptions", cfg.GridOptions);
    cfg.DisplayHoldOnProgStart = ini.ReadBool(kProgramStart, "DisplayHoldOnProgStart", false);
    cfg.BeginRecordOnProgStart = ini.ReadBool(kProgramStart, "BeginRecordOnProgStart", false);
    cfg.Append = ini.ReadBool(kRecorder, "Append", true);
    cfg.Replace = ini.ReadBool(kRecorder, "Replace", false);

    // Grid view 2 keeps no widths, by design.
    LoadGridView(ini, "DispMode4", cfg.dispMode4);
    LoadGridView(ini, "DispMode3", cfg.dispMode3);
    LoadGridView(ini, "DispMode1", cfg.dispMode1);
    LoadColumns(ini, kTriggerList, cfg.triggerListColumns);

    cfg.CheckForUpdatesAtProgStart = ini.ReadBool(kWebUpdate, "CheckForUpdatesAtProgStart", false);
    // [Display] ViewHold is not read: only DisplayHoldOnProgStart holds the display at start.
}

} // namespace

int LoadLanguageConfig(const IniFile &ini) { return ini.ReadInteger(kModes, "GlobalLang", 0); }

int LoadLanguageConfig(const std::filesystem::path &configFile)
{
    return LoadLanguageConfig(ReadIniFile(configFile).ini);
}

bool LoadConfiguration(const IniFile &ini, std::string_view formClass, ProgramConfig &cfg)
{
    if (formClass == "TFormMain") {
        LoadMain(ini, cfg);
    } else if (formClass == "TFormGoto") {
        LoadToolWindow(ini, kGOWindow, cfg.goWindow);
        cfg.SearchPageIndex = ini.ReadInteger(kGOWindow, "SearchPageIndex", 0);
        cfg.ControlSearchPageIndex = ini.ReadInteger(kGOWindow, "ControlSearchPageIndex", 0);
    } else if (formClass == "TFormExport") {
        LoadToolWindow(ini, kEXWindow, cfg.exWindow);
    } else if (formClass == "TFormReport") {
        LoadToolWindow(ini, kREWindow, cfg.reWindow);
    } else if (formClass == "TFormMonitors") {
        for (auto &form : cfg.monitors)
            form.monitor = ini.ReadInteger(kMonitor, form.formName, 0);
    } else {
        return false;
    }
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
    ini.WriteString(kHardware, "Profile", cfg.Profile);
    ini.WriteCommaList(kPortStandards, "Baudrates", cfg.portStandards.baudRates);
    ini.WriteCommaList(kPortStandards, "Databits", cfg.portStandards.dataBits);
    ini.WriteCommaList(kPortStandards, "Parities", cfg.portStandards.parities);
    ini.WriteCommaList(kPortStandards, "Stopbits", cfg.portStandards.stopBits);

    ini.WriteString(kModes, "InstallLang", cfg.InstallLang);
    ini.WriteInteger(kModes, "GlobalLang", cfg.GlobalLang);
    ini.WriteInteger(kModes, "DefLang", cfg.DefLang);
    ini.WriteInteger(kModes, "DisplayMode", cfg.DisplayMode);
    ini.WriteInteger(kModes, "RecordMode", cfg.RecordMode);
    ini.WriteInteger(kModes, "CharacterControl", cfg.CharacterControl);
    ini.WriteInteger(kModes, "SignalMode", cfg.SignalMode);
    ini.WriteInteger(kModes, "TimeControl", cfg.TimeControl);

    ini.WriteInteger(kWindow, "Left", cfg.window.Left);
    ini.WriteInteger(kWindow, "Top", cfg.window.Top);
    ini.WriteInteger(kWindow, "Width", cfg.window.Width);
    ini.WriteInteger(kWindow, "Height", cfg.window.Height);
    ini.WriteInteger(kWindow, "WindowState", cfg.window.WindowState);

    // Each form under its index and under its name: the name is what loading looks up.
    for (std::size_t i = 0; i < cfg.monitors.size(); ++i) {
        ini.WriteInteger(kMonitor, std::to_string(i), cfg.monitors[i].monitor);
        if (!cfg.monitors[i].formName.empty())
            ini.WriteInteger(kMonitor, cfg.monitors[i].formName, cfg.monitors[i].monitor);
    }

    ini.WriteInteger(kAllBottomPanels, "Left", cfg.allBottomPanels.Left);
    ini.WriteInteger(kAllBottomPanels, "Top", cfg.allBottomPanels.Top);
    ini.WriteInteger(kAllBottomPanels, "Width", cfg.allBottomPanels.Width);
    ini.WriteInteger(kAllBottomPanels, "Height", cfg.allBottomPanels.Height);
    ini.WriteInteger(kCCenterPanel, "Left", cfg.cCenterPanel.Left);
    ini.WriteInteger(kCCenterPanel, "Top", cfg.cCenterPanel.Top);
    ini.WriteInteger(kCCenterPanel, "Width", cfg.cCenterPanel.Width);

    StoreToolWindow(ini, kGOWindow, cfg.goWindow);
    ini.WriteInteger(kGOWindow, "SearchPageIndex", cfg.SearchPageIndex);
    ini.WriteInteger(kGOWindow, "ControlSearchPageIndex", cfg.ControlSearchPageIndex);
    StoreToolWindow(ini, kEXWindow, cfg.exWindow);
    StoreToolWindow(ini, kREWindow, cfg.reWindow);

    ini.WriteString(kEnvironment, "Filename", cfg.EnvironmentFilename);
    ini.WriteInteger(kDataGrid, "GridOptions", cfg.GridOptions);
    ini.WriteBool(kDisplay, "ViewHold", cfg.ViewHold);
    ini.WriteBool(kRecorder, "Append", cfg.Append);
    ini.WriteBool(kRecorder, "Replace", cfg.Replace);

    StoreGridView(ini, "DispMode4", cfg.dispMode4);
    StoreGridView(ini, "DispMode3", cfg.dispMode3);
    StoreGridView(ini, "DispMode1", cfg.dispMode1);
    StoreColumns(ini, kTriggerList, cfg.triggerListColumns);

    ini.WriteBool(kWebUpdate, "CheckForUpdatesAtProgStart", cfg.CheckForUpdatesAtProgStart);
    ini.WriteBool(kProgramStart, "DisplayHoldOnProgStart", cfg.DisplayHoldOnProgStart);
    ini.WriteBool(kProgramStart, "BeginRecordOnProgStart", cfg.BeginRecordOnProgStart);
}

FileResult SaveConfiguration(const ProgramConfig &cfg, const std::filesystem::path &configFile)
{
    // Kestrel.ini has a fixed place, so a file there with NUL bytes is a damaged one (a crash
    // on some file systems leaves that), not a recording picked by mistake: write it anew.
    if (const IniReadResult current = ReadIniFile(configFile); current.status.ok && current.notSettingsFile) {
        IniFile fresh;
        StoreConfiguration(cfg, fresh);
        return WriteIniFile(configFile, fresh);
    }
    return UpdateIniFile(configFile, [&](IniFile &ini) { StoreConfiguration(cfg, ini); });
}

} // namespace kestrel
