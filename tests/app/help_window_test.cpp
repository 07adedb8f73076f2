// The manual from the windows: every help button and F1 open the page of their
// window, in the program's language, in the one help window of the program;
// back and forward, the contents, search hits and the language switch.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <filesystem>
#include <memory>

#include "app/action_registry.h"
#include "app/confirm_record_mode_form.h"
#include "app/env_conf_form.h"
#include "app/export_form.h"
#include "app/report_form.h"
#include "app/goto_form.h"
#include "app/help_window.h"
#include "app/main_form.h"
#include "app/options_form.h"
#include "app/selector_form.h"
#include "app/trigger_form.h"
#include "app/trigger_params_form.h"
#include "base/string_table.h"
#include "help/help_catalogue.h"
#include "support/scripted_prompter.h"
#include "support/screenshots.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

int g_argc = 1;
char g_arg0[] = "test_help_window";
char *g_argv[] = {g_arg0, nullptr};
const QApplication *const g_app = new QApplication(g_argc, g_argv);

struct Window {
    test::TempDir dir;
    test::ScriptedPrompter prompter{MsgResult::No};
    std::unique_ptr<TFormMain> w;

    Window()
    {
        MainFormOptions o;
        o.args = ParseStartupArgs({"kestrel", "--simulate"});
        o.dataFolder = dir.path().string() + "/";
        std::filesystem::create_directories(dir.path() / "recordings");
        o.prompter = &prompter;
        o.skipUnloadDelay = true;
        w = std::make_unique<TFormMain>(std::move(o));
        w->FormShow();
        w->show();
    }
    QAction *act(const char *name) { return w->actions().action(name); }
    THelpWindow *help() const { return w->findChild<THelpWindow *>(QString(), Qt::FindDirectChildrenOnly); }
};

// F1 as the user presses it: through the window system, in the active window.
void PressF1(QWidget *window, QWidget *focus = nullptr)
{
    window->activateWindow();
    QApplication::setActiveWindow(window);
    if (focus != nullptr)
        focus->setFocus();
    QTest::keyClick(focus != nullptr ? focus : window, Qt::Key_F1);
}

QString TreePage(const THelpWindow &h)
{
    const QTreeWidgetItem *item = h.findChild<QTreeWidget *>("tvContents")->currentItem();
    return item != nullptr ? item->data(0, Qt::UserRole).toString() : QString();
}

} // namespace

TEST(HelpWindow, EveryHelpButtonAndF1OpenTheirWindowsPageInTheProgramsLanguage)
{
    for (const int lang : {kLangGerman, kLangEnglish}) {
        Window win;
        win.act(lang == kLangGerman ? "actLangGerman" : "actLangEnglish")->trigger();
        // Every window of the program as the main window makes it, its own child.
        win.act("actGotoMP")->trigger();
        win.act("actPrintReport")->trigger();
        auto *options = new TFormOptions(win.prompter, win.w.get());
        auto *trigger = new TFormTrig(win.prompter, nullptr, win.w.get());
        const std::pair<QWidget *, const char *> windows[] = {
            {win.w.get(), "main-window"},
            {win.w->findChild<TFormGoto *>(), "goto"},
            {win.w->findChild<TFormExport *>(), "export"},
            {win.w->findChild<TFormReport *>(), "report"},
            {win.w->findChild<TFormConfirmRecordMode *>(), "record-mode"},
            {new TFormEnvConf(win.prompter, win.w.get()), "environment"},
            {options, "options"},
            {new TFormSelector(win.prompter, options), "options"},
            {trigger, "trigger-editor"},
            {new TFormTrigParams(trigger), "trigger-editor"},
        };
        for (const auto &[window, page] : windows) {
            ASSERT_NE(window, nullptr) << page;
            SCOPED_TRACE(window->objectName().toStdString());
            window->show();
            QPushButton *button = nullptr; // the window's own, not one of a dialog it owns
            for (QPushButton *b : window->findChildren<QPushButton *>("btnHelp"))
                if (b->window() == window)
                    button = b;
            if (button != nullptr) {
                ASSERT_TRUE(button->isEnabled());
                button->click();
                ASSERT_NE(win.help(), nullptr);
                EXPECT_EQ(win.help()->currentPage(), page);
                EXPECT_EQ(win.help()->currentLanguage(), lang);
                EXPECT_TRUE(win.help()->isVisible());
                EXPECT_EQ(TreePage(*win.help()), page);
                win.help()->close();
            }
            PressF1(window);
            ASSERT_NE(win.help(), nullptr);
            EXPECT_EQ(win.help()->currentPage(), page);
            EXPECT_TRUE(win.help()->isVisible());
            win.help()->close();
            if (window != win.w.get())
                window->hide();
        }
        // F1 in the trigger list opens the trigger panel's page; asked again, the same one window shows.
        PressF1(win.w.get(), win.w->findChild<QWidget *>("TriggerList"));
        EXPECT_EQ(win.help()->currentPage(), "trigger-panel");
        EXPECT_EQ(win.w->findChildren<THelpWindow *>().size(), 1);
        EXPECT_EQ(win.help()->windowTitle(), QString::fromStdString(Str(9266)));
    }
}

