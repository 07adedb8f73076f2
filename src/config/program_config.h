#pragma once
// The program's own settings (Kestrel.ini): profile in use, offered port values,
// language and display modes, window and panel bounds, column widths, record
// mode and start-up switches. Plain values; the main window applies them.

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "config/ini_file.h"
#include "config/port_value_lists.h"
#include "config/settings_table.h"

namespace kestrel {

inline constexpr const char *kConfigFileName = "Kestrel.ini";
// Where the update check asks for the newest version, and where problem reports go.
inline constexpr const char *kDefaultVersionFileUrl = "https://kestrel.example.org/download/kestrel-version.txt";
inline constexpr const char *kDefaultReportAddress = "support@kestrel.example.org";
inline constexpr int kBuiltInColumnWidth = 32; // the grid's default column width

inline constexpr int kDispMode4Columns = 35;
inline constexpr int kDispMode3Columns = 326;
inline constexpr int kDispMode1Columns = 14;
inline constexpr int kTriggerListColumns = 6;
// Title, number, condition, event, description, MP seen.
inline constexpr std::array<int, kTriggerListColumns> kDefaultTriggerListWidths{160, 60, 150, 150, 220, 110};
// Style slots beyond this are not read, whatever [Skin] Max says.
inline constexpr int kMaxSkinSlots = 999;

// The values of the structs below start at zero; ProgramConfig's constructor
// gives them the file's defaults from its settings table.

struct WindowPlacement {
    int Left = 0;
    int Top = 0;
    int Width = 0;
    int Height = 0;
    int WindowState = 0; // 0 normal, 1 minimised, 2 maximised
    friend bool operator==(const WindowPlacement &, const WindowPlacement &) = default;
};

struct PanelBounds {
    int Left = 0;
    int Top = 0;
    int Width = 0;
    int Height = 0;
    friend bool operator==(const PanelBounds &, const PanelBounds &) = default;
};

struct ToolWindowPlacement {
    int Left = 0;
    int Top = 0;
    int WindowState = 0;
    bool Visible = false;
    friend bool operator==(const ToolWindowPlacement &, const ToolWindowPlacement &) = default;
};

struct GridViewSettings {
    std::vector<int> columnWidths;
    int CharacterMode1 = 0;
    int CharacterMode2 = 0;
    friend bool operator==(const GridViewSettings &, const GridViewSettings &) = default;
};

struct SkinSlot {
    std::string Name = "Windows";
    bool Dark = false;
    bool inMenu = false; // a named style; "None" slots fall back to the plain look and get no entry
    friend bool operator==(const SkinSlot &, const SkinSlot &) = default;
};

// One form of the application and the monitor it stands on.
struct FormMonitor {
    std::string formName;
    int monitor = 0;
    friend bool operator==(const FormMonitor &, const FormMonitor &) = default;
};

struct ProgramConfig {
    ProgramConfig(); // every setting at the default the file gives a missing key

    std::string Profile;
    PortValueLists portStandards;

    std::string InstallLang; // the installer's one-shot language hint; "xx" once taken
    int GlobalLang = 0;
    // An installer hint that was neither taken nor known: GlobalLang was not read, so a save
    // leaves the stored one as it is until the user chooses a language.
    bool keepStoredLanguage = false;
    int DefLang = 0;
    int DisplayMode = 0;
    int RecordMode = 0;
    int CharacterControl = 0;
    int SignalMode = 0;
    int TimeControl = 0;

    WindowPlacement window;
    std::vector<FormMonitor> monitors; // every form of the application, in a fixed order
    PanelBounds allBottomPanels;
    PanelBounds cCenterPanel; // no height is kept

    ToolWindowPlacement goWindow;
    int SearchPageIndex = 0;
    int ControlSearchPageIndex = 0;
    ToolWindowPlacement exWindow;
    ToolWindowPlacement reWindow;

    std::string EnvironmentFilename;
    int GridZoom = 100;  // the grid's font size setting, percent
    int GridOptions = 0; // the grid's option set as an integer; loading keeps it when the key is missing
    bool ViewHold = false; // written, never read back
    bool Append = false;
    bool Replace = false;

    // Column widths start as the grid's built-in widths; loading keeps them for missing keys.
    GridViewSettings dispMode4{std::vector<int>(kDispMode4Columns, kBuiltInColumnWidth)};
    GridViewSettings dispMode3{std::vector<int>(kDispMode3Columns, kBuiltInColumnWidth)};
    GridViewSettings dispMode1{std::vector<int>(kDispMode1Columns, kBuiltInColumnWidth)};
    std::vector<int> triggerListColumns{kDefaultTriggerListWidths.begin(), kDefaultTriggerListWidths.end()};

    bool CheckForUpdatesAtProgStart = false;
    std::string VersionFileUrl; // the update check's version file (http or https)
    std::string ReportAddress;  // the recipient of problem reports
    bool DisplayHoldOnProgStart = false;
    bool BeginRecordOnProgStart = false;

    // Style slots, read at start-up only and never written. Slot 0 is the plain look.
    int SkinMax = 0;
    std::vector<SkinSlot> skins;
    int SkinCurrent = 0;

    friend bool operator==(const ProgramConfig &, const ProgramConfig &) = default;
};

// Kestrel.ini's keys in the order of the file; see settings_table.h.
[[nodiscard]] std::span<const Setting<ProgramConfig>> ProgramConfigSettings();
// The tool windows' own sections, each loaded when its window is created.
[[nodiscard]] std::span<const Setting<ProgramConfig>> GoWindowSettings();
[[nodiscard]] std::span<const Setting<ProgramConfig>> ExWindowSettings();
[[nodiscard]] std::span<const Setting<ProgramConfig>> ReWindowSettings();

// [Hardware] Profile only: start-up reads that profile before the rest.
void LoadProfileName(const IniFile &ini, ProgramConfig &cfg);

// [Modes] GlobalLang only (default 0): read before any form is built.
[[nodiscard]] int LoadLanguageConfig(const IniFile &ini);
[[nodiscard]] int LoadLanguageConfig(const std::filesystem::path &configFile);

// Reads the keys that belong to one form: "TFormMain" (the main window's
// settings, with the one-shot installer language hint), "TFormGoto",
// "TFormExport", "TFormReport" (their tool window sections) or "TFormMonitors"
// (the monitor of every form listed in cfg.monitors). Another name reads nothing
// and returns false. The hardware profile named by cfg.Profile is the caller's
// to read (ReadHardwareProfile) before the [Port Standards] lists, which this
// reads and which win over the profile's.
bool LoadConfiguration(const IniFile &ini, std::string_view formClass, ProgramConfig &cfg);
bool LoadConfiguration(const std::filesystem::path &configFile, std::string_view formClass, ProgramConfig &cfg);

// The monitor a form is placed on: the saved one while it is still attached, else the primary (0).
[[nodiscard]] int MonitorForForm(int savedMonitor, int monitorCount);

// Writes every key in the order of the file's layout onto ini (so the style
// slots and anything unknown stay as they were).
void StoreConfiguration(const ProgramConfig &cfg, IniFile &ini);
// Reads the file as it is, stores the settings over it and replaces it atomically;
// a damaged file (NUL bytes, oversized) is replaced by a new one.
// A failure is not reported to the user (the caller may log the result):
// code kMsgConfigNotSaved, the reason in the detail.
Result SaveConfiguration(const ProgramConfig &cfg, const std::filesystem::path &configFile);

} // namespace kestrel
