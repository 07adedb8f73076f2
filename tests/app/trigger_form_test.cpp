// The trigger editor on the offscreen platform: the linked pattern fields, OK's
// refusals and questions, cancel, the condition that hides the event box, the
// seconds field, the action page and the parameter pool.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <set>

#include "app/pattern_fields.h"
#include "app/trigger_form.h"
#include "app/trigger_params_form.h"
#include "base/reporter.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"
#include "support/widget_app.h"
#include "trigger_engine/trigger_launcher.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

template <class W>
W *child(const QObject &parent, const char *name)
{
    W *w = parent.findChild<W *>(name);
    EXPECT_NE(w, nullptr) << name;
    return w;
}

QString Text(const QPlainTextEdit *field) { return field->toPlainText(); }

void Type(QWidget *field, const QString &keys) { QTest::keyClicks(field, keys); }

// Leaving a field for another one of the same window.
void Leave(QWidget *field)
{
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(field, &out);
}

// A file system holding only these files.
FileLookup Holding(std::set<std::string> files)
{
    FileLookup lookup;
    lookup.exists = [files = std::move(files)](const std::string &p) { return files.count(p) > 0; };
    return lookup;
}

struct PatternFieldsTest : ::testing::Test {
    PatternFields fields;
    QPlainTextEdit *asc = child<QPlainTextEdit>(fields, "edDataAsc");
    QPlainTextEdit *hex = child<QPlainTextEdit>(fields, "edDataHex");
    QPlainTextEdit *bin = child<QPlainTextEdit>(fields, "edDataBin");
};

TEST_F(PatternFieldsTest, EachFieldRewritesTheOtherTwo)
{
    QSignalSpy edited(&fields, &PatternFields::patternEdited);
    fields.setHexText("0D0A");
    EXPECT_EQ(fields.bytes(), "\r\n");
    EXPECT_EQ(Text(asc), "^M^J");
    EXPECT_EQ(Text(bin), "00001101 00001010");
    EXPECT_EQ(edited.count(), 0); // the program's own writing is no edit

    fields.setBytes("");
    Type(asc, "^M^J");
    EXPECT_EQ(Text(hex), "0D0A");
    EXPECT_EQ(Text(bin), "00001101 00001010");
    EXPECT_EQ(Text(asc), "^M^J"); // the field typed in keeps its text
    EXPECT_GT(edited.count(), 0);

    fields.setBytes("");
    asc->insertPlainText(QString::fromUtf8("Aä~")); // as a paste or an input method gives it
    EXPECT_EQ(fields.hexText(), "41E47E"); // Latin-1 characters are their bytes
}

TEST_F(PatternFieldsTest, HexTakesOnlyDigitsAndUpperCase)
{
    Type(hex, "0G1");
    EXPECT_EQ(Text(hex), "01");
    EXPECT_EQ(Text(asc), "^A");
    Type(hex, "a-f");
    EXPECT_EQ(Text(hex), "01AF");
    EXPECT_EQ(hex->textCursor().position(), 4); // the caret stays behind what was typed

    // Pasted garbage goes all at once, also two bad characters side by side.
    fields.setHexText("zz0d~~0a??");
    EXPECT_EQ(fields.hexText(), "0D0A");
}

TEST_F(PatternFieldsTest, HugePastesAreCutToTheLongestPattern)
{
    const int most = PatternFields::kMaxPatternBytes;
    hex->insertPlainText(QString(200000, QLatin1Char('G')) + "0D"); // every character bad
    EXPECT_EQ(Text(hex), "");
    EXPECT_EQ(fields.bytes(), "");
    // Each field, pasted far beyond the longest pattern; the pattern stops at its end.
    const std::pair<QPlainTextEdit *, QChar> pastes[] = {{hex, 'A'}, {bin, '1'}, {asc, 'a'}};
    const std::string expected[] = {std::string(most, '\xAA'), std::string(most, '\xFF'), std::string(most, 'a')};
    for (int i = 0; i < 3; ++i) {
        fields.setBytes("");
        pastes[i].first->insertPlainText(QString(20 * most, pastes[i].second));
        EXPECT_TRUE(fields.bytes() == expected[i]) << i << ": " << fields.bytes().size() << " bytes";
        EXPECT_LE(Text(pastes[i].first).size(), 9 * most) << i;
    }
}

