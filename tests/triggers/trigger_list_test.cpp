#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/string_table.h"
#include "triggers/trigger_list.h"
#include "triggers/trigger_texts.h"

using namespace kestrel;

namespace {

TriggerDef Named(const std::string &name)
{
    TriggerDef t;
    t.Name = name;
    return t;
}

// The names in list order; every trigger must carry its row + 1 as its number.
std::vector<std::string> Names(const TriggerList &list)
{
    std::vector<std::string> out;
    for (std::size_t i = 0; i < list.size(); ++i)
        out.push_back(list[i].number == static_cast<int>(i + 1) ? list[i].Name : "#misnumbered");
    return out;
}

} // namespace

// The random test below checks the order; this one the rows the editor selects afterwards.
TEST(TriggerList, InsertAndMovesReturnTheRowToSelect)
{
    TriggerList list;
    list.Append(Named("a"));
    list.Append(Named("c"));
    EXPECT_EQ(list.Insert(Named("b"), 1), 1u); // before the selected row
    EXPECT_EQ(list.Insert(Named("d"), std::nullopt), 3u);
    EXPECT_EQ(list.Insert(Named("e"), 99), 4u); // a selection past the end appends
    EXPECT_EQ(list.MoveUp(0), 0u);
    EXPECT_EQ(list.MoveDown(4), 4u);
    EXPECT_EQ(list.MoveDown(7), 7u);
    EXPECT_EQ(list.MoveDown(0), 1u);
    EXPECT_EQ(list.MoveUp(4), 3u);
    EXPECT_EQ(Names(list), (std::vector<std::string>{"b", "a", "c", "e", "d"}));
}

// Random inserts, removals, replacements and moves against a plain vector.
TEST(TriggerList, RandomEditsMatchAPlainVectorAndStayNumbered)
{
    std::mt19937 rng(7);
    TriggerList list;
    std::vector<std::string> model;
    for (int step = 0; step < 2000; ++step) {
        const std::size_t n = model.size();
        const std::size_t pick = n ? rng() % (n + 1) : 0;
        const std::string name = "t" + std::to_string(step);
        switch (rng() % 5) {
        case 0:
            list.Insert(Named(name), pick);
            model.insert(model.begin() + static_cast<std::ptrdiff_t>(std::min(pick, n)), name);
            break;
        case 1:
            ASSERT_EQ(list.Remove(pick), pick < n);
            if (pick < n)
                model.erase(model.begin() + static_cast<std::ptrdiff_t>(pick));
            break;
        case 2:
            if (list.MoveUp(pick) != pick)
                std::swap(model[pick], model[pick - 1]);
            break;
        case 3:
            if (list.MoveDown(pick) != pick)
                std::swap(model[pick], model[pick + 1]);
            break;
        default:
            ASSERT_EQ(list.Replace(pick, Named(name)), pick < n);
            if (pick < n)
                model[pick] = name;
            break;
        }
        ASSERT_EQ(Names(list), model) << "step " << step;
    }
}

TEST(TriggerList, ReverseAllDisableAllAndExternalActions)
{
    TriggerList list;
    TriggerDef sound = Named("sound");
    sound.PlaySound = true;
    sound.Active = true;
    TriggerDef command = Named("command");
    command.ExecCommand = true;
    list.Append(Named("plain"));
    list.Append(sound);
    list.Append(command);
    list.ReverseAll();
    EXPECT_EQ(list.ActiveCount(), 2u);
    EXPECT_FALSE(list[1].Active);
    list.DisableAll();
    EXPECT_EQ(list.ActiveCount(), 0u);
    EXPECT_EQ(list.TriggersWithExternalActions(), (std::vector<std::size_t>{1, 2}));
}

TEST(TriggerTexts, InactivityClampAndUnknownValues)
{
    const std::pair<long long, int> cases[] = {{-5, 1}, {1, 1}, {65535, 65535}, {70000, 65535}};
    for (auto [in, out] : cases)
        EXPECT_EQ(ClampInActivitySeconds(in), out) << in;
    SetGlobalLang(kLangEnglish);
    EXPECT_EQ(TriggerTypeText(TriggerType::Inactivity), "Inactivity");
    EXPECT_EQ(TriggerEventText(9), "(9)");
    EXPECT_EQ(TriggerTypeText(-1), "(-1)");
}
