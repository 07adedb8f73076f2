#include <gtest/gtest.h>

#include "app/close_query.h"
#include "app/startup_args.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"

using namespace kestrel;

namespace {
StartupArgs parse(std::vector<std::string> a)
{
    a.insert(a.begin(), "kestrel");
    return ParseStartupArgs(a);
}
} // namespace

TEST(StartupArgs, FileArgumentsFollowTheLastMatchRule)
{
    struct Case {
        std::vector<std::string> args;
        std::string kef, ksr;
    };
    const std::vector<Case> cases = {
        {{"x.kef", "y.ksr"}, "x.kef", "y.ksr"},
        {{"data.KSR"}, "", ""},                            // the test is case-sensitive
        {{"a.ksr", "b.ksr", "c.kef"}, "c.kef", "b.ksr"},   // a later match replaces an earlier one
        {{"dir.ksr.old/notes.txt"}, "", "dir.ksr.old/notes.txt"}, // plain substring test
        {{"both.kef.ksr"}, "both.kef.ksr", "both.kef.ksr"},
        {{}, "", ""},
    };
    for (const Case &c : cases) {
        const StartupArgs r = parse(c.args);
        EXPECT_EQ(r.environmentFile, c.kef) << testing::PrintToString(c.args);
        EXPECT_EQ(r.recordFile, c.ksr) << testing::PrintToString(c.args);
        EXPECT_TRUE(r.errors.empty()) << testing::PrintToString(c.args);
    }
    // The program name itself is never taken.
    EXPECT_EQ(LastArgContaining({"/opt/x.ksr/kestrel"}, ".ksr"), "");
}

TEST(StartupArgs, EnvironmentFileOfTheConfigurationLandsInTheDataFolder)
{
    const std::string data = "/home/u/.local/share/Kestrel/";
    const std::pair<std::string, std::string> cases[] = {
        {"Default.kef", data + "Default.kef"},
        {"", data + "Default.kef"},
        {"C:\\Programme\\Kestrel\\line.kef", data + "line.kef"},
        {"c:line.kef", data + "line.kef"},
        {"\\\\server\\share\\lab.kef", data + "lab.kef"},
        {"C:\\Kestrel\\", data + "Default.kef"},
        {"/srv/setups/line.kef", "/srv/setups/line.kef"},
    };
    for (const auto &[stored, expected] : cases)
        EXPECT_EQ(EnvironmentFilePath(stored, data), expected) << stored;
}

TEST(StartupArgs, SimulateTakesAnOptionalScenario)
{
    EXPECT_TRUE(parse({"--simulate"}).simulate);
    EXPECT_EQ(parse({"--simulate"}).scenario, "");
    EXPECT_EQ(parse({"--simulate", "line.scn"}).scenario, "line.scn");
    EXPECT_EQ(parse({"--simulate=modem.scn"}).scenario, "modem.scn");
    // A following option or record file is not a scenario.
    const StartupArgs r = parse({"--simulate", "--verbose", "--record", "x.ksr"});
    EXPECT_TRUE(r.simulate);
    EXPECT_TRUE(r.verbose);
    EXPECT_TRUE(r.recordAtStart);
    EXPECT_EQ(r.scenario, "");
    EXPECT_EQ(r.recordFile, "x.ksr");
    EXPECT_EQ(parse({"--simulate", "rec.ksr"}).scenario, "");
    EXPECT_FALSE(parse({"x.ksr"}).simulate);
    EXPECT_FALSE(parse({"x.ksr"}).verbose);
}