TEST_F(PatternFieldsTest, BinaryGroupsByteWiseAndWaitsForWholeBytes)
{
    Type(bin, "0000110120");
    EXPECT_EQ(Text(bin), "00001101 0"); // the 2 is gone, the blank is layout
    EXPECT_EQ(fields.bytes(), "\r");     // the ninth digit starts a byte that is not there yet
    EXPECT_EQ(Text(hex), "0D");
    Type(bin, "0001010");
    EXPECT_EQ(Text(bin), "00001101 00001010");
    EXPECT_EQ(Text(asc), "^M^J"); // the other fields follow the binary one
    EXPECT_EQ(bin->textCursor().position(), 17);

    // Leaving a field drops what is not part of the pattern.
    Type(bin, "111");
    Leave(bin);
    EXPECT_EQ(Text(bin), "00001101 00001010");
    hex->moveCursor(QTextCursor::End);
    Type(hex, "F");
    EXPECT_EQ(Text(hex), "0D0AF");
    Leave(hex);
    EXPECT_EQ(Text(hex), "0D0A");
    asc->moveCursor(QTextCursor::End);
    Type(asc, "^");
    Leave(asc);
    EXPECT_EQ(Text(asc), "^M^J");
}

struct TriggerFormTest : ::testing::Test {
    test::ScriptedPrompter prompter{MsgResult::Yes};
    TFormTrig form{prompter, nullptr};

    void SetUp() override
    {
        SetGlobalLang(kLangEnglish);
        form.InitialLoads();
        form.OpenNew(); // the default name in this language
        form.setFileLookup(Holding({"/snd/ring.wav", "/bin/log"}));
        form.show();
    }
    void TearDown() override { SetGlobalLang(kLangGerman); }

    template <class W>
    W *get(const char *name) { return child<W>(form, name); }
    QLineEdit *edit(const char *name) { return get<QLineEdit>(name); }
    QCheckBox *check(const char *name) { return get<QCheckBox>(name); }
    void click(const char *button) { get<QAbstractButton>(button)->click(); }
    QTabWidget *pages() { return get<QTabWidget>("pcTrigger"); }
    std::vector<int> visiblePages()
    {
        std::vector<int> shown;
        for (int i = 0; i < pages()->count(); ++i)
            if (pages()->isTabVisible(i))
                shown.push_back(i);
        return shown;
    }
    std::string lastAsked() const { return prompter.asked.empty() ? "" : prompter.asked.back().text; }
    bool accepted() const { return !form.isVisible() && form.result() == QDialog::Accepted; }
};

TEST_F(TriggerFormTest, ANewTriggerIsTakenWithoutAQuestion)
{
    EXPECT_EQ(visiblePages(), (std::vector<int>{TrigPage::Data, TrigPage::Action}));
    click("btnOK"); // the default name is a name
    ASSERT_TRUE(accepted());
    EXPECT_TRUE(prompter.asked.empty()); // a new trigger overwrites nothing
    EXPECT_EQ(form.acceptedTrigger().Name, "***New trigger");
}

TEST_F(TriggerFormTest, OkRefusesInOrderAndStaysOpen)
{
    check("cbPlaySound")->setChecked(true);
    edit("edtSoundFilePath")->setText("/snd/gone.wav");
    check("cbStartExtCommand")->setChecked(true);
    edit("edtExtCommandFilePath")->setText("/bin/gone");
    edit("edtExtCommandParams")->setText("\"open");
    edit("edTrigName")->clear();
    edit("edTrigDescr")->setText("%TRIG_NUM%");

    const std::pair<std::function<void()>, int> steps[] = {
        {[] {}, 7453},
        {[&] { edit("edtSoundFilePath")->setText("/snd/ring.wav"); }, 7452},
        {[&] { edit("edtExtCommandFilePath")->setText("/bin/log"); }, 7486},
        {[&] { edit("edTrigName")->setText("Hang-up"); }, 7454},
        {[&] { edit("edTrigDescr")->setText("modem"); }, 7455},
    };
    for (const auto &[mend, message] : steps) {
        mend();
        prompter.asked.clear();
        click("btnOK");
        ASSERT_EQ(prompter.asked.size(), 1u) << message;
        EXPECT_EQ(prompter.asked[0].text, StrIn(message, kLangEnglish));
        EXPECT_EQ(prompter.asked[0].title, "Trigger engine message");
        EXPECT_TRUE(form.isVisible()) << message;
    }
    edit("edtExtCommandParams")->setText("\"closed\"");
    click("btnOK");
    EXPECT_TRUE(accepted());
}

