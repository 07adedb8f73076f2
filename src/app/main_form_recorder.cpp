// The window's side of the recording session: the record, pause and stop
// buttons drive it; the recorder tells the window what to show through
// RecorderView and reports failures through the window's message box.

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QTimer>
#include <QToolButton>
#include <filesystem>

#include "app/action_registry.h"
#include "app/confirm_record_mode_form.h"
#include "app/elided_label.h"
#include "app/export_form.h"
#include "app/report_form.h"
#include "app/line_gauge.h"
#include "app/main_form.h"
#include "app/goto_form.h"
#include "app/trigger_panel.h"
#include "app/signal_light.h"
#include "app/signal_light_controller.h"
#include "base/reporter.h"
#include "capture/recorder.h"
#include "capture/recording_session.h"
#include "ports/port_scan.h"
#include "ports/sim_port.h"
#include "record/record_paths.h"
#include "record/recording_check.h"
#include "record/record_store.h"
#include "present/grid/record_grid.h"
#include "present/grid/store_live_source.h"
#include "base/string_table.h"

namespace kestrel {

void TFormMain::createSession(const MainFormOptions &options)
{
    reporter_ = std::make_unique<PromptReporter>(*prompter_);
    if (options.portA != nullptr && options.portB != nullptr) {
        session_ = RecordingSession::OverPorts(*options.portA, *options.portB,
                                               {options.portA->device(), options.portB->device()}, *reporter_,
                                               options.clock);
        session_->capture().setStoredIndexes(0, 1);
    } else if (args_.simulate) {
        ScenarioChoice chosen = ScenarioOrDemo(args_.scenario);
        scenarioWarning_ = chosen.warning; // shown once the program's language is known
        scenarioBaud_ = chosen.scenario.baud;
        session_ = RecordingSession::Simulated(std::move(chosen.scenario), *reporter_, options.clock);
        // The line runs whether we listen or not, as a real line would.
        session_->simLine()->start(2);
    } else {
        session_ = RecordingSession::Serial(AvailablePorts(), *reporter_, options.clock);
    }
    liveSource_ = std::make_unique<grid::StoreLiveSource>(session_->store(), session_->receiveEvent());
    Recorder &recorder = session_->recorder();
    recorder.setView(this);
    recorder.setDataDir(dataFolder_);
    recorder.setForeignFileQuestion([this](const std::string &path, const RecordingCheck &found) {
        const QString text = QString::fromStdString(Str(7104))
                                 .arg(QString::fromStdString(path), QString::fromStdString(NotRecordingText(found)));
        return prompter_->ShowMessage(Str(3000), text.toStdString(), Buttons::YesNoDefaultNo, Icon::Warning) ==
               MsgResult::Yes;
    });
    if (options.skipUnloadDelay)
        recorder.setDelay([](std::chrono::milliseconds) {});
    createTriggerEngine();
}

void TFormMain::reportPortResults(const std::vector<Result> &results)
{
    for (const Result &r : results)
        ReportCaptureResult(*reporter_, r);
}

const std::string &TFormMain::recordFile() const { return session_->file().path(); }
RecordStore &TFormMain::store() const { return session_->store(); }
Recorder &TFormMain::recorder() const { return session_->recorder(); }

bool TFormMain::isRecording() const { return session_ && session_->recording(); }
bool TFormMain::isPaused() const { return session_ && session_->paused(); }

int TFormMain::chooseRecordMode()
{
    QAction *append = ActionManager1->action("actAppend");
    QAction *replace = ActionManager1->action("actReplace");
    if (append->isChecked())
        return RecordMode::Append;
    if (replace->isChecked())
        return RecordMode::Replace;
    // Neither button is down: ask, but only when there is a recording to keep or lose.
    // The recorder creates a missing file, replaces an empty one, and asks itself
    // before it replaces a file that is not a recording.
    RecordReader reader;
    if (!reader.open(ResolveRecordPath(recordFile(), dataFolder_).path) ||
        !CheckRecording(reader, CheckDepth::Writable).isRecording())
        return RecordMode::None;
    return confirmRecordMode_->ask();
}

void TFormMain::btnRecordClick()
{
    if (isRecording() || session_->loaded())
        return;
    if (session_->portList().empty()) { // nothing to record from: say what would help
        prompter_->ShowMessage(Str(2000), Str(7111), Buttons::Ok, Icon::Information);
        return;
    }
    session_->recorder().setAppendReplace(chooseRecordMode());
    session_->record();
}

void TFormMain::btnPauseClick() { session_->togglePause(); }

void TFormMain::btnStopClick()
{
    if (!session_->loaded() && !isRecording() && !isPaused()) {
        setRecordButtons(false);
        return;
    }
    session_->stop();
}

void TFormMain::btnSaveRecordFileClick()
{
    const QString target = QFileDialog::getSaveFileName(this, QString::fromStdString(Str(7534)).remove('&'),
                                                        QString::fromStdString(dataFolder_ + "recordings"),
                                                        QString::fromStdString(Str(7654)));
    if (target.isEmpty())
        return;
    const CopyResult r = SaveRecordFileAs(recordFile(), target.toStdString());
    if (!r.ok)
        prompter_->ShowMessage(Str(3000), r.error + "\n\n" + target.toStdString(), Buttons::Ok, Icon::Error);
}

// ---- RecorderView ------------------------------------------------------------

void TFormMain::SetRecordOnControls()
{
    TrigPanel->clearRecognised(); // what fires in this recording
    FormExport->close();          // tool windows close when a recording starts
    FormReport->close();
    if (FormGoto != nullptr)
        FormGoto->close(); // its searches read the file the recording writes
    TrigPanel->setRecording(true);
    DisableComSetup();
    DisableCtrlsBeforeRec();
}

void TFormMain::SetRecordOffControls()
{
    statusPanels_[0]->setText(QString::fromStdString(Str(7651))); // the pending data are read
    EnableComSetup();
    EnableCtrlsAfterRec();
    TrigPanel->setRecording(false);
}

void TFormMain::setModeText(const std::string &text)
{
    statusPanels_[5]->setProperty("textNo", isRecording() || session_->loaded() ? 4273 : 4274);
    statusPanels_[5]->setText(QString::fromStdString(text));
}

void TFormMain::setStatusText(const std::string &text) { statusPanels_[0]->setText(QString::fromStdString(text)); }

void TFormMain::setRecordButtons(bool recordDown)
{
    btnREC->setChecked(recordDown);
    btnSTOP->setChecked(!recordDown);
}

void TFormMain::setPauseButton(bool down)
{
    ActionManager1->action("actPause")->setChecked(down);
    if (!down)
        statusPanels_[0]->clear();
}

void TFormMain::setLightsMonitoring(bool on)
{
    SlcA->setMonitoring(on, store().previous());
    SlcB->setMonitoring(on, store().previous());
    if (on)
        lineLightTimer_->start();
    else
        lineLightTimer_->stop();
}

void TFormMain::startBlinkTimer() { LEDToggleTimer->start(); }

void TFormMain::updateSizeLabel()
{
    const RecordFile &file = session_->file();
    lblRecordFileSize->setFullText(QString::fromStdString(RecordSizeLabel(file.path(), file.fileSize())));
}

void TFormMain::refreshSizeLabel(const std::string &label)
{
    lblRecordFileSize->setFullText(QString::fromStdString(label));
}

void TFormMain::resetViewToStart() { DrawGrid1->GotoMp(0); }
void TFormMain::clearGrid() { DrawGrid1->ClearGrid(); }

void TFormMain::redrawGrid()
{
    // After a recording the file has grown (or was made anew): read it afresh.
    const RecordFile &file = session_->file();
    if (!file.path().empty() && file.exists())
        (void)DrawGrid1->OpenRecording(QString::fromStdString(file.path()));
    DrawGrid1->RedrawGrid();
}

void TFormMain::scrollGridToEnd() { DrawGrid1->scrollToEnd(); }

void TFormMain::clearGauges()
{
    for (LineGauge *g : {showLineLoadActual, showLineLoadPeek, showLineQuality})
        g->setValue(0);
}

void TFormMain::environmentChanged() { envChanged_ = true; }
void TFormMain::startRedrawThread()
{
    // A replaced file is a new file: the grid's view handle must follow it.
    (void)DrawGrid1->OpenRecording(QString::fromStdString(recordFile()));
    DrawGrid1->SetFollowEnd(true);
    DrawGrid1->StartRedraw(liveSource_.get());
}

void TFormMain::stopRedrawThread() { DrawGrid1->StopRedraw(); }

} // namespace kestrel
