// Styles on disk: the first start puts the shipped styles and their slots in
// place (and nothing else, and only once), style files are found and read with
// clear reasons, and the slot in use is kept across a save of Kestrel.ini.

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

#include "config/data_folder.h"
#include "config/program_config.h"
#include "config/styles.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

ProgramConfig Loaded(const std::filesystem::path &dataFolder)
{
    ProgramConfig cfg;
    LoadConfiguration(dataFolder / kConfigFileName, "TFormMain", cfg);
    return cfg;
}

struct StyleFolder : ::testing::Test {
    void SetUp() override { ASSERT_TRUE(EnsureDataFolder(dir.path()).ok()); }
    std::filesystem::path themes() const { return dir.path() / kThemesFolder; }
    test::TempDir dir;
};

} // namespace

TEST_F(StyleFolder, TheFirstStartInstallsTheShippedStylesAndTheirSlotsOnce)
{
    const StyleInstall first = InstallShippedStylesOnFirstStart(dir.path());
    EXPECT_TRUE(first.installed);
    EXPECT_TRUE(first.status.ok()) << first.status.detail;
    for (const ShippedStyle &style : ShippedStyles()) {
        ASSERT_FALSE(style.sheet.empty()) << style.name;
        EXPECT_EQ(test::ReadWholeFile(themes() / (std::string(style.name) + ".qss")), style.sheet) << style.name;
    }
    const ProgramConfig cfg = Loaded(dir.path());
    ASSERT_GE(cfg.skins.size(), 3u);
    EXPECT_EQ(cfg.skins[1], (SkinSlot{"Light", false, true}));
    EXPECT_EQ(cfg.skins[2], (SkinSlot{"Dark", true, true}));
    EXPECT_EQ(cfg.SkinCurrent, 0);
    EXPECT_EQ(StyleChoices(cfg), (std::vector<int>{0, 1, 2}));

    // Once there is a [Skin] section, nothing is installed again, even when the files went.
    std::filesystem::remove(themes() / "Dark.qss");
    const std::string ini = test::ReadWholeFile(dir.path() / kConfigFileName);
    EXPECT_FALSE(InstallShippedStylesOnFirstStart(dir.path()).installed);
    EXPECT_FALSE(std::filesystem::exists(themes() / "Dark.qss"));
    EXPECT_EQ(test::ReadWholeFile(dir.path() / kConfigFileName), ini);
}

TEST_F(StyleFolder, TheUsersOwnFilesAreNeverReplaced)
{
    // A style file of the user's with a shipped name (in another case) stays as it is;
    // an existing Kestrel.ini keeps what it holds and gains the slots.
    std::ofstream(themes() / "light.QSS") << "/* mine */";
    std::ofstream(dir.path() / kConfigFileName) << "[Modes]\nGlobalLang=10000\n";
    EXPECT_TRUE(InstallShippedStylesOnFirstStart(dir.path()).installed);
    EXPECT_EQ(test::ReadWholeFile(themes() / "light.QSS"), "/* mine */");
    EXPECT_FALSE(std::filesystem::exists(themes() / "Light.qss"));
    EXPECT_EQ(FindStyleFile(dir.path(), "Light"), themes() / "light.QSS");
    EXPECT_EQ(Loaded(dir.path()).GlobalLang, 10000);

    // A damaged Kestrel.ini (NUL bytes) or one that cannot be read is left alone.
    test::TempDir other;
    ASSERT_TRUE(EnsureDataFolder(other.path()).ok());
    const std::string damaged = std::string("[Modes]\n") + '\0' + "x\n";
    std::ofstream(other.path() / kConfigFileName, std::ios::binary) << damaged;
    EXPECT_FALSE(InstallShippedStylesOnFirstStart(other.path()).installed);
    EXPECT_EQ(test::ReadWholeFile(other.path() / kConfigFileName), damaged);
    EXPECT_TRUE(std::filesystem::is_empty(other.path() / kThemesFolder));
    std::filesystem::remove(other.path() / kConfigFileName);
    std::filesystem::create_directory(other.path() / kConfigFileName);
    EXPECT_FALSE(InstallShippedStylesOnFirstStart(other.path()).installed);
}

