#include <gtest/gtest.h>

#include <fstream>

#include "config/program_config.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

ProgramConfig LoadedMain(const std::string &text, ProgramConfig cfg = {})
{
    LoadConfiguration(IniFile::Parse(text), "TFormMain", cfg);
    return cfg;
}

ProgramConfig Unusual()
{
    ProgramConfig c;
    c.Profile = "cable 2.ksh";
    c.portStandards = {{"300", "9600"}, {"7", "8"}, {"E", "N"}, {"1", "1.5"}};
    c.InstallLang = "xx";
    c.GlobalLang = 10000;
    c.DefLang = 1;
    c.DisplayMode = 4;
    c.RecordMode = 2;
    c.CharacterControl = 8;
    c.SignalMode = 0;
    c.TimeControl = 2;
    c.window = {-8, 12, 1280, 1024, 2};
    c.monitors = {{"FormMain", 1}, {"FormGoto", 0}, {"FormExport", 2}};
    c.allBottomPanels = {1, 2, 3, 4};
    c.cCenterPanel = {5, 6, 7, 0};
    c.goWindow = {10, 20, 1, true};
    c.SearchPageIndex = 3;
    c.ControlSearchPageIndex = 1;
    c.exWindow = {30, 40, 2, true};
    c.reWindow = {50, 60, 0, true};
    c.EnvironmentFilename = "/home/u/set ups/line 7.kef";
    c.GridOptions = 12345;
    c.Append = false;
    c.Replace = true;
    for (std::size_t i = 0; i < c.dispMode3.columnWidths.size(); ++i)
        c.dispMode3.columnWidths[i] = static_cast<int>(i);
    c.dispMode4.columnWidths[34] = 77;
    c.dispMode1.CharacterMode1 = 6;
    c.dispMode4.CharacterMode2 = 5;
    c.triggerListColumns[5] = 999;
    c.CheckForUpdatesAtProgStart = true;
    c.DisplayHoldOnProgStart = true;
    c.BeginRecordOnProgStart = true;
    return c;
}

} // namespace

TEST(ProgramConfig, SaveThenLoadGivesTheSameSettings)
{
    test::TempDir dir;
    const auto path = dir.path() / kConfigFileName;
    const ProgramConfig saved = Unusual();
    ASSERT_TRUE(SaveConfiguration(saved, path).ok);

    ProgramConfig loaded;
    loaded.monitors = {{"FormMain", 0}, {"FormGoto", 0}, {"FormExport", 0}};
    for (const char *form : {"TFormMain", "TFormGoto", "TFormExport", "TFormReport", "TFormMonitors"})
        EXPECT_TRUE(LoadConfiguration(path, form, loaded)) << form;
    EXPECT_EQ(loaded.skins.size(), 100u); // style slots are never written: 99 empty ones plus the plain look
    loaded.skins = saved.skins;
    EXPECT_EQ(loaded, saved);
    EXPECT_EQ(LoadLanguageConfig(path), 10000);
}

TEST(ProgramConfig, InstallerLanguageHintIsTakenOnce)
{
    ProgramConfig german = LoadedMain("[Modes]\nInstallLang=de\n");
    EXPECT_EQ(german.GlobalLang, 0);
    IniFile written;
    StoreConfiguration(german, written);
    EXPECT_EQ(written.ReadString("Modes", "InstallLang", ""), "xx");

    EXPECT_EQ(LoadedMain("[Modes]\nInstallLang=xx\nGlobalLang=10000\n").GlobalLang, 10000);
    EXPECT_EQ(LoadedMain("[Modes]\nInstallLang=de\nGlobalLang=10000\n").GlobalLang, 0);

    // Any other hint changes nothing and GlobalLang is not read.
    ProgramConfig before;
    before.GlobalLang = 10000;
    const ProgramConfig french = LoadedMain("[Modes]\nInstallLang=fr\nGlobalLang=0\n", before);
    EXPECT_EQ(french.GlobalLang, 10000);
    EXPECT_EQ(french.InstallLang, "fr");
    EXPECT_EQ(LoadedMain("[Modes]\nInstallLang=fr\nGlobalLang=10000\n").GlobalLang, 0);
}

TEST(ProgramConfig, StyleSlotsNamedNoneFallBackToThePlainLook)
{
    const ProgramConfig cfg = LoadedMain("[Skin]\nMax=2\nCurrent=2\n[Skin1]\nName=None\nDark=1\n"
                                         "[Skin2]\nName=Carbon\nDark=1\n[Skin3]\nName=Beyond Max\n");
    ASSERT_EQ(cfg.skins.size(), 3u);
    EXPECT_EQ(cfg.skins[0], (SkinSlot{"Windows", false, false}));
    EXPECT_EQ(cfg.skins[1], (SkinSlot{"Windows", false, false}));
    EXPECT_EQ(cfg.skins[2], (SkinSlot{"Carbon", true, true}));
    EXPECT_EQ(cfg.SkinCurrent, 2);
    EXPECT_EQ(LoadedMain("").skins.size(), 100u);
    EXPECT_EQ(LoadedMain("[Skin]\nMax=2000000000\n").skins.size(), static_cast<std::size_t>(kMaxSkinSlots + 1));
    EXPECT_EQ(LoadedMain("[Skin]\nMax=-4\n").skins.size(), 1u);
}

