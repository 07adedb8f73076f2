// The trigger editor's window-free rules at their edges: OK's refusals, the
// command lookup, condition and event, the seconds field, and the moment of a
// time trigger.

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "support/temp_dir.h"
#include "trigger_engine/trigger_form_rules.h"

namespace kestrel {
namespace {

// A file system that holds exactly the given files.
FileLookup Holding(std::set<std::string> files, std::string searchPath = "/usr/bin")
{
    FileLookup lookup;
    lookup.exists = [files = std::move(files)](const std::string &p) { return files.count(p) > 0; };
    lookup.searchPath = std::move(searchPath);
    return lookup;
}

// The order of the refusals is the editor's test; here each one's edge.
TEST(TriggerFormOk, EdgesOfEachRefusal)
{
    const FileLookup files = Holding({"/snd/ring.wav", "/bin/log"});
    TriggerDef t;
    t.Name = "  \t ";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::NoName); // blanks are no name
    t.Name = "%TRIG_NAME%";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::PlaceholderInName); // in the name as in the description
    t.Name = "100% TRIG_NAME"; // looks alike, is none
    // An unticked action is not looked at, a ticked one is.
    t.SoundFilePath = "/nowhere.wav";
    t.CommandParams = "\"open";
    EXPECT_EQ(CheckTriggerForOk(t, files), std::nullopt);
    t.ExecCommand = true;
    t.CommandFilePath = "/bin/log";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::UnclosedQuote);
    t.CommandParams = "'closed' \"and \\\" this\"";
    EXPECT_EQ(CheckTriggerForOk(t, files), std::nullopt);
    t.PlaySound = true;
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::InvalidSound);
}

TEST(TriggerFormOk, BareCommandNamesAreLookedUpAlongThePath)
{
    const FileLookup files = Holding({"/opt/k/bin/notify", "./local-tool", "/bin/sh"}, "/usr/bin:/opt/k/bin::");
    EXPECT_TRUE(CommandExists("notify", files));
    EXPECT_TRUE(CommandExists("local-tool", files)); // an empty entry is the current folder
    EXPECT_FALSE(CommandExists("sh", files));        // /bin is not on this path
    EXPECT_TRUE(CommandExists("/bin/sh", files));
    EXPECT_FALSE(CommandExists("bin/notify", files)); // a path is never looked up
    EXPECT_FALSE(CommandExists("", files));
    EXPECT_FALSE(CommandExists("notify", Holding({"/opt/k/bin/notify"}, "")));
}

TEST(TriggerFormOk, OnlyRegularFilesExist)
{
    test::TempDir dir;
    std::ofstream(dir.file("ring.wav")) << "RIFF";
    std::filesystem::create_symlink(dir.file("ring.wav"), dir.file("link.wav"));
    EXPECT_TRUE(RegularFileExists(dir.file("ring.wav")));
    EXPECT_TRUE(RegularFileExists(dir.file("link.wav")));
    EXPECT_FALSE(RegularFileExists(dir.path().string())); // a folder
    EXPECT_FALSE(RegularFileExists(dir.file("gone.wav")));
    EXPECT_FALSE(RegularFileExists(""));
    EXPECT_TRUE(CommandExists("sh", FileLookup::System())); // from this process's PATH
}

// What the editor shows for the usual values is its own test; here what no entry has.
TEST(TriggerFormCondition, ValuesNoBoxHasCountAsTheFirstEntry)
{
    EXPECT_EQ(EventOfCondition(TriggerType::StartRecording, -1), TriggerEvent::Data); // nothing chosen
    EXPECT_EQ(EventOfCondition(TriggerType::Inactivity, 3), TriggerEvent::Inactivity);
    EXPECT_EQ(EventBoxIndexOf(TriggerEvent::Inactivity), TriggerEvent::Data);
    EXPECT_EQ(EventBoxIndexOf(-3), TriggerEvent::Data);
    EXPECT_EQ(ConditionBoxIndexOf(TriggerType::Inactivity), 2);
    EXPECT_EQ(ConditionBoxIndexOf(7), TriggerType::StartRecording);
    EXPECT_EQ(ConditionBoxIndexOf(-1), TriggerType::StartRecording);
}

TEST(TriggerFormSeconds, TextIsClampedToOneToFullRange)
{
    const std::pair<const char *, int> cases[] = {
        {"", 1},         {"0", 1},         {"1", 1},        {"30", 30},
        {"65535", 65535}, {"65536", 65535}, {"70000", 65535}, {"99999999999999999999999", 65535},
        {"0007", 7},      {"12ab", 12},     {"x12", 1},
    };
    for (const auto &[text, seconds] : cases)
        EXPECT_EQ(InActivitySecondsFromText(text), seconds) << '"' << text << '"';
}

TEST(TriggerFormTime, DateOfOneAndTimeOfTheOther)
{
    // 2024-03-01 is day 45352; the pickers may carry any time or date along.
    EXPECT_DOUBLE_EQ(ComposeTimeReached(45352.9, 45000.25), 45352.25);
    EXPECT_DOUBLE_EQ(ComposeTimeReached(45352.0, 0.0), 45352.0);
    EXPECT_DOUBLE_EQ(ComposeTimeReached(45352.0, 0.999988425925926), 45352.999988425925926); // 23:59:59
    // Before 1899-12-30 the days count back and the time of day forward.
    EXPECT_DOUBLE_EQ(ComposeTimeReached(-1.75, 10.25), -1.25);
    const DateTimeParts before = SplitDateTime(-1.25);
    EXPECT_EQ(before.day, -1);
    EXPECT_DOUBLE_EQ(before.time, 0.25);
}

} // namespace
} // namespace kestrel
