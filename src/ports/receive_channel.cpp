#include "ports/receive_channel.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>

#include "ports/com_port.h"
#include "ports/port_settings.h"

namespace kestrel {

namespace {
// Handles are unique across all ports, so a handle alone tells which trigger
// fired; they wrap below kMaxTriggerHandle, long after any old one was removed.
int NewTriggerHandle()
{
    static std::atomic<unsigned> next{0};
    return static_cast<int>(next.fetch_add(1, std::memory_order_relaxed) % kMaxTriggerHandle) + 1;
}
} // namespace


ReceiveChannel::ReceiveChannel(Deliver deliver)
    : deliver_(std::move(deliver)), context_(std::make_unique<QObject>()), ring_(kReceiveBufferSize)
{
}

ReceiveChannel::~ReceiveChannel() = default;

void ReceiveChannel::queueLocked(PortNote note)
{
    if (note.kind == PortNote::Kind::Data && !notes_.empty() && notes_.back().kind == PortNote::Kind::Data) {
        notes_.back().value += note.value; // bytes of consecutive reads make one notification
        return;
    }
    notes_.push_back(std::move(note));
    if (!drainPosted_) {
        drainPosted_ = true;
        // Queued to the thread that owns the context; posted calls to one receiver keep their order.
        QMetaObject::invokeMethod(context_.get(), [this] { deliverPending(); }, Qt::QueuedConnection);
    }
}

void ReceiveChannel::deliverPending()
{
    for (;;) {
        PortNote note;
        {
            std::lock_guard lock(mutex_);
            if (notes_.empty()) {
                drainPosted_ = false;
                return;
            }
            note = std::move(notes_.front());
            notes_.pop_front();
        }
        if (deliver_)
            deliver_(note);
    }
}

std::size_t ReceiveChannel::pushBytes(const std::uint8_t *data, std::size_t size)
{
    std::lock_guard lock(mutex_);
    if (lost_ || stopped_)
        return 0;
    std::size_t taken = 0;
    std::size_t run = 0; // bytes not yet announced
    for (; taken < size && count_ < ring_.size(); ++taken) {
        const std::uint8_t b = data[taken];
        ring_[(head_ + count_) % ring_.size()] = b;
        ++count_;
        ++run;
        if (dataTriggers_.empty())
            continue;
        dataTriggers_.feed(b, completed_);
        for (const int handle : completed_) {
            // The hit follows the byte that completes it.
            if (run > 0)
                queueLocked({PortNote::Kind::Data, static_cast<int>(run), {}});
            run = 0;
            queueLocked({PortNote::Kind::TriggerData, handle, {}});
        }
    }
    if (run > 0)
        queueLocked({PortNote::Kind::Data, static_cast<int>(run), {}});
    if (count_ >= static_cast<std::size_t>(kBufferFull))
        throttled_ = true;
    return taken;
}

void ReceiveChannel::fireStatusLocked(int kind, unsigned bits)
{
    for (auto &[handle, t] : statusTriggers_) {
        if (t.kind == kind && t.active && (t.mask & bits) != 0) {
            t.active = false; // fires once; the owner arms it again
            queueLocked({PortNote::Kind::TriggerStatus, handle, {}});
        }
    }
}

void ReceiveChannel::pushLineError(unsigned errorWord)
{
    std::lock_guard lock(mutex_);
    if (lost_ || stopped_ || errorWord == 0)
        return;
    queueLocked({PortNote::Kind::LineError, static_cast<int>(errorWord), {}});
    fireStatusLocked(StatusTriggerKind::Line, errorWord);
}

void ReceiveChannel::pushModemState(std::uint8_t state)
{
    std::lock_guard lock(mutex_);
    state &= Msr::Cts | Msr::Dsr | Msr::Ri | Msr::Dcd;
    if (lost_ || stopped_ || state == modemState_)
        return;
    const std::uint8_t changed = modemState_ ^ state;
    std::uint8_t deltas = 0;
    if (changed & Msr::Cts)
        deltas |= 0x01;
    if (changed & Msr::Dsr)
        deltas |= 0x02;
    if ((modemState_ & Msr::Ri) && !(state & Msr::Ri))
        deltas |= Msr::TeriRi; // only the trailing edge of a ring counts
    if (changed & Msr::Dcd)
        deltas |= 0x08;
    modemState_ = state;
    modemDeltas_ |= deltas;
    queueLocked({PortNote::Kind::ModemStatus, state, {}});
    fireStatusLocked(StatusTriggerKind::Modem, static_cast<unsigned>(changed | deltas));
}

void ReceiveChannel::pushLost(const std::string &reason)
{
    std::lock_guard lock(mutex_);
    if (lost_ || stopped_)
        return;
    lost_ = true;
    queueLocked({PortNote::Kind::Lost, 0, reason});
    roomCv_.notify_all();
}

std::size_t ReceiveChannel::buffered() const
{
    std::lock_guard lock(mutex_);
    return count_;
}

std::size_t ReceiveChannel::freeSpace() const
{
    std::lock_guard lock(mutex_);
    return ring_.size() - count_;
}

bool ReceiveChannel::waitForRoom()
{
    std::unique_lock lock(mutex_);
    roomCv_.wait(lock, [this] { return stopped_ || !throttled_; });
    return !stopped_;
}

void ReceiveChannel::stop()
{
    std::lock_guard lock(mutex_);
    stopped_ = true;
    notes_.clear(); // a closed port reports nothing more
    roomCv_.notify_all();
}

bool ReceiveChannel::charReady() const
{
    std::lock_guard lock(mutex_);
    return count_ > 0;
}

std::uint8_t ReceiveChannel::getChar()
{
    std::lock_guard lock(mutex_);
    if (count_ == 0)
        return 0;
    const std::uint8_t b = ring_[head_];
    head_ = (head_ + 1) % ring_.size();
    --count_;
    if (throttled_ && count_ <= static_cast<std::size_t>(kBufferResume)) {
        throttled_ = false;
        roomCv_.notify_all();
    }
    return b;
}

void ReceiveChannel::flush()
{
    std::lock_guard lock(mutex_);
    head_ = count_ = 0;
    throttled_ = false;
    roomCv_.notify_all();
}

std::uint8_t ReceiveChannel::readModemStatus()
{
    std::lock_guard lock(mutex_);
    const std::uint8_t word = modemState_ | modemDeltas_;
    modemDeltas_ = 0;
    return word;
}

std::uint8_t ReceiveChannel::modemState() const
{
    std::lock_guard lock(mutex_);
    return modemState_;
}

int ReceiveChannel::addDataTrigger(const std::vector<std::uint8_t> &pattern)
{
    if (pattern.empty())
        return 0;
    std::lock_guard lock(mutex_);
    const int handle = NewTriggerHandle();
    dataTriggers_.add(handle, pattern);
    return handle;
}

int ReceiveChannel::addStatusTrigger(int kind)
{
    if (kind != StatusTriggerKind::Modem && kind != StatusTriggerKind::Line)
        return 0;
    std::lock_guard lock(mutex_);
    const int handle = NewTriggerHandle();
    statusTriggers_.emplace(handle, StatusTrigger{kind, 0, false});
    return handle;
}

bool ReceiveChannel::setStatusTrigger(int handle, unsigned mask, bool active)
{
    std::lock_guard lock(mutex_);
    auto it = statusTriggers_.find(handle);
    if (it == statusTriggers_.end())
        return false;
    it->second.mask = mask;
    it->second.active = active;
    return true;
}

void ReceiveChannel::removeTrigger(int handle)
{
    std::lock_guard lock(mutex_);
    dataTriggers_.remove(handle);
    statusTriggers_.erase(handle);
}

bool ReceiveChannel::hasTrigger(int handle) const
{
    std::lock_guard lock(mutex_);
    return dataTriggers_.contains(handle) || statusTriggers_.count(handle) != 0;
}

void ReceiveChannel::reset(std::uint8_t initialModemState)
{
    std::lock_guard lock(mutex_);
    head_ = count_ = 0;
    throttled_ = false;
    stopped_ = false;
    lost_ = false;
    notes_.clear();
    modemState_ = initialModemState & (Msr::Cts | Msr::Dsr | Msr::Ri | Msr::Dcd);
    modemDeltas_ = 0;
    dataTriggers_.clear();
    statusTriggers_.clear();
    // Handles keep counting up, so a stale handle of an earlier session never matches.
    roomCv_.notify_all();
}

void DeliverNote(ComPortListener *listener, ComPort &port, const PortNote &note)
{
    if (!listener)
        return;
    switch (note.kind) {
    case PortNote::Kind::Data:
        listener->onDataAvailable(port, note.value);
        break;
    case PortNote::Kind::LineError:
        listener->onLineError(port, static_cast<unsigned>(note.value));
        break;
    case PortNote::Kind::ModemStatus:
        listener->onModemStatusChanged(port);
        break;
    case PortNote::Kind::TriggerData:
        listener->onTriggerData(port, note.value);
        break;
    case PortNote::Kind::TriggerStatus:
        listener->onTriggerStatus(port, note.value);
        break;
    case PortNote::Kind::Lost:
        listener->onPortLost(port, note.text);
        break;
    }
}

} // namespace kestrel
