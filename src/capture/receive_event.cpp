#include "capture/receive_event.h"

namespace kestrel {

void ReceiveEvent::set()
{
    {
        std::lock_guard lock(mutex_);
        set_ = true;
    }
    cv_.notify_all();
}

void ReceiveEvent::reset()
{
    std::lock_guard lock(mutex_);
    set_ = false;
}

bool ReceiveEvent::isSet() const
{
    std::lock_guard lock(mutex_);
    return set_;
}

bool ReceiveEvent::wait(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(mutex_);
    return cv_.wait_for(lock, timeout, [this] { return set_; });
}

} // namespace kestrel
