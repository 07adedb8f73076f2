#pragma once
// The two monitored ports of the main window, as the recorder sees them: the
// simulated line (--simulate) or the serial devices found on the system,
// with the capture logic between them and the MP writer.

#include <memory>
#include <string>
#include <vector>

#include "capture/capture.h"
#include "capture/recorder_ports.h"

namespace kestrel {

class Clock;
class Prompter;
class RecordStore;
class SimLine;
class ComPort;

class MonitoredPorts final : public RecorderPorts {
public:
    // Simulated: both ports are the simulated line of the scenario file (empty: the built-in demo).
    // A scenario that cannot be read is reported and the demo runs instead.
    static std::unique_ptr<MonitoredPorts> Simulated(const std::string &scenarioFile, Clock &clock,
                                                     RecordStore &store, Prompter &prompter);
    // Real serial devices; devices lists what the scan found.
    static std::unique_ptr<MonitoredPorts> Real(std::vector<std::string> devices, RecordStore &store,
                                                Prompter &prompter);
    ~MonitoredPorts() override;

    [[nodiscard]] Capture &capture() { return *capture_; }
    [[nodiscard]] SimLine *simLine() { return sim_.get(); }
    [[nodiscard]] bool simulated() const { return sim_ != nullptr; }

    bool openForRecording() override;
    void closeAfterRecording() override;
    void armStatusTriggers() override;
    void forgetStatusTriggers() override;
    void readModemStatus() override;
    void readAllPending() override;

private:
    MonitoredPorts() = default;
    std::unique_ptr<SimLine> sim_;
    std::vector<std::unique_ptr<ComPort>> ownPorts_;
    std::unique_ptr<Capture> capture_;
};

} // namespace kestrel
