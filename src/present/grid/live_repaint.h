#pragma once
// Which grid rows a live step has to paint. Recorded MPs never change, so
// after the grid moved from oldCount MPs shown from oldPos to newCount MPs
// shown from newPos, a row needs painting only when it shows (or neighbours)
// one of the new MPs; the rows above it are the old rows, moved up when the
// top position advanced by whole lines.

#include <cstdint>

#include "present/grid/grid_layout.h"

namespace kestrel::grid {

struct LiveRepaint {
    bool all = false;    // paint every data row (no old row can be reused)
    int scrollRows = 0;  // the old rows move up by this many grid rows
    int firstRow = 1;    // then rows firstRow .. dataRows are painted (none when > dataRows)
};

[[nodiscard]] LiveRepaint LiveRowsToRepaint(const ViewShape &shape, int dataRows, std::int64_t oldPos,
                                            std::int64_t oldCount, std::int64_t newPos, std::int64_t newCount);

} // namespace kestrel::grid
