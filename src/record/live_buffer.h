#pragma once
// The N newest MPs for the live grid. A ring of 10,000 slots; readers always
// get the N newest in MP order. The redraw thread takes snapshots while the
// main thread pushes, so every access is under a lock (uncontended almost
// always: one push per MP, one snapshot per redraw pass).

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "record/mp_record.h"

namespace kestrel {

inline constexpr std::size_t kLiveBufferSlots = 10'000;

class LiveBuffer {
public:
    LiveBuffer();

    // The usable size N: the rows the grid can show; 1..10,000 (clamped).
    void setSize(std::size_t n);
    [[nodiscard]] std::size_t size() const;

    void push(const MpRecord &mp);
    // Fill count: how many MPs were pushed since the last clear (may exceed N).
    [[nodiscard]] std::uint64_t fillCount() const;
    // Fill count := 0; the slots keep their bytes until clear().
    void resetCount();
    // Zeroes every slot and the fill count.
    void clear();

    // The min(fill count, N) newest MPs, oldest first.
    [[nodiscard]] std::vector<MpRecord> snapshot() const;

private:
    mutable std::mutex mutex_;
    std::unique_ptr<std::array<MpRecord, kLiveBufferSlots>> slots_;
    std::size_t size_ = kLiveBufferSlots;
    std::size_t head_ = 0; // slot of the next push
    std::uint64_t fill_ = 0;
};

} // namespace kestrel
