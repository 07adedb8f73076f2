#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "app/action_registry.h"
#include "app/goto_form.h"
#include "app/main_form.h"
#include "app/message_form.h"
#include "capture/recording_session.h"
#include "app/signal_light.h"
#include "app/signal_light_controller.h"
#include "record/clock.h"
#include "ports/port_scan.h"
#include "record/record_paths.h"
#include "record/record_reader.h"
#include "capture/recorder.h"
#include "ports/sim_port.h"
#include "present/grid/grid_layout.h"
#include "present/grid/record_grid.h"
#include "base/string_table.h"
#include "support/main_window.h"
#include "support/stale_language.h"
#include "support/screenshots.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

const QApplication &g_app = test::WidgetApp(); // before the first widget

void pump(int ms) { test::Pump(ms); }

struct Marks {
    std::vector<std::pair<std::uint32_t, int>> system; // (MP number, mark code)
    std::uint64_t count = 0;
    bool gapFree = true;
    std::uint64_t dataBytes = 0;
};

Marks readMarks(const std::string &path)
{
    Marks m;
    RecordReader r;
    if (!r.open(path))
        return m;
    m.count = r.recordCount();
    std::vector<MpRecord> all;
    r.readBlock(0, m.count, all);
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].number != i)
            m.gapFree = false;
        if (all[i].isSystemMark())
            m.system.emplace_back(all[i].number, all[i].markCode);
        m.dataBytes += all[i].d1Valid + all[i].d2Valid;
    }
    return m;
}

std::vector<int> codes(const Marks &m)
{
    std::vector<int> c;
    for (auto &[n, code] : m.system)
        c.push_back(code);
    return c;
}

using Window = test::MainWindow;

QString ModeText(Window &win) { return win.find<QLabel>("pnlStatusBarPanel6")->text(); }

// Closes the window (answering its question yes) and reads the configuration it saved.
std::string CloseAndReadIni(Window &win)
{
    win.w->show();
    win.prompter.answerNext(MsgResult::Yes);
    EXPECT_TRUE(win.w->close());
    return test::ReadWholeFile(win.file("Kestrel.ini"));
}

} // namespace

TEST(MainForm, HasTheNamedRegionsAndComponents)
{
    Window win;
    for (const char *name :
         {"ActionMainMenuBar1", "ActionManager1", "ControlBar1", "ActionToolBar1", "ActionToolBar7", "pnlAllBottom",
          "pnlCCTrigPanel", "pnlCCRecDispControl", "pnlMonitor", "pnlDGHeaderAlTop", "pnlGridAndVScroll",
          "pnlStatusAndHScroll", "HSplitter1", "StatusBar", "pnlStatusBarPanel6", "btnREC", "btnPAUSE", "btnSTOP",
          "btnRECappend", "btnRECreplace", "btnViewHold", "cbPortBaudRate", "cbPortDataBits", "cbPortParity",
          "cbPortStopBits", "LedD1", "LedD2", "LedS1", "LedS2", "LedM1", "LedM2", "LedM5", "LedM3", "apdLEDRecorder",
          "apdLEDViewHold", "showLineLoadActual", "showLineLoadPeek", "showLineQuality", "LEDToggleTimer",
          "btnScrollTop", "btnScrollEnd", "btnCharAscii", "btnTimeDelta", "btnViewDataDump", "TriggerList",
          "btnInsertTrigger", "btnTrigListMinMax"})
        EXPECT_NE(win.w->findChild<QObject *>(name), nullptr) << name;
    EXPECT_EQ(ModeText(win), QString::fromStdString(Str(4274)));
}

TEST(MainForm, RecordPauseStopWritesTheMarksOnce)
{
    Window win;
    win.click("btnREC");
    ASSERT_TRUE(win.w->isRecording());
    EXPECT_TRUE(win.find<QToolButton>("btnREC")->isChecked());
    EXPECT_FALSE(win.find<QToolButton>("btnSTOP")->isChecked());
    EXPECT_EQ(ModeText(win), QString::fromStdString(Str(4273)));
    pump(150);
    // Record while recording does nothing, even when reached through the action.
    win.act("actStart")->setEnabled(true);
    win.act("actStart")->trigger();
    win.click("btnREC");
    EXPECT_TRUE(win.find<QToolButton>("btnREC")->isChecked());
    win.click("btnPAUSE");
    EXPECT_TRUE(win.w->isPaused());
    EXPECT_FALSE(win.w->isRecording());
    const std::uint64_t atPause = readMarks(win.w->recordFile()).count;
    pump(150); // the line goes on, nothing is written while paused
    EXPECT_EQ(readMarks(win.w->recordFile()).count, atPause);
    win.click("btnPAUSE");
    EXPECT_TRUE(win.w->isRecording());
    pump(150);
    win.click("btnSTOP");
    EXPECT_FALSE(win.w->isRecording());
    EXPECT_FALSE(win.w->isPaused());
    EXPECT_EQ(ModeText(win), QString::fromStdString(Str(4274)));
    EXPECT_TRUE(win.find<QToolButton>("btnSTOP")->isChecked());

    const Marks m = readMarks(win.w->recordFile());
    EXPECT_TRUE(m.gapFree);
    EXPECT_EQ(codes(m), (std::vector<int>{SystemMark::NewFile, SystemMark::Started, SystemMark::Stopped}));
    EXPECT_EQ(m.system.back().first, m.count - 1); // the stop mark is the last record
    EXPECT_GT(m.dataBytes, 0u);
    EXPECT_TRUE(win.prompter.asked.empty());
}

TEST(MainForm, PauseThenStopStopsOnceAndAppendContinuesTheNumbers)
{
    Window win;
    win.click("btnREC");
    pump(80);
    win.click("btnPAUSE");
    win.click("btnSTOP");
    EXPECT_FALSE(win.act("actPause")->isChecked());
    Marks m = readMarks(win.w->recordFile());
    const std::vector<int> c = codes(m);
    EXPECT_EQ(std::count(c.begin(), c.end(), SystemMark::Stopped), 1);

    // Append is down by default: the next recording continues the file.
    ASSERT_TRUE(win.act("actAppend")->isChecked());
    win.click("btnREC");
    pump(80);
    win.click("btnSTOP");
    m = readMarks(win.w->recordFile());
    EXPECT_TRUE(m.gapFree);
    EXPECT_EQ(codes(m), (std::vector<int>{0, 6, 5, 4, 5}));
}

