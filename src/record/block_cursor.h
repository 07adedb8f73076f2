#pragma once
// Reads a record file in large blocks for a walk in either direction, so that
// a scan costs one system call per block, not per MP.

#include <cstdint>
#include <vector>

#include "record/mp_record.h"
#include "record/record_reader.h"

namespace kestrel {

class BlockCursor {
public:
    static constexpr std::uint64_t kDefaultBlock = 1638; // 128 KiB per read: stays in the L2 cache while it is scanned

    explicit BlockCursor(const RecordReader &reader, std::uint64_t blockRecords = kDefaultBlock);

    // Raw bytes of MP n, or nullptr when n lies beyond the end of the file.
    // A miss refills the block so that the walk in `direction` (+1 or -1)
    // continues inside it; direction 0 centres the block on n, for short
    // forward looks taken from a walk that itself goes backward.
    [[nodiscard]] const std::uint8_t *at(std::uint64_t n, int direction)
    {
        if (n - base_ < have_)
            return buf_.data() + (n - base_) * kMpSize;
        return refill(n, direction);
    }

    // After at(n, direction) succeeded: how many MPs from n on, walking in
    // `direction`, sit in the block (n itself included).
    [[nodiscard]] std::uint64_t span(std::uint64_t n, int direction) const
    {
        return direction < 0 ? n - base_ + 1 : base_ + have_ - n;
    }

    [[nodiscard]] std::uint64_t readCalls() const { return readCalls_; }

private:
    const std::uint8_t *refill(std::uint64_t n, int direction);

    const RecordReader &reader_;
    std::uint64_t capacity_;
    std::vector<std::uint8_t> buf_;
    std::uint64_t base_ = 0;
    std::uint64_t have_ = 0;
    std::uint64_t readCalls_ = 0;
};

} // namespace kestrel
