#include "record/live_buffer.h"

#include <algorithm>

namespace kestrel {

LiveBuffer::LiveBuffer() : slots_(std::make_unique<std::array<MpRecord, kLiveBufferSlots>>()) {}

void LiveBuffer::setSize(std::size_t n)
{
    std::lock_guard lock(mutex_);
    size_ = std::clamp<std::size_t>(n, 1, kLiveBufferSlots);
}

std::size_t LiveBuffer::size() const
{
    std::lock_guard lock(mutex_);
    return size_;
}

void LiveBuffer::push(const MpRecord &mp)
{
    std::lock_guard lock(mutex_);
    (*slots_)[head_] = mp;
    head_ = (head_ + 1) % kLiveBufferSlots;
    ++fill_;
}

std::uint64_t LiveBuffer::fillCount() const
{
    std::lock_guard lock(mutex_);
    return fill_;
}

void LiveBuffer::resetCount()
{
    std::lock_guard lock(mutex_);
    fill_ = 0;
}

void LiveBuffer::clear()
{
    std::lock_guard lock(mutex_);
    slots_->fill(MpRecord{});
    head_ = 0;
    fill_ = 0;
}

std::vector<MpRecord> LiveBuffer::snapshot() const
{
    std::lock_guard lock(mutex_);
    // The ring always holds the newest 10,000 pushes; N of them are visible.
    const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(fill_, size_));
    std::vector<MpRecord> out;
    out.reserve(n);
    std::size_t slot = (head_ + kLiveBufferSlots - n) % kLiveBufferSlots;
    for (std::size_t i = 0; i < n; ++i) {
        out.push_back((*slots_)[slot]);
        slot = (slot + 1) % kLiveBufferSlots;
    }
    return out;
}

} // namespace kestrel