TEST(MainForm, ControlsAreLockedWhileRecordingAndRestoredAfter)
{
    Window win;
    QComboBox *baud = win.find<QComboBox>("cbPortBaudRate");
    const std::vector<const char *> locked = {"actNewRecordFile", "actOpenRecordFile", "actSaveRecordFile",
                                              "actExit", "actLoadEnvironment", "actSaveEnvironment",
                                              "actLangGerman", "actLangEnglish", "actScrollTop", "actScrollEnd",
                                              "actAppend", "actReplace", "actTrigInsert", "actTrigRemove",
                                              "actTrigGridReset", "actExportToFile", "actPrintReport"};
    for (const char *n : locked)
        ASSERT_TRUE(win.act(n)->isEnabled()) << n;
    EXPECT_TRUE(baud->isEnabled());

    win.click("btnREC");
    for (const char *n : locked)
        EXPECT_FALSE(win.act(n)->isEnabled()) << n;
    EXPECT_FALSE(baud->isEnabled());
    EXPECT_FALSE(win.find<QComboBox>("cbPortStopBits")->isEnabled());
    EXPECT_FALSE(win.act("actStart")->isEnabled());
    EXPECT_TRUE(win.act("actStop")->isEnabled());
    EXPECT_FALSE(win.find<QWidget>("pnlCCTrigPanel")->isEnabled());
    EXPECT_FALSE(win.find<QWidget>("ScrollBar1")->isEnabled());

    win.click("btnSTOP");
    for (const char *n : locked)
        EXPECT_TRUE(win.act(n)->isEnabled()) << n;
    EXPECT_TRUE(baud->isEnabled());
    EXPECT_TRUE(win.act("actStart")->isEnabled());
    EXPECT_TRUE(win.find<QWidget>("pnlCCTrigPanel")->isEnabled());
    EXPECT_TRUE(win.find<QWidget>("ScrollBar1")->isEnabled());
}

TEST(MainForm, CloseIsRefusedWhileRecordingAndOffersToSaveAChangedEnvironment)
{
    Window win;
    win.w->show();
    win.click("btnREC");
    EXPECT_FALSE(win.w->close());
    EXPECT_TRUE(win.w->isRecording());
    EXPECT_TRUE(win.prompter.asked.empty()); // no box: nothing to answer
    const QString status = win.find<QLabel>("pnlStatusBarPanel1")->text();
    EXPECT_TRUE(status.startsWith(QString::fromStdString(Str(60)).section('\n', 0, 0))) << status.toStdString();
    EXPECT_FALSE(status.contains('\n'));

    win.click("btnSTOP");
    win.prompter.answerNext(MsgResult::No);
    EXPECT_FALSE(win.w->close());
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_EQ(win.prompter.asked[0].text, Str(24));

    // A changed environment brings a second question; "no" closes without saving it.
    win.find<QComboBox>("cbPortBaudRate")->setCurrentText("19200");
    ASSERT_TRUE(win.w->isEnvironmentChanged());
    win.prompter.answerNext(MsgResult::Yes);
    win.prompter.answerNext(MsgResult::No);
    EXPECT_TRUE(win.w->close());
    ASSERT_EQ(win.prompter.asked.size(), 3u);
    EXPECT_EQ(win.prompter.asked[2].text, Str(25));
    EXPECT_TRUE(std::filesystem::exists(win.dir / "Kestrel.ini"));
}

TEST(MainForm, NeitherModeButtonDownAsksBeforeTouchingAFileWithData)
{
    Window win;
    win.click("btnREC");
    pump(50);
    win.click("btnSTOP");
    const Marks before = readMarks(win.w->recordFile());
    win.act("actAppend")->setChecked(false);
    win.act("actReplace")->setChecked(false);

    auto answerDialog = [](const char *radio, const char *button) {
        QTimer::singleShot(0, [radio, button] {
            for (QWidget *top : QApplication::topLevelWidgets())
                if (top->objectName() == "TFormConfirmRecordMode" && top->isVisible()) {
                    EXPECT_TRUE(top->findChild<QRadioButton *>("rbRecAppend")->isChecked()); // preselected
                    // Wide enough that its title need not be shortened.
                    EXPECT_GT(top->width(), top->fontMetrics().horizontalAdvance(top->windowTitle()) + 100);
                    if (radio != nullptr)
                        top->findChild<QRadioButton *>(radio)->setChecked(true);
                    top->findChild<QPushButton *>(button)->click();
                }
        });
    };
    answerDialog(nullptr, "btnCancel");
    win.click("btnREC");
    EXPECT_FALSE(win.w->isRecording());
    EXPECT_TRUE(win.find<QToolButton>("btnSTOP")->isChecked());
    EXPECT_FALSE(win.find<QToolButton>("btnREC")->isChecked());
    EXPECT_EQ(readMarks(win.w->recordFile()).count, before.count);

    answerDialog("rbRecReplace", "btnOK");
    win.click("btnREC");
    ASSERT_TRUE(win.w->isRecording());
    win.click("btnSTOP");
    EXPECT_EQ(codes(readMarks(win.w->recordFile())), (std::vector<int>{0, 6, 5}));
}

TEST(MainForm, LosingAPortStopsCleanlyAndReportsOnce)
{
    Window win;
    win.click("btnREC");
    pump(400); // a few KB on the simulated line
    win.w->session().simLine()->disconnect(kSimPortA);
    win.w->session().simLine()->disconnect(kSimPortB);
    pump(100);
    EXPECT_FALSE(win.w->isRecording());
    const Marks m = readMarks(win.w->recordFile());
    EXPECT_TRUE(m.gapFree);
    EXPECT_EQ(codes(m), (std::vector<int>{0, 6, 5}));
    int portMessages = 0;
    for (const auto &a : win.prompter.asked)
        portMessages += a.title == Str(2000);
    EXPECT_EQ(portMessages, 1);
    EXPECT_EQ(ModeText(win), QString::fromStdString(Str(4274)));
    EXPECT_TRUE(win.act("actNewRecordFile")->isEnabled());
}

