#pragma once
// The record grid's option set as Kestrel.ini keeps it ([DataGrid] GridOptions):
// one bit per option, in the order of the draw grid's option set, so a file the
// Windows program wrote reads the same. Kestrel's grid acts on the two inner
// line options; every other bit is carried along as it was read.

#include "present/grid/view_modes.h"

namespace kestrel::grid {

namespace GridOption {
inline constexpr int FixedVertLine = 1 << 0;
inline constexpr int FixedHorzLine = 1 << 1;
inline constexpr int VertLine = 1 << 2; // lines between the data cells' columns
inline constexpr int HorzLine = 1 << 3; // lines between the data cells' rows
inline constexpr int RangeSelect = 1 << 4;
inline constexpr int DrawFocusSelected = 1 << 5;
inline constexpr int RowSizing = 1 << 6;
inline constexpr int ColSizing = 1 << 7;
inline constexpr int ThumbTracking = 1 << 14;
} // namespace GridOption

// What the grid does: fixed-row lines, both inner lines, columns sized by dragging
// their header border, the view following the scroll bar's thumb while it is dragged.
inline constexpr int kDefaultGridOptions = GridOption::FixedVertLine | GridOption::FixedHorzLine |
                                           GridOption::VertLine | GridOption::HorzLine | GridOption::ColSizing |
                                           GridOption::ThumbTracking;

[[nodiscard]] constexpr GridLineOptions LinesOfGridOptions(int options)
{
    return {(options & GridOption::VertLine) != 0, (options & GridOption::HorzLine) != 0};
}

// options with its two inner line bits set from lines, every other bit kept.
[[nodiscard]] constexpr int GridOptionsWithLines(int options, GridLineOptions lines)
{
    options &= ~(GridOption::VertLine | GridOption::HorzLine);
    return options | (lines.vertical ? GridOption::VertLine : 0) | (lines.horizontal ? GridOption::HorzLine : 0);
}

// The grid-line command that gives these lines.
[[nodiscard]] constexpr GridLines GridLinesOf(GridLineOptions lines)
{
    if (lines.vertical && lines.horizontal)
        return GridLines::All;
    if (lines.vertical)
        return GridLines::Vertical;
    return lines.horizontal ? GridLines::Horizontal : GridLines::None;
}

} // namespace kestrel::grid
