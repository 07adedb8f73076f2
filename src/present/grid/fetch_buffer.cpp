#include "present/grid/fetch_buffer.h"

#include <algorithm>

#include "record/record_reader.h"

namespace kestrel::grid {

namespace {
const MpRecord kZeroMp{};
}

FetchBuffer::FetchBuffer()
    : raw_(std::make_unique<std::array<std::uint8_t, kFetchSlots * kMpSize>>()),
      slots_(std::make_unique<std::array<MpRecord, kFetchSlots>>())
{
}

std::optional<double> FetchBuffer::Decode(std::uint64_t got)
{
    for (std::uint64_t i = 0; i < got; ++i)
        (*slots_)[i] = DecodeMp(raw_->data() + i * kMpSize);
    return Finish(got);
}

// Zeroes from the first missing slot on and looks for MP 1. Slots past the
// old filled part are zero already: a live page refilled 50 times a second
// clears only what it held before, not the whole block.
std::optional<double> FetchBuffer::Finish(std::uint64_t got)
{
    const std::uint64_t before = filled_;
    filled_ = got;
    valid_ = got == static_cast<std::uint64_t>(kFetchSlots);
    std::optional<double> base;
    for (std::uint64_t i = 0; i < got; ++i) {
        if (first_ + i == 1)
            base = (*slots_)[i].time;
    }
    if (before > got)
        std::fill(slots_->begin() + static_cast<std::ptrdiff_t>(got), slots_->begin() + static_cast<std::ptrdiff_t>(before),
                  MpRecord{});
    return base;
}

std::optional<double> FetchBuffer::Fetch(const RecordReader &reader, std::uint64_t first)
{
    first_ = first;
    const std::uint64_t got = reader.readRaw(first, kFetchSlots, raw_->data());
    lastReadBytes_ = got * kMpSize;
    totalReadBytes_ += lastReadBytes_;
    return Decode(got);
}

std::optional<double> FetchBuffer::FillFromRecords(const std::vector<MpRecord> &records, std::uint64_t lastIndex)
{
    const std::size_t got = std::min<std::size_t>(records.size(), kFetchSlots);
    const std::size_t skip = records.size() - got; // keep the newest
    first_ = got > 0 ? lastIndex + 1 - got : 0;
    std::copy(records.begin() + static_cast<std::ptrdiff_t>(skip), records.end(), slots_->begin());
    lastReadBytes_ = 0;
    return Finish(got);
}

void FetchBuffer::Clear()
{
    std::fill(slots_->begin(), slots_->end(), MpRecord{});
    first_ = 0;
    filled_ = 0;
    valid_ = false;
}

bool FetchBuffer::Covers(std::uint64_t from, std::uint64_t count, std::uint64_t recordCount) const
{
    if (from < first_ || first_ + filled_ > recordCount)
        return false;
    const std::uint64_t end = from + count;
    if (end <= first_ + filled_)
        return true;
    // The block ends short of the page only because the file ends there.
    return filled_ < static_cast<std::uint64_t>(kFetchSlots) && first_ + filled_ >= recordCount && end <= first_ + kFetchSlots;
}

const MpRecord &FetchBuffer::Slot(std::int64_t i) const
{
    if (i < 0 || i >= kFetchSlots)
        return kZeroMp;
    return (*slots_)[static_cast<std::size_t>(i)];
}

const MpRecord *FetchBuffer::Mp(std::uint64_t n) const
{
    if (n < first_ || n - first_ >= filled_)
        return nullptr;
    return &(*slots_)[n - first_];
}

} // namespace kestrel::grid