TEST(MainForm, ViewHoldAndRecorderLightsBlinkOnTheTimer)
{
    Window win;
    auto *hold = win.find<SignalLight>("apdLEDViewHold");
    auto *rec = win.find<SignalLight>("apdLEDRecorder");
    win.click("btnViewHold");
    EXPECT_TRUE(win.w->viewHold());
    EXPECT_TRUE(win.act("actFreezeDisplay")->isChecked());
    EXPECT_TRUE(win.find<QObject>("LEDToggleTimer")->property("active").toBool());
    win.w->LEDToggleTimerTimer();
    const bool first = hold->isLit();
    win.w->LEDToggleTimerTimer();
    EXPECT_NE(hold->isLit(), first);
    EXPECT_FALSE(rec->isLit()); // not recording
    win.click("btnViewHold");
    EXPECT_FALSE(hold->isLit());

    win.click("btnREC");
    pump(400); // a few KB on the simulated line
    win.w->LEDToggleTimerTimer();
    // The header follows the growing file on the same tick.
    EXPECT_EQ(win.find<QLabel>("lblRecordFileSize")->text().toStdString(),
              RecordSizeLabel(win.w->recordFile(), std::filesystem::file_size(win.w->recordFile())));
    const bool r1 = rec->isLit();
    win.w->LEDToggleTimerTimer();
    EXPECT_NE(rec->isLit(), r1);
    win.click("btnPAUSE"); // paused: the recorder light is off
    win.w->LEDToggleTimerTimer();
    EXPECT_FALSE(rec->isLit());
    win.click("btnSTOP");
}

TEST(MainForm, CommandLineFilesAreTaken)
{
    test::TempDir other;
    const std::string ksr = other.file("y.ksr");
    {
        std::ofstream f(ksr, std::ios::binary);
        f << std::string(5000, '\0');
    }
    Window win({.args = {other.file("x.kef"), ksr, other.file("data.KSR")}});
    EXPECT_EQ(win.w->environmentFile(), other.file("x.kef"));
    EXPECT_EQ(win.w->recordFile(), ksr);
    // The size is shifted, not divided: 5000 bytes show as 4 KB.
    EXPECT_EQ(win.find<QLabel>("lblRecordFileSize")->text().toStdString(), ksr + "   [  4 KB ]");
}

// After a switch nothing in the window speaks the other language, whatever was on it.
TEST(MainForm, LanguageSwitchRelabelsTheWindowAndItsToolWindows)
{
    Window win;
    win.act("actSearch")->trigger(); // the tool windows that exist switch with the window
    win.act("actExportToFile")->trigger();
    (void)win.w->triggerEditor();
    win.act("actLangEnglish")->trigger();
    EXPECT_EQ(test::StaleTexts(win.w.get(), kLangGerman).join("\n").toStdString(), "");
    EXPECT_EQ(win.act("actStart")->text().toStdString(), Str(7548));
    win.act("actLangGerman")->trigger();
    EXPECT_EQ(test::StaleTexts(win.w.get(), kLangEnglish).join("\n").toStdString(), "");
    EXPECT_EQ(ModeText(win), "EXAMINE - MODUS");
    EXPECT_EQ(win.find<QLabel>("pnlStatusBarPanel1")->text(), "Bereit");
    EXPECT_TRUE(win.find<QLabel>("lblPortA")->text().contains("simulierte Leitung"));
    EXPECT_EQ(win.find<QToolButton>("btnREC")->text(), "Aufnahme");
    // Menus carry words with the button's caption beside them; the button keeps its caption.
    EXPECT_EQ(win.act("actViewVertical")->text(), "Vertikale Ansicht   [VERT]");
    EXPECT_EQ(win.find<QToolButton>("btnViewVertical")->text(), "VERT");
    EXPECT_EQ(win.find<QToolButton>("btnShowAllGridLines")->text(), QString::fromUtf8("┼"));

    // The grid's status line follows at once, not at its next refresh.
    win.click("btnREC");
    pump(100);
    win.click("btnSTOP");
    win.act("actTimeRelative")->trigger();
    auto statusLine = [&] {
        QString all;
        for (QLabel *l : win.w->findChildren<QLabel *>())
            if (l->objectName().startsWith("pnlStatusBarPanel"))
                all += l->text() + "|";
        return all;
    };
    win.act("actLangEnglish")->trigger();
    EXPECT_TRUE(statusLine().contains("day(s)")) << statusLine().toStdString();
    win.act("actLangGerman")->trigger();
    EXPECT_TRUE(statusLine().contains("Tag(e)")) << statusLine().toStdString();
    EXPECT_FALSE(statusLine().contains("day(s)")) << statusLine().toStdString();
}

TEST(MainForm, ModeButtonsDriveTheGridAndFollowItsViewMemory)
{
    Window win;
    grid::RecordGrid &g = win.w->grid();
    win.click("btnCharEbcdic");
    EXPECT_EQ(g.modes().charMode(), 2);
    EXPECT_FALSE(win.act("actCharCtl")->isEnabled()); // no caret overlay for EBCDIC
    EXPECT_TRUE(win.act("actCharCmd")->isEnabled());
    win.click("btnViewDataDump");
    EXPECT_EQ(g.modes().view(), 4);
    win.click("btnCharBin"); // the dump view's numeric columns
    win.click("btnCharBin"); // pressing the down button keeps it down
    EXPECT_EQ(g.modes().secondaryMode(), 6);
    EXPECT_TRUE(win.act("actCharBin")->isChecked());
    win.click("btnViewVertical"); // back: the vertical view's own choice returns
    EXPECT_EQ(g.modes().view(), 1);
    EXPECT_EQ(g.modes().charMode(), 2);
    EXPECT_TRUE(win.act("actCharEbcdic")->isChecked());
    const std::size_t asked = win.prompter.asked.size();
    win.click("btnViewHorizontal"); // no such view: a box, and the vertical one stays selected
    ASSERT_EQ(win.prompter.asked.size(), asked + 1);
    EXPECT_EQ(win.prompter.asked.back().title, Str(7708));
    EXPECT_EQ(g.modes().view(), 1);
    EXPECT_TRUE(win.act("actViewVertical")->isChecked());
    win.click("btnTimeDelta");
    EXPECT_EQ(g.modes().timeMode(), 2);
    win.click("btnTimeDelta"); // the time buttons cannot all be up
    EXPECT_TRUE(win.act("actTimeDelta")->isChecked());
    win.click("btnViewHold");
    EXPECT_TRUE(g.hold());
    win.click("btnCharAscii");
    win.click("btnCharCtl");
    win.click("btnCharCmd"); // the overlays exclude each other and may be all up
    EXPECT_FALSE(win.act("actCharCtl")->isChecked());
    win.click("btnCharCmd");
    EXPECT_FALSE(win.act("actCharCmd")->isChecked());
    win.click("btnRECreplace");
    EXPECT_FALSE(win.act("actAppend")->isChecked());
}

