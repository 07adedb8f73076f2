#include "record/block_cursor.h"

namespace kestrel {

BlockCursor::BlockCursor(const RecordReader &reader, std::uint64_t blockRecords)
    : reader_(reader), capacity_(blockRecords ? blockRecords : 1), buf_(capacity_ * kMpSize)
{
}

const std::uint8_t *BlockCursor::refill(std::uint64_t n, int direction)
{
    // Walking backward, the block ends at n; forward it starts there; centred it has n in its middle.
    if (direction < 0)
        base_ = n + 1 >= capacity_ ? n + 1 - capacity_ : 0;
    else if (direction == 0)
        base_ = n >= capacity_ / 2 ? n - capacity_ / 2 : 0;
    else
        base_ = n;
    have_ = reader_.readRaw(base_, capacity_, buf_.data());
    ++readCalls_;
    if (n - base_ >= have_)
        return nullptr;
    return buf_.data() + (n - base_) * kMpSize;
}

} // namespace kestrel
