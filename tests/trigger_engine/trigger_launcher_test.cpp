// Trigger actions: the alert program's arguments, a real command started
// without a shell, and how start failures are told.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "base/reporter.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"
#include "trigger_engine/trigger_launcher.h"

namespace kestrel {
namespace {

using Words = std::vector<std::string>;

struct LauncherFixture : ::testing::Test {
    test::TempDir dir;
    test::ScriptedPrompter prompter;
    PromptReporter reporter{prompter};
    TriggerLauncher launcher{reporter};
    std::vector<std::pair<std::string, Words>> started;
    std::vector<std::string> status;

    void SetUp() override
    {
        SetGlobalLang(kLangEnglish);
        launcher.setStatusSink([this](const std::string &s) { status.push_back(s); });
    }
    void TearDown() override { SetGlobalLang(kLangGerman); }
    void fakeStarts(int code)
    {
        launcher.setStarter([this, code](const std::string &program, const Words &args) {
            started.emplace_back(program, args);
            return code;
        });
    }
};

TEST_F(LauncherFixture, TheAlertProgramBesideUsPlaysOnceOrEndlessly)
{
    fakeStarts(0);
    TriggerDef t;
    t.PlaySound = true;
    t.SoundFilePath = "/sounds/ring tone.wav";
    launcher.run(t);
    t.PlaySoundRepeat = true;
    launcher.run(t);
    ASSERT_EQ(started.size(), 2u);
    EXPECT_EQ(std::filesystem::path(started[0].first).filename(), "kestrel-chimer");
    EXPECT_EQ(std::filesystem::path(started[0].first).parent_path(),
              std::filesystem::read_symlink("/proc/self/exe").parent_path());
    EXPECT_EQ(started[0].second, (Words{"-s", "/sounds/ring tone.wav"}));
    EXPECT_EQ(started[1].second, (Words{"-r", "/sounds/ring tone.wav"}));
}

TEST_F(LauncherFixture, AFailedStartIsABoxOncePerTriggerAndRecordingThenAStatusLine)
{
    TriggerDef t;
    t.number = 4;
    t.ExecCommand = true;
    t.CommandFilePath = dir.file("missing-program");
    launcher.run(t); // the real starter: no such file
    launcher.run(t);
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].text, "The given external command is invalid! Result=2");
    ASSERT_EQ(status.size(), 1u);
    EXPECT_NE(status[0].find("Result=2"), std::string::npos);

    TriggerDef other = t;
    other.number = 5;
    launcher.run(other); // another trigger gets its own box
    EXPECT_EQ(prompter.asked.size(), 2u);
    launcher.newRecording();
    launcher.run(t);
    EXPECT_EQ(prompter.asked.size(), 3u);

    t.CommandFilePath = "/bin/true";
    t.CommandParams = "'never closed";
    EXPECT_TRUE(launcher.testCommand(t).unclosedQuote);
    EXPECT_EQ(prompter.asked.back().text, Str(TriggerActionMsg::UnclosedQuote));
}

TEST_F(LauncherFixture, WithoutAgreementActionsAreOnlyListed)
{
    fakeStarts(0);
    launcher.setAllowed(false);
    TriggerDef t;
    t.number = 2;
    t.PlaySound = true;
    t.SoundFilePath = "bell.wav";
    t.ExecCommand = true;
    t.CommandFilePath = "/usr/bin/logger";
    t.CommandParams = "fired";
    launcher.run(t);
    EXPECT_TRUE(started.empty());
    EXPECT_EQ(launcher.skipped(), (Words{"trigger 2: play bell.wav", "trigger 2: run /usr/bin/logger fired"}));
}

// A real program: what it is handed arrives unchanged, and nothing in a name
// or description is ever run.
TEST_F(LauncherFixture, ARealCommandGetsHostileTextsAsPlainArguments)
{
    const std::string out = dir.file("args.txt");
    const std::string script = dir.file("record-args.sh");
    {
        std::ofstream s(script);
        s << "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > " << out << ".part\nmv " << out << ".part "
          << out << "\n";
    }
    ::chmod(script.c_str(), 0755);
    const std::string pwned = dir.file("pwned");
    TriggerDef t;
    t.number = 7;
    t.ExecCommand = true;
    t.CommandFilePath = script;
    t.Name = R"(x"; touch )" + pwned + R"(; ")";
    t.Description = "$(touch " + pwned + ") `touch " + pwned + "` ; touch " + pwned;
    t.CommandParams = R"(%TRIG_NAME% "%TRIG_DESCR%" '%TRIG_NUM% %TRIG_NUM%' plain)";
    launcher.run(t);
    EXPECT_TRUE(prompter.asked.empty());

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!std::filesystem::exists(out) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::ifstream in(out);
    Words got;
    for (std::string line; std::getline(in, line);)
        got.push_back(line);
    EXPECT_EQ(got, (Words{t.Name, t.Description, "7 7", "plain"}));
    EXPECT_FALSE(std::filesystem::exists(pwned));
}

} // namespace
} // namespace kestrel
