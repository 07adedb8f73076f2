#pragma once
// The seam for trigger evaluation. Evaluation lives in a library above
// capture: it implements these hooks, and the recording session calls them at
// the start and end of a recording and for every port trigger that is not
// capture's own. To act on the recording (write a trigger mark, open or close
// the gate, stop) evaluation uses the session it is handed.

namespace kestrel {

class RecordingSession;

// Which monitored port a notification came from.
enum class PortTag { A, B };

class TriggerHooks {
public:
    virtual ~TriggerHooks() = default;
    // Recording starts: prepare the active triggers. True when evaluation takes over the
    // recording gate (it then arms the port triggers it needs itself).
    virtual bool prepare(RecordingSession &session) = 0;
    // A data trigger's pattern completed on the port.
    virtual void dataTrigger(RecordingSession &session, PortTag port, int handle) = 0;
    // A status trigger that is not capture's own fired; both ports' levels are in the
    // pending event. False declines the event (no MP, the triggers are not armed again).
    virtual bool statusTrigger(RecordingSession &session, PortTag port, int handle) = 0;
    // After each data MP (the sound flag of the trigger actions).
    virtual void afterData(RecordingSession &) {}
    // Recording stops: end time and inactivity timing.
    virtual void stopTiming(RecordingSession &) {}
};

} // namespace kestrel
