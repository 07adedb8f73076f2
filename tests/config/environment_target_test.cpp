// What a save or load meets at an environment path, and the questions asked
// before a save writes into a file that is not this environment.

#include <gtest/gtest.h>

#include <fstream>

#include "config/environment.h"
#include "config/environment_target.h"
#include "golden_files.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

std::filesystem::path Write(const test::TempDir &dir, const std::string &name, const std::string &text)
{
    const auto path = dir.path() / name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

EnvFileKind KindOf(const std::filesystem::path &path) { return CheckEnvironmentFile(path).kind; }

} // namespace

TEST(EnvironmentTarget, TellsEnvironmentsFromOtherFiles)
{
    test::TempDir dir;
    const auto saved = dir.path() / "saved.kef";
    ASSERT_TRUE(SaveEnvironment(Environment{}, saved).ok());
    EXPECT_EQ(KindOf(saved), EnvFileKind::Environment);
    EXPECT_EQ(KindOf(test::GoldenFile("../data/windows_style.kef")), EnvFileKind::Environment);
    // Hand-written set-ups that hold only a part of what a save writes.
    EXPECT_EQ(KindOf(Write(dir, "a.kef", "[ComA]\nCustomBaudRate=19200\n")), EnvFileKind::Environment);
    EXPECT_EQ(KindOf(Write(dir, "b.kef", "[files]\nrecord data=x.ksr\n")), EnvFileKind::Environment);
    EXPECT_EQ(KindOf(Write(dir, "c.kef", "[Trigger0]\nName=start\n")), EnvFileKind::Environment);

    // The program's own settings, another program's INI with a [General] section, notes.
    EXPECT_EQ(KindOf(test::GoldenFile("../data/kestrel_sample.ini")), EnvFileKind::Foreign);
    EXPECT_EQ(KindOf(Write(dir, "qt.conf", "[General]\nTitle=x\n[Files]\nLast=y\n")), EnvFileKind::Foreign);
    EXPECT_EQ(KindOf(Write(dir, "notes.txt", "Call the customer about line 7.\n")), EnvFileKind::Foreign);
    EXPECT_EQ(KindOf(Write(dir, "comment.kef", "; kept for later\n")), EnvFileKind::Foreign);

    EXPECT_EQ(KindOf(dir.path() / "missing.kef"), EnvFileKind::Missing);
    EXPECT_EQ(KindOf(Write(dir, "empty.kef", "")), EnvFileKind::Empty);
    EXPECT_EQ(KindOf(Write(dir, "blank.kef", " \r\n\t\n")), EnvFileKind::Empty);
    EXPECT_EQ(KindOf(Write(dir, "line.ksr", std::string("[ComA]\0\0\x01", 9))), EnvFileKind::Refused);
    EXPECT_EQ(KindOf(dir.path()), EnvFileKind::Refused);
}

TEST(EnvironmentTarget, AsksBeforeWritingIntoAnotherEnvironmentOrAnotherKindOfFile)
{
    test::TempDir dir;
    const auto current = dir.path() / "current.kef";
    const auto other = dir.path() / "other.kef";
    ASSERT_TRUE(SaveEnvironment(Environment{}, current).ok());
    ASSERT_TRUE(SaveEnvironment(Environment{}, other).ok());

    test::ScriptedPrompter prompter{MsgResult::No};
    EXPECT_TRUE(MaySaveEnvironmentTo(prompter, current, current));
    EXPECT_TRUE(MaySaveEnvironmentTo(prompter, dir.path() / "." / "current.kef", current)); // the same file
    EXPECT_TRUE(MaySaveEnvironmentTo(prompter, dir.path() / "new.kef", current));
    EXPECT_TRUE(MaySaveEnvironmentTo(prompter, Write(dir, "empty.kef", ""), current));
    // Never a settings file: no question, the save itself refuses and says why.
    EXPECT_TRUE(MaySaveEnvironmentTo(prompter, Write(dir, "x.ksr", std::string(80, '\0')), current));
    EXPECT_TRUE(prompter.asked.empty());

    EXPECT_FALSE(MaySaveEnvironmentTo(prompter, other, current));
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].buttons, Buttons::YesNo);

    // A file of another kind is asked about even when it is the one in use (loaded under
    // its name some other way); the window's test covers the answers.
    const auto notes = Write(dir, "notes.txt", "Call the customer.\n");
    EXPECT_FALSE(MaySaveEnvironmentTo(prompter, notes, notes));
    ASSERT_EQ(prompter.asked.size(), 2u);
    EXPECT_EQ(prompter.asked[1].buttons, Buttons::YesNoDefaultNo); // Enter must not write into it
}

TEST(EnvironmentTarget, DefaultExtensionOnlyForANameWithoutOne)
{
    EXPECT_EQ(WithEnvironmentExtension("/m/line"), "/m/line.kef");
    EXPECT_EQ(WithEnvironmentExtension("/m.d/line"), "/m.d/line.kef");
    EXPECT_EQ(WithEnvironmentExtension("/m/line.kef"), "/m/line.kef");
    EXPECT_EQ(WithEnvironmentExtension("/m/notes.txt"), "/m/notes.txt");
}
