#include "capture/recorder.h"

#include <filesystem>
#include <thread>

#include "base/string_table.h"
#include "capture/capture_log.h"
#include "record/record_paths.h"

namespace kestrel {
namespace {

constexpr auto kUnloadWait = std::chrono::milliseconds(500);

// Texts of the recorder.
constexpr int kTitleFile = 3000;
constexpr int kTitlePort = 2000;
constexpr int kTitleInformation = 203;
constexpr int kMsgOpenFailed = 3001;
constexpr int kMsgCreateFailed = 3002;
constexpr int kMsgWriteFailed = 3020;
constexpr int kMsgMonitorMode = 4273;
constexpr int kMsgExamineMode = 4274;
constexpr int kMsgReadingPending = 8167;
constexpr int kMsgReady = 7651;
constexpr int kMsgTornTailCut = 7100;
constexpr int kMsgPortLost = 7101;
constexpr int kMsgNotARecording = 7103;
constexpr int kMsgSpaceLow = 7109;
constexpr std::uint64_t kSpaceCheckBytes = 256 * 1024;

} // namespace

Recorder::Recorder(RecordStore &store, RecordFile &file, RecorderPorts &ports, Reporter &reporter)
    : store_(store), file_(file), ports_(ports), reporter_(reporter),
      delay_([](std::chrono::milliseconds ms) { std::this_thread::sleep_for(ms); }),
      post_([](std::function<void()> work) { work(); })
{
    store_.setSink(&file_);
}

bool Recorder::RecordingGate() const
{
    // A notification queued before the ports closed (pause, stop) writes nothing.
    if (!recording_ || !captureEnabled)
        return false;
    return !triggerControlled || triggerStates.stopGroupArmed || triggerStates.inactivityGroupArmed ||
           triggerStates.timeGroupArmed;
}

void Recorder::SetRecordOnControls()
{
    view_->setModeText(Str(kMsgMonitorMode));
    view_->SetRecordOnControls();
    view_->setLightsMonitoring(true);
}

void Recorder::SetRecordOffControls()
{
    view_->setModeText(Str(kMsgExamineMode));
    view_->SetRecordOffControls();
    view_->setLightsMonitoring(false);
}

void Recorder::reportFile(int messageNumber, const std::string &reason, int line)
{
    std::string detail = "\n\n" + file_.path();
    if (!reason.empty())
        detail += "\n" + reason;
    reporter_.report(kTitleFile, Result::Fail(messageNumber, std::move(detail)), {"Recorder", line});
}

std::string NotRecordingText(const RecordingCheck &found)
{
    switch (found.problem) {
    case RecordingProblem::TooShort:
        return Str(7105);
    case RecordingProblem::Numbering:
        return Str(7106);
    case RecordingProblem::NoOpeningMark:
        return Str(7107);
    case RecordingProblem::BadTime:
        return Str(7108);
    case RecordingProblem::None:
        break;
    }
    return {};
}

bool Recorder::askReplaceForeign(const RecordingCheck &found)
{
    if (replaceForeign_ && replaceForeign_(file_.path(), found))
        return true;
    qCInfo(lcCapture) << "left alone:" << file_.path().c_str() << "is not a recording";
    if (!replaceForeign_) // nobody to ask: say why nothing is recorded
        reporter_.report(kTitleFile,
                         Result::Fail(kMsgNotARecording, "\n\n" + file_.path() + "\n" + NotRecordingText(found)),
                         {"Recorder", __LINE__});
    return false;
}

int Recorder::failLoad(int messageNumber, const Result &why, int line)
{
    // A file held by another recorder says so; any other failure gives the system's reason.
    reportFile(messageNumber, why.code == kRecordFileBusy ? Str(kRecordFileBusy) : why.detail, line);
    file_.close(RecordHandle::Record);
    SetRecordOffControls();
    recordMode_ = RecordMode::None;
    return recordMode_;
}

// ---- buttons --------------------------------------------------------------

void Recorder::record()
{
    if (recording_ || loaded())
        return;
    recDown_ = true;
    view_->setRecordButtons(true);
    if (LoadRecorder() == RecordMode::None) {
        UnloadRecorder();
        recDown_ = false;
        view_->setRecordButtons(false);
    } else if (!paused_) {
        if (!StartRecorder()) {
            recDown_ = false;
            view_->setRecordButtons(false);
        }
    }
    view_->scrollGridToEnd();
}

void Recorder::togglePause()
{
    if (paused_) {
        paused_ = false;
        view_->setPauseButton(false);
        if (recDown_ && loaded()) {
            if (StartRecorder())
                view_->setLightsMonitoring(true);
            else {
                recDown_ = false;
                view_->setRecordButtons(false);
            }
        }
        return;
    }
    if (recording_)
        StopRecorder();
    paused_ = true;
    view_->setPauseButton(true);
    view_->setLightsMonitoring(false);
}

void Recorder::stop()
{
    recDown_ = false;
    view_->setRecordButtons(false);
    if (!paused_ && recording_)
        StopRecorder();
    UnloadRecorder();
    if (paused_)
        togglePause();
    view_->scrollGridToEnd();
}

void Recorder::toggleViewHold()
{
    viewHold_ = !viewHold_;
    if (viewHold_)
        view_->startBlinkTimer();
    else
        holdLight_ = false;
    view_->setViewHoldButton(viewHold_);
    view_->setStatusLights(holdLight_, recordLight_);
}

void Recorder::blinkTick()
{
    holdLight_ = viewHold_ ? !holdLight_ : false;
    recordLight_ = recording_ ? !recordLight_ : false;
    view_->setStatusLights(holdLight_, recordLight_);
}

// ---- load, start, stop, unload ----------------------------------------------

int Recorder::LoadRecorder()
{
    view_->startBlinkTimer();
    writeFailed_ = false;
    portLost_ = false;
    stopQueued_ = false;

    const ResolvedRecordPath resolved = ResolveRecordPath(file_.path(), dataDir_);
    if (resolved.placed || file_.path().empty()) {
        file_.setPath(resolved.path);
        view_->environmentChanged();
    }
    if (resolved.placed) {
        // The record folder is ours to make; any other missing folder is the user's mistake (3002 below).
        std::error_code ec;
        std::filesystem::create_directories(DefaultRecordFolder(dataDir_), ec);
    }

    // The lock comes first: what the file holds is judged, and the file emptied or
    // appended to, only while no other recorder can be writing it.
    const bool existed = file_.exists();
    if (Result r = file_.lockForRecording(); !r)
        return failLoad(existed ? kMsgOpenFailed : kMsgCreateFailed, r, __LINE__);
    const RecordingCheck found = file_.checkLocked();
    switch (found.kind) {
    case RecordingKind::Empty: // holds no data: nothing to keep or lose
        recordMode_ = existed ? RecordMode::Replace : RecordMode::New;
        break;
    case RecordingKind::Recording:
        recordMode_ = appendReplace_ == RecordMode::Append || appendReplace_ == RecordMode::Replace
                          ? appendReplace_
                          : RecordMode::None;
        break;
    case RecordingKind::NotRecording: // not ours: replaced only on the user's explicit yes, never appended to
        recordMode_ = askReplaceForeign(found) ? RecordMode::Replace : RecordMode::None;
        break;
    }
    if (recordMode_ == RecordMode::None) {
        file_.close(RecordHandle::Record);
        return recordMode_;
    }

    if (recordMode_ != RecordMode::Append) {
        file_.close(RecordHandle::View);
        view_->resetViewToStart();
        if (Result r = file_.emptyLocked(); !r)
            return failLoad(kMsgCreateFailed, r, __LINE__);
        if (Result r = file_.open(RecordHandle::View); !r && recordMode_ == RecordMode::Replace)
            return failLoad(kMsgOpenFailed, r, __LINE__); // a new file records without a view
        store_.ResetComEvent();
        store_.ResetCounters();
    }
    SetRecordOnControls();

    int written = WriteResult::Ok;
    store_.ClearLiveBuffer();
    if (recordMode_ == RecordMode::Append) {
        if (const std::uint64_t torn = file_.cutTornTail(); torn > 0) {
            qCInfo(lcCapture) << "cut a torn tail of" << torn << "bytes off" << file_.path().c_str();
            reporter_.report(kTitleInformation,
                             Result::Fail(kMsgTornTailCut, "\n\n" + file_.path() + "\n(" + std::to_string(torn) + " B)"),
                             {}, Severity::Information);
        }
        file_.seekToStart();
        store_.ResetLastChange();
        MpRecord first, last;
        const bool haveFirst = file_.readRecord(0, first);
        const bool haveLast = file_.readLastRecord(last);
        store_.RestoreFromFirstMp(haveFirst ? &first : nullptr);
        store_.RestoreFromLastMp(haveLast ? &last : nullptr);
        file_.seekToEnd();
        view_->clearGrid();
        written = store_.WriteSystemMark(SystemMark::Appended);
    } else {
        file_.seekToStart();
        store_.ResetCounters();
        written = store_.WriteSystemMark(SystemMark::NewFile, true);
        if (written == WriteResult::Ok)
            written = store_.WriteSystemMark(SystemMark::Started);
        store_.RebaseCounter();
    }
    if (written != WriteResult::Ok) {
        writeFailed_ = true;
        file_.close(RecordHandle::Record);
        reportFile(kMsgWriteFailed, file_.writeError(), __LINE__);
        SetRecordOffControls();
        recordMode_ = RecordMode::None;
        return recordMode_;
    }
    view_->clearGauges();
    ports_.forgetStatusTriggers();
    view_->startRedrawThread();
    return recordMode_;
}

bool Recorder::StartRecorder()
{
    recording_ = true;
    if (const Result opened = ports_.openForRecording(); !opened) {
        recording_ = false;
        reporter_.report(kTitlePort, opened);
        UnloadRecorder();
        return false;
    }
    const bool triggers = prepareTriggers_ ? prepareTriggers_() : false;
    if (!triggers) {
        captureEnabled = true;
        triggerControlled = false;
        ports_.armStatusTriggers();
    }
    ports_.readModemStatus();
    store_.ResetLastChange(); // the levels just read are the baseline
    if (RecordingGate())
        noteWrite(store_.RecordComEvent(0));
    qCInfo(lcCapture) << "recording into" << file_.path().c_str() << "record mode" << recordMode_
                      << (triggers ? "(trigger controlled)" : "");
    return true;
}

void Recorder::StopRecorder()
{
    view_->setStatusText(Str(kMsgReadingPending));
    recording_ = false;
    if (stopTriggerTiming_)
        stopTriggerTiming_();
    // What the ports received before the stop belongs to the recording: read out, then closed.
    ports_.closeAfterRecording();
    noteWrite(store_.endBurst());
    view_->setStatusText(Str(kMsgReady)); // read: the text lasts no longer than the reading (a pause may last long)
    qCInfo(lcCapture) << "recording stopped";
}

void Recorder::UnloadRecorder()
{
    if (file_.isOpen(RecordHandle::Record)) {
        (void)store_.endBurst();
        // The stop mark is the last record; a full disk was reported already.
        if (store_.WriteSystemMark(SystemMark::Stopped) == WriteResult::Ok)
            ++stopMarks_;
        qCInfo(lcCapture) << "closed" << file_.path().c_str() << "after" << file_.recordCount() << "MPs";
    }
    store_.liveBuffer().resetCount();
    store_.writtenCounter().store(0, std::memory_order_release);
    file_.close(RecordHandle::Record);
    delay_(kUnloadWait); // let the redraw thread finish its pass
    view_->stopRedrawThread();
    captureEnabled = false;
    triggerControlled = false;
    triggerStates = {};
    SetRecordOffControls();
    view_->refreshSizeLabel(RecordSizeLabel(file_.path(), file_.fileSize()));
    store_.ClearLiveBuffer();
    view_->clearGrid();
    view_->redrawGrid();
}

// ---- capture hooks ----------------------------------------------------------

int Recorder::recordEvent(std::uint16_t burst)
{
    if (!loaded())
        return WriteResult::WriteFailed; // no recording: nothing to report
    const int r = store_.RecordComEvent(burst);
    noteWrite(r);
    // A fast line fills a disk quicker than once a second: look every 256 KB too.
    writtenSinceSpaceCheck_ += kMpSize;
    if (writtenSinceSpaceCheck_ >= kSpaceCheckBytes)
        watchFreeSpace();
    return r;
}

void Recorder::watchFreeSpace()
{
    writtenSinceSpaceCheck_ = 0;
    if (!loaded() || writeFailed_)
        return;
    const std::optional<std::uint64_t> free = freeSpace_ ? freeSpace_() : file_.freeSpace();
    if (!free || *free >= kSpaceReserve)
        return;
    // Stop while the stop mark still fits, rather than run into a write that fails.
    writeFailed_ = true;
    qCInfo(lcCapture) << "only" << *free << "bytes free beside" << file_.path().c_str() << "- stopping";
    post_([this, free = *free] {
        reportFile(kMsgWriteFailed, Str(kMsgSpaceLow) + " " + std::to_string(free >> 10) + " KB", __LINE__);
        if (loaded())
            stop();
    });
}

int Recorder::WriteTriggerMark(std::uint8_t t, std::uint8_t a, std::uint8_t b)
{
    if (!loaded())
        return WriteResult::WriteFailed;
    const int r = store_.WriteTriggerMark(t, a, b);
    noteWrite(r);
    return r;
}

void Recorder::endBurst() { noteWrite(store_.endBurst()); }

void Recorder::noteWrite(int result)
{
    if (result == WriteResult::Ok || writeFailed_)
        return;
    // Report a full disk once and stop: recording on would only lose more.
    writeFailed_ = true;
    qCInfo(lcCapture) << "write to" << file_.path().c_str() << "fell short:" << file_.writeError().c_str();
    post_([this] {
        reportFile(kMsgWriteFailed, file_.writeError(), __LINE__);
        if (loaded())
            stop();
    });
}

void Recorder::onPortLost(const std::string &device, const std::string &reason)
{
    if (!recording_ || portLost_)
        return;
    portLost_ = true;
    qCInfo(lcCapture) << "stopping: port" << device.c_str() << "lost";
    post_([this, device, reason] {
        if (recording_)
            stop(); // records what the other port still holds
        reporter_.report(kTitlePort, Result::Fail(kMsgPortLost, "\n\n" + device + ": " + reason), {"Recorder", __LINE__});
    });
}

void Recorder::drainAndStop()
{
    if (stopQueued_)
        return;
    stopQueued_ = true;
    if (loaded() || recording_)
        stop();
}

} // namespace kestrel
