// The parameter line of a trigger command: words as a shell splits them, then
// the pool's placeholders filled in table order with the carry-over rule.

#include <gtest/gtest.h>

#include "base/string_table.h"
#include "trigger_engine/command_params.h"

namespace kestrel {
namespace {

using Words = std::vector<std::string>;

Words Fill(const std::string &line, const TriggerDef &t)
{
    const auto words = SplitShellWords(line);
    EXPECT_TRUE(words.has_value()) << line;
    return FillPlaceholders(words.value_or(Words{}), t, "STAMP");
}

TEST(SplitShellWords, QuotesAndEscapesFollowTheShell)
{
    EXPECT_EQ(SplitShellWords("  a  b\tc "), (Words{"a", "b", "c"}));
    EXPECT_EQ(SplitShellWords(R"('a b'"c d"e\ f)"), (Words{"a bc de f"}));
    EXPECT_EQ(SplitShellWords(R"("say \"hi\" \$HOME \n" '\n')"), (Words{R"(say "hi" $HOME \n)", R"(\n)"}));
    EXPECT_EQ(SplitShellWords(R"('' "")"), (Words{"", ""}));
    EXPECT_EQ(SplitShellWords(""), Words{});
    EXPECT_FALSE(SplitShellWords("'open").has_value());
    EXPECT_FALSE(SplitShellWords(R"("open \")").has_value());
}

TEST(FillPlaceholders, EverySlotInTableOrderWithTheCarryOver)
{
    SetGlobalLang(kLangEnglish);
    TriggerDef t;
    t.number = 3;
    t.Name = "dial";
    t.Description = "the modem dials";
    t.Event = TriggerEvent::Data;
    t.Data = "415444";
    t.D2 = true;
    EXPECT_EQ(Fill("%TRIG_NUM% %TRIG_NUM%", t), (Words{"3", "3"}));
    EXPECT_EQ(Fill("[%TRIG_TYPE%] %TRIG_EVENT% %TRIG_DATA% %TIMESTAMP%", t), (Words{"[]", "data", "415444", "STAMP"}));
    EXPECT_EQ(Fill("%TRIG_RX%", t), (Words{"Receiver data hint"}));
    // D2 only: the transmit hint does not apply, the last replacement (the name) is carried over.
    EXPECT_EQ(Fill("%TRIG_NAME% %TRIG_TX%", t), (Words{"dial", "dial"}));
    EXPECT_EQ(Fill("%TRIG_TX%", t), (Words{""})); // nothing replaced before it

    t.Event = TriggerEvent::Inactivity; // no event text of its own, no data
    EXPECT_EQ(Fill("%TRIG_DESCR% %TRIG_EVENT% %TRIG_DATA%", t),
              (Words{"the modem dials", "the modem dials", "the modem dials"}));
    t.Event = TriggerEvent::TimeReached;
    EXPECT_EQ(Fill("%TRIG_EVENT%", t), (Words{"timer"}));
    SetGlobalLang(kLangGerman);
    t.Event = TriggerEvent::Data;
    t.D1 = true;
    EXPECT_EQ(Fill("%TRIG_TX%", t), (Words{"Sendedaten-Hinweis"}));
}

TEST(FillPlaceholders, InsertedTextIsNeverScannedAgain)
{
    TriggerDef t;
    t.Name = "%TRIG_NAME%%TRIG_NAME%";
    t.Description = "%TRIG_NUM%";
    EXPECT_EQ(Fill("%TRIG_NAME%-%TRIG_DESCR%", t), (Words{"%TRIG_NAME%%TRIG_NAME%-%TRIG_NUM%"}));
    EXPECT_TRUE(ContainsPlaceholder(t.Name));
    EXPECT_FALSE(ContainsPlaceholder("%TRIG_NAME"));
}

} // namespace
} // namespace kestrel
