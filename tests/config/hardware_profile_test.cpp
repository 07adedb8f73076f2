#include <gtest/gtest.h>

#include <fstream>

#include "config/config_messages.h"
#include "config/data_folder.h"
#include "config/hardware_profile.h"
#include "config/options_confirm.h"
#include "config/startup_settings.h"
#include "base/string_table.h"
#include "golden_files.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

HardwareProfile Sample()
{
    HardwareProfile p;
    p.Name = "Y-Kabel, 2 Ports";
    p.Manufacturer = "Eigenbau";
    p.lists = {{"1200", "9600", "115200"}, {"7", "8"}, {"N", "E", "O"}, {"1", "1.5", "2"}};
    p.ports[0] = "/dev/ttyUSB0";
    p.ports[1] = "/dev/ttyUSB1";
    p.ports[15] = "/dev/serial/by-id/usb-x port";
    return p;
}

const PortValueLists kInUse{{"300"}, {"8"}, {"O"}, {"2"}};

} // namespace

TEST(HardwareProfileGolden, WritingAKnownProfileGivesTheGoldenFileAndReadingItGivesItBack)
{
    test::TempDir dir;
    const Result written = WriteHardwareProfile(Sample(), dir.path() / "y.ksh");
    ASSERT_TRUE(written.ok()) << written.detail;
    EXPECT_EQ(test::ReadWholeFile(dir.path() / "y.ksh"), test::ReadWholeFile(test::GoldenFile("profile.ksh")));
    EXPECT_EQ(ReadHardwareProfile(test::GoldenFile("profile.ksh"), kInUse), Sample());
}

// A missing profile: its name and maker, the lists in use (here the standard ones), no ports.
TEST(HardwareProfileGolden, AMissingFileReadsAsTheDefaults)
{
    test::TempDir dir;
    IniFile stored;
    StoreHardwareProfile(ReadHardwareProfile(dir.path() / "none.ksh", StandardPortValueLists()), stored);
    EXPECT_EQ(stored.ToText(), test::ReadWholeFile(test::GoldenFile("defaults.ksh")));
}

TEST(HardwareProfile, MissingKeysKeepTheListsInUseAndPort17IsIgnored)
{
    const HardwareProfile p =
        ReadHardwareProfile(IniFile::Parse("\xEF\xBB\xBF[HARDWARE]\r\nname = Only a name\r\n[Interface]\r\nparity = M,S\r\n"
                                           "[Registry]\r\nPort2=b\r\nPort17=ignored\r\nPort0=ignored\r\n"),
                            kInUse);
    EXPECT_EQ(p.Name, "Only a name");
    EXPECT_EQ(p.Manufacturer, "Quorv");
    EXPECT_EQ(p.lists, (PortValueLists{{"300"}, {"8"}, {"M", "S"}, {"2"}}));
    EXPECT_EQ(p.ports[1], "b");
    for (std::size_t i = 0; i < p.ports.size(); ++i)
        EXPECT_TRUE(i == 1 || p.ports[i].empty()) << i;
}

TEST(HardwareProfile, ListingFindsOnlyProfileFiles)
{
    test::TempDir dir;
    ASSERT_TRUE(EnsureDataFolder(dir.path()).ok());
    for (const char *name : {"b.ksh", "a.KSH", "notes.txt", "c.ksh.bak", "Zeta.ksh", "alpha.ksh"})
        std::ofstream(ProfilePath(dir.path(), name)) << "[Hardware]\n";
    std::filesystem::create_directory(ProfilePath(dir.path(), "folder.ksh"));
    // Alphabetical as a reader expects it, capitals or not.
    EXPECT_EQ(ListHardwareProfiles(dir.path()), (std::vector<std::string>{"a.KSH", "alpha.ksh", "b.ksh", "Zeta.ksh"}));
    EXPECT_TRUE(ListHardwareProfiles(dir.path() / "nowhere").empty());
}

class ConfirmProfile : public ::testing::Test {
protected:
    void SetUp() override
    {
        SetGlobalLang(kLangEnglish);
        ASSERT_TRUE(EnsureDataFolder(dir.path()).ok());
    }
    test::TempDir dir;
    test::ScriptedPrompter prompter;
};

