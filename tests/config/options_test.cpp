// The options dialog's rules without a window: the value selector, the value-list
// fields and what OK refuses, the profile fields on opening and on choosing a
// profile, and a confirmation that asks only when the file would change.

#include <gtest/gtest.h>

#include <fstream>

#include "base/string_table.h"
#include "config/config_messages.h"
#include "config/data_folder.h"
#include "config/options_confirm.h"
#include "config/options_fields.h"
#include "config/value_selector.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

using V = std::vector<std::string>;

} // namespace

TEST(OfferableValue, TakesWhatAPortTakesInTheFormTheListsKeep)
{
    struct Case {
        PortValueKind kind;
        const char *typed;
        const char *kept; // nullptr: refused
    };
    const Case cases[] = {
        {PortValueKind::BaudRates, "9600", "9600"},     {PortValueKind::BaudRates, " 009600 ", "9600"},
        {PortValueKind::BaudRates, "0", nullptr},       {PortValueKind::BaudRates, "-300", nullptr},
        {PortValueKind::BaudRates, "+300", nullptr},    {PortValueKind::BaudRates, "9600 baud", nullptr},
        {PortValueKind::BaudRates, "", nullptr},        {PortValueKind::BaudRates, "99999999999999999999", nullptr},
        {PortValueKind::DataBits, "7", "7"},            {PortValueKind::DataBits, "4", nullptr},
        {PortValueKind::DataBits, "9", nullptr},        {PortValueKind::DataBits, "07", nullptr},
        {PortValueKind::Parities, "e", "E"},            {PortValueKind::Parities, "S", "S"},
        {PortValueKind::Parities, "X", nullptr},        {PortValueKind::Parities, "NE", nullptr},
        {PortValueKind::StopBits, "1,5", "1.5"},        {PortValueKind::StopBits, "2", "2"},
        {PortValueKind::StopBits, "3", nullptr},        {PortValueKind::StopBits, "1.50x", nullptr},
    };
    for (const Case &c : cases) {
        const auto kept = OfferableValue(c.kind, c.typed);
        if (c.kept == nullptr)
            EXPECT_FALSE(kept) << c.typed << " was kept as " << *kept;
        else
            EXPECT_EQ(kept.value_or("(refused)"), c.kept) << c.typed;
    }
}

TEST(ValueSelector, OpensOnTheFieldAndKeepsBothListsInNumericOrder)
{
    // The current list keeps its order; duplicates and empty items go; the rest of the standard is available.
    EXPECT_EQ(ValueSelector(PortValueKind::StopBits, {"2", "1", "2", ""}).selected(), (V{"2", "1"}));
    ValueSelector s(PortValueKind::BaudRates, {"1200", "115200"});
    EXPECT_EQ(s.available().size(), StandardBaudRates().size() - 2);
    EXPECT_TRUE(s.ToSelected("9600"));
    EXPECT_TRUE(s.ToSelected("300"));
    EXPECT_EQ(s.selected(), (V{"300", "1200", "9600", "115200"}));
    EXPECT_FALSE(s.ToSelected("9600")); // moved already

    EXPECT_EQ(s.AddValue(" 250000 "), ValueSelector::AddOutcome::Added);
    EXPECT_EQ(s.AddValue("9600"), ValueSelector::AddOutcome::AlreadyListed); // selected already
    EXPECT_EQ(s.AddValue("fast"), ValueSelector::AddOutcome::Invalid);
    const auto at = std::find(s.available().begin(), s.available().end(), "250000");
    ASSERT_NE(at, s.available().end());
    EXPECT_EQ(*(at - 1), "230400");
    EXPECT_EQ(*(at + 1), "460800");

    EXPECT_TRUE(s.ToAvailable("1200"));
    EXPECT_TRUE(s.DeleteAvailable("1200"));
    EXPECT_FALSE(s.DeleteAvailable("9600")); // "-" deletes from the available list only
    // RES: the standard list again, less the selected values; the selection stays.
    s.ResetAvailable();
    EXPECT_EQ(s.selected(), (V{"300", "9600", "115200"}));
    EXPECT_EQ(s.available().size(), StandardBaudRates().size() - 3);
    EXPECT_EQ(std::count(s.available().begin(), s.available().end(), "1200"), 1);
    EXPECT_EQ(std::count(s.available().begin(), s.available().end(), "250000"), 0);
}

