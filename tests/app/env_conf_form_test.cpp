// The environment information dialog on its own (fields, change mark, the cancel
// question, the language), and in the main window together with loading and
// saving environments through the file dialogs.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <fstream>
#include <functional>

#include "app/action_registry.h"
#include "app/env_conf_form.h"
#include "app/main_form.h"
#include "base/string_table.h"
#include "config/environment.h"
#include "support/main_window.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

// Every header key with a value of its own, so that a field mixed up with another shows.
Environment Filled()
{
    Environment env;
    for (const auto &k : kGeneralKeys)
        env.general.*k.field = std::string("gen ") + k.key + " \xC3\xA4"; // ä
    for (const auto &k : kCustomerKeys)
        env.customer.*k.field = std::string("cust ") + k.key;
    env.description = {"first line", "", "third line"};
    return env;
}

struct Form {
    test::ScriptedPrompter prompter{MsgResult::Yes};
    Environment env = Filled();
    int changes = 0;
    TFormEnvConf form{prompter};

    explicit Form(const std::string &file = "/srv/setups/line 7.kef")
    {
        SetGlobalLang(kLangEnglish);
        form.setChangeHandler([this] { ++changes; });
        form.setEnvironment(&env, file);
    }
    QLineEdit *edit(const std::string &name) { return form.findChild<QLineEdit *>(QString::fromStdString(name)); }
    QPlainTextEdit *memo() { return form.findChild<QPlainTextEdit *>("memEnvDescription"); }
    void click(const char *button) { form.findChild<QPushButton *>(button)->click(); }

    // Shows the dialog modally while inside() acts on it; false when it was still open
    // afterwards (it is then closed so that the test goes on).
    bool runModal(const std::function<void()> &inside)
    {
        bool closed = true;
        QTimer::singleShot(0, &form, [&] {
            inside();
            if (form.isVisible()) {
                closed = false;
                form.done(QDialog::Rejected);
            }
        });
        form.ShowFirstPage();
        return closed;
    }
};

} // namespace

TEST(EnvConfForm, FieldsShowTheHeaderAndEachEditGoesToItsOwnKey)
{
    Form f;
    EXPECT_EQ(f.form.findChild<QLabel *>("lblEnvFileName")->text(), "/srv/setups/line 7.kef");
    EXPECT_EQ(f.memo()->toPlainText(), "first line\n\nthird line");
    EXPECT_EQ(f.changes, 0) << "showing the environment is no change";

    // One field at a time: it shows its own key, an edit changes only that key and marks the environment changed.
    Environment expected = f.env;
    auto typeIntoEach = [&](const char *prefix, const auto &keys, const auto &shown, auto &mended) {
        for (const auto &k : keys) {
            QLineEdit *edit = f.edit(prefix + std::string(k.key));
            ASSERT_NE(edit, nullptr) << k.key;
            EXPECT_EQ(edit->text().toStdString(), shown.*k.field);
            const int before = f.changes;
            edit->end(false); // a long text shows its start: type behind its end
            QTest::keyClicks(edit, "!");
            mended.*k.field += "!";
            EXPECT_EQ(f.env.general, expected.general) << k.key;
            EXPECT_EQ(f.env.customer, expected.customer) << k.key;
            EXPECT_GT(f.changes, before) << k.key;
        }
    };
    typeIntoEach("edtGen", kGeneralKeys, f.env.general, expected.general);
    typeIntoEach("edtCust", kCustomerKeys, f.env.customer, expected.customer);
    const int before = f.changes;
    f.memo()->setPlainText("one\n\nthree\n"); // the line end after the last line starts none
    EXPECT_EQ(f.env.description, (std::vector<std::string>{"one", "", "three"}));
    EXPECT_GT(f.changes, before);
    f.memo()->clear();
    EXPECT_TRUE(f.env.description.empty());
    EXPECT_EQ(f.env.general, expected.general);
    EXPECT_EQ(f.env.customer, expected.customer);
}

