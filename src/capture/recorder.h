#pragma once
// Recorder control: the state machine behind the record, pause and stop
// buttons. Idle -> record() -> loaded (file open) -> StartRecorder ->
// recording; pause closes the ports and keeps the file open; stop writes the
// stop mark and closes the file. Everything runs on the main thread; window
// effects go through RecorderView, failures and notes through Reporter.

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/prompt.h"
#include "base/reporter.h"
#include "record/record_file.h"
#include "record/record_store.h"
#include "capture/recorder_ports.h"
#include "capture/recorder_view.h"

namespace kestrel {

// Record modes.
namespace RecordMode {
inline constexpr int None = 0; // cancelled, nothing recorded
inline constexpr int Append = 1;
inline constexpr int Replace = 2;
inline constexpr int New = 3; // the file did not exist
} // namespace RecordMode

// The three trigger-started states that open the gate of a trigger-controlled
// recording; trigger evaluation sets and clears them.
struct TriggerGateStates {
    bool stopGroupArmed = false;
    bool inactivityGroupArmed = false;
    bool timeGroupArmed = false;
};

// Why a file is not a recording, in the program's language.
[[nodiscard]] std::string NotRecordingText(const RecordingCheck &found);

class Recorder {
public:
    Recorder(RecordStore &store, RecordFile &file, RecorderPorts &ports, Reporter &reporter);
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    void setView(RecorderView *view) { view_ = view ? view : &noView_; }
    // Data folder; record names without a folder part go into its recordings/.
    void setDataDir(const std::string &dir) { dataDir_ = dir; }
    // The choice of the append/replace buttons or the confirmation dialog: 0 none, 1 append, 2 replace.
    void setAppendReplace(int mode) { appendReplace_ = mode; }
    [[nodiscard]] int appendReplace() const { return appendReplace_; }
    // Asked when the record file holds something that is not a recording: true
    // replaces it. Without a question the file is left alone and the refusal reported.
    void setForeignFileQuestion(std::function<bool(const std::string &path, const RecordingCheck &)> ask)
    {
        replaceForeign_ = std::move(ask);
    }
    // The free space left where the record file is (bytes); nullopt when it cannot be told.
    // Tests hand in their own.
    void setFreeSpaceProbe(std::function<std::optional<std::uint64_t>()> probe) { freeSpace_ = std::move(probe); }
    // Below this much free space the recording stops while the stop mark still fits.
    static constexpr std::uint64_t kSpaceReserve = 1 << 20;
    // Looks at the free space (the session asks every second, the writer after every
    // 256 KB); stops cleanly with message 3020 when it has fallen below the reserve.
    void watchFreeSpace();
    // Waits before the redraw thread is ended (500 ms); tests pass a no-op.
    void setDelay(std::function<void(std::chrono::milliseconds)> delay) { delay_ = std::move(delay); }
    // Runs work after the current notification handler has returned (the event
    // loop's next turn); stopping from inside a port handler goes through it.
    void setPoster(std::function<void(std::function<void()>)> post) { post_ = std::move(post); }
    // Trigger evaluation: prepares the chain, returns true when it takes over the gate.
    void setTriggerPreparation(std::function<bool()> prepare) { prepareTriggers_ = std::move(prepare); }
    void setTriggerTimingStop(std::function<void()> stop) { stopTriggerTiming_ = std::move(stop); }

    // The three buttons: record (load, then start unless paused; ignored while
    // recording), pause and resume, stop.
    void record();
    void togglePause();
    void stop();
    // Display freeze: capture goes on, only the grid stops following.
    void toggleViewHold();
    // The blink timer's tick (every 500 ms): each light toggles while its state lasts.
    void blinkTick();

    // Returns the record mode it ended with (0: nothing recorded, the file is closed).
    int LoadRecorder();
    bool StartRecorder();
    void StopRecorder();
    void UnloadRecorder();

    // Asked before every MP from the ports: recording, capture enabled, and either no
    // trigger control or one of the trigger-started states.
    [[nodiscard]] bool RecordingGate() const;

    // Capture's hooks: write an MP from the pending event, and the receive burst around a data notification.
    int recordEvent(std::uint16_t burst);
    // Trigger evaluation's mark (code t + 1, kind a, extra b); a short write is reported like any other.
    int WriteTriggerMark(std::uint8_t t, std::uint8_t a, std::uint8_t b);
    void beginBurst() { store_.beginBurst(); }
    void endBurst();
    // A port went away: stop cleanly once, report it once.
    void onPortLost(const std::string &device, const std::string &reason);
    // Stops once, however often it is asked (Ctrl-C of the command line); like every stop it
    // records what the ports still hold.
    void drainAndStop();

    [[nodiscard]] bool recording() const { return recording_; }
    [[nodiscard]] bool paused() const { return paused_; }
    [[nodiscard]] bool recordButtonDown() const { return recDown_; }
    [[nodiscard]] bool viewHold() const { return viewHold_; }
    [[nodiscard]] bool loaded() const { return file_.isOpen(RecordHandle::Record); }
    [[nodiscard]] int recordMode() const { return recordMode_; }
    [[nodiscard]] bool writeFailed() const { return writeFailed_; }
    [[nodiscard]] bool portLost() const { return portLost_; }
    // Stop-mark writes that happened (mark 5), for the once-only rule.
    [[nodiscard]] int stopMarks() const { return stopMarks_; }

    // Flags that trigger evaluation drives.
    bool captureEnabled = false;
    bool triggerControlled = false;
    TriggerGateStates triggerStates;

private:
    void SetRecordOnControls();
    void SetRecordOffControls();
    void reportFile(int messageNumber, const std::string &reason, int line);
    void noteWrite(int result);
    int failLoad(int messageNumber, const Result &why, int line);
    bool askReplaceForeign(const RecordingCheck &found);

    RecordStore &store_;
    RecordFile &file_;
    RecorderPorts &ports_;
    Reporter &reporter_;
    RecorderView noView_;
    RecorderView *view_ = &noView_;
    std::string dataDir_ = ".";
    int appendReplace_ = RecordMode::None;
    std::function<void(std::chrono::milliseconds)> delay_;
    std::function<void(std::function<void()>)> post_;
    std::function<bool()> prepareTriggers_;
    std::function<bool(const std::string &, const RecordingCheck &)> replaceForeign_;
    std::function<void()> stopTriggerTiming_;
    std::function<std::optional<std::uint64_t>()> freeSpace_;
    std::uint64_t writtenSinceSpaceCheck_ = 0;

    bool recording_ = false;
    bool paused_ = false;
    bool recDown_ = false;
    bool viewHold_ = false;
    bool holdLight_ = false;
    bool recordLight_ = false;
    int recordMode_ = RecordMode::None;
    bool writeFailed_ = false;
    bool portLost_ = false;
    bool stopQueued_ = false;
    int stopMarks_ = 0;
};

} // namespace kestrel