TEST(MainForm, MissingHighResolutionCounterIsReportedOnce)
{
    ManualClock clock;
    clock.setHighResolution(false);
    Window win({.clock = &clock});
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_EQ(win.prompter.asked[0].text, Str(70));
}

TEST(MainForm, StartUpTakesTheEnvironmentAndTheStartOptions)
{
    test::TempDir other;
    const std::string kef = other.file("line.kef");
    const std::string ksr = other.file("from-env.ksr");
    std::ofstream(kef) << "[ComA]\nCustomBaudRate=19200\nDataBits=7\nParity=2\nStopBits=2\n"
                       << "[Files]\nRecord data=" << ksr << "\n";
    Window win({.args = {kef}, .config = "[ProgramStart]\nBeginRecordOnProgStart=1\n[Recorder]\nAppend=0\nReplace=1\n"});
    EXPECT_EQ(win.find<QComboBox>("cbPortBaudRate")->currentText(), "19200");
    EXPECT_EQ(win.find<QComboBox>("cbPortDataBits")->currentText(), "7");
    EXPECT_EQ(win.find<QComboBox>("cbPortParity")->currentText(), "E");
    EXPECT_EQ(win.find<QComboBox>("cbPortStopBits")->currentText(), "2");
    EXPECT_EQ(win.w->recordFile(), ksr);
    EXPECT_TRUE(win.act("actReplace")->isChecked());
    EXPECT_FALSE(win.act("actAppend")->isChecked());
    EXPECT_FALSE(win.w->isEnvironmentChanged()); // loading is not a change
    // The start-up option began the recording on the environment's record file.
    ASSERT_TRUE(win.w->isRecording());
    win.click("btnSTOP");
    EXPECT_EQ(codes(readMarks(ksr)), (std::vector<int>{0, 6, 5}));
    EXPECT_EQ(win.w->focusWidget(), &win.w->grid()); // the grid takes the keys from the start
}

// An installer hint the program does not know keeps the language it runs in, and the
// stored choice stays as it was until the user makes one.
TEST(MainForm, AnUnknownInstallerHintKeepsTheLanguageAndTheStoredChoice)
{
    SetGlobalLang(kLangEnglish);
    Window win({.config = "[Modes]\nInstallLang=fr\nGlobalLang=0\n"});
    EXPECT_EQ(GlobalLang(), kLangEnglish);
    const std::string ini = CloseAndReadIni(win);
    EXPECT_NE(ini.find("GlobalLang=0"), std::string::npos) << ini;
    SetGlobalLang(kLangGerman);
}

// A file's trigger actions run only after the user agreed; a yes is kept in the data folder.
TEST(MainForm, AnEnvironmentsActionsRunOnlyAfterTheUserAgreed)
{
    test::TempDir shared;
    const std::string kef = (shared.path() / "actions.kef").string();
    std::ofstream(kef) << "[Trigger0]\nName=note\nActive=1\nType=2\nEvent=4\nEventD1=1\nExecCommand=1\n"
                          "CommandFilePath=/usr/bin/logger\nCommandParams=-t kestrel\n";
    for (const int answer : {MsgResult::No, MsgResult::Yes}) {
        Window win({.args = {kef}, .answer = answer});
        ASSERT_FALSE(win.prompter.asked.empty());
        const test::AskedMessage &q = win.prompter.asked.back();
        EXPECT_NE(q.text.find("1 note: run /usr/bin/logger -t kestrel"), std::string::npos) << q.text;
        EXPECT_EQ(q.buttons, Buttons::YesNoDefaultNo);
        std::ifstream agreed(win.dir / "agreed-trigger-actions.txt");
        std::string line;
        EXPECT_EQ(static_cast<bool>(std::getline(agreed, line)), answer == MsgResult::Yes);
    }
}

// The four goto actions open the tool window on their page; a recording closes it, and
// its pages come back after a restart.
TEST(MainForm, TheGotoWindowOpensOnItsPagesAndKeepsThem)
{
    Window win;
    const std::pair<const char *, int> pages[] = {{"actGotoMP", GotoPage::Mp},
                                                  {"actGotoTriggerPoint", GotoPage::TriggerPoint},
                                                  {"actDeltaTime", GotoPage::Delta},
                                                  {"actSearch", GotoPage::Search}};
    for (auto [action, page] : pages) {
        win.act(action)->trigger();
        EXPECT_TRUE(win.w->gotoForm().isVisible()) << action;
        EXPECT_EQ(win.w->gotoForm().pageIndex(), page) << action;
    }
    win.w->gotoForm().setPageIndexes(GotoPage::Search, SearchPage::Time);
    win.click("btnREC");
    EXPECT_FALSE(win.w->gotoForm().isVisible());
    win.click("btnSTOP");
    const std::string ini = CloseAndReadIni(win);
    EXPECT_NE(ini.find("ControlSearchPageIndex=3"), std::string::npos) << ini;
}