TEST(ProgramConfig, SaveKeepsStylesAndNeverReadsViewHoldBack)
{
    IniFile ini = IniFile::Parse("[Skin]\nMax=1\n[Skin1]\nName=Carbon\n");
    ProgramConfig cfg;
    cfg.monitors = {{"FormMain", 1}, {"FormGoto", 0}};
    cfg.ViewHold = true;
    StoreConfiguration(cfg, ini);
    EXPECT_EQ(ini.KeyNames("Monitor"), (std::vector<std::string>{"0", "FormMain", "1", "FormGoto"}));
    EXPECT_EQ(ini.ReadString("Skin1", "Name", ""), "Carbon");
    EXPECT_EQ(ini.ReadString("Display", "ViewHold", ""), "1");

    // ViewHold is never read back; only DisplayHoldOnProgStart holds the display at start.
    EXPECT_FALSE(LoadedMain(ini.ToText()).ViewHold);
}

TEST(ProgramConfig, MissingKeysKeepBuiltInWidthsAndTheGridOptions)
{
    ProgramConfig before;
    before.GridOptions = 4711;
    before.dispMode1.columnWidths[3] = 150;
    const ProgramConfig cfg = LoadedMain("[DispMode1]\nColumn0=90\nColumn14=5\n[DispMode2]\nColumn0=1\n"
                                         "[DataGrid]\nGridOptions=huge99999999999\n",
                                         before);
    EXPECT_EQ(cfg.dispMode1.columnWidths[0], 90);
    EXPECT_EQ(cfg.dispMode1.columnWidths[3], 150);
    EXPECT_EQ(cfg.dispMode1.columnWidths.size(), 14u);
    EXPECT_EQ(cfg.GridOptions, 4711);
}

TEST(ProgramConfig, FormsLoadOnlyTheirOwnPiece)
{
    const IniFile ini = IniFile::Parse("[GOWindow]\nLeft=5\nVisible=1\n[EXWindow]\nLeft=6\n[Window]\nLeft=7\n"
                                       "[Monitor]\n0=1\nFormGoto=3\n");
    ProgramConfig cfg;
    cfg.monitors = {{"FormMain", 0}, {"FormGoto", 0}};
    LoadConfiguration(ini, "TFormGoto", cfg);
    EXPECT_EQ(cfg.goWindow, (ToolWindowPlacement{5, 100, 0, true}));
    EXPECT_EQ(cfg.exWindow.Left, 100);
    EXPECT_EQ(cfg.window.Left, 0);
    EXPECT_FALSE(LoadConfiguration(ini, "TFormNothing", cfg));
    LoadConfiguration(ini, "TFormMonitors", cfg);
    EXPECT_EQ(cfg.monitors[0].monitor, 0); // looked up by name, not by index
    EXPECT_EQ(cfg.monitors[1].monitor, 3);
    EXPECT_EQ(MonitorForForm(3, 2), 0); // a monitor that is gone: the primary one
}

// Defaults a fresh start writes: the standard port values and the start-up modes.
TEST(ProgramConfig, AFreshStartWritesItsDefaults)
{
    ProgramConfig cfg;
    LoadConfiguration(IniFile{}, "TFormMain", cfg);
    IniFile ini;
    StoreConfiguration(cfg, ini);
    EXPECT_EQ(ini.ReadString("Port Standards", "Baudrates", "").substr(0, 18), "50,75,150,300,600,");
    EXPECT_EQ(ini.ReadString("Port Standards", "Parities", ""), "N,S,M,E,O");
    EXPECT_EQ(ini.ReadString("Port Standards", "Stopbits", ""), "1,1.5,2");
    EXPECT_EQ(ini.ReadString("Modes", "DisplayMode", ""), "1");
    EXPECT_EQ(ini.ReadString("Recorder", "Append", ""), "1");
    EXPECT_EQ(ini.ReadString("Environment", "Filename", ""), "Default.kef");
    EXPECT_EQ(ini.KeyNames("DispMode3").size(), 326u + 2);
}

// A Kestrel.ini left full of NUL bytes (a crash on some file systems) is replaced
// by a whole new file; refusing it would silently keep every later save from landing.
TEST(ProgramConfig, ADamagedFileIsReplacedOnTheNextSave)
{
    test::TempDir dir;
    const auto path = dir.path() / kConfigFileName;
    std::ofstream(path, std::ios::binary) << std::string(4096, '\0');
    ProgramConfig cfg = Unusual();
    ASSERT_TRUE(SaveConfiguration(cfg, path).ok);
    ProgramConfig loaded;
    loaded.monitors = cfg.monitors;
    for (const char *form : {"TFormMain", "TFormGoto", "TFormExport", "TFormReport", "TFormMonitors"})
        LoadConfiguration(path, form, loaded);
    loaded.skins = cfg.skins;
    EXPECT_EQ(loaded, cfg);
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}).find('\0'), std::string::npos);
}
