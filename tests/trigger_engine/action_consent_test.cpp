// Agreement to an environment's trigger actions: per file and exact action,
// kept across runs.

#include <gtest/gtest.h>

#include "support/temp_dir.h"
#include "trigger_engine/action_consent.h"

namespace kestrel {
namespace {

TriggerDef Command(int number, const std::string &program, const std::string &params)
{
    TriggerDef t;
    t.number = number;
    t.Name = "t" + std::to_string(number);
    t.ExecCommand = true;
    t.CommandFilePath = program;
    t.CommandParams = params;
    return t;
}

TEST(ActionConsent, AgreementHoldsForThatFileAndThoseExactActionsOnly)
{
    test::TempDir dir;
    const auto store = std::filesystem::path(dir.file("agreed.txt"));
    TriggerList list;
    list.Append(Command(1, "/usr/bin/logger", "hello"));
    list.Append(TriggerDef{}); // no action: nothing to agree to
    TriggerDef sound;
    sound.PlaySound = true;
    sound.SoundFilePath = "/sounds/bell.wav";
    list.Append(sound);

    ActionConsent first(store);
    const auto pending = first.pending("/env/line.kef", list);
    ASSERT_EQ(pending.size(), 2u);
    EXPECT_EQ(DescribeActions(pending),
              (std::vector<std::string>{"1 t1: run /usr/bin/logger hello", "3 : play /sounds/bell.wav"}));
    ASSERT_TRUE(first.agree("/env/line.kef", pending));

    ActionConsent later(store); // a new run reads what was agreed
    EXPECT_TRUE(later.pending("/env/line.kef", list).empty());
    EXPECT_EQ(later.pending("/env/other.kef", list).size(), 2u); // another file asks again
    list[0].CommandParams = "hello; more";                        // a changed command asks again
    list[2].PlaySoundRepeat = true;
    EXPECT_EQ(later.pending("/env/line.kef", list).size(), 2u);
    list[0].Name = "renamed"; // the name is not part of the action
    list[0].CommandParams = "hello";
    list[2].PlaySoundRepeat = false;
    EXPECT_TRUE(later.pending("/env/line.kef", list).empty());
}

TEST(ActionConsent, AnUnwritableStoreStillAgreesForThisRun)
{
    ActionConsent consent("/proc/no-such-dir/agreed.txt");
    TriggerDef t = Command(1, "/bin/true", "");
    EXPECT_FALSE(consent.agree("/env/a.kef", {&t}));
    EXPECT_TRUE(consent.agreed("/env/a.kef", t));
}

} // namespace
} // namespace kestrel
