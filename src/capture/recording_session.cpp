#include "capture/recording_session.h"

#include <QTimer>

#include "capture/capture_log.h"
#include "ports/port_timing.h"
#include "ports/sim_port.h"
#include "ports/termios_port.h"

namespace kestrel {

namespace {
constexpr int kMsgScenarioUnreadable = 7653;
} // namespace

ScenarioChoice ScenarioOrDemo(const std::string &file)
{
    ScenarioChoice choice;
    ScenarioError error;
    if (!file.empty()) {
        if (std::optional<Scenario> loaded = LoadScenarioFile(file, error)) {
            choice.scenario = std::move(*loaded);
            return choice;
        }
        choice.warning = Result::Fail(kMsgScenarioUnreadable, "\n\n" + file + "\n" + error.text());
    }
    // The built-in text always parses; an empty line is the last resort.
    if (std::optional<Scenario> demo = ParseScenario(DemoScenarioText(), error))
        choice.scenario = std::move(*demo);
    return choice;
}

RecordingSession::RecordingSession(Reporter &reporter, Clock *clock)
    : reporter_(reporter), ownClock_(clock != nullptr ? nullptr : std::make_unique<SystemClock>()),
      clock_(clock != nullptr ? *clock : *ownClock_), store_(clock_)
{
}

std::unique_ptr<RecordingSession> RecordingSession::Simulated(Scenario scenario, Reporter &reporter, Clock *clock)
{
    std::unique_ptr<RecordingSession> s(new RecordingSession(reporter, clock));
    s->sim_ = std::make_unique<SimLine>(std::move(scenario), s->clock_);
    SimLine &line = *s->sim_;
    s->wire(line.portA(), line.portB(), {line.portA().device(), line.portB().device()});
    s->capture_->setStoredIndexes(0, 1); // port A listens to the line's A side
    return s;
}

std::unique_ptr<RecordingSession> RecordingSession::Serial(std::vector<std::string> devices, Reporter &reporter,
                                                           Clock *clock)
{
    std::unique_ptr<RecordingSession> s(new RecordingSession(reporter, clock));
    s->ownPorts_.push_back(std::make_unique<TermiosPort>());
    s->ownPorts_.push_back(std::make_unique<TermiosPort>());
    s->wire(*s->ownPorts_[0], *s->ownPorts_[1], std::move(devices));
    return s;
}

std::unique_ptr<RecordingSession> RecordingSession::OverPorts(ComPort &a, ComPort &b, std::vector<std::string> devices,
                                                              Reporter &reporter, Clock *clock)
{
    std::unique_ptr<RecordingSession> s(new RecordingSession(reporter, clock));
    s->wire(a, b, std::move(devices));
    return s;
}

RecordingSession::~RecordingSession()
{
    // Whoever drops a running recording still gets its stop mark; nobody is left to show anything.
    if (recorder_ && (recorder_->recording() || recorder_->loaded())) {
        recorder_->setView(nullptr);
        recorder_->setPoster([](std::function<void()>) {});
        recorder_->setDelay([](std::chrono::milliseconds) {});
        recorder_->stop();
    }
    recorder_.reset();
    capture_.reset(); // unhooks the listeners before the ports go
    if (sim_)
        sim_->stopTimer();
}

PortTag RecordingSession::tagOf(const ComPort &port) const
{
    return &port == &capture_->ComA() ? PortTag::A : PortTag::B;
}

void RecordingSession::wire(ComPort &a, ComPort &b, std::vector<std::string> devices)
{
    capture_ = std::make_unique<Capture>(a, b, store_.pending());
    capture_->setPortList(std::move(devices));
    RecorderPorts &ports = *this;
    recorder_ = std::make_unique<Recorder>(store_, file_, ports, reporter_);
    // Work that must not run inside a port notification (stopping after a lost port or a
    // failed write) waits for the event loop's next turn.
    recorder_->setPoster([this](std::function<void()> work) { QTimer::singleShot(0, &postContext_, std::move(work)); });
    // The drive may fill up while the line is quiet (another program writing): look every second.
    auto *spaceWatch = new QTimer(&postContext_);
    QObject::connect(spaceWatch, &QTimer::timeout, spaceWatch, [this] { recorder_->watchFreeSpace(); });
    spaceWatch->start(1000);
    recorder_->setTriggerPreparation([this] { return triggers_ != nullptr && triggers_->prepare(*this); });
    recorder_->setTriggerTimingStop([this] {
        if (triggers_ != nullptr)
            triggers_->stopTiming(*this);
    });

    Capture::Hooks &h = capture_->hooks();
    h.record = [this](std::uint16_t burst) { return recorder_->recordEvent(burst); };
    h.gate = [this] { return recorder_->RecordingGate(); };
    h.burstBegin = [this] {
        event_.reset();
        recorder_->beginBurst();
    };
    h.burstEnd = [this] {
        recorder_->endBurst(); // every MP of the burst is in the file before the event is set
        event_.set();
    };
    h.settingsApplied = [this](const PortSettings &portA) {
        store_.SetLineTiming(ComputeLineTiming(portA, store_.frequency()));
    };
    h.portLost = [this](ComPort &port, const std::string &reason) { recorder_->onPortLost(port.device(), reason); };
    h.statusTrigger = [this](ComPort &port, int handle) {
        return triggers_ == nullptr || triggers_->statusTrigger(*this, tagOf(port), handle);
    };
    h.dataTrigger = [this](ComPort &port, int handle) {
        if (triggers_ != nullptr)
            triggers_->dataTrigger(*this, tagOf(port), handle);
    };
    h.afterData = [this] {
        if (triggers_ != nullptr)
            triggers_->afterData(*this);
    };
}

void RecordingSession::closeAfterRecording()
{
    // What the ports received up to now belongs to the recording: read it out before the
    // close flushes the receive buffers.
    capture_->ComReadAllPendingData();
    capture_->ClosePorts();
}

void RecordingSession::requestStop()
{
    QTimer::singleShot(0, &postContext_, [this] {
        if (recorder_->recording() || recorder_->loaded())
            recorder_->stop();
    });
}

} // namespace kestrel