TEST_F(TriggerFormTest, EditingAsksBeforeOverwriting)
{
    TriggerDef old;
    old.Name = "Old";
    form.OpenExisting(old);
    edit("edTrigName")->setText("New");

    prompter.answerNext(MsgResult::No);
    click("btnOK");
    EXPECT_EQ(lastAsked(), "Should the existing trigger be overwritten with the new values?\n");
    EXPECT_EQ(prompter.asked.back().buttons, Buttons::YesNo);
    EXPECT_TRUE(form.isVisible()); // nothing changed; the user may go on or cancel

    prompter.answerNext(MsgResult::Yes);
    click("btnOK");
    EXPECT_TRUE(accepted()); // what it took, and the caller's place in the list: the round trip and Exec
}

TEST_F(TriggerFormTest, EveryControlComesBackAsItWasStored)
{
    TriggerDef t;
    t.number = 2;
    t.portHandle = 7;
    t.Name = "Größe";
    t.Description = "all of it";
    t.Active = t.D2 = t.FE = t.LE = true;
    t.Type = TriggerType::StopRecording;
    t.Event = TriggerEvent::Signal;
    t.Data = "7E00FF";
    t.S1 = t.M5 = SignalEdge::Rises;
    t.M1 = t.M3 = SignalEdge::Falls;
    t.InActivityTime = 300;
    t.EventD2 = t.EventM1 = t.EventM5 = t.EventLE = true;
    t.TimeReached = 45352.0 + (13 * 3600 + 14 * 60 + 15) / 86400.0;
    t.PlaySound = t.PlaySoundRepeat = t.ExecCommand = true;
    t.SoundFilePath = "/snd/ring.wav";
    t.CommandFilePath = "/bin/log";
    t.CommandParams = "-t \"%TRIG_NAME%\"";
    form.OpenExisting(t);
    EXPECT_FALSE(form.ChangesMade);
    TriggerDef back = form.FormValues();
    EXPECT_NEAR(back.TimeReached, t.TimeReached, 1e-9);
    back.TimeReached = t.TimeReached;
    EXPECT_EQ(back, t);
    // Each line's row shows that line's own choice.
    for (const char *on : {"rbS1Rises", "rbM1Falls", "rbM5Rises", "rbM3Falls", "rbM2Ignore", "rbS2Ignore"})
        EXPECT_TRUE(get<QRadioButton>(on)->isChecked()) << on;
    EXPECT_EQ(visiblePages(), (std::vector<int>{TrigPage::Signal, TrigPage::Action}));
}

TEST_F(TriggerFormTest, CancelAsksOnlyAfterChanges)
{
    click("btnCancel");
    EXPECT_TRUE(prompter.asked.empty());
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.result(), QDialog::Rejected);

    form.OpenNew();
    form.show();
    check("ckTrigPE")->setChecked(true);
    EXPECT_TRUE(form.ChangesMade);
    prompter.answerNext(MsgResult::Cancel);
    click("btnCancel");
    EXPECT_EQ(lastAsked(), "Do you want to save the changes?");
    EXPECT_EQ(prompter.asked.back().buttons, Buttons::YesNoCancel);
    EXPECT_TRUE(form.isVisible());

    // Yes is OK, with OK's refusals: an empty name keeps the dialog open.
    edit("edTrigName")->clear();
    prompter.answerNext(MsgResult::Yes);
    click("btnCancel");
    EXPECT_EQ(lastAsked(), StrIn(7486, kLangEnglish));
    EXPECT_TRUE(form.isVisible());
    edit("edTrigName")->setText("Parity");
    prompter.answerNext(MsgResult::Yes);
    click("btnCancel");
    ASSERT_TRUE(accepted());
    EXPECT_TRUE(form.acceptedTrigger().PE);

    // No closes without saving; Escape is Cancel.
    form.OpenNew();
    form.show();
    edit("edTrigDescr")->setText("x");
    prompter.answerNext(MsgResult::No);
    QTest::keyClick(&form, Qt::Key_Escape);
    EXPECT_EQ(lastAsked(), "Do you want to save the changes?");
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.result(), QDialog::Rejected);
}

