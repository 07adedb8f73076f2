#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "present/grid/grid_keys.h"
#include "present/grid/live_repaint.h"
#include "present/grid/live_source.h"
#include "present/grid/redraw_loop.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

// A recorder whose counter moves when the test says so; onWait runs inside
// the pass's receive wait (a burst recorded while the pass runs).
struct FakeSource : LiveSource {
    std::uint32_t count = 0;
    int waits = 0;
    std::function<void()> onWait;
    std::uint32_t WrittenMpCount() const override { return count; }
    bool WaitReceive(std::chrono::milliseconds t) override
    {
        EXPECT_EQ(t, kReceiveWait);
        ++waits;
        if (onWait)
            onWait();
        return true;
    }
    std::vector<MpRecord> NewestMps() const override { return {}; }
};

// The GUI thread's side: keeps every pass handed over; onPost runs as the
// pass is handed over (MPs arriving right then).
struct FakeTarget : RedrawTarget {
    std::vector<PassRequest> posted;
    bool refuse = false;
    std::function<void()> onPost;
    bool Post(const PassRequest &pass) override
    {
        if (refuse)
            return false;
        posted.push_back(pass);
        if (onPost)
            onPost();
        return true;
    }
};

struct Harness {
    FakeSource source;
    FakeTarget target;
    std::vector<std::chrono::milliseconds> sleeps;
    RedrawLoop loop{source, target, [this](std::chrono::milliseconds ms) { sleeps.push_back(ms); }};
};

} // namespace

TEST(RedrawLoop, EachPollWithNewMpsHandsOverOnePassThatShowsThem)
{
    Harness h;
    for (int pass = 0; pass < 4; ++pass) {
        h.source.count += 1 + pass;
        ASSERT_TRUE(h.loop.Step());
        ASSERT_EQ(h.target.posted.size(), static_cast<std::size_t>(pass + 1));
        const PassRequest &p = h.target.posted.back();
        EXPECT_TRUE(p.grid);
        EXPECT_EQ(p.progress, 0);
        EXPECT_EQ(h.loop.lastSeen(), h.source.count);
    }
    // One gauge per pass, in rotation.
    std::vector<unsigned> gauges;
    for (const PassRequest &p : h.target.posted)
        gauges.push_back(p.gauges);
    EXPECT_EQ(gauges, (std::vector<unsigned>{1, 2, 4, 1}));
    // Each pass lets a receive burst finish once; each poll is 20 ms apart.
    EXPECT_EQ(h.source.waits, 4);
    EXPECT_EQ(h.sleeps, std::vector<std::chrono::milliseconds>(4, kIdleSleep));

    // Quiet polls hand nothing over and cost one 20 ms sleep each.
    ASSERT_TRUE(h.loop.Step());
    ASSERT_TRUE(h.loop.Step());
    EXPECT_EQ(h.target.posted.size(), 4u);
    EXPECT_EQ(h.sleeps.size(), 6u);
    EXPECT_EQ(h.source.waits, 4);
}

TEST(RedrawLoop, MpsArrivingDuringAPassGetTheNextPoll)
{
    // Whether the burst lands while the pass waits for the receive event or
    // while it is handed over, the pass counts only what it read at its start
    // and the next poll passes again, though nothing arrives after it.
    for (const bool duringHandOver : {false, true}) {
        Harness h;
        h.source.count = 10;
        std::function<void()> burst = [&] { h.source.count += 5; };
        (duringHandOver ? h.target.onPost : h.source.onWait) = burst;
        ASSERT_TRUE(h.loop.Step());
        (duringHandOver ? h.target.onPost : h.source.onWait) = nullptr;
        ASSERT_EQ(h.target.posted.size(), 1u);
        EXPECT_EQ(h.loop.lastSeen(), 10u) << duringHandOver;

        ASSERT_TRUE(h.loop.Step());
        ASSERT_EQ(h.target.posted.size(), 2u) << duringHandOver;
        EXPECT_TRUE(h.target.posted[1].grid);
        EXPECT_EQ(h.loop.lastSeen(), 15u);
        ASSERT_TRUE(h.loop.Step());
        EXPECT_EQ(h.target.posted.size(), 2u) << duringHandOver;
    }
}

