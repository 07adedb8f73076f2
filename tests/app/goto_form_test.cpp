// The goto, search and measure window over a crafted recording: every page
// moves the grid to what the search library finds, Stop ends a long search,
// and a language switch leaves nothing of the other language.

#include <gtest/gtest.h>

#include <QApplication>
#include <QButtonGroup>
#include <QDateEdit>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTimeEdit>
#include <QTimer>

#include "app/goto_form.h"
#include "app/range_controls.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "present/grid/record_grid.h"
#include "record/record_reader.h"
#include "search/search.h"
#include "support/recording_builder.h"
#include "support/scripted_prompter.h"
#include "support/stale_language.h"
#include "support/temp_dir.h"
#include "support/widget_app.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

struct Goto {
    test::TempDir dir;
    std::string path = dir.file("goto.ksr");
    test::ScriptedPrompter prompter;
    grid::RecordGrid grid;
    TFormGoto form{prompter, grid, [this] { return path; }};

    explicit Goto(const test::RecordingBuilder &b)
    {
        SetGlobalLang(kLangEnglish);
        b.write(path);
        grid.resize(600, 300);
        grid.show();
        EXPECT_TRUE(grid.OpenRecording(QString::fromStdString(path)));
        form.InitialLoads();
        form.showPage(GotoPage::Search);
    }
    ~Goto() { SetGlobalLang(kLangGerman); }

    // The MP in the grid's current row.
    std::int64_t shown() const { return grid.position() + grid.currentRow(); }
    template <class T> T *find(const char *name) { return form.findChild<T *>(name); }
    void searchPage(int page) { find<QTabWidget>("PageControlSearch")->setCurrentIndex(page); }
    void click(const char *name) { find<QPushButton>(name)->click(); }
    // What the search library finds from the grid's current place.
    std::int64_t expected(const SearchCriteria &c, int direction)
    {
        RecordReader r;
        EXPECT_TRUE(r.open(path));
        SearchRequest q{c, direction, grid.position(), grid.currentRow(), 0,
                        static_cast<std::int64_t>(r.recordCount()) - 1};
        const SearchOutcome o = RunSearch(r, q);
        return o.status == SearchStatus::Found ? o.mp : -1;
    }
};

// Thirty MPs of traffic with an "AB" on D1 at 10 and 20, a parity error at 15,
// M2 high from 18 on, a trigger mark of trigger 3 at 25.
test::RecordingBuilder Traffic()
{
    test::RecordingBuilder b(46000.5, 0.25);
    for (int i = 2; i < 30; ++i) {
        if (i == 10 || i == 20)
            b.d1('A');
        else if (i == 11 || i == 21)
            b.d1('B');
        else if (i == 25)
            b.mark(1, 0, 3);
        else
            b.d2('x');
        if (i == 15)
            b.last().peD2 = 1;
        if (i == 17)
            b.level(3, 1);
    }
    return b;
}

TEST(GotoForm, EachSearchFindsWhatTheSearchLibraryFindsBothWays)
{
    Goto g(Traffic());
    g.grid.ShowFound(5);

    g.searchPage(SearchPage::Data);
    g.find<QPlainTextEdit>("edDataAsc")->setPlainText("AB");
    SearchCriteria data;
    data.kind = SearchKind::Data;
    data.data = {{'A', 'B'}, true, true};
    EXPECT_EQ(g.expected(data, 1), 10);
    g.click("btnSearchForward");
    EXPECT_EQ(g.shown(), 10);
    g.click("btnSearchForward");
    EXPECT_EQ(g.shown(), 20);
    g.click("btnSearchReverse");
    EXPECT_EQ(g.shown(), 10);

    g.searchPage(SearchPage::Error);
    g.find<QRadioButton>("rbPEyes")->setChecked(true);
    g.click("btnSearchForward");
    EXPECT_EQ(g.shown(), 15);

    g.searchPage(SearchPage::Signal);
    g.find<QRadioButton>("rbM2rise")->setChecked(true);
    g.click("btnSearchForward");
    EXPECT_EQ(g.shown(), 18);
    g.prompter.asked.clear();
    g.click("btnSearchReverse"); // M2 is low before 18... and at MP 0 the search ends
    ASSERT_EQ(g.prompter.asked.size(), 1u);
    EXPECT_EQ(g.prompter.asked[0].text, Str(2202));
    EXPECT_EQ(g.shown(), 18); // not found: the grid stays

    g.searchPage(SearchPage::Time); // later than just after MP 22's time: 23
    const QDateTime at(QDate(1899, 12, 30).addDays(46000), QTime(12, 0).addMSecs(22 * 250 + 100));
    g.find<QDateEdit>("pkSearchDate")->setDate(at.date());
    g.find<QTimeEdit>("pkSearchTime")->setTime(at.time());
    g.click("btnSearchForward");
    EXPECT_EQ(g.shown(), 23);
}