TEST(OptionsFields, ValueListFieldsReadCommasLineBreaksAndQuotes)
{
    EXPECT_EQ(ParseValueListField("300, 1200,\n2400,\r\n,4800,"), (V{"300", "1200", "2400", "4800"}));
    EXPECT_EQ(ParseValueListField(""), V{});
    EXPECT_EQ(ParseValueListField("\"1,5\",2"), (V{"1,5", "2"}));
    EXPECT_EQ(ParseValueListField(ValueListFieldText(StandardBaudRates())), StandardBaudRates());
}

TEST(OptionsFields, CheckNamesTheFirstValueNoPortCanUseAndEmptyLists)
{
    PortValueLists lists = StandardPortValueLists();
    EXPECT_TRUE(CheckOfferedValues(lists).status.ok());

    lists.dataBits = {"7", "8", "9", "x"};
    const auto bad = CheckOfferedValues(lists);
    EXPECT_EQ(bad.status, Result::Fail(kMsgValueNotOffered, "9"));
    EXPECT_EQ(bad.kind, PortValueKind::DataBits);

    lists.dataBits = StandardDataBits();
    lists.stopBits.clear();
    const auto empty = CheckOfferedValues(lists);
    EXPECT_EQ(empty.status.code, kMsgEmptyValueList);
    EXPECT_EQ(empty.kind, PortValueKind::StopBits);

    // Lists are checked in the dialog's order: baud rates first.
    lists.baudRates = {"1200", "fast"};
    EXPECT_EQ(CheckOfferedValues(lists).kind, PortValueKind::BaudRates);
}

class ProfileFields : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureDataFolder(dir.path()).ok()); }
    test::TempDir dir;
    const PortValueLists shown{{"600"}, {"7"}, {"E"}, {"2"}};
};

TEST_F(ProfileFields, AProfileThatCannotBeReadSaysWhyAndGivesTheDefaults)
{
    // A profile named with a folder part, or one that does not exist: the defaults, and no complaint.
    for (const char *name : {"../Kestrel.ini", "missing.ksh"}) {
        const ProfileFieldsRead read = ProfileFieldsOfFile(dir.path(), name, shown);
        EXPECT_TRUE(read.status.ok() && read.profile.Name == "Default Profile" && read.profile.lists == shown) << name;
    }
    // A recording renamed to .ksh, and a folder of that name: said, and nothing of them taken.
    {
        std::ofstream bin(ProfilePath(dir.path(), "binary.ksh"), std::ios::binary);
        bin << "[Hardware]\nName=x" << std::string(3, '\0') << "\n";
    }
    std::filesystem::create_directory(ProfilePath(dir.path(), "folder.ksh"));
    for (const char *name : {"binary.ksh", "folder.ksh"}) {
        const ProfileFieldsRead read = ProfileFieldsOfFile(dir.path(), name, shown);
        EXPECT_EQ(read.status.code, kMsgSettingsFileNotRead) << name;
        EXPECT_NE(read.status.detail.find(name), std::string::npos) << read.status.detail;
        EXPECT_EQ(read.profile.Name, "Default Profile") << name;
    }
}

TEST_F(ProfileFields, ConfirmingAnUnchangedProfileAsksNothingAndWritesNothing)
{
    SetGlobalLang(kLangEnglish);
    test::ScriptedPrompter prompter(MsgResult::No);
    const auto path = ProfilePath(dir.path(), "bench.ksh");
    std::ofstream(path) << "; made by hand\n[Hardware]\nName=Bench cable\n";
    const auto before = std::filesystem::last_write_time(path);

    // The file lacks the lists: it offers the lists in use, which the fields show too.
    HardwareProfile fields = ProfileFieldsOfFile(dir.path(), "bench.ksh", shown).profile;
    const auto same = ConfirmHardwareProfile(prompter, dir.path(), "bench.ksh", fields, shown);
    EXPECT_EQ(same.outcome, ProfileConfirmOutcome::Unchanged);
    EXPECT_EQ(same.profileName, "bench.ksh");
    EXPECT_EQ(same.profileList, V{"bench.ksh"});
    EXPECT_TRUE(prompter.asked.empty());
    EXPECT_EQ(std::filesystem::last_write_time(path), before);

    // One list edited: now the question comes, and "No" keeps the file.
    fields.lists.baudRates = {"600", "1200"};
    const auto edited = ConfirmHardwareProfile(prompter, dir.path(), "bench.ksh", fields, shown);
    EXPECT_EQ(edited.outcome, ProfileConfirmOutcome::Declined);
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].text, StrIn(9208, kLangEnglish));
    EXPECT_EQ(edited.profile.lists.baudRates, V{"600"});
    EXPECT_EQ(std::filesystem::last_write_time(path), before);
}