TEST(EnvConfForm, OkKeepsCancelAfterChangesAsksNoStaysYesTakesTheHeaderFromTheFile)
{
    test::TempDir dir;
    const auto file = dir.path() / "line.kef";
    std::ofstream(file) << "[General]\nTitle=from the file\n[Customer]\nZIP=12345\n[Description]\nLine0=file line\n";
    Form f(file.string());

    // OK keeps what was typed; Cancel without a change closes without a question.
    EXPECT_TRUE(f.runModal([&] {
        f.edit("edtGenTitle")->setText("kept");
        f.click("btnOK");
    }));
    EXPECT_EQ(f.env.general.Title, "kept");
    f.form.findChild<QTabWidget *>("PageControl1")->setCurrentIndex(2);
    EXPECT_TRUE(f.runModal([&] {
        EXPECT_EQ(f.form.findChild<QTabWidget *>("PageControl1")->currentIndex(), 0) << "opens on its first page";
        f.click("btnCancel");
    }));
    EXPECT_TRUE(f.prompter.asked.empty());
    EXPECT_EQ(f.env.general.Title, "kept");
    EXPECT_FALSE(f.form.wasReloaded());

    f.prompter.answerNext(MsgResult::No);
    EXPECT_TRUE(f.runModal([&] {
        f.edit("edtGenAuthor")->setText("typed");
        f.click("btnCancel");
        ASSERT_EQ(f.prompter.asked.size(), 1u);
        EXPECT_EQ(f.prompter.asked[0].text, Str(1501));
        EXPECT_EQ(f.prompter.asked[0].buttons, Buttons::YesNo);
        EXPECT_EQ(f.prompter.asked[0].icon, Icon::Confirmation);
        EXPECT_TRUE(f.form.isVisible()) << "No keeps the dialog open";
        EXPECT_EQ(f.env.general.Author, "typed");

        // Escape and the title bar's close button ask the same; this time Yes.
        QTest::keyClick(f.edit("edtGenAuthor"), Qt::Key_Escape);
    }));
    EXPECT_EQ(f.prompter.asked.size(), 2u);
    EXPECT_TRUE(f.form.wasReloaded());
    EXPECT_EQ(f.env.general.Title, "from the file");
    EXPECT_EQ(f.env.general.Author, "");
    EXPECT_EQ(f.env.customer.ZIP, "12345");
    EXPECT_EQ(f.env.customer.Company, "");
    EXPECT_EQ(f.env.description, std::vector<std::string>{"file line"});
    EXPECT_EQ(f.edit("edtGenTitle")->text(), "from the file");
}

TEST(EnvConfForm, AFileThatCannotBeReadAgainKeepsTheHeaderAsShown)
{
    test::TempDir dir; // a folder where the file should be: it exists but cannot be read
    Form f(dir.path().string());
    const Environment shown = f.env;
    EXPECT_TRUE(f.runModal([&] {
        f.edit("edtCustFax")->setText("typed");
        f.click("btnCancel");
    }));
    ASSERT_EQ(f.prompter.asked.size(), 2u); // the question, then why the file was not taken
    EXPECT_EQ(f.prompter.asked[1].icon, Icon::Warning);
    EXPECT_NE(f.prompter.asked[1].text.find(Str(7969)), std::string::npos);
    EXPECT_EQ(f.env.general, shown.general);
    EXPECT_EQ(f.env.customer, shown.customer);
    EXPECT_EQ(f.env.description, shown.description);
}

TEST(EnvConfForm, SwitchingTheLanguageRelabelsTheDialog)
{
    Form f;
    auto *pages = f.form.findChild<QTabWidget *>("PageControl1");
    auto label = [&f](const char *name) { return f.form.findChild<QLabel *>(name)->text(); };
    const struct {
        int lang;
        const char *caption, *page, *zip, *contact, *cancel, *fileBox;
    } languages[] = {
        {kLangGerman, "Umgebungseinstellungen", "Allgemein", "PLZ", "Ansprechpartner", "Abbrechen", "Umgebungsdatei"},
        {kLangEnglish, "Environment settings", "General", "ZIP code", "Contact", "Cancel", "Environment file"},
    };
    for (const auto &l : languages) {
        SetGlobalLang(l.lang);
        f.form.InitialLoads();
        EXPECT_EQ(f.form.windowTitle(), l.caption);
        EXPECT_EQ(pages->tabText(0), l.page);
        EXPECT_EQ(label("lblGenZIP"), l.zip);
        EXPECT_EQ(label("lblCustContact"), l.contact);
        EXPECT_EQ(f.form.findChild<QPushButton *>("btnCancel")->text(), l.cancel);
        EXPECT_EQ(f.form.findChild<QGroupBox *>("gbEnvFile")->title(), l.fileBox);
        for (const QLabel *lbl : f.form.findChildren<QLabel *>(QRegularExpression("^lbl(Gen|Cust)")))
            EXPECT_FALSE(lbl->text().isEmpty() || lbl->text().startsWith("[#")) << lbl->objectName().toStdString();
    }
}

namespace {

// The main window, its start-up questions forgotten.
struct Window : test::MainWindow {
    Window() : test::MainWindow({.lang = kLangEnglish}) { prompter.asked.clear(); }
    TFormEnvConf *envConf() { return w->findChild<TFormEnvConf *>(); }
    std::string title() { return w->windowTitle().toStdString(); }

    // The environment information dialog: inside() acts on it while it is open.
    void openEnvConf(const std::function<void(TFormEnvConf &)> &inside)
    {
        QTimer::singleShot(0, w.get(), [this, inside] {
            TFormEnvConf *form = envConf();
            ASSERT_NE(form, nullptr);
            inside(*form);
            if (form->isVisible()) {
                ADD_FAILURE() << "the dialog is still open";
                form->done(QDialog::Rejected);
            }
        });
        act("actEnvConfig")->trigger();
    }
};

} // namespace

