// The trigger panel: what its buttons do to the list, the click that switches a
// trigger on or off, and what it refuses while a recording runs.

#include <gtest/gtest.h>

#include <QApplication>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>

#include "app/trigger_panel.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"
#include "support/widget_app.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

TriggerDef Named(const std::string &name, bool active = false)
{
    TriggerDef t;
    t.Name = name;
    t.Active = active;
    return t;
}

struct Panel {
    test::ScriptedPrompter prompter;
    TriggerList list;
    TriggerPanel panel{prompter};
    std::optional<TriggerDef> nextEdit; // what the editor answers
    std::vector<std::string> editedNames;
    QSignalSpy changed{&panel, &TriggerPanel::changed};

    explicit Panel(std::vector<std::string> names = {"a", "b", "c"})
    {
        SetGlobalLang(kLangEnglish);
        for (const auto &n : names)
            list.Append(Named(n));
        panel.setTriggers(&list);
        panel.setEditor([this](const TriggerDef *current) {
            editedNames.push_back(current ? current->Name : "(new)");
            return nextEdit;
        });
        panel.resize(700, 300);
        panel.show();
    }
    QTableWidget &table() { return *panel.list(); }
    QString cell(int row, int column) { return table().item(row, column)->text(); }
    std::string names()
    {
        std::string s;
        for (const TriggerDef &t : list)
            s += t.Name + std::to_string(t.number) + (t.Active ? "+" : "") + " ";
        return s;
    }
    void selectRow(int row) { table().selectRow(row); }
    void click(const char *button) { panel.findChild<QToolButton *>(button)->click(); }
    void clickRow(int row, int x)
    {
        const QRect r = table().visualItemRect(table().item(row, 0));
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, QPoint(r.left() + x, r.center().y()));
    }
};

TEST(TriggerPanel, InsertEditAndRemoveKeepTheNumbersGapFree)
{
    Panel p;
    p.selectRow(1);
    p.nextEdit = Named("new", true);
    p.click("btnInsertTrigger");
    EXPECT_EQ(p.names(), "a1 new2+ b3 c4 "); // before the selected row
    EXPECT_EQ(p.cell(1, 0), "new");
    EXPECT_EQ(p.cell(3, 1), "4");
    EXPECT_EQ(p.panel.selectedIndex(), 1u);

    p.nextEdit = std::nullopt; // cancelled: nothing changes
    p.click("btnEditTrigger");
    EXPECT_EQ(p.editedNames.back(), "new");
    EXPECT_EQ(p.names(), "a1 new2+ b3 c4 ");
    EXPECT_EQ(p.changed.count(), 1);

    p.prompter.answerNext(MsgResult::No);
    p.click("btnRemoveTrigger");
    EXPECT_EQ(p.list.size(), 4u);
    p.prompter.answerNext(MsgResult::Yes);
    p.click("btnRemoveTrigger");
    EXPECT_EQ(p.names(), "a1 b2 c3 ");
    EXPECT_EQ(p.prompter.asked.back().text, "Do you really want to delete the selected trigger?");
    EXPECT_EQ(p.prompter.asked.back().title, "Trigger engine message");
    EXPECT_EQ(p.table().rowCount(), 3);

    p.table().clearSelection();
    p.nextEdit = Named("last");
    p.click("btnInsertTrigger"); // nothing selected: appended
    EXPECT_EQ(p.names(), "a1 b2 c3 last4 ");
}

TEST(TriggerPanel, MovingStopsAtTheEndsAndTheSelectionFollows)
{
    Panel p;
    p.selectRow(0);
    p.click("btnMoveTriggerUp");
    EXPECT_EQ(p.names(), "a1 b2 c3 ");
    p.click("btnMoveTriggerDown");
    p.click("btnMoveTriggerDown");
    EXPECT_EQ(p.names(), "b1 c2 a3 ");
    EXPECT_EQ(p.panel.selectedIndex(), 2u);
    p.click("btnMoveTriggerDown");
    EXPECT_EQ(p.names(), "b1 c2 a3 ");
    EXPECT_EQ(p.cell(2, 0), "a");
    EXPECT_EQ(p.cell(2, 1), "3");
}

TEST(TriggerPanel, ActivationByButtonsAndByTheClickInTheFirstSixteenPixels)
{
    Panel p;
    p.click("btnEnableAllTriggers");
    EXPECT_EQ(p.names(), "a1+ b2+ c3+ ");
    p.list.SetActive(1, false);
    p.click("btnReverseAllTriggers");
    EXPECT_EQ(p.names(), "a1 b2+ c3 ");
    p.click("btnDisableAllTriggers");
    EXPECT_EQ(p.names(), "a1 b2 c3 ");
    const int before = p.changed.count();

    p.clickRow(2, 6);
    EXPECT_EQ(p.names(), "a1 b2 c3+ ");
    p.clickRow(2, 40); // the title, not the check mark
    EXPECT_EQ(p.names(), "a1 b2 c3+ ");
    EXPECT_EQ(p.changed.count(), before + 1);

    p.panel.setRecording(true); // the recording owns the chain
    p.clickRow(0, 6);
    p.click("btnEnableAllTriggers");
    p.click("btnInsertTrigger");
    EXPECT_EQ(p.names(), "a1 b2 c3+ ");
    EXPECT_TRUE(p.editedNames.empty());
}

TEST(TriggerPanel, RecognisedMpFollowsItsTriggerAndIsClearedForANewRecording)
{
    Panel p;
    p.panel.setRecognised(3, 1234);
    EXPECT_EQ(p.cell(2, 5), "1234");
    p.selectRow(2);
    p.click("btnMoveTriggerUp");
    EXPECT_EQ(p.cell(1, 5), "1234");
    EXPECT_EQ(p.cell(2, 5), "");
    p.panel.setRecognised(99, 1); // no such trigger: ignored
    p.panel.clearRecognised();
    EXPECT_EQ(p.cell(1, 5), "");

    p.panel.btnResetTrigGridClick();
    const std::vector<int> widths = p.panel.columnWidths();
    int firstFive = 0;
    for (int c = 0; c < 5; ++c)
        firstFive += widths[static_cast<std::size_t>(c)];
    EXPECT_GE(firstFive + widths[5], p.table().viewport()->width() - 4);
}

} // namespace
