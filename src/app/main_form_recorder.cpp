// Recorder wiring: the record, pause and stop buttons drive the recorder core;
// the core tells the window what to show through RecorderView.

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QTimer>
#include <QToolButton>
#include <filesystem>

#include "app/action_registry.h"
#include "app/confirm_record_mode_form.h"
#include "app/line_gauge.h"
#include "app/main_form.h"
#include "app/monitored_ports.h"
#include "app/signal_light.h"
#include "app/signal_light_controller.h"
#include "ports/port_scan.h"
#include "ports/port_timing.h"
#include "record/record_paths.h"
#include "record/record_store.h"
#include "capture/recorder.h"
#include "present/grid/record_grid.h"
#include "present/grid/store_live_source.h"
#include "base/string_table.h"

namespace kestrel {

void TFormMain::createRecorder(const MainFormOptions &options)
{
    store_ = std::make_unique<RecordStore>(*clock_);
    if (options.ports != nullptr) {
        ports_ = options.ports;
    } else {
        ownPorts_ = args_.simulate ? MonitoredPorts::Simulated(args_.scenario, *clock_, *store_, *prompter_)
                                   : MonitoredPorts::Real(AvailablePorts(), *store_, *prompter_);
        ports_ = ownPorts_.get();
    }
    liveSource_ = std::make_unique<grid::StoreLiveSource>(*store_, receiveEvent_);
    recorder_ = std::make_unique<Recorder>(*store_, recordFile_, *ports_, *prompter_);
    recorder_->setView(this);
    recorder_->setDataDir(dataFolder_);
    if (options.skipUnloadDelay)
        recorder_->setDelay([](std::chrono::milliseconds) {});
    // Work that must not run inside a port notification (stopping after a lost port) waits one turn.
    recorder_->setPoster([this](std::function<void()> work) {
        QTimer::singleShot(0, this, [w = std::move(work)] { w(); });
    });
    if (ownPorts_) {
        Capture::Hooks &h = ownPorts_->capture().hooks();
        h.record = [this](std::uint16_t burst) { return recorder_->record(burst); };
        h.gate = [this] { return recorder_->RecordingGate(); };
        h.burstBegin = [this] {
            receiveEvent_.reset();
            recorder_->beginBurst();
        };
        h.burstEnd = [this] {
            recorder_->endBurst();
            receiveEvent_.set();
        };
        h.portLost = [this](ComPort &port, const std::string &reason) {
            recorder_->onPortLost(port.device(), reason);
        };
        h.settingsApplied = [this](const PortSettings &s) {
            store_->SetLineTiming(ComputeLineTiming(s, store_->frequency()));
        };
        h.environmentChanged = [this] { envChanged_ = true; };
    }
}

SimLine *TFormMain::simulatedLine() const { return ownPorts_ ? ownPorts_->simLine() : nullptr; }

bool TFormMain::isRecording() const { return recorder_ && recorder_->recording(); }
bool TFormMain::isPaused() const { return recorder_ && recorder_->paused(); }

int TFormMain::chooseRecordMode()
{
    QAction *append = ActionManager1->action("actAppend");
    QAction *replace = ActionManager1->action("actReplace");
    if (append->isChecked())
        return RecordMode::Append;
    if (replace->isChecked())
        return RecordMode::Replace;
    // Neither button is down: ask, but only when there is data to keep or lose.
    const ResolvedRecordPath target = ResolveRecordPath(recordFile_.path(), dataFolder_);
    std::error_code ec;
    const auto size = std::filesystem::file_size(target.path, ec);
    if (ec || size < kMpSize)
        return RecordMode::None; // the recorder replaces an empty file and creates a missing one
    return confirmRecordMode_->ask();
}

void TFormMain::btnRecordClick()
{
    if (isRecording() || recorder_->loaded())
        return;
    recorder_->setAppendReplace(chooseRecordMode());
    recorder_->btnRecordClick();
}

void TFormMain::btnPauseClick() { recorder_->btnPauseClick(); }

void TFormMain::btnStopClick()
{
    if (!recorder_->loaded() && !isRecording() && !isPaused()) {
        setRecordButtons(false);
        return;
    }
    recorder_->btnStopClick();
}

void TFormMain::btnSaveRecordFileClick()
{
    const QString target = QFileDialog::getSaveFileName(this, QString::fromStdString(Str(7534)).remove('&'),
                                                        QString::fromStdString(dataFolder_ + "recordings"),
                                                        QString::fromStdString(Str(7654)));
    if (target.isEmpty())
        return;
    const CopyResult r = SaveRecordFileAs(recordFile_.path(), target.toStdString());
    if (!r.ok)
        prompter_->ShowMessage(Str(3000), r.error + "\n\n" + target.toStdString(), Buttons::Ok, Icon::Error);
}

// ---- RecorderView ------------------------------------------------------------

void TFormMain::SetRecordOnControls()
{
    DisableComSetup();
    DisableCtrlsBeforeRec();
}

void TFormMain::SetRecordOffControls()
{
    statusPanels_[0]->setText(QString::fromStdString(Str(7651))); // the pending data are read
    EnableComSetup();
    EnableCtrlsAfterRec();
}

void TFormMain::setModeText(const std::string &text)
{
    statusPanels_[5]->setProperty("textNo", isRecording() || recorder_->loaded() ? 4273 : 4274);
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
    SlcA->setMonitoring(on, store_->previous());
    SlcB->setMonitoring(on, store_->previous());
    if (on)
        lineLightTimer_->start();
    else
        lineLightTimer_->stop();
}

void TFormMain::startBlinkTimer() { LEDToggleTimer->start(); }
void TFormMain::stopTriggerTimer() { TriggerTimer->stop(); }

void TFormMain::updateSizeLabel()
{
    lblRecordFileSize->setText(QString::fromStdString(RecordSizeLabel(recordFile_.path(), recordFile_.fileSize())));
}

void TFormMain::refreshSizeLabel(const std::string &label)
{
    lblRecordFileSize->setText(QString::fromStdString(label));
}

void TFormMain::resetViewToStart() { DrawGrid1->GotoMp(0); }
void TFormMain::clearGrid() { DrawGrid1->ClearGrid(); }

void TFormMain::redrawGrid()
{
    // After a recording the file has grown (or was made anew): read it afresh.
    if (!recordFile_.path().empty() && recordFile_.exists())
        (void)DrawGrid1->OpenRecording(QString::fromStdString(recordFile_.path()));
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
    (void)DrawGrid1->OpenRecording(QString::fromStdString(recordFile_.path()));
    DrawGrid1->SetFollowEnd(true);
    DrawGrid1->StartRedraw(liveSource_.get());
}

void TFormMain::stopRedrawThread() { DrawGrid1->StopRedraw(); }

} // namespace kestrel