TEST_F(StyleFolder, FindingAStyleFilePrefersItsExactSpelling)
{
    std::ofstream(themes() / "Night.QSS") << "a";
    EXPECT_EQ(FindStyleFile(dir.path(), "night"), themes() / "Night.QSS");
    std::ofstream(themes() / "night.qss") << "b";
    EXPECT_EQ(FindStyleFile(dir.path(), "night"), themes() / "night.qss");
    std::ofstream(themes() / "Day.txt") << "c";
    EXPECT_FALSE(FindStyleFile(dir.path(), "Day"));
    EXPECT_FALSE(FindStyleFile(dir.path() / "nowhere", "night"));
}

TEST_F(StyleFolder, ReadingAStyleSheetTellsWhyItCannotBeUsed)
{
    std::ofstream(themes() / "ok.qss") << "QLabel { color: red; }";
    const auto ok = ReadStyleSheet(themes() / "ok.qss");
    ASSERT_TRUE(ok.ok());
    EXPECT_EQ(ok.value, "QLabel { color: red; }");

    EXPECT_EQ(ReadStyleSheet(themes() / "gone.qss").result.code, kMsgStyleFileMissing);
    std::filesystem::create_directory(themes() / "folder.qss");
    EXPECT_EQ(ReadStyleSheet(themes() / "folder.qss").result.code, kMsgStyleFileNotRead);
    // A pipe would wait for a writer for ever: it is refused without being opened.
    ASSERT_EQ(::mkfifo((themes() / "pipe.qss").c_str(), 0600), 0);
    EXPECT_EQ(ReadStyleSheet(themes() / "pipe.qss").result.code, kMsgStyleFileNotRead);
    {
        std::ofstream bin(themes() / "binary.qss", std::ios::binary);
        bin << "QLabel {" << '\0' << "}";
    }
    EXPECT_EQ(ReadStyleSheet(themes() / "binary.qss").result.code, kMsgStyleFileNotText);
    std::ofstream(themes() / "huge.qss") << std::string(kMaxStyleSheetBytes + 1, ' ');
    const auto huge = ReadStyleSheet(themes() / "huge.qss");
    EXPECT_EQ(huge.result.code, kMsgStyleFileNotText);
    EXPECT_NE(huge.result.detail.find("huge.qss"), std::string::npos);
}

TEST_F(StyleFolder, TheSlotInUseIsANamedSlotAndSurvivesASaveOfTheConfiguration)
{
    std::ofstream(dir.path() / kConfigFileName)
        << "[Skin]\nMax=3\nCurrent=1\n[Skin1]\nName=None\n[Skin2]\nName=Paper\n[Skin3]\nName=Coal\nDark=1\n";
    ProgramConfig cfg = Loaded(dir.path());
    EXPECT_EQ(StyleChoices(cfg), (std::vector<int>{0, 2, 3}));
    EXPECT_EQ(StyleSlotInUse(cfg, 1), 0); // an empty slot is the platform look
    EXPECT_EQ(StyleSlotInUse(cfg, 3), 3);
    EXPECT_EQ(StyleSlotInUse(cfg, 4), 0);
    EXPECT_EQ(StyleSlotInUse(cfg, -1), 0);

    // Current alone is written; a later save of everything else leaves the style keys as they are.
    ASSERT_TRUE(SaveCurrentStyle(dir.path() / kConfigFileName, 3).ok());
    cfg.SkinCurrent = 0;
    ASSERT_TRUE(SaveConfiguration(cfg, dir.path() / kConfigFileName).ok());
    EXPECT_EQ(Loaded(dir.path()).SkinCurrent, 3);
    EXPECT_EQ(Loaded(dir.path()).skins, cfg.skins);
}