TEST(MainForm, SettingsSurviveARestart)
{
    std::string ini;
    {
        Window win;
        win.act("actLangEnglish")->trigger(); // a language switch saves at once
        win.click("btnRECreplace");
        win.click("btnSwitchPin");
        ini = CloseAndReadIni(win);
    }
    EXPECT_NE(ini.find("GlobalLang=10000"), std::string::npos) << ini;
    EXPECT_NE(ini.find("Replace=1"), std::string::npos);
    EXPECT_NE(ini.find("DefLang=1"), std::string::npos);
    EXPECT_NE(ini.find("TFormMain="), std::string::npos);
    Window again({.config = ini});
    EXPECT_EQ(GlobalLang(), kLangEnglish);
    EXPECT_TRUE(again.act("actReplace")->isChecked());
    EXPECT_EQ(again.find<QLabel>("lblLifeD1")->text(), "Tx");
    SetGlobalLang(kLangGerman);
}

TEST(MainForm, FewerThanTwoPortsWarnAtStartUp)
{
    SetPortListOverride(std::vector<std::string>{"/dev/kestrel-test-only-one"});
    Window win({.simulate = false});
    SetPortListOverride(std::nullopt);
    ASSERT_FALSE(win.prompter.asked.empty());
    EXPECT_EQ(win.prompter.asked[0].text, Str(2053));
}

// Record pressed where no recording can begin: one message with this title, and
// the window stays idle with nothing locked.
void ExpectRecordRefused(Window &win, const std::string &title)
{
    win.prompter.asked.clear();
    win.click("btnREC");
    EXPECT_FALSE(win.w->isRecording());
    ASSERT_FALSE(win.prompter.asked.empty());
    EXPECT_EQ(win.prompter.asked[0].title, title);
    EXPECT_TRUE(win.find<QToolButton>("btnSTOP")->isChecked());
    EXPECT_EQ(ModeText(win), QString::fromStdString(Str(4274)));
    EXPECT_TRUE(win.act("actStart")->isEnabled());
    EXPECT_TRUE(win.act("actOpenRecordFile")->isEnabled());
    EXPECT_TRUE(win.find<QComboBox>("cbPortBaudRate")->isEnabled());
}

TEST(MainForm, MissingDevicesOrAnUnwritableRecordFileAreReportedAndNothingStaysLocked)
{
    SetPortListOverride(std::vector<std::string>{"/dev/kestrel-test-missing-a", "/dev/kestrel-test-missing-b"});
    Window missing({.simulate = false});
    SetPortListOverride(std::nullopt);
    ExpectRecordRefused(missing, Str(2000));
    Window unwritable({.args = {"/proc/kestrel-no-such-place/x.ksr"}});
    ExpectRecordRefused(unwritable, Str(3000));
}

TEST(MainForm, DestroyingTheWindowWhileRecordingStillEndsTheRecording)
{
    Window win;
    win.click("btnREC");
    pump(60);
    const std::string file = win.w->recordFile();
    win.w.reset();
    const Marks m = readMarks(file);
    EXPECT_TRUE(m.gapFree);
    EXPECT_EQ(codes(m), (std::vector<int>{0, 6, 5}));
}

TEST(MainForm, PortsATestHandsInAreRecordedUpToTheStopMark)
{
    // The window's own path with ports it did not make: whatever they hold when Stop is
    // pressed is in the file before the stop mark.
    test::TempDir dir;
    ManualClock clock;
    SimLine line(Scenario{}, clock); // made before the window, so it outlives the window
    Window win({.args = {dir.file("hand.ksr")}, .clock = &clock, .simulate = false, .portA = &line.portA(),
                .portB = &line.portB()});
    EXPECT_EQ(win.find<QLabel>("lblPortA")->text(), "sim:A");
    win.click("btnREC");
    ASSERT_TRUE(win.w->isRecording());
    line.injectBytes(kSimPortA, {'r', 'x'});
    line.injectBytes(kSimPortB, {'t', 'x', '!'});
    win.click("btnSTOP");
    pump(20);
    const Marks m = readMarks(win.w->recordFile());
    EXPECT_EQ(m.dataBytes, 5u);
    EXPECT_EQ(codes(m), (std::vector<int>{0, 6, 5}));
    EXPECT_EQ(m.system.back().first, m.count - 1);
    EXPECT_TRUE(m.gapFree);
    EXPECT_TRUE(win.prompter.asked.empty());
}

TEST(MainForm, SavedEnvironmentCarriesThePortSettingsAndTheRecordFile)
{
    Window win;
    win.find<QComboBox>("cbPortBaudRate")->setCurrentText("38400");
    win.find<QComboBox>("cbPortParity")->setCurrentText("O");
    const std::string kef = win.file("saved.kef");
    test::PickFile(kef);
    win.act("actSaveEnvironment")->trigger();
    EXPECT_FALSE(win.w->isEnvironmentChanged());
    std::ifstream f(kef);
    const std::string text((std::istreambuf_iterator<char>(f)), {});
    EXPECT_NE(text.find("CustomBaudRate=38400"), std::string::npos) << text;
    EXPECT_NE(text.find("Parity=1"), std::string::npos) << text; // odd
    EXPECT_NE(text.find("Record data=" + win.w->recordFile()), std::string::npos) << text;
    EXPECT_NE(text.find("DevicePath=sim:A"), std::string::npos) << text;
}

TEST(MainForm, StatusBarShowsEveryFigureWhole)
{
    Window win;
    win.w->resize(1000, 760); // narrower than the first-start size: the free text gives way first
    win.w->show();
    win.click("btnREC");
    pump(200);
    win.click("btnSTOP");
    win.w->grid().scrollToEnd(); // the status line describes the last MP: long times, real counters
    pump(50);
    for (int i = 2; i <= 6; ++i) {
        const auto *panel = win.w->findChild<QLabel *>(QString("pnlStatusBarPanel%1").arg(i));
        ASSERT_NE(panel, nullptr);
        ASSERT_FALSE(panel->text().isEmpty()) << i;
        EXPECT_GE(panel->width(), panel->fontMetrics().horizontalAdvance(panel->text()))
            << "panel " << i << " cuts \"" << panel->text().toStdString() << "\"";
    }
}

