// The trigger editor's window-free rules: the order of OK's refusals, the
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

TriggerDef Acceptable()
{
    TriggerDef t;
    t.Name = "***Neuer Trigger"; // the default name is a name
    t.PlaySound = true;
    t.SoundFilePath = "/snd/ring.wav";
    t.ExecCommand = true;
    t.CommandFilePath = "/bin/log";
    t.CommandParams = "\"%TRIG_NAME% fired\" %TRIG_NUM%";
    return t;
}

TEST(TriggerFormOk, EachRefusalComesInItsTurn)
{
    const FileLookup files = Holding({"/snd/ring.wav", "/bin/log"});
    TriggerDef t = Acceptable();
    EXPECT_EQ(CheckTriggerForOk(t, files), std::nullopt);

    // Break everything at once, then mend one thing after the other: the message moves on.
    t.SoundFilePath = "/snd/missing.wav";
    t.CommandFilePath = "/bin/missing";
    t.Name = "";
    t.Description = "see %TRIG_DATA%";
    t.CommandParams = "'unclosed";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::InvalidSound);
    t.SoundFilePath = "/snd/ring.wav";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::InvalidCommand);
    t.CommandFilePath = "/bin/log";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::NoName);
    t.Name = "  \t ";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::NoName);
    t.Name = "Modem hang-up";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::PlaceholderInName);
    t.Description = "see data";
    t.Name = "%TRIG_NAME%";
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::PlaceholderInName);
    t.Name = "100% TRIG_NAME"; // looks alike, is none
    EXPECT_EQ(CheckTriggerForOk(t, files), TrigFormMsg::UnclosedQuote);
    t.CommandParams = "'closed' \"and \\\" this\"";
    EXPECT_EQ(CheckTriggerForOk(t, files), std::nullopt);
}

TEST(TriggerFormOk, UntickedActionsAreNotLookedAt)
{
    TriggerDef t;
    t.Name = "x";
    t.SoundFilePath = "/nowhere.wav";
    t.CommandFilePath = "";
    t.CommandParams = "\"open";
    EXPECT_EQ(CheckTriggerForOk(t, Holding({})), std::nullopt);
    t.PlaySound = true;
    EXPECT_EQ(CheckTriggerForOk(t, Holding({})), TrigFormMsg::InvalidSound);
    t.PlaySound = false;
    t.ExecCommand = true; // ticked with no program at all
    EXPECT_EQ(CheckTriggerForOk(t, Holding({})), TrigFormMsg::InvalidCommand);
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

TEST(TriggerFormCondition, InactivityTakesOverTheEventAndGivesItBack)
{
    EXPECT_FALSE(EventBoxShown(TriggerType::Inactivity));
    EXPECT_TRUE(EventBoxShown(TriggerType::StartRecording));
    EXPECT_TRUE(EventBoxShown(TriggerType::StopRecording));
    for (int box = 0; box < 4; ++box) {
        EXPECT_EQ(EventOfCondition(TriggerType::Inactivity, box), TriggerEvent::Inactivity);
        EXPECT_EQ(EventOfCondition(TriggerType::StopRecording, box), box);
    }
    EXPECT_EQ(EventOfCondition(TriggerType::StartRecording, -1), TriggerEvent::Data); // nothing chosen

    // Stored values: the boxes never show an entry they do not have.
    EXPECT_EQ(EventBoxIndexOf(TriggerEvent::TimeReached), 3);
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
    const DateTimeParts after = SplitDateTime(45352.5);
    EXPECT_EQ(after.day, 45352);
    EXPECT_DOUBLE_EQ(after.time, 0.5);
}

} // namespace
} // namespace kestrel
