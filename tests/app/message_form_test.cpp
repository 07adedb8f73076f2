#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <functional>

#include "app/message_form.h"
#include "base/error_report.h"
#include "base/string_table.h"
#include "support/widget_app.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

// Presses a button of the box as soon as the box waits, and records what the box showed.
struct Seen {
    QString title, text;
    bool iconShown = false;
    QStringList visibleButtons;
    QStringList buttonTexts;
};

int answerWith(TMessageForm &box, const char *button, const std::string &title, const std::string &text,
               int buttons, int icon, Seen *seen = nullptr)
{
    QTimer::singleShot(0, &box, [&box, button, seen] {
        if (seen) {
            seen->title = box.findChild<QLabel *>("lblMessageTitle")->text();
            seen->text = box.findChild<QLabel *>("lblMessageText")->text();
            const QPixmap pm = box.findChild<QLabel *>("Image1")->pixmap();
            seen->iconShown = !pm.isNull();
            for (const char *n : {"btn1", "btn2", "btn3"}) {
                auto *b = box.findChild<QPushButton *>(n);
                if (b->isVisible()) {
                    seen->visibleButtons << n;
                    seen->buttonTexts << b->text();
                }
            }
        }
        if (button != nullptr)
            box.findChild<QPushButton *>(button)->click();
        else
            box.reject();
    });
    return box.ShowMessage(title, text, buttons, icon);
}

} // namespace

TEST(MessageForm, ButtonSetsShowTheirButtonsAndAnswerByTheTable)
{
    TMessageForm box;
    struct Case {
        int buttons;
        const char *press;
        int expected;
        QStringList visible;
    };
    const std::vector<Case> cases = {
        {Buttons::Ok, "btn2", MsgResult::Ok, {"btn2"}},
        {Buttons::YesNoCancel, "btn1", MsgResult::Yes, {"btn1", "btn2", "btn3"}},
        {Buttons::YesNoCancel, "btn2", MsgResult::No, {"btn1", "btn2", "btn3"}},
        {Buttons::YesNoCancel, "btn3", MsgResult::Cancel, {"btn1", "btn2", "btn3"}},
        {Buttons::YesNo, "btn1", MsgResult::Yes, {"btn1", "btn3"}},
        {Buttons::YesNo, "btn3", MsgResult::No, {"btn1", "btn3"}},
        {1, "btn2", -1, {"btn2"}}, // an unlisted set: one OK that answers -1
        {77, "btn2", -1, {"btn2"}},
    };
    for (const Case &c : cases) {
        Seen seen;
        EXPECT_EQ(answerWith(box, c.press, "T", "M", c.buttons, Icon::Information, &seen), c.expected)
            << c.buttons << " " << c.press;
        EXPECT_EQ(seen.visibleButtons, c.visible) << c.buttons;
        EXPECT_FALSE(box.isVisible());
    }
}

TEST(MessageForm, TextsFollowTheLanguage)
{
    TMessageForm box;
    Seen german, english;
    answerWith(box, "btn1", "Titel", "Text", Buttons::YesNoCancel, Icon::Confirmation, &german);
    SetGlobalLang(kLangEnglish);
    box.InitialLoads();
    answerWith(box, "btn1", "Title", "Text", Buttons::YesNoCancel, Icon::Confirmation, &english);
    SetGlobalLang(kLangGerman);
    EXPECT_EQ(german.buttonTexts, (QStringList{"Ja", "Nein", "Abbrechen"}));
    EXPECT_EQ(english.buttonTexts, (QStringList{"Yes", "No", "Cancel"}));
    EXPECT_EQ(german.title, "Titel");
    EXPECT_EQ(box.windowTitle(), "Title");
}