TEST(MainForm, AWindowsEnvironmentPathInTheConfigurationIsFoundInTheDataFolder)
{
    Window win({.config = "[Environment]\nFilename=C:\\Programme\\Kestrel\\line.kef\n"});
    EXPECT_EQ(win.w->environmentFile(), win.dir.string() + "/line.kef");
}

TEST(MainForm, PortLightControllersFollowTheirOwnLinesWhileMonitoring)
{
    Window win;
    auto *slcA = win.find<SignalLightController>("SlcA");
    auto *slcB = win.find<SignalLightController>("SlcB");
    ASSERT_NE(slcA, nullptr);
    ASSERT_NE(slcB, nullptr);
    auto lit = [&win](const char *name) { return win.find<SignalLight>(name)->isLit(); };

    MpRecord mp;
    mp.m3 = 1; // ring on port A
    mp.s1 = 1; // DTR on port B
    slcA->follow(mp);
    EXPECT_FALSE(lit("LedM3")) << "dark while not monitoring";

    win.click("btnREC");
    EXPECT_TRUE(slcA->monitoring());
    EXPECT_TRUE(slcB->monitoring());
    mp = MpRecord{};
    mp.m3 = 1;
    mp.s1 = 1;
    mp.counts[static_cast<int>(Counter::D2)] = win.w->store().previous().count(Counter::D2) + 1;
    mp.counts[static_cast<int>(Counter::D1)] = win.w->store().previous().count(Counter::D1);
    slcA->follow(mp);
    EXPECT_TRUE(lit("LedM3"));
    EXPECT_FALSE(lit("LedS1")) << "SlcA must not drive port B's lamps";
    slcB->follow(mp);
    EXPECT_TRUE(lit("LedD2"));  // port A received
    EXPECT_TRUE(lit("LedS1"));  // now SlcB has looked
    EXPECT_FALSE(lit("LedD1")); // port B's count stood still
    EXPECT_FALSE(lit("LedM1"));
    slcA->follow(mp);
    EXPECT_FALSE(lit("LedD2")) << "the data light flashes once per change";

    win.click("btnSTOP");
    EXPECT_FALSE(slcA->monitoring());
    EXPECT_FALSE(slcB->monitoring());
    for (const char *name : {"LedD1", "LedD2", "LedS1", "LedS2", "LedM1", "LedM2", "LedM5", "LedM3"})
        EXPECT_FALSE(lit(name)) << name;
}

TEST(MainForm, FirstStartSavesTheGridsWidthsAndKeptWidthsComeBackUnchanged)
{
    auto key = [](const std::string &ini, const std::string &section, const std::string &name) {
        const std::size_t s = ini.find("[" + section + "]");
        const std::size_t k = ini.find("\n" + name + "=", s);
        return s == std::string::npos || k == std::string::npos ? std::string("?")
                                                               : ini.substr(k + name.size() + 2, ini.find('\n', k + 1) - k - name.size() - 2);
    };
    std::string ini;
    {
        Window first;
        ini = CloseAndReadIni(first);
    }
    const grid::ViewShape vertical = grid::ShapeForView(grid::kViewVertical, 1016);
    const grid::ViewShape dump = grid::ShapeForView(grid::kViewDataDump, 1016);
    EXPECT_EQ(key(ini, "DispMode1", "Column2"), std::to_string(grid::ColumnWidth(vertical, 2, 1016, 3)));
    EXPECT_EQ(key(ini, "DispMode1", "Column3"), "30"); // D1 as the grid shows it
    EXPECT_EQ(key(ini, "DispMode4", "Column18"), std::to_string(grid::ColumnWidth(dump, 18, 1016, 3)));
    EXPECT_NE(key(ini, "DispMode4", "Column18"), key(ini, "DispMode4", "Column19")); // not one width for all

    Window again({.config = "[DispMode1]\nColumn2=77\n[DispMode3]\nColumn325=5\n"});
    EXPECT_EQ(again.w->grid().ColumnWidthsOf(grid::kViewVertical, 13)[2], 77); // the grid shows the kept width
    ini = CloseAndReadIni(again);
    EXPECT_EQ(key(ini, "DispMode1", "Column2"), "77");
    EXPECT_EQ(key(ini, "DispMode3", "Column325"), "5");
    EXPECT_EQ(key(ini, "DispMode1", "Column1"), std::to_string(grid::ColumnWidth(vertical, 1, 1016, 3)));
}

namespace {

// Keeps a broken build from hanging the test run: rejects every dialog still open after 5 s.
struct HangGuard {
    QObject owner;
    bool rescued = false;
    HangGuard()
    {
        QTimer::singleShot(5000, &owner, [this] {
            for (QWidget *top : QApplication::topLevelWidgets())
                if (auto *d = qobject_cast<QDialog *>(top); d != nullptr && d->isVisible()) {
                    rescued = true;
                    d->reject();
                }
        });
    }
};

// The window's own message boxes that wait for an answer.
std::vector<TMessageForm *> waitingBoxes(TFormMain &w)
{
    std::vector<TMessageForm *> out;
    for (TMessageForm *f : w.findChildren<TMessageForm *>())
        if (f->isWaiting() && f->isVisible())
            out.push_back(f);
    return out;
}

} // namespace

TEST(MainForm, EndingWhileAStartUpErrorWaitsClosesTheWindow)
{
    // SIGTERM (quitCleanly) while the program's own message box reports a record
    // file it cannot open: the box is answered, start-up finishes, the window closes.
    // At 0 ms the end comes earlier, inside a start-up step, before the box is asked.
    for (const int afterMs : {0, 100}) {
        SCOPED_TRACE(afterMs);
        test::TempDir dir;
        std::filesystem::create_directories(dir.path() / "x.ksr"); // a folder, not a file
        HangGuard guard;
        Window win({.args = {"--record", dir.file("x.ksr")}, .ownBoxes = true});
        win.w->show();
        QTimer::singleShot(afterMs, win.w.get(), [&win] { win.w->quitCleanly(); });
        pump(600);
        EXPECT_FALSE(guard.rescued);
        EXPECT_FALSE(win.w->isVisible());
        EXPECT_FALSE(win.w->isRecording());
    }
}

