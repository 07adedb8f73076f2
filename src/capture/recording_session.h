#pragma once
// One recording session: the two monitored ports (the simulated line of a
// scenario, two serial devices, or two ports a test hands in), capture, the
// record store, the record file, the recorder, the receive event and the
// clock, wired together once. The main window and kestrel-cli record each
// hold one; what they add is how they show things (RecorderView, Reporter).
//
// The wiring: every MP capture takes goes through the recorder into the store
// and the file; the recording gate is the recorder's; a data notification is
// one receive burst (event reset, MPs collected, written with one call, event
// set); new port settings give the store its character time; a lost port
// stops the recording once; and before the ports close at pause or stop,
// whatever they still hold is recorded.

#include <QObject>

#include <memory>
#include <string>
#include <vector>

#include "base/reporter.h"
#include "capture/capture.h"
#include "capture/receive_event.h"
#include "capture/recorder.h"
#include "capture/recorder_ports.h"
#include "capture/trigger_hooks.h"
#include "ports/scenario.h"
#include "record/clock.h"
#include "record/record_file.h"
#include "record/record_store.h"

namespace kestrel {

class SimLine;

// A scenario file, or the built-in demo line when the file is not given or cannot be
// read (then with the warning 7653 to show under title 205).
struct ScenarioChoice {
    Scenario scenario;
    Result warning;
};
[[nodiscard]] ScenarioChoice ScenarioOrDemo(const std::string &file);

class RecordingSession final : private RecorderPorts {
public:
    // clock nullptr: the session keeps a system clock of its own.
    // The simulated line of the scenario; the ports are listed as its two sides, A on A.
    // The line does not run until asked (simLine()->start()).
    static std::unique_ptr<RecordingSession> Simulated(Scenario scenario, Reporter &reporter, Clock *clock = nullptr);
    // Two serial devices; devices lists what the user may choose from (a scan, or A and B).
    static std::unique_ptr<RecordingSession> Serial(std::vector<std::string> devices, Reporter &reporter,
                                                    Clock *clock = nullptr);
    // Two ports that the caller keeps alive longer than the session (tests).
    static std::unique_ptr<RecordingSession> OverPorts(ComPort &a, ComPort &b, std::vector<std::string> devices,
                                                       Reporter &reporter, Clock *clock = nullptr);
    ~RecordingSession() override;
    RecordingSession(const RecordingSession &) = delete;
    RecordingSession &operator=(const RecordingSession &) = delete;

    // ---- the parts ----
    [[nodiscard]] Capture &capture() { return *capture_; }
    [[nodiscard]] Recorder &recorder() { return *recorder_; }
    [[nodiscard]] const Recorder &recorder() const { return *recorder_; }
    [[nodiscard]] RecordStore &store() { return store_; } // the live data the grid follows
    [[nodiscard]] RecordFile &file() { return file_; }
    [[nodiscard]] const RecordFile &file() const { return file_; }
    [[nodiscard]] ReceiveEvent &receiveEvent() { return event_; }
    [[nodiscard]] Clock &clock() { return clock_; }
    [[nodiscard]] Reporter &reporter() { return reporter_; }
    [[nodiscard]] SimLine *simLine() { return sim_.get(); } // nullptr unless simulated
    [[nodiscard]] bool simulated() const { return sim_ != nullptr; }
    [[nodiscard]] ComPort &port(PortTag tag) { return tag == PortTag::A ? capture_->ComA() : capture_->ComB(); }

    // ---- ports and their settings ----
    [[nodiscard]] const std::vector<std::string> &portList() const { return capture_->portList(); }
    // Applies devices and settings; the warning 2053 once per port list.
    Result applySettings(const PortComboTexts &texts) { return capture_->InitInterface(texts); }
    // Applies and tries the settings (opens and closes both ports); what to tell the user.
    [[nodiscard]] std::vector<Result> tryPorts(const PortComboTexts &texts) { return capture_->TryToOpenPorts(texts); }

    // ---- recording ----
    void record() { recorder_->record(); }
    void togglePause() { recorder_->togglePause(); }
    void stop() { recorder_->stop(); }
    // Stops once however often asked (signals, a timer running out); records what the ports hold.
    void drainAndStop() { recorder_->drainAndStop(); }
    [[nodiscard]] bool recording() const { return recorder_->recording(); }
    [[nodiscard]] bool paused() const { return recorder_->paused(); }
    [[nodiscard]] bool loaded() const { return recorder_->loaded(); }
    [[nodiscard]] bool recordingGate() const { return recorder_->RecordingGate(); }

    // ---- trigger evaluation ----
    // The session owns its evaluation; nullptr: none, a recording then always opens the gate itself.
    void setTriggerHooks(std::unique_ptr<TriggerHooks> hooks) { triggers_ = std::move(hooks); }
    [[nodiscard]] TriggerHooks *triggerHooks() { return triggers_.get(); }
    // A trigger mark through the MP writer (code t + 1, kind a, extra b); 0 = written.
    int writeTriggerMark(std::uint8_t t, std::uint8_t a, std::uint8_t b) { return recorder_->WriteTriggerMark(t, a, b); }
    // Ends the recording once the current notification handler has returned.
    void requestStop();
    // The gate flags evaluation drives live on the recorder: captureEnabled,
    // triggerControlled, triggerStates.
    [[nodiscard]] const LastChangeTable &lastChange() const { return store_.lastChange(); }

private:
    RecordingSession(Reporter &reporter, Clock *clock);
    void wire(ComPort &a, ComPort &b, std::vector<std::string> devices);
    [[nodiscard]] PortTag tagOf(const ComPort &port) const;

    // RecorderPorts
    Result openForRecording() override { return capture_->OpenPortsForRecording(); }
    void closeAfterRecording() override;
    void armStatusTriggers() override { capture_->ArmStatusTriggers(); }
    void forgetStatusTriggers() override { capture_->ForgetStatusTriggers(); }
    void readModemStatus() override { capture_->ReadModemStatuses(); }

    Reporter &reporter_;
    std::unique_ptr<Clock> ownClock_;
    Clock &clock_;
    RecordStore store_;
    RecordFile file_;
    ReceiveEvent event_;
    std::unique_ptr<SimLine> sim_;
    std::vector<std::unique_ptr<ComPort>> ownPorts_;
    std::unique_ptr<Capture> capture_;
    std::unique_ptr<Recorder> recorder_;
    std::unique_ptr<TriggerHooks> triggers_; // outlives recorder and capture (the destructor ends them first)
    QObject postContext_; // work posted to the event loop dies with the session
};

} // namespace kestrel
