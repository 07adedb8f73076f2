// The window side of the recorder: the controls locked while recording, the
// combos, the lights on LEDToggleTimer, view hold, and the action wiring.

#include <QAction>
#include <QApplication>
#include <QActionGroup>
#include <QComboBox>
#include <QLabel>
#include <QScrollBar>
#include <QTimer>
#include <QToolButton>

#include "app/action_registry.h"
#include "app/help_request.h"
#include "app/main_form.h"
#include "app/signal_light.h"
#include "app/signal_light_controller.h"
#include "app/line_gauge.h"
#include "record/record_store.h"
#include "present/grid/grid_texts.h"
#include "present/grid/record_grid.h"
#include "base/string_table.h"

namespace kestrel {

void TFormMain::connectActions()
{
    auto on = [this](const char *name, auto slot) {
        connect(ActionManager1->action(QString::fromLatin1(name)), &QAction::triggered, this, slot);
    };
    on("actStart", &TFormMain::btnRecordClick);
    on("actPause", &TFormMain::btnPauseClick);
    on("actStop", &TFormMain::btnStopClick);
    on("actAppend", &TFormMain::btnRecAppendClick);
    on("actReplace", &TFormMain::btnRecReplaceClick);
    on("actFreezeDisplay", &TFormMain::btnViewHoldClick);
    on("actShowCCITTV24Pin", &TFormMain::btnSwitchPinClick);
    // The font size setting: larger, smaller, back to 100 %. Ctrl+= is Ctrl++ without Shift.
    connect(ActionManager1->action("actZoomIn"), &QAction::triggered, this,
            [this] { DrawGrid1->setZoom(grid::ZoomStep(DrawGrid1->zoom(), +1)); });
    connect(ActionManager1->action("actZoomOut"), &QAction::triggered, this,
            [this] { DrawGrid1->setZoom(grid::ZoomStep(DrawGrid1->zoom(), -1)); });
    connect(ActionManager1->action("actZoomReset"), &QAction::triggered, this, [this] { DrawGrid1->setZoom(100); });
    ActionManager1->action("actZoomIn")->setShortcuts({QKeySequence(QStringLiteral("Ctrl++")),
                                                       QKeySequence(QStringLiteral("Ctrl+="))});
    connectGrid();
    connectGotoForm();
    on("actLangGerman", &TFormMain::actLangGermanExecute);
    on("actLangEnglish", &TFormMain::actLangEnglishExecute);
    on("actAbout", &TFormMain::actAboutExecute);
    on("actWebSupport", &TFormMain::actWebSupportExecute);
    on("actWebUpdate", &TFormMain::actWebUpdateExecute);
    // The manual at the page of what has the focus: the trigger panel has one of its own, and
    // so has each tool window, which shares this action's F1 with the main window.
    connect(ActionManager1->action("actHelp"), &QAction::triggered, this, [this] {
        QWidget *focus = QApplication::focusWidget();
        ShowHelpFor(focus != nullptr ? focus : this);
    });
    on("actOptions", &TFormMain::actOptionsExecute);
    on("actPortOptions", &TFormMain::actPortOptionsExecute);
    on("actNewRecordFile", &TFormMain::btnNewRecordFileClick);
    on("actOpenRecordFile", &TFormMain::btnOpenRecordFileClick);
    on("actSaveRecordFile", &TFormMain::btnSaveRecordFileClick);
    on("actLoadEnvironment", &TFormMain::LoadEnvDialog);
    on("actSaveEnvironment", &TFormMain::SaveEnvDialog);
    on("actEnvConfig", &TFormMain::btnEnvConfClick);
    connect(ActionManager1->action("actExit"), &QAction::triggered, this, &QWidget::close);
    // The record and stop buttons are two-state buttons of their own; they run the actions.
    connect(btnREC, &QToolButton::clicked, this, [this] {
        btnREC->setChecked(isRecording() || isPaused());
        ActionManager1->action("actStart")->trigger();
    });
    connect(btnSTOP, &QToolButton::clicked, this, [this] {
        btnSTOP->setChecked(!(isRecording() || isPaused()));
        ActionManager1->action("actStop")->trigger();
    });
    btnSTOP->setChecked(true);

    // Defaults of the mode groups: vertical view, ASCII, no overlay, absolute time, all grid lines.
    ActionManager1->action("actViewVertical")->setChecked(true);
    ActionManager1->action("actCharAscii")->setChecked(true);
    ActionManager1->action("actTimeAbsolute")->setChecked(true);
    ActionManager1->action("actShowAllGridLines")->setChecked(true);
    ActionManager1->action("actAppend")->setChecked(true);

    // While recording these would disturb the recording or the file it writes.
    for (const char *name :
         {"actTrigInsert", "actTrigRemove", "actTrigEdit", "actTrigMoveUp", "actTrigMoveDown", "actResetGrid", "actTrigGridReset",
          "actTrigEnableAll", "actTrigDisableAll", "actTrigReverseAll", "actTrigMarkAll", "actTrigMarkNone",
          "actTrigMarkReverse", "actNewRecordFile", "actOpenRecordFile", "actSaveRecordFile", "actExportToFile",
          "actPrintReport", "actExit", "actGotoMP", "actGotoTriggerPoint", "actSearch", "actDeltaTime",
          "actLoadEnvironment", "actSaveEnvironment", "actEnvConfig", "actLangGerman", "actLangEnglish", "actHelp",
          "actWebUpdate", "actWebSupport", "actOptions", "actPortOptions", "actScrollTop", "actScrollEnd",
          "actAppend", "actReplace"})
        recordLock_.add(ActionManager1->action(QString::fromLatin1(name)));
    recordLock_.add(pnlCCTrigPanel);
}

void TFormMain::lockScrollBarWhileFollowing()
{
    // While recording the grid follows the newest MP; with the display held the scroll
    // bar looks back over what is recorded so far.
    DrawGrid1->verticalScrollBar()->setEnabled(!recordLock_.isLocked() || viewHold_);
}

void TFormMain::connectGrid()
{
    grid::RecordGrid *g = DrawGrid1;
    auto on = [this](const char *name, auto slot) {
        connect(ActionManager1->action(QString::fromLatin1(name)), &QAction::triggered, this, slot);
    };
    on("actViewVertical", [g] { g->selectView(grid::kViewVertical); });
    on("actViewDataOnly", [g] { g->selectView(grid::kViewDataOnly); });
    on("actViewDataDump", [g] { g->selectView(grid::kViewDataDump); });
    on("actViewHorizontal", [this, g] {
        g->selectView(grid::kViewHorizontal); // does not exist: a box, and the previous view stays
        syncModeButtons();
    });
    const std::pair<const char *, int> charModes[] = {{"actCharAscii", 1}, {"actCharEbcdic", 2}, {"actCharHex", 3},
                                                      {"actCharDec", 4},   {"actCharOct", 5},    {"actCharBin", 6}};
    for (auto [name, mode] : charModes)
        on(name, [g, mode = mode] { g->setCharMode(mode); });
    on("actCharCtl", [g](bool down) { g->setCaretOverlay(down); });
    on("actCharCmd", [g](bool down) { g->setMnemonicOverlay(down); });
    on("actChar01FReset", [this, g] {
        ActionManager1->action("actCharCtl")->setChecked(false);
        ActionManager1->action("actCharCmd")->setChecked(false);
        g->clearOverlay();
    });
    on("actTimeAbsolute", [g] { g->setTimeAbsolute(); });
    on("actTimeRelative", [g](bool down) { g->setTimeRelative(down); });
    on("actTimeDelta", [g](bool down) { g->setTimeDelta(down); });
    on("actShowAllGridLines", [g] { g->setGridLines(grid::GridLines::All); });
    on("actShowHorizontalGridLines", [g] { g->setGridLines(grid::GridLines::Horizontal); });
    on("actShowVerticalGridLines", [g] { g->setGridLines(grid::GridLines::Vertical); });
    on("actShowNoGridLines", [g] { g->setGridLines(grid::GridLines::None); });
    on("actScrollTop", [g] { g->scrollToTop(); });
    on("actScrollEnd", [g] { g->scrollToEnd(); });
    on("actResetGrid", [g] { g->resetView(); });
    on("actShowCCITTV24Pin", [g] { g->toggleNaming(); });
    connect(g, &grid::RecordGrid::viewUnavailable, this, [this] {
        prompter_->ShowMessage(Str(grid::txt::kHorizontalTitle), Str(grid::txt::kHorizontalText), Buttons::Ok,
                               Icon::Information);
    });

    connect(g, &grid::RecordGrid::statusLineChanged, this, [this](const QStringList &panels) {
        for (int i = 0; i < 4; ++i)
            fitStatusPanel(statusPanels_[i + 1], i < panels.size() ? panels[i] : QString());
    });
    connect(g, &grid::RecordGrid::progressTextChanged, statusPanels_[0], &QLabel::setText);
    connect(g, &grid::RecordGrid::gaugeChanged, this, [this](int gauge, int percent) {
        LineGauge *gauges[3] = {showLineLoadActual, showLineLoadPeek, showLineQuality};
        if (gauge >= 0 && gauge < 3)
            gauges[gauge]->setValue(percent);
    });
    connect(g, &grid::RecordGrid::overlayButtonsChanged, this, [this](bool caret, bool mnemonic) {
        ActionManager1->action("actCharCtl")->setEnabled(caret);
        ActionManager1->action("actCharCmd")->setEnabled(mnemonic);
    });
    connect(g, &grid::RecordGrid::viewChanged, this, [this](int) { syncModeButtons(); });
}

void TFormMain::syncModeButtons()
{
    // The buttons show what the grid holds (a view switch restores that view's character modes).
    const grid::GridModes &m = DrawGrid1->modes();
    const char *views[] = {nullptr, "actViewVertical", nullptr, "actViewDataOnly", "actViewDataDump"};
    if (m.view() >= 1 && m.view() <= 4 && views[m.view()] != nullptr)
        ActionManager1->action(views[m.view()])->setChecked(true);
    const char *chars[] = {nullptr, "actCharAscii", "actCharEbcdic", "actCharHex", "actCharDec", "actCharOct", "actCharBin"};
    const int mode = m.view() == 4 && m.secondaryMode() >= 3 ? m.secondaryMode() : m.charMode();
    if (mode >= 1 && mode <= 6)
        ActionManager1->action(chars[mode])->setChecked(true);
    ActionManager1->action("actCharCtl")->setChecked(m.overlay() == 7);
    ActionManager1->action("actCharCmd")->setChecked(m.overlay() == 8);
    const char *times[] = {"actTimeAbsolute", "actTimeRelative", "actTimeDelta"};
    if (m.timeMode() >= 0 && m.timeMode() <= 2)
        ActionManager1->action(times[m.timeMode()])->setChecked(true);
}

void TFormMain::DisableCtrlsBeforeRec()
{
    recordLock_.lock();
    ActionManager1->action("actStart")->setEnabled(false);
    ActionManager1->action("actStop")->setEnabled(true);
    ActionManager1->action("actPause")->setEnabled(true);
    lockScrollBarWhileFollowing();
}

void TFormMain::EnableCtrlsAfterRec()
{
    recordLock_.unlock();
    lockScrollBarWhileFollowing();
    ActionManager1->action("actStart")->setEnabled(true);
    ActionManager1->action("actStop")->setEnabled(false);
    ActionManager1->action("actPause")->setEnabled(true);
    // The mode controls come back in any case, whatever a failed start left behind.
    for (const char *group : {"view", "charMode", "overlay", "time", "gridLines", "recordMode"})
        ActionManager1->group(QString::fromLatin1(group))->setEnabled(true);
}

void TFormMain::EnableComSetup()
{
    for (QComboBox *c : {cbPortBaudRate, cbPortDataBits, cbPortParity, cbPortStopBits})
        c->setEnabled(true);
}

void TFormMain::DisableComSetup()
{
    for (QComboBox *c : {cbPortBaudRate, cbPortDataBits, cbPortParity, cbPortStopBits})
        c->setEnabled(false);
}

void TFormMain::btnRecAppendClick()
{
    // Exclusive with replace; both may be up, then the start asks.
    ActionManager1->action("actReplace")->setChecked(false);
}

void TFormMain::btnRecReplaceClick() { ActionManager1->action("actAppend")->setChecked(false); }

void TFormMain::btnViewHoldClick()
{
    viewHold_ = !viewHold_;
    QAction *a = ActionManager1->action("actFreezeDisplay");
    a->setChecked(viewHold_);
    DrawGrid1->SetHold(viewHold_);
    lockScrollBarWhileFollowing();
    if (viewHold_) {
        LEDToggleTimer->start();
    } else {
        apdLEDViewHold->setLit(false);
    }
}

void TFormMain::LineLightsTimer()
{
    SlcA->follow(store().previous());
    SlcB->follow(store().previous());
}

void TFormMain::LEDToggleTimerTimer()
{
    const bool recording = isRecording();
    if (viewHold_)
        apdLEDViewHold->toggle();
    else
        apdLEDViewHold->setLit(false);
    if (recording) {
        apdLEDRecorder->toggle();
        updateSizeLabel(); // the header shows the file growing, not its size at the start
    }
    else
        apdLEDRecorder->setLit(false);
    if (!viewHold_ && !recording) {
        apdLEDViewHold->setLit(false);
        apdLEDRecorder->setLit(false);
        LEDToggleTimer->stop();
    }
}

} // namespace kestrel