TEST_F(TriggerFormTest, InactivityHidesTheEventBoxAndGivesItBack)
{
    auto *condition = get<QComboBox>("cbTrigRec");
    auto *event = get<QComboBox>("cbTrigEvent");
    event->setCurrentIndex(TriggerEvent::TimeReached);
    EXPECT_EQ(visiblePages(), (std::vector<int>{TrigPage::Time, TrigPage::Action}));
    pages()->setCurrentIndex(TrigPage::Action);

    condition->setCurrentIndex(TriggerType::Inactivity);
    EXPECT_TRUE(event->isHidden() && get<QLabel>("lblTrigEvent")->isHidden());
    EXPECT_EQ(visiblePages(), (std::vector<int>{TrigPage::Inactivity, TrigPage::Action}));
    EXPECT_EQ(pages()->currentIndex(), TrigPage::Inactivity);
    EXPECT_EQ(form.FormValues().Event, TriggerEvent::Inactivity);

    condition->setCurrentIndex(TriggerType::StopRecording);
    EXPECT_FALSE(event->isHidden());
    EXPECT_EQ(event->currentIndex(), TriggerEvent::TimeReached);
    EXPECT_EQ(visiblePages(), (std::vector<int>{TrigPage::Time, TrigPage::Action}));
    EXPECT_EQ(form.FormValues().Event, TriggerEvent::TimeReached);
    EXPECT_TRUE(form.ChangesMade);
}

TEST_F(TriggerFormTest, SecondsTakeDigitsOnlyAndAreClampedOnLeaving)
{
    QLineEdit *seconds = edit("csInActivityTime");
    const std::pair<const char *, const char *> cases[] = {{"0", "1"}, {"4x2", "42"}, {"70000", "65535"}};
    for (const auto &[typed, left] : cases) {
        seconds->clear();
        Type(seconds, typed);
        Leave(seconds);
        EXPECT_EQ(seconds->text(), left) << typed;
    }
    // The arrows step by one and stop at the ends.
    auto *updown = get<QWidget>("UpDownSeconds");
    child<QToolButton>(*updown, "btnUp")->click();
    EXPECT_EQ(seconds->text(), "65535");
    seconds->setText("1");
    child<QToolButton>(*updown, "btnDown")->click();
    EXPECT_EQ(seconds->text(), "1");
    QTest::keyClick(seconds, Qt::Key_Up);
    QTest::keyClick(seconds, Qt::Key_Up);
    EXPECT_EQ(seconds->text(), "3");
    EXPECT_EQ(form.FormValues().InActivityTime, 3);
}

TEST_F(TriggerFormTest, ActionControlsFollowTheirBoxes)
{
    const std::pair<const char *, std::vector<const char *>> boxes[] = {
        {"cbPlaySound", {"edtSoundFilePath", "btnBrowseSoundFile", "cbPlayContinuously", "lblSoundFilePath"}},
        {"cbStartExtCommand", {"edtExtCommandFilePath", "edtExtCommandParams", "btnBrowseExtCommand",
                               "btnOpenParamPool", "lblExtCommandFilePath", "lblExtCommandParams"}}};
    for (const bool on : {true, false, true})
        for (const auto &[box, controls] : boxes) {
            check(box)->setChecked(on);
            for (const char *name : controls)
                EXPECT_EQ(get<QWidget>(name)->isEnabled(), on) << name;
        }
    // Without a launcher there is nothing to test with.
    EXPECT_FALSE(get<QWidget>("btnSoundCheck")->isEnabled());
    EXPECT_FALSE(get<QWidget>("btnCommandCheck")->isEnabled());
}

TEST(TriggerFormActions, TestButtonsRunTheActionsAsTheyStand)
{
    test::ScriptedPrompter prompter;
    PromptReporter reporter(prompter);
    TriggerLauncher launcher(reporter);
    std::vector<std::pair<std::string, std::vector<std::string>>> started;
    launcher.setStarter([&](const std::string &program, const std::vector<std::string> &args) {
        started.emplace_back(program, args);
        return 0;
    });
    launcher.setChimer("/opt/chimer");
    TFormTrig form(prompter, &launcher);
    form.findChild<QCheckBox *>("cbPlaySound")->setChecked(true);
    form.findChild<QLineEdit *>("edtSoundFilePath")->setText("/snd/a b.wav");
    form.findChild<QPushButton *>("btnSoundCheck")->click();
    form.findChild<QCheckBox *>("cbStartExtCommand")->setChecked(true);
    form.findChild<QLineEdit *>("edTrigName")->setText("Modem");
    form.findChild<QLineEdit *>("edtExtCommandFilePath")->setText("/bin/log");
    form.findChild<QLineEdit *>("edtExtCommandParams")->setText("-t '%TRIG_NAME% x'");
    form.findChild<QPushButton *>("btnCommandCheck")->click();
    ASSERT_EQ(started.size(), 2u);
    EXPECT_EQ(started[0], (std::pair<std::string, std::vector<std::string>>{"/opt/chimer", {"-s", "/snd/a b.wav"}}));
    EXPECT_EQ(started[1], (std::pair<std::string, std::vector<std::string>>{"/bin/log", {"-t", "Modem x"}}));
    EXPECT_TRUE(prompter.asked.empty());
}

