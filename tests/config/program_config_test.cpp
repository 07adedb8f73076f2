#include <gtest/gtest.h>

#include <fstream>

#include "config/config_messages.h"
#include "config/program_config.h"
#include "golden_files.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

const char *const kForms[] = {"TFormMain", "TFormGoto", "TFormExport", "TFormReport", "TFormMonitors"};

ProgramConfig LoadedMain(const std::string &text, ProgramConfig cfg = {})
{
    LoadConfiguration(IniFile::Parse(text), "TFormMain", cfg);
    return cfg;
}

// Every form's part of a file, for the forms TFormMain, TFormGoto and TFormExport.
ProgramConfig LoadedWhole(const std::filesystem::path &file)
{
    ProgramConfig cfg;
    cfg.monitors = {{"TFormMain", 0}, {"TFormGoto", 0}, {"TFormExport", 0}};
    for (const char *form : kForms)
        EXPECT_TRUE(LoadConfiguration(file, form, cfg)) << form;
    return cfg;
}

// The values of golden/kestrel.ini: none of them a default, neighbours told apart.
ProgramConfig KnownConfig()
{
    ProgramConfig c;
    c.Profile = "bench cable.ksh";
    c.portStandards = {{"300", "1200", "9600", "115 200"}, {"7", "8"}, {"E", "N"}, {"1", "2"}};
    c.InstallLang = "xx";
    c.GlobalLang = 10000;
    c.DefLang = 1;
    c.DisplayMode = 4;
    c.RecordMode = 2;
    c.CharacterControl = 8;
    c.SignalMode = 0;
    c.TimeControl = 2;
    c.window = {-8, 12, 1280, 1024, 2};
    c.monitors = {{"TFormMain", 1}, {"TFormGoto", 2}, {"TFormExport", 3}};
    c.allBottomPanels = {1, 2, 3, 4};
    c.cCenterPanel = {5, 6, 7, 0};
    c.goWindow = {10, 20, 1, true};
    c.SearchPageIndex = 3;
    c.ControlSearchPageIndex = 2;
    c.exWindow = {30, 40, 2, false};
    c.reWindow = {50, 60, 1, true};
    c.EnvironmentFilename = "/home/jo/set ups/line 7.kef";
    c.GridOptions = 12345;
    c.GridZoom = 130;
    c.ViewHold = true;
    c.Append = false;
    c.Replace = true;
    for (std::size_t i = 0; i < c.dispMode4.columnWidths.size(); ++i)
        c.dispMode4.columnWidths[i] = 400 + static_cast<int>(i);
    c.dispMode4.CharacterMode1 = 2;
    c.dispMode4.CharacterMode2 = 5;
    for (std::size_t i = 0; i < c.dispMode3.columnWidths.size(); ++i)
        c.dispMode3.columnWidths[i] = 1000 + static_cast<int>(i);
    c.dispMode3.CharacterMode1 = 4;
    c.dispMode3.CharacterMode2 = 6;
    for (std::size_t i = 0; i < c.dispMode1.columnWidths.size(); ++i)
        c.dispMode1.columnWidths[i] = 40 + static_cast<int>(i);
    c.dispMode1.CharacterMode1 = 6;
    c.dispMode1.CharacterMode2 = 10;
    c.triggerListColumns = {170, 71, 141, 131, 231, 121};
    c.CheckForUpdatesAtProgStart = true;
    c.VersionFileUrl = "http://updates.lab.example.net/kestrel.txt";
    c.ReportAddress = "serial-lab@example.net";
    c.DisplayHoldOnProgStart = false;
    c.BeginRecordOnProgStart = true;
    return c;
}

} // namespace

TEST(ProgramConfigGolden, SavingKnownValuesGivesTheGoldenFile)
{
    test::TempDir dir;
    const auto path = dir.path() / kConfigFileName;
    const Result saved = SaveConfiguration(KnownConfig(), path);
    ASSERT_TRUE(saved.ok()) << saved.detail;
    EXPECT_EQ(test::ReadWholeFile(path), test::ReadWholeFile(test::GoldenFile("kestrel.ini")));
}

TEST(ProgramConfigGolden, LoadingTheGoldenFileGivesEveryValue)
{
    const ProgramConfig loaded = LoadedWhole(test::GoldenFile("kestrel.ini"));
    ProgramConfig expected = KnownConfig();
    expected.ViewHold = false; // written, never read back: only DisplayHoldOnProgStart holds the display at start
    expected.skins.assign(100, SkinSlot{}); // no styles in the file: 99 empty slots and the plain look
    // Stored as text first, so that a failure names the key that differs.
    IniFile got, want;
    StoreConfiguration(loaded, got);
    StoreConfiguration(expected, want);
    EXPECT_EQ(got.ToText(), want.ToText());
    EXPECT_TRUE(loaded == expected);
    EXPECT_EQ(LoadLanguageConfig(test::GoldenFile("kestrel.ini")), 10000);
}

// What the first start writes when there is no Kestrel.ini: every key at its default
// (the installer's "en" hint already taken).
TEST(ProgramConfigGolden, AFirstStartWritesEveryDefault)
{
    test::TempDir dir;
    const auto path = dir.path() / kConfigFileName;
    ProgramConfig cfg;
    cfg.monitors = {{"TFormMain", 0}};
    for (const char *form : kForms)
        LoadConfiguration(path, form, cfg);
    ASSERT_TRUE(SaveConfiguration(cfg, path).ok());
    EXPECT_EQ(test::ReadWholeFile(path), test::ReadWholeFile(test::GoldenFile("first_start.ini")));
}