TEST_F(ConfirmProfile, ANewNameIsWrittenAtOnceAnExistingOneOnlyOnYes)
{
    auto confirm = [&](const char *name, const HardwareProfile &p) {
        return ConfirmHardwareProfile(prompter, dir.path(), name, p, kInUse);
    };
    const auto r = confirm("new.ksh", Sample());
    EXPECT_TRUE(r.outcome == ProfileConfirmOutcome::Written && r.createdNew);
    EXPECT_EQ(ReadHardwareProfile(ProfilePath(dir.path(), "new.ksh"), kInUse), Sample());
    // A name typed without the extension gets it, so that the list offers it next time.
    const auto typed = confirm("bench cable", Sample());
    EXPECT_EQ(typed.profileName, "bench cable.ksh");
    EXPECT_EQ(typed.profileList, (std::vector<std::string>{"bench cable.ksh", "new.ksh"}));
    EXPECT_FALSE(std::filesystem::exists(ProfilePath(dir.path(), "bench cable")));
    EXPECT_TRUE(prompter.asked.empty());

    // The same name again is the existing file now: No keeps it and shows it again, Yes writes.
    HardwareProfile changed = Sample();
    changed.Name = "changed";
    prompter.answerNext(MsgResult::No);
    const auto kept = confirm("bench cable", changed);
    EXPECT_EQ(kept.outcome, ProfileConfirmOutcome::Declined);
    EXPECT_EQ(kept.profile.Name, Sample().Name);
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, "CONFIRMATION");
    EXPECT_EQ(ReadHardwareProfile(ProfilePath(dir.path(), "bench cable.ksh"), kInUse), Sample());
    prompter.answerNext(MsgResult::Yes);
    const auto written = confirm("bench cable", changed);
    EXPECT_TRUE(written.outcome == ProfileConfirmOutcome::Written && !written.createdNew);
    EXPECT_EQ(ReadHardwareProfile(ProfilePath(dir.path(), "bench cable.ksh"), kInUse), changed);
}

TEST_F(ConfirmProfile, FailuresAreResultsForTheDialogToShow)
{
    for (const char *bad : {"", "..", "../escape.ksh", "sub/x.ksh"}) {
        const auto r = ConfirmHardwareProfile(prompter, dir.path(), bad, Sample(), kInUse);
        EXPECT_EQ(r.outcome, ProfileConfirmOutcome::Failed) << bad;
        EXPECT_EQ(r.status.code, kMsgBadProfileName) << bad;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "escape.ksh"));

    // profiles/ taken by a file: nothing can be written there.
    std::filesystem::remove_all(dir.path() / kProfilesFolder);
    std::ofstream(dir.path() / kProfilesFolder) << "x";
    const auto blocked = ConfirmHardwareProfile(prompter, dir.path(), "new.ksh", Sample(), kInUse);
    EXPECT_EQ(blocked.outcome, ProfileConfirmOutcome::Failed);
    EXPECT_EQ(blocked.status.code, kMsgProfileNotSaved);
    EXPECT_FALSE(blocked.status.detail.empty());
    EXPECT_TRUE(prompter.asked.empty()); // only the overwrite question goes to the user
}

TEST(StartupSettings, TheProfileIsReadBeforeThePortStandardsWhichWin)
{
    test::TempDir dir;
    ASSERT_TRUE(EnsureDataFolder(dir.path()).ok());
    ASSERT_TRUE(WriteHardwareProfile(Sample(), ProfilePath(dir.path(), "y.ksh")).ok());
    std::ofstream(dir.path() / kConfigFileName) << "[Hardware]\nProfile=y.ksh\n[Port Standards]\nBaudrates=600,1200\n"
                                                   "[Modes]\nInstallLang=xx\nGlobalLang=10000\n";
    ProgramConfig cfg;
    const HardwareProfile profile = LoadMainConfiguration(dir.path(), cfg);
    EXPECT_EQ(profile.Name, "Y-Kabel, 2 Ports");
    EXPECT_EQ(cfg.Profile, "y.ksh");
    EXPECT_EQ(cfg.portStandards.baudRates, (std::vector<std::string>{"600", "1200"}));
    EXPECT_EQ(cfg.portStandards.dataBits, StandardDataBits());
    EXPECT_EQ(cfg.GlobalLang, 10000);

    std::ofstream(dir.path() / kConfigFileName) << "[Hardware]\nProfile=../../etc/passwd\n";
    EXPECT_EQ(LoadMainConfiguration(dir.path(), cfg).Name, "Default Profile");
}
