#include "app/monitored_ports.h"

#include "ports/termios_port.h"
#include "record/record_store.h"
#include "ports/scenario.h"
#include "ports/sim_port.h"
#include "base/string_table.h"

namespace kestrel {

MonitoredPorts::~MonitoredPorts()
{
    capture_.reset(); // unhooks the listeners before the ports go
    if (sim_)
        sim_->stopTimer();
}

std::unique_ptr<MonitoredPorts> MonitoredPorts::Simulated(const std::string &scenarioFile, Clock &clock,
                                                          RecordStore &store, Prompter &prompter)
{
    std::unique_ptr<MonitoredPorts> p(new MonitoredPorts);
    ScenarioError error;
    std::optional<Scenario> scenario;
    if (!scenarioFile.empty()) {
        scenario = LoadScenarioFile(scenarioFile, error);
        if (!scenario)
            prompter.ShowMessage(Str(205), Str(7653) + "\n\n" + scenarioFile + "\n" + error.text(), Buttons::Ok,
                                 Icon::Warning);
    }
    if (!scenario)
        scenario = ParseScenario(DemoScenarioText(), error);
    if (!scenario)
        scenario = Scenario{}; // the built-in text always parses; an empty line is the last resort
    p->sim_ = std::make_unique<SimLine>(std::move(*scenario), clock);
    p->capture_ = std::make_unique<Capture>(p->sim_->portA(), p->sim_->portB(), store.pending(), prompter);
    p->capture_->setPortList({p->sim_->portA().device(), p->sim_->portB().device()});
    p->capture_->setStoredIndexes(0, 1); // port A listens to the line's A side
    // The line runs whether we listen or not, as a real line would.
    p->sim_->start(2);
    return p;
}

std::unique_ptr<MonitoredPorts> MonitoredPorts::Real(std::vector<std::string> devices, RecordStore &store,
                                                     Prompter &prompter)
{
    std::unique_ptr<MonitoredPorts> p(new MonitoredPorts);
    p->ownPorts_.push_back(std::make_unique<TermiosPort>());
    p->ownPorts_.push_back(std::make_unique<TermiosPort>());
    p->capture_ = std::make_unique<Capture>(*p->ownPorts_[0], *p->ownPorts_[1], store.pending(), prompter);
    p->capture_->setPortList(std::move(devices));
    return p;
}

bool MonitoredPorts::openForRecording() { return capture_->OpenPortsForRecording(); }
void MonitoredPorts::closeAfterRecording()
{
    // What the ports still hold belongs to the recording.
    capture_->ComReadAllPendingData();
    capture_->ClosePorts();
}
void MonitoredPorts::armStatusTriggers() { capture_->ArmStatusTriggers(); }
void MonitoredPorts::forgetStatusTriggers() { capture_->ForgetStatusTriggers(); }
void MonitoredPorts::readModemStatus() { capture_->ReadModemStatuses(); }
void MonitoredPorts::readAllPending() { capture_->ComReadAllPendingData(); }

} // namespace kestrel