TEST_F(TriggerFormTest, ThePoolInsertsAtTheCaretOrNothing)
{
    check("cbStartExtCommand")->setChecked(true);
    QLineEdit *params = edit("edtExtCommandParams");
    params->setText("--name= --now");
    params->setCursorPosition(7);
    // Picks a row and presses a button of the pool once it is open.
    auto answerPool = [&](int row, const char *button) {
        QTimer::singleShot(0, &form, [&form = form, row, button] {
            auto *pool = form.findChild<TFormTrigParams *>();
            ASSERT_NE(pool, nullptr);
            ASSERT_TRUE(pool->isVisible());
            auto *grid = pool->findChild<QTableWidget *>("sgParamPool");
            EXPECT_EQ(grid->item(3, 1)->text(), "Description of trigger");
            grid->selectRow(row);
            pool->findChild<QPushButton *>(button)->click();
        });
        click("btnOpenParamPool");
    };
    answerPool(2, "btnOK");
    EXPECT_EQ(params->text(), "--name=%TRIG_NAME% --now");
    EXPECT_EQ(params->cursorPosition(), 18);
    answerPool(1, "btnCancel");
    EXPECT_EQ(params->text(), "--name=%TRIG_NAME% --now");
    answerPool(9, "btnOK"); // the empty slot
    EXPECT_EQ(params->text(), "--name=%TRIG_NAME% --now");
    EXPECT_TRUE(form.ChangesMade);
}

TEST_F(TriggerFormTest, LanguageSwitchRelabelsTheOpenForm)
{
    auto *condition = get<QComboBox>("cbTrigRec");
    condition->setCurrentIndex(TriggerType::StopRecording);
    form.ChangesMade = false;
    SetGlobalLang(kLangGerman);
    form.InitialLoads();
    EXPECT_EQ(form.windowTitle(), "Triggerkonfiguration");
    EXPECT_EQ(condition->currentText(), "Stoppe Aufzeichnung");
    EXPECT_EQ(get<QPushButton>("btnCancel")->text(), "Abbruch");
    EXPECT_EQ(pages()->tabText(TrigPage::Action), "Aktion");
    EXPECT_EQ(get<QLabel>("lblZeroNote")->text(),
              "ACHTUNG: HEX 0x00 (DEZ 0, CTRL-@) kann für die Suche nicht verwendet werden!!!");
    EXPECT_FALSE(form.ChangesMade);
}

// Exec is the trigger panel's editor (the panel's own test has what it does with the answer):
// a new trigger or the edited one comes back from OK, nothing from a cancel.
TEST_F(TriggerFormTest, ExecHandsBackWhatOkTookAndNothingAfterACancel)
{
    // Types a name into the open (modal) editor and presses one of its buttons.
    auto answer = [this](const char *name, const char *button) {
        QTimer::singleShot(0, &form, [this, name, button] {
            ASSERT_TRUE(form.isVisible());
            edit("edTrigName")->setText(name);
            click(button);
        });
    };
    form.hide();
    answer("Ring", "btnOK");
    const std::optional<TriggerDef> added = form.Exec(nullptr);
    ASSERT_TRUE(added.has_value());
    EXPECT_EQ(added->Name, "Ring");

    TriggerDef stored = *added;
    stored.number = 3;
    answer("Ring twice", "btnOK"); // asks to overwrite: yes
    const std::optional<TriggerDef> replaced = form.Exec(&stored);
    ASSERT_TRUE(replaced.has_value());
    EXPECT_EQ(replaced->Name, "Ring twice");
    EXPECT_EQ(replaced->number, 3);
    EXPECT_EQ(prompter.asked.size(), 1u);

    prompter.answerNext(MsgResult::No); // save the changes? no
    answer("Never", "btnCancel");
    EXPECT_FALSE(form.Exec(&stored).has_value());
}

} // namespace