TEST(MainForm, QuitAfterEndsEvenWhileTheFewPortsWarningWaits)
{
    // The start-up warning about fewer than two ports waits in the window's own box
    // while the window is still being made; --quit-after must still end the program
    // (a demo under Xvfb has nobody to press OK).
    SetPortListOverride(std::vector<std::string>{"/dev/kestrel-test-only-one"});
    HangGuard guard;
    Window win({.args = {"--quit-after", "0.3"}, .simulate = false, .ownBoxes = true});
    SetPortListOverride(std::nullopt);
    win.w->show();
    pump(500);
    EXPECT_FALSE(guard.rescued);
    EXPECT_FALSE(win.w->isVisible());
}

TEST(MainForm, AnOpenQuestionBlocksEveryKeyAndTheCloseNeverEndsARecording)
{
    // Ctrl+Q's question waits; F5 behind it must not start a recording, and "Yes" then
    // closes a window that records nothing.
    Window win({.ownBoxes = true});
    TFormMain &w = *win.w;
    w.show();
    pump(300);
    ASSERT_TRUE(waitingBoxes(w).empty());
    bool asked = false, recordedBehind = true, modal = false;
    QTimer::singleShot(50, &w, [&] {
        const auto boxes = waitingBoxes(w);
        asked = boxes.size() == 1;
        modal = QApplication::activeModalWidget() == boxes.front();
        QApplication::setActiveWindow(&w); // the user clicks the main window behind the box
        QTest::keyClick(w.windowHandle(), Qt::Key_F5);
        QTest::keyClick(w.windowHandle(), Qt::Key_F5, Qt::NoModifier); // twice: a press is a press
        QCoreApplication::processEvents();
        recordedBehind = w.isRecording() || w.recorder().loaded();
        boxes.front()->findChild<QPushButton *>("btn1")->click(); // "Yes"
    });
    HangGuard guard;
    w.actions().action("actExit")->trigger(); // Ctrl+Q
    pump(100);
    EXPECT_TRUE(asked);
    EXPECT_TRUE(modal);
    EXPECT_FALSE(recordedBehind);
    EXPECT_FALSE(w.isVisible());

    // Without the box in the way, the same key does record: the test above can fail.
    Window unblocked({.ownBoxes = true});
    unblocked.w->show();
    pump(300);
    QApplication::setActiveWindow(unblocked.w.get());
    QTest::keyClick(unblocked.w->windowHandle(), Qt::Key_F5);
    pump(50);
    EXPECT_TRUE(unblocked.w->isRecording());
    unblocked.w->quitCleanly();
}

TEST(MainForm, AFileThatIsNoRecordingIsSaidSoOnceAndNeverWrittenWithoutAsking)
{
    Window win;
    const std::string junk = (win.dir / "recordings" / "random.ksr").string();
    std::string bytes(1000, '\0');
    unsigned x = 12345;
    for (char &c : bytes)
        c = static_cast<char>((x = x * 1103515245u + 12345u) >> 16);
    std::ofstream(junk, std::ios::binary) << bytes;
    win.prompter.asked.clear();
    win.w->session().file().setPath(junk);
    win.w->ShowChangedRecordFile();
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_NE(win.prompter.asked[0].text.find("random.ksr"), std::string::npos);
    EXPECT_NE(win.prompter.asked[0].text.find(Str(7106)), std::string::npos) << win.prompter.asked[0].text;

    // Record asks before it replaces it (No is the default); "No" keeps every byte.
    win.prompter.asked.clear();
    win.prompter.answerNext(MsgResult::No);
    win.click("btnREC");
    EXPECT_FALSE(win.w->isRecording());
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_EQ(win.prompter.asked[0].buttons, Buttons::YesNoDefaultNo);
    std::ifstream in(junk, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), bytes);
}

TEST(MainForm, ErrorsCarryTheSystemsReasonAndNoPortsExplainsWhatToDo)
{
    Window win;
    const std::string folder = (win.dir / "recordings" / "folder.ksr").string();
    std::filesystem::create_directories(folder);
    win.prompter.asked.clear();
    win.w->session().file().setPath(folder);
    win.w->ShowChangedRecordFile();
    ASSERT_EQ(win.prompter.asked.size(), 1u);
    EXPECT_NE(win.prompter.asked[0].text.find(std::strerror(EISDIR)), std::string::npos) << win.prompter.asked[0].text;

    SetPortListOverride(std::vector<std::string>{});
    Window none({.simulate = false});
    SetPortListOverride(std::nullopt);
    none.prompter.asked.clear();
    none.click("btnREC");
    EXPECT_FALSE(none.w->isRecording());
    ASSERT_EQ(none.prompter.asked.size(), 1u);
    EXPECT_EQ(none.prompter.asked[0].text, Str(7111));
}

TEST(MainForm, TheScenarioWarningOfAFirstStartComesInTheProgramsLanguage)
{
    // No configuration yet: the first start takes English (the installer's hint), and the
    // warning about an unreadable scenario must come in it, not in the language before.
    SetGlobalLang(kLangGerman);
    Window win({.args = {"/no/such/scenario.ksc"}});
    ASSERT_FALSE(win.prompter.asked.empty());
    EXPECT_EQ(GlobalLang(), kLangEnglish);
    EXPECT_EQ(win.prompter.asked[0].text.rfind(StrIn(7653, kLangEnglish), 0), 0u) << win.prompter.asked[0].text;
}