// A Kestrel.ini left full of NUL bytes (a crash on some file systems) is replaced
// by a whole new file; refusing it would silently keep every later save from landing.
TEST(ProgramConfig, ADamagedFileIsReplacedOnTheNextSave)
{
    test::TempDir dir;
    const auto path = dir.path() / kConfigFileName;
    std::ofstream(path, std::ios::binary) << std::string(4096, '\0');
    ASSERT_TRUE(SaveConfiguration(KnownConfig(), path).ok());
    EXPECT_EQ(test::ReadWholeFile(path), test::ReadWholeFile(test::GoldenFile("kestrel.ini")));

    // A folder in its place cannot be replaced: the result says so.
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(SaveConfiguration(KnownConfig(), path).code, kMsgConfigNotSaved);
}

// The installer's hint (de, en) decides once and is then marked taken (xx); "xx" reads the
// stored choice, German when none; any other hint changes nothing and GlobalLang is not read.
TEST(ProgramConfig, InstallerLanguageHintIsTakenOnce)
{
    const std::tuple<const char *, int, int> cases[] = {
        {"InstallLang=de\nGlobalLang=10000", 0, 0},   {"InstallLang=xx\nGlobalLang=10000", 0, 10000},
        {"InstallLang=xx", 10000, 0},                   {"InstallLang=fr\nGlobalLang=0", 10000, 10000},
        {"InstallLang=fr\nGlobalLang=10000", 0, 0},
    };
    for (const auto &[modes, before, after] : cases) {
        ProgramConfig cfg;
        cfg.GlobalLang = before;
        EXPECT_EQ(LoadedMain("[Modes]\n" + std::string(modes) + "\n", cfg).GlobalLang, after) << modes;
    }
    IniFile written;
    StoreConfiguration(LoadedMain("[Modes]\nInstallLang=de\n"), written);
    EXPECT_EQ(written.ReadString("Modes", "InstallLang", ""), "xx");

    // An unknown hint leaves the stored language alone at the next save (and a missing one missing).
    for (const char *stored : {"GlobalLang=10000\n", ""}) {
        const std::string text = "[Modes]\nInstallLang=fr\n" + std::string(stored);
        IniFile file = IniFile::Parse(text);
        ProgramConfig cfg;
        cfg.GlobalLang = 0;
        const ProgramConfig loaded = LoadedMain(text, cfg);
        StoreConfiguration(loaded, file);
        EXPECT_EQ(file.ReadString("Modes", "GlobalLang", "none"), *stored ? "10000" : "none") << stored;
        EXPECT_EQ(file.ReadString("Modes", "InstallLang", ""), "fr");
    }
    EXPECT_EQ(LoadLanguageConfig(IniFile{}), 0);
}

TEST(ProgramConfig, StyleSlotsAreReadButNeverWritten)
{
    const std::string styles = "[Skin]\nMax=2\nCurrent=2\n[Skin1]\nName=None\nDark=1\n"
                               "[Skin2]\nName=Carbon\nDark=1\n[Skin3]\nName=Beyond Max\n";
    const ProgramConfig cfg = LoadedMain(styles);
    ASSERT_EQ(cfg.skins.size(), 3u);
    EXPECT_EQ(cfg.skins[0], (SkinSlot{"Windows", false, false}));
    EXPECT_EQ(cfg.skins[1], (SkinSlot{"Windows", false, false}));
    EXPECT_EQ(cfg.skins[2], (SkinSlot{"Carbon", true, true}));
    EXPECT_EQ(cfg.SkinCurrent, 2);
    EXPECT_EQ(LoadedMain("").skins.size(), 100u); // 99 empty slots by default, plus the plain look
    EXPECT_EQ(LoadedMain("[Skin]\nMax=2000000000\n").skins.size(), static_cast<std::size_t>(kMaxSkinSlots + 1));
    EXPECT_EQ(LoadedMain("[Skin]\nMax=-4\n").skins.size(), 1u);

    ProgramConfig changed = cfg;
    changed.SkinMax = 7;
    changed.SkinCurrent = 0;
    IniFile ini = IniFile::Parse(styles);
    StoreConfiguration(changed, ini);
    EXPECT_EQ(ini.ToText().substr(0, styles.size()), styles);
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
    const IniFile ini = IniFile::Parse("[GOWindow]\nLeft=5\nVisible=1\nSearchPageIndex=2\n[EXWindow]\nLeft=6\n"
                                       "[REWindow]\nLeft=8\n[Window]\nLeft=7\n[Monitor]\n0=1\nFormGoto=3\n");
    ProgramConfig cfg;
    cfg.monitors = {{"FormMain", 0}, {"FormGoto", 0}};
    LoadConfiguration(ini, "TFormGoto", cfg);
    EXPECT_EQ(cfg.goWindow, (ToolWindowPlacement{5, 100, 0, true}));
    EXPECT_EQ(cfg.SearchPageIndex, 2);
    EXPECT_EQ(cfg.exWindow.Left, 100);
    EXPECT_EQ(cfg.window.Left, 0);
    EXPECT_EQ(cfg.monitors[1].monitor, 0);
    LoadConfiguration(ini, "TFormReport", cfg);
    EXPECT_EQ(cfg.reWindow.Left, 8);
    EXPECT_EQ(cfg.exWindow.Left, 100);
    EXPECT_FALSE(LoadConfiguration(ini, "TFormNothing", cfg));
    LoadConfiguration(ini, "TFormMonitors", cfg);
    EXPECT_EQ(cfg.monitors[0].monitor, 0); // looked up by name, not by index
    EXPECT_EQ(cfg.monitors[1].monitor, 3);
    EXPECT_EQ(cfg.goWindow.Left, 5);
    EXPECT_EQ(MonitorForForm(3, 2), 0); // a monitor that is gone: the primary one
}
