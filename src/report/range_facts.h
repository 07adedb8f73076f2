#pragma once
// What the summary says about a range of MPs, gathered in one pass that
// reads the range in blocks (memory stays flat): characters per circuit,
// errors per kind, level changes per signal, the second with the most
// characters, and the marks that fall in the range (the first few kept).

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "record/record_reader.h"
#include "record/record_summary.h"

namespace kestrel::report {

inline constexpr std::size_t kMarksListed = 24;

struct RangeFacts {
    std::uint64_t d1 = 0, d2 = 0;       // characters on each circuit
    std::uint64_t pe = 0, fe = 0, le = 0; // error flags of both circuits
    std::array<std::uint64_t, 6> signalChanges{}; // S1, M1, S2, M2, M5, M3, inside the range
    std::uint64_t busiestCount = 0;       // characters in the busiest second (0: none at all)
    double busiestSecond = 0;             // its start (days, local time)
    std::uint64_t markCount = 0;
    std::vector<MarkEntry> marks;         // the first kMarksListed of them
    std::uint64_t read = 0;               // MPs read (fewer than asked when the file was cut)
};

// keepGoing is asked after each block; false stops the pass (the facts are then partial).
[[nodiscard]] RangeFacts GatherRangeFacts(const RecordReader &reader, std::uint64_t first, std::uint64_t last,
                                          const std::function<bool(std::uint64_t done)> &keepGoing = {});

} // namespace kestrel::report
