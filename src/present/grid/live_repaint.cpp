#include "present/grid/live_repaint.h"

#include <algorithm>

namespace kestrel::grid {

LiveRepaint LiveRowsToRepaint(const ViewShape &shape, int dataRows, std::int64_t oldPos, std::int64_t oldCount,
                              std::int64_t newPos, std::int64_t newCount)
{
    LiveRepaint out;
    const std::int64_t perLine = std::max(1, shape.mpsPerRow);
    const int rowsPerLine = std::max(1, shape.rowsPerLine);
    const std::int64_t shift = newPos - oldPos;
    // Backwards, fewer MPs (a new file) or a shift by part of a line: every
    // row shows other MPs than the row it would be moved from.
    if (shift < 0 || newCount < oldCount || shift % perLine != 0) {
        out.all = true;
        return out;
    }
    const std::int64_t scrollRows = shift / perLine * rowsPerLine;
    if (scrollRows >= dataRows) {
        out.all = true;
        return out;
    }
    out.scrollRows = static_cast<int>(scrollRows);

    // New MPs come at the end, so what counts is how far down a row
    // reaches: its last cell shows the slot `highest` after the row's first,
    // and a cell also draws from the MP after its own (waveform edges).
    int highest = 0;
    for (int col = 0; col < shape.columns; ++col)
        highest = std::max(highest, SlotOffset(shape.view, col));
    // Row of line L shows slots from L * perLine + 1; it reaches MP
    // newPos + L * perLine + 1 + highest + 1, which is new when >= oldCount.
    const std::int64_t reach = newPos + 2 + highest;
    std::int64_t firstLine = 0;
    if (oldCount > reach)
        firstLine = (oldCount - reach + perLine - 1) / perLine;
    std::int64_t firstRow = firstLine * rowsPerLine + 1;
    // The rows moved in at the bottom are painted in any case.
    firstRow = std::min<std::int64_t>(firstRow, dataRows - scrollRows + 1);
    if (newCount == oldCount && shift == 0)
        firstRow = dataRows + 1; // nothing new
    out.firstRow = static_cast<int>(std::max<std::int64_t>(1, firstRow));
    if (out.firstRow == 1 && out.scrollRows > 0) {
        // Every row is painted anyway: moving pixels first would be waste.
        out.all = true;
        out.scrollRows = 0;
    }
    return out;
}

} // namespace kestrel::grid