TEST(MessageForm, UnknownIconKindShowsNoIconButStillWorks)
{
    TMessageForm box;
    for (int icon : {Icon::Warning, Icon::Error, Icon::Information, Icon::Confirmation}) {
        Seen seen;
        answerWith(box, "btn2", "t", "m", Buttons::Ok, icon, &seen);
        EXPECT_TRUE(seen.iconShown) << icon;
        EXPECT_FALSE(TMessageForm::IconImage(icon).isNull());
    }
    Seen seen;
    EXPECT_EQ(answerWith(box, "btn2", "t", "m", Buttons::Ok, 9, &seen), MsgResult::Ok);
    EXPECT_FALSE(seen.iconShown);
    EXPECT_EQ(seen.text, "m");
    EXPECT_TRUE(TMessageForm::IconImage(9).isNull());
    EXPECT_TRUE(TMessageForm::IconImage(-1).isNull());
}

TEST(MessageForm, ClosingWithoutAButtonGivesTheCautiousAnswer)
{
    TMessageForm box;
    EXPECT_EQ(answerWith(box, nullptr, "t", "m", Buttons::YesNoCancel, 0), MsgResult::Cancel);
    EXPECT_EQ(answerWith(box, nullptr, "t", "m", Buttons::YesNo, 0), MsgResult::No);
    EXPECT_EQ(answerWith(box, nullptr, "t", "m", Buttons::Ok, 0), MsgResult::Ok);
}

TEST(MessageForm, EventLoopKeepsRunningWhileItWaits)
{
    TMessageForm box;
    int ticks = 0;
    QTimer timer;
    timer.setInterval(5);
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start();
    QTimer::singleShot(120, &box, [&box] { box.findChild<QPushButton *>("btn2")->click(); });
    EXPECT_EQ(box.ShowMessage("t", "m", Buttons::Ok, Icon::Information), MsgResult::Ok);
    EXPECT_GE(ticks, 5); // timers (port data in the program) ran behind the open question
}

// A question raised while another waits (a port lost behind an open question) is
// shown only once the first is answered: never two boxes at once. Each is modal
// for the whole program.
TEST(MessageForm, OneModalBoxAtATimeAndEachGetsItsOwnAnswer)
{
    TMessageForm box;
    int inner = 0;
    bool innerAsked = false;
    int mostVisible = 0;
    QStringList answeredTitles;
    bool allAppModal = true;
    QTimer poll;
    poll.setInterval(10);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QList<TMessageForm *> shown;
        for (QWidget *w : QApplication::topLevelWidgets())
            if (auto *f = qobject_cast<TMessageForm *>(w); f != nullptr && f->isVisible())
                shown << f;
        mostVisible = std::max(mostVisible, static_cast<int>(shown.size()));
        for (TMessageForm *f : shown) {
            allAppModal = allAppModal && f->windowModality() == Qt::ApplicationModal;
            if (f->windowTitle() == "outer" && innerAsked) {
                answeredTitles << "outer";
                f->findChild<QPushButton *>("btn1")->click();
            } else if (f->windowTitle() == "inner") {
                answeredTitles << "inner";
                f->findChild<QPushButton *>("btn3")->click();
            }
        }
    });
    poll.start();
    QTimer::singleShot(0, &box, [&] {
        innerAsked = true;
        inner = box.ShowMessage("inner", "second", Buttons::YesNo, Icon::Warning);
    });
    EXPECT_EQ(box.ShowMessage("outer", "first", Buttons::YesNo, Icon::Confirmation), MsgResult::Yes);
    EXPECT_EQ(inner, MsgResult::No);
    EXPECT_EQ(mostVisible, 1);
    EXPECT_EQ(answeredTitles, (QStringList{"outer", "inner"}));
    EXPECT_TRUE(allAppModal);
}

TEST(MessageForm, ErrorReportLowersStayOnTopWindowsAroundTheBox)
{
    TMessageForm box;
    QWidget topMost(nullptr, Qt::Window | Qt::WindowStaysOnTopHint);
    topMost.show();
    bool loweredWhileShown = false;
    QTimer::singleShot(0, &box, [&] {
        loweredWhileShown = !(topMost.windowFlags() & Qt::WindowStaysOnTopHint);
        box.findChild<QPushButton *>("btn2")->click();
    });
    ReportError(box, 3000, 3001, {"MainForm", 42}, "\n\n/x.ksr");
    EXPECT_TRUE(loweredWhileShown);
    EXPECT_TRUE(topMost.windowFlags() & Qt::WindowStaysOnTopHint);
}

