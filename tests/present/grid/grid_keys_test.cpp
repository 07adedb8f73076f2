#include <gtest/gtest.h>

#include <climits>

#include "present/grid/grid_keys.h"

using namespace kestrel::grid;

namespace {

// A recording of 1000 MPs in the vertical view, 20 data rows (rows 1..20).
KeyContext Ctx(std::int64_t pos, int row, int col = 0)
{
    KeyContext c;
    c.position = pos;
    c.maximum = 1000;
    c.smallChange = 1;
    c.largeChange = 20;
    c.row = row;
    c.col = col;
    c.colCount = 14;
    c.rowCount = 21;
    c.view = 1;
    c.fileOpen = true;
    return c;
}

struct KeyCase {
    const char *name;
    GridKey key;
    KeyContext ctx;
    std::int64_t position;
    int row, col;
};

} // namespace

TEST(GridKeys, EdgeRules)
{
    const KeyCase cases[] = {
        {"page up at top row scrolls", GridKey::PageUp, Ctx(100, 1), 80, 1, 0},
        {"page up below top moves the cursor", GridKey::PageUp, Ctx(100, 5), 100, 1, 0},
        {"page up clamps at 0", GridKey::PageUp, Ctx(5, 1), 0, 1, 0},
        {"page down at last row scrolls", GridKey::PageDown, Ctx(100, 20), 120, 20, 0},
        {"page down needs room: max-large-1 > pos", GridKey::PageDown, Ctx(979, 20), 979, 20, 0},
        {"page down stops at the last page", GridKey::PageDown, Ctx(970, 20), 979, 20, 0},
        {"page down above the last row", GridKey::PageDown, Ctx(100, 3), 100, 20, 0},
        {"end goes to max-large-1", GridKey::End, Ctx(0, 7), 979, 7, 0},
        {"up at top row", GridKey::Up, Ctx(10, 1), 9, 1, 0},
        {"up below top moves cursor", GridKey::Up, Ctx(10, 4), 10, 3, 0},
        {"down at last row", GridKey::Down, Ctx(10, 20), 11, 20, 0},
        {"down at last row on the last page", GridKey::Down, Ctx(979, 20), 979, 20, 0},
        {"left at column 0 wraps to previous row", GridKey::Left, Ctx(10, 4, 0), 10, 3, 13},
        {"left at top-left scrolls back", GridKey::Left, Ctx(10, 1, 0), 9, 1, 13},
        {"left at top-left of the file", GridKey::Left, Ctx(0, 1, 0), 0, 1, 0},
        {"right at last column wraps", GridKey::Right, Ctx(10, 4, 13), 10, 5, 0},
        {"right at bottom-right scrolls on", GridKey::Right, Ctx(10, 20, 13), 11, 20, 0},
    };
    for (const KeyCase &c : cases) {
        const KeyOutcome out = ApplyGridKey(c.key, c.ctx);
        EXPECT_TRUE(out.consumed) << c.name;
        EXPECT_EQ(out.position, c.position) << c.name;
        EXPECT_EQ(out.row, c.row) << c.name;
        EXPECT_EQ(out.col, c.col) << c.name;
    }
}

TEST(GridKeys, ShortRecordings)
{
    // Fewer MPs than a page: End keeps position 0, Down at the last row cannot scroll.
    KeyContext c = Ctx(0, 20);
    c.maximum = 12;
    EXPECT_EQ(ApplyGridKey(GridKey::End, c).position, 0);
    EXPECT_EQ(ApplyGridKey(GridKey::Down, c).position, 0);
    EXPECT_EQ(ApplyGridKey(GridKey::PageDown, c).position, 0);

}

TEST(GridKeys, FollowingTheEndOnlyEndActs)
{
    KeyContext c = Ctx(100, 1);
    c.followEnd = true;
    for (GridKey k : {GridKey::PageUp, GridKey::Home, GridKey::Down, GridKey::Left}) {
        const KeyOutcome out = ApplyGridKey(k, c);
        EXPECT_EQ(out.position, 100);
        EXPECT_EQ(out.row, 1);
    }
    EXPECT_EQ(ApplyGridKey(GridKey::End, c).position, 979);
    EXPECT_EQ(ApplyWheel(false, c).position, 100);
}

TEST(GridKeys, NothingWithoutARecordingAndRightOutsideTheViews)
{
    KeyContext c = Ctx(100, 1);
    c.fileOpen = false;
    const KeyOutcome closed = ApplyGridKey(GridKey::Home, c);
    EXPECT_FALSE(closed.consumed);
    EXPECT_EQ(closed.position, 100);

    KeyContext h = Ctx(100, 1, 13);
    h.view = 2;
    const KeyOutcome r = ApplyGridKey(GridKey::Right, h);
    EXPECT_FALSE(r.consumed);
    EXPECT_TRUE(r.invalidate);
    EXPECT_EQ(r.position, 100);
    EXPECT_EQ(r.col, 13);
}

TEST(ScrollMapping, RescaledPastIntMax)
{
    const std::int64_t maxPos = std::int64_t{50'000'000'000}; // 4 TB of MPs
    const ScrollMapping m{maxPos};
    ASSERT_TRUE(m.scaled());
    EXPECT_LE(m.barMaximum(), INT_MAX);
    EXPECT_EQ(m.ToBar(0), 0);
    EXPECT_EQ(m.ToBar(maxPos), m.barMaximum());
    EXPECT_EQ(m.FromBar(0), 0);
    EXPECT_EQ(m.FromBar(m.barMaximum()), maxPos);
    const std::int64_t step = maxPos / m.barMaximum() + 1;
    int lastBar = -1;
    std::int64_t lastPos = -1;
    for (std::int64_t p = 0; p <= maxPos; p += maxPos / 997) {
        const int b = m.ToBar(p);
        EXPECT_GE(b, lastBar);
        lastBar = b;
        const std::int64_t back = m.FromBar(b);
        EXPECT_LE(std::llabs(back - p), step) << p;
        EXPECT_GE(back, lastPos);
        lastPos = back;
    }
}

TEST(GridKeys, RandomKeyRunsStayInsideTheRecording)
{
    // Any sequence of keys on any recording size keeps the page inside the
    // recording and the cursor inside the grid.
    std::uint32_t seed = 7;
    auto next = [&seed](std::uint32_t range) {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<int>((seed >> 8) % range);
    };
    for (int run = 0; run < 200; ++run) {
        KeyContext c;
        c.fileOpen = true;
        c.view = run % 3 == 0 ? 1 : run % 3 == 1 ? 3 : 4;
        c.smallChange = c.view == 1 ? 1 : 16;
        c.rowCount = 2 + next(30);
        c.largeChange = (c.rowCount - 1) * c.smallChange;
        c.colCount = 1 + next(40);
        c.maximum = next(3) == 0 ? next(10) : next(600);
        c.position = 0;
        for (int k = 0; k < 1000; ++k) {
            const auto key = static_cast<GridKey>(next(8));
            const KeyOutcome out = next(10) == 0 ? ApplyWheel(next(2) == 0, c) : ApplyGridKey(key, c);
            ASSERT_GE(out.position, 0);
            ASSERT_LE(out.position, EndPosition(c.maximum, c.largeChange));
            ASSERT_GE(out.row, 1);
            ASSERT_LT(out.row, c.rowCount);
            ASSERT_GE(out.col, 0);
            ASSERT_LT(out.col, c.colCount);
            c.position = out.position;
            c.row = out.row;
            c.col = out.col;
        }
    }
}