TEST(RedrawLoop, AHeldDisplayOnlyMovesTheProgressText)
{
    Harness h;
    h.loop.hold = true;
    for (int pass = 1; pass <= kProgressSteps + 2; ++pass) {
        h.source.count += 3;
        ASSERT_TRUE(h.loop.Step());
    }
    ASSERT_EQ(h.target.posted.size(), static_cast<std::size_t>(kProgressSteps + 2));
    for (std::size_t i = 0; i < h.target.posted.size(); ++i) {
        const PassRequest &p = h.target.posted[i];
        EXPECT_FALSE(p.grid) << i;
        EXPECT_EQ(p.gauges, 1u << (i % 3)) << i; // the gauges still turn
        // One bar more per pass up to 30, then one again.
        EXPECT_EQ(p.progress, static_cast<int>(i % kProgressSteps) + 1) << i;
    }
    EXPECT_EQ(ProgressText(1), " ");
    EXPECT_EQ(ProgressText(3), " ||");
    EXPECT_EQ(ProgressText(kProgressSteps).size(), 30u);

    // Released: the next pass repaints the grid again.
    h.loop.hold = false;
    h.source.count += 1;
    ASSERT_TRUE(h.loop.Step());
    EXPECT_TRUE(h.target.posted.back().grid);
    EXPECT_EQ(h.target.posted.back().progress, 0);
}

TEST(RedrawLoop, RefusedHandOverEndsTheRunAndUnloadStillPasses)
{
    Harness h;
    h.source.count = 3;
    ASSERT_TRUE(h.loop.Step());

    // A refused hand-off (the thread is stopping) ends the run at once.
    h.target.refuse = true;
    h.source.count += 1;
    const std::size_t sleeps = h.sleeps.size();
    std::atomic<bool> stop{false};
    h.loop.Run(stop);
    EXPECT_EQ(h.target.posted.size(), 1u);
    EXPECT_EQ(h.sleeps.size(), sleeps);

    // Unloading sets the counter to 0: it differs, one more pass runs.
    h.target.refuse = false;
    h.source.count = 0;
    ASSERT_TRUE(h.loop.Step());
    EXPECT_EQ(h.loop.lastSeen(), 0u);
    EXPECT_EQ(h.target.posted.size(), 2u);
}

TEST(PassMailbox, PassesTheGuiThreadHasNotTakenMergeIntoOne)
{
    PassMailbox box;
    EXPECT_FALSE(box.Take().has_value());
    EXPECT_TRUE(box.Put({1, 0, true}));   // queue a hand-off
    EXPECT_FALSE(box.Put({2, 4, false})); // already queued: merged
    EXPECT_FALSE(box.Put({4, 0, false}));
    EXPECT_EQ(box.merged(), 2);
    const auto taken = box.Take();
    ASSERT_TRUE(taken.has_value());
    // Every gauge asked for, the newest progress, and the grid repaint that
    // the first pass asked for.
    EXPECT_EQ(*taken, (PassRequest{7, 4, true}));
    EXPECT_FALSE(box.Take().has_value());
    EXPECT_TRUE(box.Put({1, 0, true})); // empty again: a new hand-off
}

namespace {

// The rows of a page a live step must repaint, worked out cell by cell:
// a row may keep its pixels only if it moved up from a row that showed the
// same MPs, and none of those MPs or their neighbours came into existence.
struct Reference {
    ViewShape shape;
    int dataRows;
    std::int64_t oldPos, oldCount, newPos, newCount;