TEST(HelpWindow, HelpAskedInAModalDialogCanBeUsedOnTopOfIt)
{
    Window win;
    auto *ask = win.w->findChild<TFormConfirmRecordMode *>();
    bool usable = false;
    QTimer::singleShot(0, ask, [&] {
        ask->findChild<QPushButton *>("btnHelp")->click();
        THelpWindow *h = win.help();
        // Modal itself, it is not blocked by the dialog it was asked from.
        usable = h != nullptr && h->isVisible() && h->isModal() && h->currentPage() == "record-mode";
        h->close();
        ask->findChild<QPushButton *>("btnCancel")->click();
    });
    EXPECT_EQ(ask->ask(), 0);
    EXPECT_TRUE(usable);
    // From the main window again it is an ordinary window.
    win.act("actHelp")->trigger();
    EXPECT_FALSE(win.help()->isModal());
}

TEST(HelpWindow, BackForwardContentsSearchAndTheLanguageSwitch)
{
    Window win;
    win.act("actLangGerman")->trigger();
    win.act("actHelp")->trigger();
    THelpWindow &h = *win.help();
    auto *back = h.findChild<QToolButton *>("btnBack");
    auto *forward = h.findChild<QToolButton *>("btnForward");
    auto *tree = h.findChild<QTreeWidget *>("tvContents");
    auto *page = h.findChild<QTextBrowser *>("txtPage");
    EXPECT_FALSE(back->isEnabled());
    EXPECT_EQ(h.currentPage(), "main-window");

    // A link of the page, as the browser resolves it.
    page->setSource(page->source().resolved(QUrl("export.md")));
    EXPECT_EQ(h.currentPage(), "export");
    EXPECT_EQ(TreePage(h), "export");
    // The contents.
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
        if ((*it)->data(0, Qt::UserRole).toString() == "scenario-format")
            tree->setCurrentItem(*it);
    EXPECT_EQ(h.currentPage(), "scenario-format");
    EXPECT_TRUE(page->toPlainText().contains("Befehle"));
    // A search hit.
    h.findChild<QLineEdit *>("edSearch")->setText("extcap");
    auto *hits = h.findChild<QListWidget *>("lbSearchResults");
    ASSERT_GE(hits->count(), 1);
    EXPECT_EQ(hits->item(0)->data(Qt::UserRole).toString(), "wireshark");
    emit hits->itemActivated(hits->item(0));
    EXPECT_EQ(h.currentPage(), "wireshark");

    back->click();
    EXPECT_EQ(h.currentPage(), "scenario-format");
    back->click();
    back->click();
    EXPECT_EQ(h.currentPage(), "main-window");
    EXPECT_EQ(TreePage(h), "main-window");
    EXPECT_FALSE(back->isEnabled());
    forward->click();
    EXPECT_EQ(h.currentPage(), "export");
    EXPECT_TRUE(forward->isEnabled());

    // The language switch reopens the same page, and the contents and the hits, in English.
    win.act("actLangEnglish")->trigger();
    EXPECT_EQ(h.currentPage(), "export");
    EXPECT_EQ(h.currentLanguage(), kLangEnglish);
    EXPECT_TRUE(page->source().path().startsWith("/help/en/"));
    EXPECT_TRUE(page->toPlainText().contains("Separator"));
    EXPECT_EQ(TreePage(h), "export");
    EXPECT_EQ(tree->currentItem()->text(0), help::PageTitle("export", kLangEnglish));
    EXPECT_EQ(tree->topLevelItem(0)->text(0), "Getting started");
    ASSERT_GE(hits->count(), 1);
    EXPECT_EQ(hits->item(0)->text(), "Kestrel and Wireshark");
    EXPECT_FALSE(back->isEnabled()); // the German pages are not behind it
    EXPECT_EQ(h.windowTitle(), "Kestrel - Manual");
}