TEST(StartupArgs, BadOptionsAreReportedNotGuessed)
{
    EXPECT_EQ(parse({"--data-dir"}).errors.size(), 1u);
    EXPECT_FALSE(parse({"--data-dir"}).dataDir.has_value());
    EXPECT_EQ(parse({"--data-dir=", "x"}).errors.size(), 1u);
    EXPECT_EQ(parse({"--data-dir", "/d"}).dataDir.value(), "/d");
    EXPECT_EQ(parse({"--bogus"}).errors.size(), 1u);
    for (const char *bad : {"abc", "-3", "0", "1e9", ""}) {
        const StartupArgs r = parse({"--quit-after", bad});
        EXPECT_EQ(r.errors.size(), 1u) << bad;
        EXPECT_FALSE(r.quitAfterSeconds.has_value()) << bad;
    }
    EXPECT_DOUBLE_EQ(parse({"--quit-after", "2.5"}).quitAfterSeconds.value(), 2.5);
}

namespace {

class FakeSteps final : public CloseSteps {
public:
    bool recording = false;
    bool changed = false;
    std::vector<std::string> done;
    bool isRecording() const override { return recording; }
    void closeRecordHandles() override { done.push_back("handles"); }
    bool environmentChanged() const override { return changed; }
    void saveEnvironmentDialog() override { done.push_back("saveEnv"); }
    void saveConfiguration() override { done.push_back("config"); }
};

} // namespace

TEST(CloseQuery, RefusesWithoutAQuestionWhileRecording)
{
    test::ScriptedPrompter p(MsgResult::Yes);
    FakeSteps s;
    s.recording = true;
    EXPECT_EQ(FormCloseQuery(p, s), CloseAnswer::RefusedRecording);
    EXPECT_TRUE(p.asked.empty());
    EXPECT_TRUE(s.done.empty());

    // A recording that began while the question waited refuses the close as well.
    class StartsWhileAsked final : public Prompter {
    public:
        explicit StartsWhileAsked(FakeSteps &steps) : steps_(steps) {}
        int ShowMessage(const std::string &, const std::string &, int, int) override
        {
            steps_.recording = true;
            return MsgResult::Yes;
        }

    private:
        FakeSteps &steps_;
    };
    FakeSteps late;
    StartsWhileAsked asks(late);
    EXPECT_EQ(FormCloseQuery(asks, late), CloseAnswer::RefusedRecording);
    EXPECT_TRUE(late.done.empty());
}

TEST(CloseQuery, AsksOnceWhenTheEnvironmentIsUnchanged)
{
    test::ScriptedPrompter p;
    p.answerNext(MsgResult::Yes);
    FakeSteps s;
    EXPECT_EQ(FormCloseQuery(p, s), CloseAnswer::Close);
    ASSERT_EQ(p.asked.size(), 1u);
    EXPECT_EQ(p.asked[0].text, Str(24));
    EXPECT_EQ(p.asked[0].title, Str(203));
    EXPECT_EQ(p.asked[0].buttons, Buttons::YesNo);
    EXPECT_EQ(s.done, (std::vector<std::string>{"handles", "config"}));
}

TEST(CloseQuery, NoKeepsTheWindowAndTouchesNothing)
{
    test::ScriptedPrompter p;
    p.answerNext(MsgResult::No);
    FakeSteps s;
    s.changed = true;
    EXPECT_EQ(FormCloseQuery(p, s), CloseAnswer::Declined);
    EXPECT_EQ(p.asked.size(), 1u);
    EXPECT_TRUE(s.done.empty());
}

TEST(CloseQuery, OffersToSaveAChangedEnvironment)
{
    for (int answer : {MsgResult::Yes, MsgResult::No}) {
        test::ScriptedPrompter p;
        p.answerNext(MsgResult::Yes);
        p.answerNext(answer);
        FakeSteps s;
        s.changed = true;
        EXPECT_EQ(FormCloseQuery(p, s), CloseAnswer::Close);
        ASSERT_EQ(p.asked.size(), 2u);
        EXPECT_EQ(p.asked[1].text, Str(25));
        EXPECT_EQ(p.asked[1].title, Str(204));
        const std::vector<std::string> expected =
            answer == MsgResult::Yes ? std::vector<std::string>{"handles", "saveEnv", "config"}
                                     : std::vector<std::string>{"handles", "config"};
        EXPECT_EQ(s.done, expected);
    }
}
