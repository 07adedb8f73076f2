#pragma once
// The port side of the recorder: both monitored ports as one unit. The
// recording session provides it over real or simulated ports; tests use a fake.

#include "base/result.h"

namespace kestrel {

class RecorderPorts {
public:
    virtual ~RecorderPorts() = default;
    // Opens port B, then port A, raised to time-critical delivery, receive buffers
    // flushed. On failure the port error to show (2010 / 2011) and nothing stays open.
    [[nodiscard]] virtual Result openForRecording() = 0;
    // Records whatever the ports still hold (no gate check: it arrived while recording),
    // then flushes and closes port A, then port B.
    virtual void closeAfterRecording() = 0;
    // Line (mask 15) and modem (mask 180) status triggers on each open port.
    virtual void armStatusTriggers() = 0;
    // Forgets the four status trigger handles (a new recording arms afresh).
    virtual void forgetStatusTriggers() {}
    // Both ports' modem status into the pending event.
    virtual void readModemStatus() = 0;
};

} // namespace kestrel
