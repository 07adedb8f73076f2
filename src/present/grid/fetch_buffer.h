#pragma once
// The records behind the grid: up to 10,000 consecutive MPs read in one block
// through the view handle. Slot i holds MP (first + i). A short or failed read
// leaves every slot from the first missing one zeroed and the buffer marked
// not valid. The grid reuses the block while the page it shows lies inside
// it, so scrolling reads at most one fetch window and usually nothing.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "record/mp_record.h"

namespace kestrel {
class RecordReader;
}

namespace kestrel::grid {

inline constexpr std::int64_t kFetchSlots = 10000;

class FetchBuffer {
public:
    FetchBuffer();

    // Reads kFetchSlots records from MP first on. Returns the time stamp of
    // MP 1 when the block holds it (the relative time base).
    std::optional<double> Fetch(const RecordReader &reader, std::uint64_t first);
    // Fills the buffer from the live buffer's newest MPs (oldest first); the
    // first record's number says where the block starts.
    // records: consecutive MPs, the last of them at place lastIndex.
    std::optional<double> FillFromRecords(const std::vector<MpRecord> &records, std::uint64_t lastIndex);
    // The same for MPs whose numbers are their places (before any wrap).
    std::optional<double> FillFromRecords(const std::vector<MpRecord> &records)
    {
        return FillFromRecords(records, records.empty() ? 0 : records.back().number);
    }
    // Zeroes every slot.
    void Clear();

    [[nodiscard]] bool valid() const { return valid_; }
    [[nodiscard]] std::uint64_t first() const { return first_; }
    // Slots that hold a record read from the file (the rest are zero).
    [[nodiscard]] std::uint64_t filled() const { return filled_; }
    // True when MPs [from, from + count) all lie inside the filled part, or
    // when the file ends inside this block anyway (nothing more to read);
    // never when the file has become shorter than the block.
    [[nodiscard]] bool Covers(std::uint64_t from, std::uint64_t count, std::uint64_t recordCount) const;

    // Slot i (0 .. kFetchSlots - 1); a zero record outside.
    [[nodiscard]] const MpRecord &Slot(std::int64_t i) const;
    // MP n if it is in the filled part.
    [[nodiscard]] const MpRecord *Mp(std::uint64_t n) const;
    // Bytes read from the file by the last Fetch (benchmarks watch this).
    [[nodiscard]] std::uint64_t lastReadBytes() const { return lastReadBytes_; }
    // Bytes read from files since construction.
    [[nodiscard]] std::uint64_t totalReadBytes() const { return totalReadBytes_; }

private:
    std::optional<double> Decode(std::uint64_t got);
    std::optional<double> Finish(std::uint64_t got);

    std::unique_ptr<std::array<std::uint8_t, kFetchSlots * kMpSize>> raw_;
    std::unique_ptr<std::array<MpRecord, kFetchSlots>> slots_;
    std::uint64_t first_ = 0;
    std::uint64_t filled_ = 0;
    std::uint64_t lastReadBytes_ = 0;
    std::uint64_t totalReadBytes_ = 0;
    bool valid_ = false;
};

} // namespace kestrel::grid
