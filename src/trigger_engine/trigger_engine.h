#pragma once
// Trigger evaluation during a recording. The active triggers form a chain in
// list order; a group is a run of consecutive start triggers, or a run of
// consecutive stop and inactivity triggers. The first group is armed when the
// recording starts; when any trigger of the armed group fires, a trigger mark
// is written, its actions run, the whole group is disarmed and the next group
// armed. Start triggers open the recording gate, stop triggers close it (or
// end the recording when the chain is used up), inactivity triggers report.
//
// Data, signal and error triggers are port triggers (the port reports a hit by
// handle); time and inactivity triggers are tested by a one-second timer.
// Everything runs on the event-loop thread.

#include <QObject>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "capture/trigger_hooks.h"
#include "record/last_events.h"
#include "triggers/trigger_list.h"

class QTimer;

namespace kestrel {

class RecordingSession;
class TriggerActions;

// What the window (or the command line) shows of the evaluation.
class TriggerEngineView {
public:
    virtual ~TriggerEngineView() = default;
    // "Waiting for START TRIGGER (n)" and the like; empty clears the field.
    virtual void triggerStatusText(const std::string & /*text*/) {}
    // A trigger fired; mp is the number of its trigger mark.
    virtual void triggerFired(const TriggerDef & /*trigger*/, std::uint32_t /*mp*/) {}
};

// Handle-table layout: a slot per trigger number, the port trigger's handle plus a port tag.
inline constexpr int kHandleTableSize = 1000;
inline constexpr std::uint16_t kPortTagB = 0x2000;
inline constexpr std::uint16_t kPortTagA = 0x4000;

// Message numbers of the evaluation.
namespace TriggerEngineMsg {
inline constexpr int WaitingForStart = 7430; // %1 = trigger number
inline constexpr int WaitingForStop = 7431;
inline constexpr int NumberTooLarge = 7432;  // %1 = the numbers
inline constexpr int Title = 7433;           // "Trigger engine message"
} // namespace TriggerEngineMsg

class TriggerEngine final : public TriggerHooks {
public:
    TriggerEngine();
    ~TriggerEngine() override;
    TriggerEngine(const TriggerEngine &) = delete;
    TriggerEngine &operator=(const TriggerEngine &) = delete;

    // The list whose active triggers the next recording evaluates (read at its start; the
    // caller keeps it alive). nullptr: no triggers.
    void setTriggers(const TriggerList *list) { list_ = list; }
    void setActions(TriggerActions *actions) { actions_ = actions; }
    void setView(TriggerEngineView *view) { view_ = view; }

    // TriggerHooks
    bool prepare(RecordingSession &session) override;
    void dataTrigger(RecordingSession &session, PortTag port, int handle) override;
    bool statusTrigger(RecordingSession &session, PortTag port, int handle) override;
    void stopTiming(RecordingSession &session) override;

    // The one-second tick of time and inactivity triggers (the timer calls it; tests too).
    void tick();

    // ---- state, for the window and tests ----
    [[nodiscard]] const std::vector<TriggerDef> &chain() const { return chain_; }
    [[nodiscard]] std::size_t chainPosition() const { return position_; }
    [[nodiscard]] bool timerRunning() const;
    [[nodiscard]] std::size_t timerListSize() const { return timerList_.size(); }
    [[nodiscard]] bool startGroupArmed() const { return startGroup_; }
    [[nodiscard]] std::uint16_t handleSlot(int number) const;
    [[nodiscard]] const LastEvents &lastEvents() const { return events_; }

private:
    void armNextGroup();
    void arm(TriggerDef &trigger);
    void armSignal(TriggerDef &trigger);
    void armError(TriggerDef &trigger);
    void disarm();
    void setTimer(bool on);
    void keepHandle(TriggerDef &trigger, PortTag port, int handle, unsigned mask);
    // A port trigger reported a hit; false when a signal trigger saw no matching edge.
    bool hit(PortTag sender, int handle);
    [[nodiscard]] bool signalEdgeMatches(const TriggerDef &trigger);
    [[nodiscard]] bool timerTriggerDue(const TriggerDef &trigger, double now);
    void fire(const TriggerDef &trigger);
    void showStatus(const std::string &text);
    [[nodiscard]] std::array<std::uint8_t, 6> currentLevels() const;

    const TriggerList *list_ = nullptr;
    TriggerActions *actions_ = nullptr;
    TriggerEngineView noView_;
    TriggerEngineView *view_ = &noView_;
    RecordingSession *session_ = nullptr;

    // A port trigger armed for a chain entry; a signal trigger's mask is set again after a wrong edge.
    struct ArmedTrigger {
        PortTag port;
        int handle;
        std::size_t chainIndex;
        unsigned mask;
    };

    std::vector<TriggerDef> chain_; // copies of the active triggers; their port handles live here
    std::size_t position_ = 0;      // first trigger not yet armed
    std::vector<ArmedTrigger> armed_;
    std::array<std::uint16_t, kHandleTableSize> handles_{}; // number -> handle + port tag
    std::vector<std::size_t> timerList_; // chain indexes of armed time and inactivity triggers
    bool startGroup_ = false;
    std::array<std::uint8_t, 6> previous_{}; // S1, M1, S2, M2, M5, M3 at the last signal-trigger event
    LastEvents events_;
    QObject context_;
    QTimer *timer_ = nullptr;
};

} // namespace kestrel