    [[nodiscard]] bool Unchanged(int row, int scrollRows) const
    {
        const int from = row + scrollRows;
        if (from > dataRows)
            return false;
        for (int col = 0; col < shape.columns; ++col) {
            const std::int64_t mp = newPos + CellSlot(shape, col, row);
            if (mp != oldPos + CellSlot(shape, col, from))
                return false;
            for (std::int64_t m = mp - 1; m <= mp + 1; ++m)
                if ((m >= 0 && m < oldCount) != (m >= 0 && m < newCount))
                    return false;
        }
        return true;
    }
};

} // namespace

TEST(LiveRepaint, OnlyRowsThatShowNewMpsArePaintedInEveryView)
{
    for (const int view : {kViewVertical, kViewDataOnly, kViewDataDump}) {
        const ViewShape shape = ShapeForView(view, 600);
        const int dataRows = DataRowsFor(shape, 16 * 21);
        const std::int64_t page = PageMps(shape, dataRows);
        const std::int64_t line = shape.mpsPerRow;
        int reused = 0;
        for (std::int64_t oldCount = 0; oldCount <= 3 * page; oldCount += std::max<std::int64_t>(1, line / 3)) {
            for (const std::int64_t added : {std::int64_t{0}, std::int64_t{1}, line - 1, line, 2 * line + 1, 3 * line,
                                             page - line, page, page + 7}) {
                const std::int64_t newCount = oldCount + added;
                const Reference ref{shape,
                                    dataRows,
                                    EndPosition(oldCount, page),
                                    oldCount,
                                    EndPosition(newCount, page),
                                    newCount};
                const LiveRepaint r =
                    LiveRowsToRepaint(shape, dataRows, ref.oldPos, oldCount, ref.newPos, newCount);
                const std::string what = std::to_string(view) + ": " + std::to_string(oldCount) + " + " +
                                         std::to_string(added);
                if (r.all)
                    continue;
                int firstNeeded = dataRows + 1;
                for (int row = dataRows; row >= 1; --row)
                    if (!ref.Unchanged(row, r.scrollRows))
                        firstNeeded = row;
                // Every row that changed is painted: no stale row stays.
                ASSERT_LE(r.firstRow, firstNeeded) << what;
                // And little more: at most one grid line ahead of it.
                if (firstNeeded <= dataRows) {
                    EXPECT_GE(r.firstRow, firstNeeded - shape.rowsPerLine) << what;
                }
                if (added == 0) {
                    EXPECT_GT(r.firstRow, dataRows) << what;
                }
                reused += r.firstRow - 1;
            }
        }
        // Steps by whole lines reuse rows (after moving them up).
        EXPECT_GT(reused, 0) << view;
    }
}

TEST(LiveRepaint, ShiftsByPartOfALineOrAPageRepaintEverything)
{
    const ViewShape vertical = ShapeForView(kViewVertical, 1000);
    // 20 rows: a step of 5 MPs moves the rows up by 5.
    LiveRepaint r = LiveRowsToRepaint(vertical, 20, 100, 121, 105, 126);
    EXPECT_FALSE(r.all);
    EXPECT_EQ(r.scrollRows, 5);
    EXPECT_EQ(r.firstRow, 15); // row 15 shows MP 120, whose next MP is new
    EXPECT_TRUE(LiveRowsToRepaint(vertical, 20, 100, 121, 120, 141).all); // a whole page
    EXPECT_TRUE(LiveRowsToRepaint(vertical, 20, 100, 121, 0, 21).all);    // a new, shorter file

    const ViewShape dump = ShapeForView(kViewDataDump, 1000); // 16 MPs per line of two rows
    r = LiveRowsToRepaint(dump, 20, 160, 321, 176, 337);
    EXPECT_FALSE(r.all);
    EXPECT_EQ(r.scrollRows, 2);
    EXPECT_TRUE(LiveRowsToRepaint(dump, 20, 160, 321, 170, 331).all);
}
