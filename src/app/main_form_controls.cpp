// The window side of the recorder: the controls locked while recording, the
// combos, the lights on LEDToggleTimer, view hold, and the action wiring.

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QLabel>
#include <QTimer>
#include <QToolButton>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "app/signal_light.h"
#include "app/line_gauge.h"
#include "capture/record_store.h"
#include "resources/string_table.h"

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
    on("actLangGerman", &TFormMain::actLangGermanExecute);
    on("actLangEnglish", &TFormMain::actLangEnglishExecute);
    on("actAbout", &TFormMain::actAboutExecute);
    on("actNewRecordFile", &TFormMain::btnNewRecordFileClick);
    on("actOpenRecordFile", &TFormMain::btnOpenRecordFileClick);
    on("actSaveRecordFile", &TFormMain::btnSaveRecordFileClick);
    on("actLoadEnvironment", &TFormMain::LoadEnvDialog);
    on("actSaveEnvironment", &TFormMain::SaveEnvDialog);
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
         {"actTrigInsert", "actTrigRemove", "actTrigEdit", "actTrigMoveUp", "actTrigMoveDown", "actResetGrid",
          "actTrigEnableAll", "actTrigDisableAll", "actTrigReverseAll", "actTrigMarkAll", "actTrigMarkNone",
          "actTrigMarkReverse", "actNewRecordFile", "actOpenRecordFile", "actSaveRecordFile", "actExportToFile",
          "actPrintReport", "actExit", "actGotoMP", "actGotoTriggerPoint", "actSearch", "actDeltaTime",
          "actLoadEnvironment", "actSaveEnvironment", "actEnvConfig", "actLangGerman", "actLangEnglish", "actHelp",
          "actWebUpdate", "actWebSupport", "actOptions", "actPortOptions", "actScrollTop", "actScrollEnd",
          "actAppend", "actReplace"})
        recordLock_.add(ActionManager1->action(QString::fromLatin1(name)));
    recordLock_.add(pnlCCTrigPanel);
}

void TFormMain::DisableCtrlsBeforeRec()
{
    recordLock_.lock();
    ActionManager1->action("actStart")->setEnabled(false);
    ActionManager1->action("actStop")->setEnabled(true);
    ActionManager1->action("actPause")->setEnabled(true);
}

void TFormMain::EnableCtrlsAfterRec()
{
    recordLock_.unlock();
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
    if (viewHold_) {
        LEDToggleTimer->start();
    } else {
        apdLEDViewHold->setLit(false);
    }
}

void TFormMain::LineLightsTimer()
{
    // SlcA / SlcB: the lights follow the newest MP; a data light flashes when its count moved.
    if (!lightsMonitoring_ || !store_)
        return;
    const MpRecord &mp = store_->previous();
    const std::uint64_t d1 = mp.count(Counter::D1), d2 = mp.count(Counter::D2);
    lineLights_[0]->setLit(d1 != lastD1Count_);
    lineLights_[1]->setLit(d2 != lastD2Count_);
    lastD1Count_ = d1;
    lastD2Count_ = d2;
    const std::uint8_t levels[6] = {mp.s1, mp.s2, mp.m1, mp.m2, mp.m5, mp.m3};
    for (int i = 0; i < 6; ++i)
        lineLights_[2 + i]->setLit(levels[i] != 0);
    showLineLoadActual->setValue(mp.loadActual);
    showLineLoadPeek->setValue(mp.loadPeak);
    showLineQuality->setValue(mp.quality);
}

void TFormMain::LEDToggleTimerTimer()
{
    const bool recording = isRecording();
    if (viewHold_)
        apdLEDViewHold->toggle();
    else
        apdLEDViewHold->setLit(false);
    if (recording)
        apdLEDRecorder->toggle();
    else
        apdLEDRecorder->setLit(false);
    if (!viewHold_ && !recording) {
        apdLEDViewHold->setLit(false);
        apdLEDRecorder->setLit(false);
        LEDToggleTimer->stop();
    }
}

} // namespace kestrel
