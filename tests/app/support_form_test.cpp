// The window's support commands: the update check at start-up is one quiet
// status line and never a box; from the Help menu its answer is a message box;
// "Report a problem" shows the report with the last errors, hands it to the mail
// program only on Send, says so when none opens, and saves without replacing a
// file that holds something unless the user says yes.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrlQuery>
#include <fstream>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "app/problem_report_form.h"
#include "base/string_table.h"
#include "config/program_config.h"
#include "support/event_loop.h"
#include "support/local_http_server.h"
#include "support/scripted_prompter.h"
#include "support/support_texts.h"
#include "support/temp_dir.h"
#include "support/update_check.h"
#include "support/version_number.h"

using namespace kestrel;

namespace {

int g_argc = 1;
char g_arg0[] = "test_support_form";
char *g_argv[] = {g_arg0, nullptr};
const QApplication *const g_app = new QApplication(g_argc, g_argv);

QString S(int n) { return QString::fromStdString(Str(n)); }

// A main window on the simulated line, started with the given Kestrel.ini.
struct Window {
    test::TempDir dir;
    test::ScriptedPrompter prompter{MsgResult::Yes};
    std::unique_ptr<TFormMain> w;

    explicit Window(const std::string &configText)
    {
        SetGlobalLang(kLangEnglish);
        std::ofstream(dir.path() / "Kestrel.ini") << "[Modes]\nInstallLang=en\n" << configText;
        std::filesystem::create_directories(dir.path() / "recordings");
        MainFormOptions o;
        o.args = ParseStartupArgs({"kestrel", "--simulate"});
        o.dataFolder = dir.path().string() + "/";
        o.prompter = &prompter;
        o.skipUnloadDelay = true;
        w = std::make_unique<TFormMain>(std::move(o));
        w->FormShow();
    }
    ~Window() { w->quitCleanly(); }
    QString statusLine() const { return w->findChild<QLabel *>("pnlStatusBarPanel1")->text(); }
};

std::string UpdateConfig(bool atStart, const std::string &url)
{
    return "[WebUpdate]\nCheckForUpdatesAtProgStart=" + std::string(atStart ? "1" : "0") + "\nVersionFileUrl=" + url + "\n";
}

} // namespace

TEST(SupportCommands, UpdateCheckAtStartIsOneStatusLineNeverABox)
{
    test::LocalHttpServer server;
    server.answer("/newer", 200, "version=999.1\nurl=https://kestrel.example.org/get\n");
    {
        Window win(UpdateConfig(true, server.url("/newer")));
        ASSERT_TRUE(test::SpinUntil([&] { return win.statusLine().contains("999.1"); }, 8000)) << win.statusLine().toStdString();
        EXPECT_TRUE(win.statusLine().contains("https://kestrel.example.org/get"));
        EXPECT_TRUE(win.prompter.asked.empty());
    }
    {
        Window win(UpdateConfig(true, server.url("/gone")));
        const QString failed = S(support_txt::kStatusFailed).arg(S(support_txt::kHttpStatus).arg(404));
        ASSERT_TRUE(test::SpinUntil([&] { return win.statusLine() == failed; }, 8000)) << win.statusLine().toStdString();
        EXPECT_TRUE(win.prompter.asked.empty());
    }
    const int asked = server.requests();
    {
        Window win(UpdateConfig(false, server.url("/newer")));
        test::SpinPending();
    }
    EXPECT_EQ(server.requests(), asked) << "switched off: no check at start";
}

TEST(SupportCommands, HelpMenuCheckAnswersInTheMessageBox)
{
    test::LocalHttpServer server;
    server.answer("/same", 200, QByteArray("version=") + ThisProgramsVersion().text().c_str() +
                                    "\nurl=https://kestrel.example.org/get\n");
    Window win(UpdateConfig(false, server.url("/same")));
    QAction *check = win.w->actions().action("actWebUpdate");
    ASSERT_TRUE(check->isEnabled());
    check->trigger();
    ASSERT_TRUE(test::SpinUntil([&] { return !win.prompter.asked.empty(); }, 8000));
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_EQ(win.prompter.asked[0].title, Str(support_txt::kUpdateTitle));
    EXPECT_EQ(win.prompter.asked[0].text, StrArg(support_txt::kUpToDate, ThisProgramsVersion().text()));
    EXPECT_EQ(win.prompter.asked[0].icon, Icon::Information);
}

TEST(SupportCommands, ProblemReportLeavesOnlyThroughTheMailProgramAndNeverReplacesAFileUnasked)
{
    Window win("[Support]\nReportAddress=lab@example.net\n");
    win.w->prompter().ShowMessage("Port error", "Port /dev/ttyUSB9 was lost.", Buttons::Ok, Icon::Error);
    win.w->actions().action("actWebSupport")->trigger();
    auto *form = win.w->findChild<TFormProblemReport *>("TFormProblemReport");
    ASSERT_NE(form, nullptr);
    auto *memo = form->findChild<QPlainTextEdit *>("memReport");
    const QString shown = memo->toPlainText();
    EXPECT_TRUE(shown.contains("Port /dev/ttyUSB9 was lost.")) << shown.toStdString();
    EXPECT_TRUE(shown.contains(win.w->findChild<QLabel *>("lblPortA")->text()));
    EXPECT_TRUE(form->findChild<QLabel *>("lblRecipient")->text().contains("lab@example.net"));

    // The user's own words go with it; without a mail program the window says what to do.
    memo->setPlainText("The grid froze.\n" + shown);
    std::vector<QUrl> opened;
    bool mailProgram = false;
    form->setUrlOpener([&](const QUrl &url) {
        opened.push_back(url);
        return mailProgram;
    });
    auto *status = form->findChild<QLabel *>("lblStatus");
    form->findChild<QPushButton *>("btnSendMail")->click();
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0].path(), "lab@example.net");
    EXPECT_TRUE(QUrlQuery(opened[0]).queryItemValue("body", QUrl::FullyDecoded).startsWith("The grid froze.\r\n"));
    EXPECT_EQ(status->text(), S(support_txt::kNoMailHandler).arg("lab@example.net"));
    mailProgram = true;
    form->findChild<QPushButton *>("btnSendMail")->click();
    EXPECT_EQ(status->text(), S(support_txt::kMailOpened));

    form->findChild<QPushButton *>("btnCopy")->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), memo->toPlainText());

    const std::string foreign = win.dir.file("notes.txt");
    std::ofstream(foreign) << "my own notes";
    form->setSavePathChooser([&] { return QString::fromStdString(foreign); });
    win.prompter.answerNext(MsgResult::No);
    const std::size_t before = win.prompter.asked.size();
    form->findChild<QPushButton *>("btnSave")->click();
    ASSERT_EQ(win.prompter.asked.size(), before + 1);
    EXPECT_EQ(win.prompter.asked.back().buttons, Buttons::YesNoDefaultNo);
    EXPECT_EQ(test::ReadWholeFile(foreign), "my own notes");
    form->findChild<QPushButton *>("btnSave")->click(); // the script's default answer: yes
    EXPECT_EQ(test::ReadWholeFile(foreign), memo->toPlainText().toStdString());
    EXPECT_EQ(status->text(), S(support_txt::kSaved).arg(QString::fromStdString(foreign)));
}