TEST(EnvConfForm, MainWindowOpensItAndItsHeaderGoesToTheFileAtTheNextSave)
{
    Window win;
    ASSERT_TRUE(win.act("actEnvConfig")->isEnabled());
    EXPECT_FALSE(ActionManager::isLater("actEnvConfig"));
    EXPECT_FALSE(win.w->isEnvironmentChanged());
    win.openEnvConf([&](TFormEnvConf &form) {
        EXPECT_EQ(form.findChild<QLabel *>("lblEnvFileName")->text().toStdString(), win.w->environmentFile());
        form.findChild<QLineEdit *>("edtCustCompany")->setText("Harbour Pumps Ltd");
        EXPECT_TRUE(win.w->isEnvironmentChanged());
        form.findChild<QPushButton *>("btnOK")->click();
    });
    EXPECT_TRUE(win.w->isEnvironmentChanged());

    const std::string kef = win.file("pumps.kef");
    test::PickFile(win.file("pumps")); // typed without the extension
    win.act("actSaveEnvironment")->trigger();
    EXPECT_EQ(win.w->environmentFile(), kef);
    EXPECT_NE(test::ReadWholeFile(kef).find("[Customer]\nCompany=Harbour Pumps Ltd\n"), std::string::npos) << test::ReadWholeFile(kef);
    EXPECT_FALSE(win.w->isEnvironmentChanged());
    EXPECT_EQ(win.title(), Str(1) + " - pumps.kef");
    EXPECT_TRUE(win.prompter.asked.empty());

    // Cancelled with Yes: the header is the file's again, and so is nothing else unsaved.
    win.openEnvConf([&](TFormEnvConf &form) {
        form.findChild<QLineEdit *>("edtCustCompany")->setText("typo");
        form.findChild<QPushButton *>("btnCancel")->click();
    });
    EXPECT_FALSE(win.w->isEnvironmentChanged());
    win.openEnvConf([&](TFormEnvConf &form) {
        EXPECT_EQ(form.findChild<QLineEdit *>("edtCustCompany")->text(), "Harbour Pumps Ltd");
        form.findChild<QPushButton *>("btnOK")->click();
    });
}

TEST(EnvConfForm, SavingIntoAFileThatIsNoEnvironmentAsksFirst)
{
    Window win;
    const std::string before = win.w->environmentFile();
    const std::string notes = win.file("notes.txt");
    const std::string text = "Line 7: call the customer before the weekend.\n";
    std::ofstream(notes) << text;

    win.prompter.answerNext(MsgResult::No);
    test::PickFile(notes);
    win.act("actSaveEnvironment")->trigger();
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_NE(win.prompter.asked[0].text.find(notes), std::string::npos) << win.prompter.asked[0].text;
    EXPECT_EQ(win.prompter.asked[0].buttons, Buttons::YesNoDefaultNo);
    EXPECT_EQ(test::ReadWholeFile(notes), text);
    EXPECT_EQ(win.w->environmentFile(), before);

    win.prompter.answerNext(MsgResult::Yes);
    test::PickFile(notes);
    win.act("actSaveEnvironment")->trigger();
    EXPECT_EQ(win.prompter.asked.size(), 2u);
    const std::string saved = test::ReadWholeFile(notes);
    EXPECT_EQ(saved.rfind(text, 0), 0u) << "what the file held stays: " << saved;
    EXPECT_NE(saved.find("[ComA]"), std::string::npos) << saved;
    EXPECT_EQ(win.title(), Str(1) + " - notes.txt");
}

TEST(EnvConfForm, LoadingTakesEnvironmentsOnlyAndNamesTheFileInTheCaption)
{
    Window win;
    const std::string before = win.w->environmentFile();
    const std::string ini = win.file("Kestrel.ini");
    std::ofstream(ini) << "[Modes]\nGlobalLang=10000\n";
    test::PickFile(ini);
    win.act("actLoadEnvironment")->trigger();
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_EQ(win.prompter.asked[0].text, StrArg(7972, ini));
    EXPECT_EQ(win.w->environmentFile(), before);

    const std::string kef = win.file("line.kef");
    std::ofstream(kef) << "[General]\nTitle=Line 7\n[Files]\nRecord data=" << win.file("recordings/l7.ksr") << "\n";
    test::PickFile(kef);
    win.act("actLoadEnvironment")->trigger();
    EXPECT_EQ(win.w->environmentFile(), kef);
    EXPECT_EQ(win.title(), Str(1) + " - line.kef");
    win.openEnvConf([&](TFormEnvConf &form) {
        EXPECT_EQ(form.findChild<QLineEdit *>("edtGenTitle")->text(), "Line 7");
        form.findChild<QPushButton *>("btnOK")->click();
    });
}
