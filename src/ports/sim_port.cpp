#include "ports/sim_port.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>

#include "ports/port_support.h"
#include "ports/ports_log.h"

namespace kestrel {

namespace {
// Events handed over per poll at most, so that a looping scenario without pauses never stalls the event loop.
constexpr std::size_t kMaxEventsPerPoll = 65536;
constexpr std::int64_t kNever = std::int64_t{1} << 62; // far beyond any recording, with room to add to
} // namespace

SimPort::SimPort(SimLine &line, int index, std::string name)
    : line_(line), index_(index), name_(std::move(name)),
      channel_([this](const PortNote &note) {
          if (open_)
              DeliverNote(listener_, *this, note);
      })
{
}

Result SimPort::open()
{
    if (open_)
        return Result::Ok();
    Result r = line_.gone_[index_]                     ? PortFailure(PortTextId::Gone)
             : !line_.unavailable_[index_].empty()     ? Result::Fail(static_cast<int>(PortTextId::Busy),
                                                                      line_.unavailable_[index_])
                                                       : ValidPortSettings(settings_);
    if (!r) {
        qCInfo(lcPorts) << "cannot open" << name_.c_str() << ":" << r.detail.c_str();
        return r;
    }
    channel_.reset(line_.modem_[index_]);
    open_ = true;
    ++openCount_;
    return r;
}

void SimPort::close()
{
    if (!open_)
        return;
    channel_.stop();
    open_ = false;
}

SimLine::SimLine(Scenario scenario, Clock &clock) : scenario_(std::move(scenario)), clock_(clock)
{
    ports_[kSimPortA] = std::make_unique<SimPort>(*this, kSimPortA, kSimDeviceA);
    ports_[kSimPortB] = std::make_unique<SimPort>(*this, kSimPortB, kSimDeviceB);
    restart();
}

SimLine::~SimLine() = default;

std::int64_t SimLine::charTimeNs() const
{
    if (!scenario_.paced)
        return 0;
    const PortSettings s = ports_[kSimPortA]->settings();
    const long baud = scenario_.baud > 0 ? scenario_.baud : s.baud;
    if (baud <= 0)
        return 0;
    return static_cast<std::int64_t>(CharacterBitsTimesTwo(s)) * 500'000'000LL / baud;
}

void SimLine::compile()
{
    const std::int64_t ct = charTimeNs();
    events_.clear();
    std::int64_t now = 0, prevStart = 0;
    std::array<std::int64_t, 2> wireFree{};
    const std::size_t chunk = static_cast<std::size_t>(std::max(1, scenario_.chunk));
    for (const ScenarioStep &st : scenario_.steps) {
        switch (st.kind) {
        case ScenarioStep::Kind::Wait:
            // Saturate: a scenario full of huge waits just never gets there.
            now = st.nanoseconds > kNever - now ? kNever : now + st.nanoseconds;
            break;
        case ScenarioStep::Kind::At:
            now = std::max(now, std::min(st.nanoseconds, kNever));
            break;
        case ScenarioStep::Kind::Bytes: {
            // A wire carries one character at a time; bytes arrive when their stop bit is done
            // and are handed over a FIFO's worth at a time.
            const std::int64_t start = std::max(st.withPrevious ? prevStart : now, wireFree[st.port]);
            const std::size_t n = st.bytes.size();
            for (std::size_t i = 0; i < n; i += chunk) {
                const std::size_t j = std::min(n, i + chunk);
                Event e;
                e.at = start + static_cast<std::int64_t>(j) * ct;
                e.port = st.port;
                e.kind = st.kind;
                e.bytes.assign(st.bytes.begin() + static_cast<std::ptrdiff_t>(i),
                               st.bytes.begin() + static_cast<std::ptrdiff_t>(j));
                events_.push_back(std::move(e));
            }
            const std::int64_t end = start + static_cast<std::int64_t>(n) * ct;
            wireFree[st.port] = end;
            now = std::max(now, end);
            prevStart = start;
            break;
        }
        default: {
            Event e;
            e.at = st.withPrevious ? prevStart : now;
            e.port = st.port;
            e.kind = st.kind;
            e.value = st.value;
            prevStart = e.at;
            events_.push_back(std::move(e));
            break;
        }
        }
    }
    std::stable_sort(events_.begin(), events_.end(), [](const Event &x, const Event &y) { return x.at < y.at; });
    passLength_ = now;
    if (!events_.empty())
        passLength_ = std::max(passLength_, events_.back().at);
}

void SimLine::restart()
{
    startCounter_ = clock_.counter();
    next_ = 0;
    pass_ = 0;
    passBase_ = 0;
    compile();
}

std::int64_t SimLine::elapsedNs() const
{
    const std::int64_t diff = clock_.counter() - startCounter_;
    const std::int64_t f = clock_.frequency();
    if (f <= 0)
        return 0;
    return (diff / f) * 1'000'000'000LL + (diff % f) * 1'000'000'000LL / f;
}

bool SimLine::finished() const
{
    return scenario_.loops != 0 && pass_ >= scenario_.loops;
}

std::size_t SimLine::poll()
{
    const std::int64_t now = elapsedNs();
    std::size_t delivered = 0;
    while (!finished() && delivered < kMaxEventsPerPoll) {
        if (next_ >= events_.size()) {
            const std::int64_t nextBase = passBase_ + passLength_;
            if (nextBase > now && passLength_ > 0)
                break;
            ++pass_;
            passBase_ = nextBase;
            next_ = 0;
            if (!finished())
                compile(); // settings may have changed since the last pass
            if (events_.empty())
                break; // a scenario without events has nothing to repeat
            continue;
        }
        const Event &e = events_[next_];
        if (passBase_ + e.at > now)
            break;
        if (!apply(e))
            break; // the port's buffer is full: hold the rest back like a line with flow control
        ++next_;
        ++delivered;
    }
    return delivered;
}

bool SimLine::apply(const Event &e)
{
    SimPort &p = *ports_[e.port];
    switch (e.kind) {
    case ScenarioStep::Kind::Bytes:
        if (!p.isOpen() || gone_[e.port]) {
            dropped_ += e.bytes.size();
            return true;
        }
        if (p.channel().freeSpace() < e.bytes.size())
            return false;
        (void)p.channel().pushBytes(e.bytes.data(), e.bytes.size());
        return true;
    case ScenarioStep::Kind::ModemSet:
        injectModemState(e.port, static_cast<std::uint8_t>(e.value));
        return true;
    case ScenarioStep::Kind::ModemOn:
        injectModemState(e.port, static_cast<std::uint8_t>(modem_[e.port] | e.value));
        return true;
    case ScenarioStep::Kind::ModemOff:
        injectModemState(e.port, static_cast<std::uint8_t>(modem_[e.port] & ~e.value));
        return true;
    case ScenarioStep::Kind::LineError:
        injectLineError(e.port, e.value);
        return true;
    case ScenarioStep::Kind::Lost:
        disconnect(e.port);
        return true;
    default:
        return true;
    }
}

void SimLine::start(int intervalMs)
{
    if (!timer_) {
        timer_ = std::make_unique<QTimer>();
        QObject::connect(timer_.get(), &QTimer::timeout, [this] { poll(); });
    }
    timer_->start(std::max(1, intervalMs));
}

void SimLine::stopTimer()
{
    if (timer_)
        timer_->stop();
}

void SimLine::setUnavailable(int port, bool missing, const std::string &reason)
{
    if (!missing) {
        unavailable_[port].clear();
        return;
    }
    unavailable_[port] = reason.empty() ? PortText(PortTextId::Busy) : reason;
}

std::string SimLine::unavailableReason(int port) const
{
    return unavailable_[port];
}

void SimLine::injectBytes(int port, const std::vector<std::uint8_t> &bytes)
{
    SimPort &p = *ports_[port];
    if (!p.isOpen() || gone_[port]) {
        dropped_ += bytes.size();
        return;
    }
    const std::size_t taken = p.channel().pushBytes(bytes.data(), bytes.size());
    if (taken < bytes.size()) {
        // What does not fit is lost, as in a real receiver: make the loss visible.
        dropped_ += bytes.size() - taken;
        p.channel().pushLineError(LineError::Overrun);
    }
}

void SimLine::injectModemState(int port, std::uint8_t state)
{
    modem_[port] = state;
    SimPort &p = *ports_[port];
    if (p.isOpen() && !gone_[port])
        p.channel().pushModemState(state);
}

void SimLine::injectLineError(int port, unsigned errorWord)
{
    SimPort &p = *ports_[port];
    if (p.isOpen() && !gone_[port])
        p.channel().pushLineError(errorWord);
}

void SimLine::disconnect(int port)
{
    if (gone_[port])
        return;
    gone_[port] = true;
    SimPort &p = *ports_[port];
    qCInfo(lcPorts) << p.device().c_str() << "lost: disconnected";
    if (p.isOpen())
        p.channel().pushLost(PortText(PortTextId::Gone));
}

void SimLine::reconnect(int port)
{
    gone_[port] = false;
}

} // namespace kestrel