TEST(GotoForm, TheLastMpIsNeverTestedForward)
{
    test::RecordingBuilder b;
    for (int i = 0; i < 8; ++i)
        b.d2('x');
    b.d1('Z'); // MP 10, the last
    Goto g(b);
    g.grid.ShowFound(8);
    g.find<QPlainTextEdit>("edDataAsc")->setPlainText("Z");
    g.click("btnSearchForward");
    ASSERT_EQ(g.prompter.asked.size(), 1u);
    EXPECT_EQ(g.prompter.asked[0].text, Str(2203));
}

TEST(GotoForm, MpAndTriggerPointPagesMoveTheGrid)
{
    Goto g(Traffic());
    g.form.showPage(GotoPage::Mp);
    auto *mp = g.find<QLineEdit>("edtGotoMP");
    mp->setText("12");
    emit mp->editingFinished();
    EXPECT_EQ(g.shown(), 12);
    mp->setText("999"); // beyond the end: the last MP
    emit mp->editingFinished();
    EXPECT_EQ(mp->text(), "29");
    EXPECT_EQ(g.shown(), 29);

    g.form.showPage(GotoPage::TriggerPoint);
    auto *tr = g.find<QLineEdit>("edtGotoTR");
    tr->setText("3");
    emit tr->editingFinished();
    EXPECT_EQ(g.shown(), 25);
    tr->setText("4");
    emit tr->editingFinished();
    ASSERT_EQ(g.prompter.asked.size(), 1u);
    EXPECT_EQ(g.prompter.asked[0].text, Str(2123));
}

TEST(GotoForm, TheDeltaPageMeasuresBetweenTheTwoMps)
{
    Goto g(Traffic());
    g.form.showPage(GotoPage::Delta);
    auto *range = g.find<RangeControls>("deltaRange");
    range->setRange(4, 10);
    EXPECT_EQ(g.find<QLineEdit>("edtMPDeltaTimeUSec")->text(), "1500000");
    EXPECT_EQ(g.find<QLineEdit>("edtMPDeltaTimeMSec")->text(), "1500");
    EXPECT_EQ(g.find<QLineEdit>("edtMPDeltaTimeSec")->text(), "2"); // 1.5 s rounds away from zero
    EXPECT_TRUE(g.find<QLineEdit>("edtMPDeltaTime")->text().contains("day(s)  00:00:01,500000"));
    SetGlobalLang(kLangGerman); // the day word follows a language switch
    g.form.InitialLoads();
    EXPECT_TRUE(g.find<QLineEdit>("edtMPDeltaTime")->text().contains("Tag(e)"));
}

TEST(GotoForm, StopEndsALongSearchWithoutAWord)
{
    test::TempDir dir;
    const std::string big = dir.file("big.ksr");
    test::RecordingBuilder::writeNumbered(big, 300'000); // D1 counts up: FE is always followed by FF
    Goto g(test::RecordingBuilder{});
    g.path = big;
    ASSERT_TRUE(g.grid.OpenRecording(QString::fromStdString(big)));
    g.find<QPlainTextEdit>("edDataHex")->setPlainText("FE01"); // never: FE is followed by FF
    QTimer::singleShot(0, &g.form, [&] { g.click("btnSearchStop"); });
    g.click("btnSearchForward");
    EXPECT_FALSE(g.form.searching());
    EXPECT_TRUE(g.prompter.asked.empty());
    EXPECT_TRUE(g.find<QPushButton>("btnSearchForward")->isEnabled());
}

TEST(GotoForm, ALanguageSwitchLeavesNoGermanBehind)
{
    Goto g(Traffic());
    SetGlobalLang(kLangGerman);
    g.form.InitialLoads();
    SetGlobalLang(kLangEnglish);
    g.form.InitialLoads();
    EXPECT_EQ(test::StaleTexts(&g.form, kLangGerman).join("\n").toStdString(), "");
}

} // namespace
