#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "config/config_messages.h"
#include "config/data_folder.h"
#include "config/port_combo.h"
#include "config/record_setup.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {
EnvLookup Fake(std::map<std::string, std::string> vars)
{
    return [vars](const char *name) -> std::optional<std::string> {
        auto it = vars.find(name);
        if (it == vars.end())
            return std::nullopt;
        return it->second;
    };
}
} // namespace

TEST(DataFolder, CommandLineThenVariableThenXdgThenHome)
{
    const std::map<std::string, std::string> all{
        {"KESTREL_DATA_DIR", "/k"}, {"XDG_DATA_HOME", "/xdg"}, {"HOME", "/home/u"}};
    EXPECT_EQ(ResolveDataFolder(std::string("/cli"), Fake(all)), "/cli");
    EXPECT_EQ(ResolveDataFolder(std::nullopt, Fake(all)), "/k");
    EXPECT_EQ(ResolveDataFolder(std::string(), Fake({{"KESTREL_DATA_DIR", ""}, {"XDG_DATA_HOME", "/xdg"}})),
              "/xdg/kestrel");
    EXPECT_EQ(ResolveDataFolder(std::nullopt, Fake({{"HOME", "/home/u"}})), "/home/u/.local/share/kestrel");
    // A relative XDG_DATA_HOME is invalid and ignored, so the folder does not follow the working directory.
    EXPECT_EQ(ResolveDataFolder(std::nullopt, Fake({{"XDG_DATA_HOME", "rel/data"}, {"HOME", "/home/u"}})),
              "/home/u/.local/share/kestrel");

    const char *argv[] = {"kestrel", "x.kef", "--data-dir", "/one", "--data-dir=/two"};
    EXPECT_EQ(DataDirArgument(5, argv), "/two");
    EXPECT_EQ(DataDirArgument(3, argv), std::nullopt); // a trailing --data-dir without a value
}

TEST(DataFolder, CreatesItsFoldersOrSaysWhyNot)
{
    test::TempDir dir;
    const auto root = dir.path() / "a" / "kestrel";
    ASSERT_TRUE(EnsureDataFolder(root).ok());
    ASSERT_TRUE(EnsureDataFolder(root).ok());
    for (const char *sub : {"recordings", "profiles", "themes"})
        EXPECT_TRUE(std::filesystem::is_directory(root / sub)) << sub;

    std::ofstream(dir.path() / "file") << "x";
    const Result blocked = EnsureDataFolder(dir.path() / "file");
    EXPECT_EQ(blocked.code, kMsgDataFolderNotCreated);
    EXPECT_NE(blocked.detail.find("file"), std::string::npos);
}

TEST(RecordSetup, PortsAndRecordFileFromAnEnvironment)
{
    Environment env;
    env.comA = {1, "", 19200, 5, ParityOrdinal::Mark, 2};
    env.comB = {3, "/dev/ttyUSB1", 300, 8, ParityOrdinal::None, 1};
    env.recordFile = "/r/env.ksr";
    const RecordSetup s = RecordSetupFromEnvironment(env);
    EXPECT_EQ(s.portA, (RecordPortSetup{"/dev/ttyS0", "19200", "5", "M", "1.5"}));
    // Port B has its own device but always the line settings of port A.
    EXPECT_EQ(s.portB, (RecordPortSetup{"/dev/ttyUSB1", "19200", "5", "M", "1.5"}));
    EXPECT_EQ(s.recordFile, "/r/env.ksr");
    EXPECT_EQ(RecordSetupFromEnvironment(env, std::string("/cli.ksr")).recordFile, "/cli.ksr");
    EXPECT_EQ(ParityLetter(5), "N"); // an ordinal the port cannot take
    EXPECT_EQ(ParityOrdinalOf("x"), std::nullopt);
    EXPECT_EQ(StopBitsText(1, 5), "1");
    EXPECT_EQ(DevicePathOf(EnvPort{12}), "/dev/ttyS11");
}

TEST(PortCombo, StoredSettingsFindTheirItemsAndComboTextsComeBack)
{
    const PortValueLists lists = StandardPortValueLists();
    const EnvPort port{1, "", 115200, 5, ParityOrdinal::Odd, 2};
    EXPECT_EQ(ComboIndexesFor(port, lists), (PortComboIndexes{20, 0, 4, 1}));
    EXPECT_EQ(ComboIndexesFor(EnvPort{1, "", 12345, 9, 7, 3}, lists), (PortComboIndexes{-1, -1, 0, 0}));

    const EnvPort before{1, "", 9600, 8, ParityOrdinal::None, 1};
    EXPECT_EQ(WithComboTexts(before, "115200", "5", "O", "1.5"), port);
    EXPECT_EQ(WithComboTexts(before, "19200", "8", "S", "2"), (EnvPort{1, "", 19200, 8, ParityOrdinal::Space, 2}));
    // What capture cannot read is saved as what the line then runs with, not as typed.
    EXPECT_EQ(WithComboTexts(EnvPort{1, "", 300, 7, ParityOrdinal::Odd, 2}, "fast", "9", "?", "3"), before);
    EXPECT_EQ(WithComboTexts(before, "9600", "7", "e", "1").Parity, ParityOrdinal::Even);
    // "1" with five data bits runs 1.5 on the line, but is kept (and shown) as chosen.
    const EnvPort five = WithComboTexts(before, "300", "5", "N", "1");
    EXPECT_EQ(StopBitsText(five.StopBits, five.DataBits), "1");
    EXPECT_EQ(ComboIndexesFor(five, lists).stopBits, 0);
}
