#pragma once
// The five searches of the goto/search window (trigger point, date/time,
// error, signal, data) over a record file, with the loop the grid expects:
//
//   i := position + current row + direction; the end is the scroll range's
//   maximum (forward) or minimum (backward) and is never tested itself;
//   each step: every `pumpInterval` MPs let the caller's event loop run and
//   honour the stop flag, then test MP i; on a hit report i.
//
// The file is read in large blocks (BlockCursor); nothing here opens a
// window: the caller turns the outcome into a grid position or a message.
//
//   SearchOutcome RunSearch(reader, request, hooks)
//   GridJump      GridPositionForHit(found, position)
//   int           SearchProgressPercent(i, maximum)

#include <atomic>
#include <cstdint>
#include <functional>

#include "record/record_reader.h"
#include "search/search_criteria.h"

namespace kestrel {

// Text numbers of the outcomes (title 203 "INFORMATION").
namespace SearchText {
inline constexpr int Title = 203;
inline constexpr int TriggerNotFound = 2123;
inline constexpr int TimeNotReached = 2201;
inline constexpr int ConditionNotFound = 2202; // error and signal search alike
inline constexpr int DataNotFound = 2203;
inline constexpr int NoLineSelected = 2204;
inline constexpr int BadPattern = 7300; // empty pattern or one holding 0x00
inline constexpr int ZeroByteNote = 7301; // the fixed line under the pattern fields
} // namespace SearchText

struct SearchRequest {
    SearchCriteria criteria;
    int direction = 1;          // +1 forward, -1 backward
    std::int64_t position = 0;  // the scroll bar's position (MP in the first row)
    std::int64_t currentRow = 0;
    std::int64_t minimum = 0;   // the scroll bar's range
    std::int64_t maximum = 0;
};

struct SearchHooks {
    // Lets the caller's event loop run and shows the progress value; called
    // every pumpInterval MPs, never per MP.
    std::function<void(int percent)> progress;
    const std::atomic<bool> *stop = nullptr;
    std::uint64_t pumpInterval = 4096;
};

enum class SearchStatus {
    Found,          // mp holds the hit
    NotFound,       // messageNo holds the routine's not-found text
    Stopped,        // the stop flag ended it: no message
    NothingToSearch // messageNo: 2204 (no data line ticked) or the bad-pattern text
};

struct SearchOutcome {
    SearchStatus status = SearchStatus::NotFound;
    std::int64_t mp = -1;
    int messageNo = 0;
    std::uint64_t tested = 0; // MPs walked over (tested, or skipped after a partial match)
    std::uint64_t blockReads = 0; // reads of the record file it took
};

[[nodiscard]] SearchOutcome RunSearch(const RecordReader &reader, const SearchRequest &request,
                                      const SearchHooks &hooks = {});

// The not-found text of each search kind.
[[nodiscard]] int NotFoundText(SearchKind kind);

// (i * 100 + 100) / (maximum - 1), the progress bar value; 100 for a range too small to divide.
[[nodiscard]] int SearchProgressPercent(std::int64_t i, std::int64_t maximum);

// Where the grid goes after a hit: the found MP stands in the first data row.
struct GridJump {
    std::int64_t position;
    int currentRow;
};
[[nodiscard]] GridJump GridPositionForHit(std::int64_t found, std::int64_t position);

} // namespace kestrel
