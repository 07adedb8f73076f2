#include "capture/capture_wiring.h"

#include "ports/port_timing.h"

namespace kestrel {

void ConnectCaptureToRecorder(Capture &capture, Recorder &recorder, RecordStore &store, ReceiveEvent &event)
{
    Capture::Hooks &h = capture.hooks();
    h.record = [&recorder](std::uint16_t burst) { return recorder.record(burst); };
    h.gate = [&recorder] { return recorder.RecordingGate(); };
    h.burstBegin = [&recorder, &event] {
        event.reset();
        recorder.beginBurst();
    };
    h.burstEnd = [&recorder, &event] {
        recorder.endBurst(); // every MP of the burst is in the file before the event is set
        event.set();
    };
    h.settingsApplied = [&store](const PortSettings &portA) {
        store.SetLineTiming(ComputeLineTiming(portA, store.frequency()));
    };
    h.portLost = [&recorder](ComPort &port, const std::string &reason) { recorder.onPortLost(port.device(), reason); };
}

} // namespace kestrel
