#pragma once
// Joins capture and the recorder: the recorder drives the ports through
// Capture, and Capture hands every MP, burst and lost port to the recorder.
// The window and kestrel-cli wire them the same way.

#include "capture/capture.h"
#include "capture/receive_event.h"
#include "record/record_store.h"
#include "capture/recorder.h"
#include "capture/recorder_ports.h"

namespace kestrel {

class CaptureRecorderPorts final : public RecorderPorts {
public:
    explicit CaptureRecorderPorts(Capture &capture) : capture_(capture) {}
    bool openForRecording() override { return capture_.OpenPortsForRecording(); }
    void closeAfterRecording() override { capture_.ClosePorts(); }
    void armStatusTriggers() override { capture_.ArmStatusTriggers(); }
    void forgetStatusTriggers() override { capture_.ForgetStatusTriggers(); }
    void readModemStatus() override { capture_.ReadModemStatuses(); }
    void readAllPending() override { capture_.ComReadAllPendingData(); }

private:
    Capture &capture_;
};

// Sets the record, gate, burst, settings and port-lost hooks of the capture.
// A data burst resets the receive event, collects its MPs, writes them with one
// call when it ends, and sets the event again.
void ConnectCaptureToRecorder(Capture &capture, Recorder &recorder, RecordStore &store, ReceiveEvent &event);

} // namespace kestrel
