#include "trigger_engine/trigger_engine.h"

#include <QTimer>

#include <algorithm>
#include <cctype>
#include <cmath>

#include "base/string_table.h"
#include "capture/recording_session.h"
#include "present/byte_text.h"
#include "trigger_engine/trigger_actions.h"
#include "trigger_engine/trigger_engine_log.h"

namespace kestrel {

namespace {

constexpr std::size_t kMaxPatternBytes = 255;
constexpr int kTickMs = 1000;

// Line masks of the modem status word (the port's MSR bits).
constexpr unsigned kMaskDsr = 0x20, kMaskCts = 0x10, kMaskDcd = 0x80, kMaskRi = 0x04;
// Line-status bits of an error trigger.
constexpr unsigned kMaskPe = 0x02, kMaskFe = 0x04, kMaskLe = 0x08;

// Indexes of the six status lines in the pending event's order S1, M1, S2, M2, M5, M3.
enum Line { S1, M1, S2, M2, M5, M3 };

// The stored hex text as the bytes of a port pattern, at most 255 of them.
std::vector<std::uint8_t> PatternOf(const TriggerDef &t)
{
    std::string hex;
    for (char c : t.Data)
        hex += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const std::string bytes = HexToBytes(ValidateHexString(hex)).value_or(std::string());
    std::vector<std::uint8_t> out(bytes.begin(), bytes.end());
    if (out.size() > kMaxPatternBytes)
        out.resize(kMaxPatternBytes);
    return out;
}

// Whole seconds from then to now. A microsecond of slack keeps a second measured
// in day fractions from coming out as 0.999999.
long long WholeSecondsBetween(double then, double now)
{
    return static_cast<long long>(std::floor((now - then) * 86400.0 + 1e-6));
}

// Port triggers are found again through the handle table, which has a slot per number below 1000.
bool HasHandleSlot(const TriggerDef &t) { return t.number >= 0 && t.number < kHandleTableSize; }
bool WatchesPort(const TriggerDef &t)
{
    return t.Event == TriggerEvent::Data || t.Event == TriggerEvent::Signal || t.Event == TriggerEvent::Error;
}

} // namespace

TriggerEngine::TriggerEngine() : timer_(new QTimer(&context_))
{
    timer_->setObjectName("TriggerTimer");
    timer_->setInterval(kTickMs);
    QObject::connect(timer_, &QTimer::timeout, &context_, [this] { tick(); });
}

TriggerEngine::~TriggerEngine() = default;

bool TriggerEngine::timerRunning() const { return timer_->isActive(); }

std::uint16_t TriggerEngine::handleSlot(int number) const
{
    return number >= 0 && number < kHandleTableSize ? handles_[static_cast<std::size_t>(number)] : 0;
}

std::array<std::uint8_t, 6> TriggerEngine::currentLevels() const
{
    const ComEvent &e = session_->store().pending();
    return {e.s1, e.m1, e.s2, e.m2, e.m5, e.m3};
}

bool TriggerEngine::prepare(RecordingSession &session)
{
    session_ = &session;
    session.store().setEventWatch(&events_);
    armed_.clear();
    handles_.fill(0);
    timerList_.clear();
    setTimer(false);
    position_ = 0;
    startGroup_ = false;
    chain_.clear();
    if (list_ != nullptr) {
        for (const TriggerDef &t : *list_) {
            if (t.Active)
                chain_.push_back(t);
        }
    }
    for (TriggerDef &t : chain_)
        t.portHandle = 0;
    if (actions_ != nullptr)
        actions_->newRecording();

    // The levels before the first event are the baseline of edges and of silence.
    session.capture().ReadModemStatuses();
    previous_ = currentLevels();
    events_.ResetAll(session.clock().nowDateTime(), previous_);

    Recorder &recorder = session.recorder();
    recorder.triggerStates = {};
    if (chain_.empty()) {
        recorder.triggerControlled = false;
        return false; // the recorder opens the gate and arms its own status triggers
    }

    std::string unplaced;
    int count = 0;
    for (const TriggerDef &t : chain_) {
        if (!HasHandleSlot(t) && WatchesPort(t)) {
            if (count++ < 10)
                unplaced += (unplaced.empty() ? "" : ", ") + std::to_string(t.number);
        }
    }
    if (count > 0) {
        if (count > 10)
            unplaced += ", … (" + std::to_string(count) + ")";
        session.reporter().report(TriggerEngineMsg::Title,
                                  Result::Fail(TriggerEngineMsg::NumberTooLarge, "\n\n" + unplaced), {},
                                  Severity::Warning);
    }

    recorder.captureEnabled = false;
    recorder.triggerControlled = false;
    armNextGroup();
    qCInfo(lcTriggers) << "chain of" << chain_.size() << "triggers armed up to position" << position_;
    return true;
}

void TriggerEngine::armNextGroup()
{
    Recorder &recorder = session_->recorder();
    bool armedStart = false;
    while (position_ < chain_.size() && chain_[position_].Type == TriggerType::StartRecording) {
        TriggerDef &t = chain_[position_];
        arm(t);
        recorder.triggerControlled = true;
        startGroup_ = true;
        showStatus(StrArg(TriggerEngineMsg::WaitingForStart, std::to_string(t.number)));
        ++position_;
        armedStart = true;
    }
    if (armedStart)
        return;
    while (position_ < chain_.size() && (chain_[position_].Type == TriggerType::StopRecording ||
                                         chain_[position_].Type == TriggerType::Inactivity)) {
        TriggerDef &t = chain_[position_];
        arm(t);
        recorder.triggerControlled = true;
        if (t.Type == TriggerType::StopRecording) {
            recorder.triggerStates.stopGroupArmed = true;
            showStatus(StrArg(TriggerEngineMsg::WaitingForStop, std::to_string(t.number)));
        } else {
            recorder.triggerStates.inactivityGroupArmed = true;
        }
        recorder.captureEnabled = true;
        ++position_;
    }
}

void TriggerEngine::arm(TriggerDef &t)
{
    if (WatchesPort(t) && !HasHandleSlot(t))
        return; // told when the chain was built
    switch (t.Event) {
    case TriggerEvent::Data: {
        const std::vector<std::uint8_t> pattern = PatternOf(t);
        if (pattern.empty()) {
            qCWarning(lcTriggers) << "trigger" << t.number << "has no data pattern and can never fire";
            break;
        }
        if (t.D1)
            keepHandle(t, PortTag::B, session_->port(PortTag::B).addDataTrigger(pattern), 0);
        if (t.D2)
            keepHandle(t, PortTag::A, session_->port(PortTag::A).addDataTrigger(pattern), 0);
        break;
    }
    case TriggerEvent::Signal:
        armSignal(t);
        break;
    case TriggerEvent::Error:
        armError(t);
        break;
    case TriggerEvent::TimeReached:
    case TriggerEvent::Inactivity:
        timerList_.push_back(static_cast<std::size_t>(&t - chain_.data()));
        setTimer(true);
        break;
    default:
        qCWarning(lcTriggers) << "trigger" << t.number << "has an unknown event" << t.Event;
        break;
    }
}

void TriggerEngine::armSignal(TriggerDef &t)
{
    auto bit = [](std::int32_t edge, unsigned mask) { return edge != SignalEdge::Ignore ? mask : 0u; };
    const unsigned maskB = bit(t.S1, kMaskDsr) | bit(t.S2, kMaskCts);
    const unsigned maskA = bit(t.M1, kMaskDsr) | bit(t.M2, kMaskCts) | bit(t.M5, kMaskDcd) | bit(t.M3, kMaskRi);
    // Edges count from the levels the lines have when the trigger is armed.
    previous_ = currentLevels();
    for (const auto &[tag, mask] : {std::pair{PortTag::B, maskB}, std::pair{PortTag::A, maskA}}) {
        if (mask == 0)
            continue;
        ComPort &port = session_->port(tag);
        const int handle = port.addStatusTrigger(StatusTriggerKind::Modem);
        keepHandle(t, tag, handle, mask);
        port.setStatusTrigger(handle, mask, true);
    }
}

void TriggerEngine::armError(TriggerDef &t)
{
    const unsigned mask = (t.PE ? kMaskPe : 0u) | (t.FE ? kMaskFe : 0u) | (t.LE ? kMaskLe : 0u);
    for (PortTag tag : {PortTag::B, PortTag::A}) {
        ComPort &port = session_->port(tag);
        const int handle = port.addStatusTrigger(StatusTriggerKind::Line);
        keepHandle(t, tag, handle, mask);
        port.setStatusTrigger(handle, mask, true);
    }
}

void TriggerEngine::keepHandle(TriggerDef &t, PortTag port, int handle, unsigned mask)
{
    if (handle <= 0 || handle > kMaxTriggerHandle)
        return; // the port is closed or refused the trigger
    t.portHandle = static_cast<std::uint16_t>(handle);
    armed_.push_back({port, handle, static_cast<std::size_t>(&t - chain_.data()), mask});
    handles_[static_cast<std::size_t>(t.number)] =
            static_cast<std::uint16_t>(handle + (port == PortTag::A ? kPortTagA : kPortTagB));
}

void TriggerEngine::disarm()
{
    setTimer(false);
    timerList_.clear();
    for (const ArmedTrigger &a : armed_)
        session_->port(a.port).removeTrigger(a.handle);
    armed_.clear();
    handles_.fill(0);
    Recorder &recorder = session_->recorder();
    recorder.triggerControlled = false;
    recorder.triggerStates = {};
    startGroup_ = false;
}

void TriggerEngine::setTimer(bool on)
{
    if (on && !timer_->isActive())
        timer_->start();
    else if (!on)
        timer_->stop();
}

void TriggerEngine::dataTrigger(RecordingSession &, PortTag port, int handle) { (void)hit(port, handle); }

bool TriggerEngine::statusTrigger(RecordingSession &, PortTag port, int handle) { return hit(port, handle); }

bool TriggerEngine::hit(PortTag sender, int handle)
{
    if (session_ == nullptr)
        return true;
    // A trigger armed on both ports (an error trigger, a pattern on D1 and D2) answers on
    // either; a hit queued before its trigger was removed finds nothing and is dropped.
    const auto it = std::find_if(armed_.begin(), armed_.end(), [&](const ArmedTrigger &a) {
        return a.port == sender && a.handle == handle;
    });
    if (it == armed_.end())
        return true;
    const ArmedTrigger found = *it;
    const TriggerDef &t = chain_[found.chainIndex];
    if (t.Event == TriggerEvent::Signal && !signalEdgeMatches(t)) {
        // Not the edge it waits for: listen again.
        session_->port(sender).setStatusTrigger(handle, found.mask, true);
        return false;
    }
    const TriggerDef fired = t; // disarming and arming may not touch what the actions read
    fire(fired);
    disarm();
    armNextGroup();
    return true;
}

bool TriggerEngine::signalEdgeMatches(const TriggerDef &t)
{
    const std::array<std::uint8_t, 6> now = currentLevels();
    const std::pair<Line, std::int32_t> wanted[] = {{S1, t.S1}, {M1, t.M1}, {S2, t.S2},
                                                     {M2, t.M2}, {M5, t.M5}, {M3, t.M3}};
    bool matched = false;
    for (const auto &[line, edge] : wanted) {
        if (edge == SignalEdge::Ignore)
            continue;
        const bool was = previous_[line] != 0, is = now[line] != 0;
        if ((edge == SignalEdge::Rises && is && !was) || (edge == SignalEdge::Falls && !is && was))
            matched = true;
        previous_[line] = now[line];
    }
    return matched;
}

void TriggerEngine::tick()
{
    if (session_ == nullptr || timerList_.empty())
        return;
    const double now = session_->clock().nowDateTime();
    for (const std::size_t index : timerList_) {
        if (!timerTriggerDue(chain_[index], now))
            continue;
        const TriggerDef fired = chain_[index];
        fire(fired);
        // An inactivity trigger stays armed and reports the next full period of silence.
        if (fired.Type == TriggerType::StartRecording || fired.Type == TriggerType::StopRecording) {
            disarm();
            armNextGroup();
        }
        return;
    }
}

bool TriggerEngine::timerTriggerDue(const TriggerDef &t, double now)
{
    if (t.Event == TriggerEvent::TimeReached)
        return now > t.TimeReached;
    if (t.Event != TriggerEvent::Inactivity)
        return false;
    const std::pair<EventKind, bool> watched[] = {
        {EventKind::D1, t.EventD1}, {EventKind::D2, t.EventD2}, {EventKind::S1, t.EventS1},
        {EventKind::M1, t.EventM1}, {EventKind::S2, t.EventS2}, {EventKind::M2, t.EventM2},
        {EventKind::M3, t.EventM3}, {EventKind::M5, t.EventM5}, {EventKind::PE, t.EventPE},
        {EventKind::FE, t.EventFE}, {EventKind::LE, t.EventLE},
    };
    const auto period = static_cast<std::uint32_t>(t.InActivityTime - 1);
    bool silent = false;
    for (const auto &[kind, ticked] : watched) {
        if (!ticked)
            continue;
        if (LastEvents::IsLine(kind) && events_.level(kind) != 0)
            continue; // a line held high is active
        // Compared unsigned: a clock set back counts as silence, not as a wait of years.
        const auto seconds = static_cast<std::uint32_t>(WholeSecondsBetween(events_.time(kind), now));
        if (seconds > period) {
            events_.Touch(kind, now);
            silent = true;
        }
    }
    return silent;
}

void TriggerEngine::fire(const TriggerDef &t)
{
    Recorder &recorder = session_->recorder();
    session_->writeTriggerMark(static_cast<std::uint8_t>(t.Type), static_cast<std::uint8_t>(t.Event),
                               static_cast<std::uint8_t>(t.number));
    const std::uint32_t mp = session_->store().previous().number;
    qCInfo(lcTriggers) << "trigger" << t.number << t.Name.c_str() << "fired at MP" << mp;
    view_->triggerFired(t, mp);

    if (recorder.triggerControlled && startGroup_) {
        recorder.captureEnabled = true;
        events_.ResetAll(session_->clock().nowDateTime(), currentLevels());
        showStatus({});
    }
    if (recorder.triggerStates.stopGroupArmed && t.Type == TriggerType::StopRecording) {
        showStatus({});
        if (position_ >= chain_.size()) {
            // The end of the chain: what the ports hold still belongs to the recording.
            session_->capture().ComReadAllPendingData();
            recorder.captureEnabled = false;
            session_->requestStop();
        } else {
            recorder.captureEnabled = false; // until the next start trigger
        }
    }
    if (actions_ != nullptr)
        actions_->run(t);
}

void TriggerEngine::stopTiming(RecordingSession &)
{
    setTimer(false);
}

void TriggerEngine::showStatus(const std::string &text) { view_->triggerStatusText(text); }

} // namespace kestrel