TEST(MainForm, WithTheDisplayHeldARunningRecordingCanBeLookedBackOver)
{
    Window win;
    win.w->show();
    win.click("btnREC");
    grid::RecordGrid &grid = win.w->grid();
    QElapsedTimer t;
    t.start();
    while (grid.recordCount() < 3 * grid.largeChange() && t.elapsed() < 10000)
        pump(50);
    ASSERT_GE(grid.recordCount(), 3 * grid.largeChange()) << "the simulated line recorded too little";

    // Following the end: Home is ignored and the scroll bar is locked.
    QTest::keyClick(&grid, Qt::Key_Home);
    EXPECT_TRUE(grid.followEnd());
    EXPECT_GT(grid.position(), 0);
    EXPECT_FALSE(grid.verticalScrollBar()->isEnabled());

    // Held: keys, wheel and scroll bar look back while the recording goes on.
    win.click("btnViewHold");
    EXPECT_TRUE(grid.verticalScrollBar()->isEnabled());
    QTest::keyClick(&grid, Qt::Key_Home);
    EXPECT_FALSE(grid.followEnd());
    EXPECT_EQ(grid.position(), 0);
    for (int i = 0; i < 3; ++i) // the first may only move the cursor to the page's last row
        QTest::keyClick(&grid, Qt::Key_PageDown);
    const std::int64_t lookedAt = grid.position();
    EXPECT_GT(lookedAt, 0);
    const std::int64_t countBefore = grid.recordCount();
    pump(400);
    EXPECT_TRUE(win.w->isRecording());
    EXPECT_EQ(grid.position(), lookedAt); // stays where the user looks
    EXPECT_TRUE(win.find<QLabel>("pnlStatusBarPanel1")->text().contains("||")); // the hold bar grows

    // Released: back to the newest MPs.
    win.click("btnViewHold");
    EXPECT_TRUE(grid.followEnd());
    EXPECT_FALSE(grid.verticalScrollBar()->isEnabled());
    EXPECT_FALSE(win.find<QLabel>("pnlStatusBarPanel1")->text().contains("||")); // and goes with the hold
    EXPECT_GE(grid.recordCount(), countBefore);
    EXPECT_GT(grid.position(), lookedAt);
    win.click("btnSTOP");
    EXPECT_TRUE(grid.verticalScrollBar()->isEnabled());
}

TEST(MainForm, AtTenTwentyFourBySevenSixtyEightNothingIsOutsideTheWindow)
{
    // 1024 x 768 leaves the window about 1024 x 740 beside the desktop's bars.
    for (const int lang : {kLangEnglish, kLangGerman}) {
        SetGlobalLang(lang);
        Window win;
        win.act(lang == kLangEnglish ? "actLangEnglish" : "actLangGerman")->trigger();
        win.w->resize(1024, 740);
        win.w->show();
        pump(50);
        EXPECT_LE(win.w->minimumSizeHint().width(), 1024) << "language " << lang;

        EXPECT_LE(win.w->width(), 1024) << "language " << lang;
        EXPECT_LE(win.w->height(), 740) << "language " << lang;
        // Squeezed to its minimum, no status panel lies over another and no recorder button
        // loses part of its caption.
        win.w->resize(win.w->minimumSizeHint().width(), 740);
        pump(20);
        std::vector<QRect> panels;
        for (int i = 1; i <= 6; ++i) {
            auto *p = win.find<QLabel>(QString("pnlStatusBarPanel%1").arg(i).toLatin1().constData());
            panels.emplace_back(p->mapTo(win.w.get(), QPoint(0, 0)), p->size());
        }
        for (std::size_t i = 0; i + 1 < panels.size(); ++i)
            EXPECT_FALSE(panels[i].intersects(panels[i + 1])) << "status panels " << i + 1 << " and " << i + 2;
        for (const char *name : {"btnREC", "btnPAUSE", "btnSTOP", "btnRECappend", "btnRECreplace", "btnViewHold"}) {
            auto *b = win.find<QToolButton>(name);
            EXPECT_GE(b->width(), b->sizeHint().width()) << name << ", language " << lang;
        }
        win.w->resize(1024, 740);
        pump(20);
        const QRect inside = win.w->rect();
        for (QWidget *child : win.w->findChildren<QWidget *>()) {
            if (!child->isVisible() || child->isWindow())
                continue;
            const QRect r(child->mapTo(win.w.get(), QPoint(0, 0)), child->size());
            EXPECT_TRUE(inside.contains(r)) << child->objectName().toStdString() << " of class "
                                            << child->metaObject()->className() << " at " << r.x() << "," << r.y()
                                            << " " << r.width() << "x" << r.height() << ", language " << lang;
        }
    }
    SetGlobalLang(kLangGerman);
}

TEST(MainForm, AScenarioThatSetsItsLineRateRecordsAtItAndShowsIt)
{
    // The recorder must not run slower than the simulated line (its stamps would be
    // compressed): the scenario's rate becomes the port setting, shown in the window.
    test::TempDir scenarioDir;
    const std::string scenario = scenarioDir.file("fast.ksc");
    std::ofstream(scenario) << "baud 115200\nb \"AT\\r\"\n";
    Window win({.args = {scenario}});
    EXPECT_EQ(win.find<QComboBox>("cbPortBaudRate")->currentText(), "115200");
    EXPECT_EQ(win.w->session().port(PortTag::A).settings().baud, 115200);
}

TEST(MainForm, TheFontSizeSettingScalesTheGridAndIsKept)
{
    test::TempDir dir;
    {
        Window win({.folder = dir.path()});
        win.w->resize(1024, 740);
        win.w->show();
        pump(100);
        grid::RecordGrid &g = win.w->grid();
        const int font = g.textFont().pixelSize();
        const std::int64_t rowsAt100 = g.largeChange();
        for (int i = 0; i < 5; ++i)
            win.act("actZoomIn")->trigger();
        EXPECT_EQ(g.zoom(), 150);
        EXPECT_GT(g.textFont().pixelSize(), font);
        EXPECT_EQ(g.CellRect(0, 1).height(), 24); // 16 px rows at 150 %
        EXPECT_LT(g.largeChange(), rowsAt100);   // fewer, larger rows on the same page
        EXPECT_EQ(g.CellRect(2, 1).width(), 225); // the time column grows with the text
        win.act("actZoomOut")->trigger();
        EXPECT_EQ(g.zoom(), 140);
        win.w->quitCleanly();
    }
    EXPECT_NE(test::ReadWholeFile(dir.file("Kestrel.ini")).find("FontSizePercent=140"), std::string::npos);

    Window again({.folder = dir.path()});
    again.w->show();
    pump(100);
    EXPECT_EQ(again.w->grid().zoom(), 140);
    again.act("actZoomReset")->trigger();
    EXPECT_EQ(again.w->grid().zoom(), 100);
    EXPECT_EQ(again.w->grid().CellRect(0, 1).height(), 16);
}
