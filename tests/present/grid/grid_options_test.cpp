// The grid's option set as Kestrel.ini keeps it: the two inner line bits are the
// grid's, every other bit is carried through unchanged.

#include <gtest/gtest.h>

#include "present/grid/grid_options.h"

using namespace kestrel::grid;

TEST(GridOptions, LineBitsAreTheGridsAndEveryOtherBitIsCarriedAlong)
{
    // The set the Windows program wrote for a grid with all lines, sizing and thumb tracking.
    const int windows = 1 | 2 | 4 | 8 | 128 | 16384;
    EXPECT_EQ(windows, kDefaultGridOptions);
    EXPECT_EQ(LinesOfGridOptions(windows), (GridLineOptions{true, true}));
    EXPECT_EQ(LinesOfGridOptions(1 | 2 | 8), (GridLineOptions{false, true}));
    EXPECT_EQ(LinesOfGridOptions(4), (GridLineOptions{true, false}));
    EXPECT_EQ(LinesOfGridOptions(0), (GridLineOptions{false, false}));

    for (const int carried : {0, 1 | 2 | 16 | 1024, -1, 0x40000000}) {
        for (const GridLineOptions lines : {GridLineOptions{true, true}, GridLineOptions{false, true},
                                            GridLineOptions{true, false}, GridLineOptions{false, false}}) {
            const int written = GridOptionsWithLines(carried, lines);
            EXPECT_EQ(LinesOfGridOptions(written), lines) << carried;
            EXPECT_EQ(written & ~(GridOption::VertLine | GridOption::HorzLine),
                      carried & ~(GridOption::VertLine | GridOption::HorzLine))
                << carried;
        }
    }
    EXPECT_EQ(GridLinesOf({true, true}), GridLines::All);
    EXPECT_EQ(GridLinesOf({false, true}), GridLines::Horizontal);
    EXPECT_EQ(GridLinesOf({true, false}), GridLines::Vertical);
    EXPECT_EQ(GridLinesOf({false, false}), GridLines::None);
}
