#pragma once
// The one object shared between the receive handlers and the redraw thread: a
// manual-reset event. The data handlers reset it while they read and record a
// burst and set it afterwards; the redraw thread waits on it (briefly) before
// each step, so a redraw never lands in the middle of a burst.

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace kestrel {

class ReceiveEvent {
public:
    void set();
    void reset();
    [[nodiscard]] bool isSet() const;
    // True when the event was (or became) set within the time-out.
    bool wait(std::chrono::milliseconds timeout);

private:
    mutable std::mutex mutex_;
    std::condition_variable cv_;
    bool set_ = true; // nothing is being read at start
};

// Resets the event for the lifetime of one burst.
class ReceiveBurstGuard {
public:
    explicit ReceiveBurstGuard(ReceiveEvent &event) : event_(event) { event_.reset(); }
    ~ReceiveBurstGuard() { event_.set(); }
    ReceiveBurstGuard(const ReceiveBurstGuard &) = delete;
    ReceiveBurstGuard &operator=(const ReceiveBurstGuard &) = delete;

private:
    ReceiveEvent &event_;
};

} // namespace kestrel
