#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "present/grid/live_source.h"
#include "present/grid/redraw_loop.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

// A recorder whose counter moves when the test says so, optionally while a
// given number of cells has been drawn (a burst in the middle of a pass).
struct FakeSource : LiveSource {
    std::uint32_t count = 0;
    int waits = 0;
    std::uint32_t WrittenMpCount() const override { return count; }
    bool WaitReceive(std::chrono::milliseconds t) override
    {
        EXPECT_EQ(t, kReceiveWait);
        ++waits;
        return true;
    }
    std::vector<MpRecord> NewestMps() const override { return {}; }
};

struct FakeTarget : RedrawTarget {
    FakeSource *source = nullptr;
    int rows = 3, cols = 2; // two data rows of two cells
    std::vector<int> gauges;
    std::vector<std::string> progress;
    std::vector<std::pair<int, int>> drawn;
    std::pair<int, int> current{-1, -1};
    int statusRefreshes = 0;
    int burstAfterCells = -1; // bump the counter after this many drawn cells
    void BeginPass(int &r, int &c) override
    {
        r = rows;
        c = cols;
    }
    void RepaintGauge(int phase) override { gauges.push_back(phase); }
    void FetchCellRect(int col, int row) override { current = {col, row}; }
    void DrawCurrentCell() override
    {
        drawn.push_back(current);
        if (static_cast<int>(drawn.size()) == burstAfterCells)
            source->count += 5;
    }
    void RefreshStatusLine() override { ++statusRefreshes; }
    bool burstOnProgress = false;
    void SetProgressText(const std::string &t) override
    {
        progress.push_back(t);
        if (burstOnProgress)
            source->count += 2;
    }
};

struct Harness {
    FakeSource source;
    FakeTarget target;
    int syncCalls = 0;
    bool refuseSync = false;
    std::vector<std::chrono::milliseconds> sleeps;
    RedrawLoop loop{source, target,
                    [this](const std::function<void()> &fn) {
                        ++syncCalls;
                        if (refuseSync)
                            return false;
                        fn();
                        return true;
                    },
                    [this](std::chrono::milliseconds ms) { sleeps.push_back(ms); }};
    Harness() { target.source = &source; }
};

} // namespace

TEST(RedrawLoop, NewMpsRepaintEveryCellAndRotateTheGauges)
{
    Harness h;
    for (int pass = 0; pass < 4; ++pass) {
        h.source.count += 1;
        ASSERT_TRUE(h.loop.Step());
        EXPECT_EQ(h.loop.lastSeen(), h.source.count);
    }
    EXPECT_EQ(h.target.gauges, (std::vector<int>{0, 1, 2, 0}));
    // Rows 1..2, columns 0..1, row by row; header row 0 never.
    ASSERT_EQ(h.target.drawn.size(), 16u);
    EXPECT_EQ(h.target.drawn[0], std::make_pair(0, 1));
    EXPECT_TRUE(h.sleeps.empty());
    // A quiet loop afterwards costs one idle sleep.
    EXPECT_TRUE(h.loop.Step());
    EXPECT_EQ(h.sleeps.size(), 1u);
}

TEST(RedrawLoop, BurstsDuringAPassGetAPassOfTheirOwn)
{
    struct {
        int burstAfterCells; // the counter moves after this many cells drawn
        std::size_t drawnFirst, skipped;
    } const cases[] = {
        // The burst makes the second cell stale: it is skipped, the cells
        // after it are drawn from the newer counter.
        {1, 3, 1},
        // The burst lands while the last cell is drawn: nothing in this pass
        // shows it.
        {4, 4, 0},
    };
    for (const auto &c : cases) {
        Harness h;
        h.target.burstAfterCells = c.burstAfterCells;
        h.source.count = 10;
        ASSERT_TRUE(h.loop.Step());
        EXPECT_EQ(h.target.drawn.size(), c.drawnFirst) << c.burstAfterCells;
        EXPECT_EQ(h.loop.cellsSkipped(), static_cast<int>(c.skipped)) << c.burstAfterCells;
        // Either way the next turn passes again instead of sleeping, even
        // though no further MP arrives, and then the loop goes quiet.
        ASSERT_TRUE(h.loop.Step());
        EXPECT_TRUE(h.sleeps.empty()) << c.burstAfterCells;
        EXPECT_EQ(h.target.drawn.size(), c.drawnFirst + 4) << c.burstAfterCells;
        EXPECT_EQ(h.loop.lastSeen(), 15u);
        ASSERT_TRUE(h.loop.Step());
        EXPECT_EQ(h.sleeps.size(), 1u) << c.burstAfterCells;
    }
}

TEST(RedrawLoop, MpsArrivingDuringAHeldPassAreNotCountedAsSeen)
{
    // MPs that came while the progress text was set move it on once more.
    Harness h;
    h.loop.hold = true;
    h.source.count = 3;
    h.target.burstOnProgress = true;
    ASSERT_TRUE(h.loop.Step());
    EXPECT_EQ(h.loop.lastSeen(), 3u);
    h.target.burstOnProgress = false;
    ASSERT_TRUE(h.loop.Step());
    EXPECT_EQ(h.loop.lastSeen(), 5u);
    ASSERT_TRUE(h.loop.Step());
    EXPECT_EQ(h.sleeps.size(), 1u);
    // A held display shows no cells, only a growing bar of the progress text.
    EXPECT_TRUE(h.target.drawn.empty());
    EXPECT_EQ(h.target.progress, (std::vector<std::string>{" ", " |"}));
}

TEST(RedrawLoop, RefusedStepEndsTheRunAndUnloadStillPasses)
{
    Harness h;
    h.source.count = 3;
    ASSERT_TRUE(h.loop.Step());
    ASSERT_EQ(h.target.drawn.size(), 4u);

    // A refused synchronised step (the thread is stopping) ends the pass and the run.
    h.refuseSync = true;
    h.source.count += 1;
    const int before = h.syncCalls;
    std::atomic<bool> stop{false};
    h.loop.Run(stop);
    EXPECT_EQ(h.syncCalls, before + 1);
    EXPECT_EQ(h.target.drawn.size(), 4u);

    // Unloading sets the counter to 0: the difference is non-zero, one more pass runs.
    h.refuseSync = false;
    h.source.count = 0;
    ASSERT_TRUE(h.loop.Step());
    EXPECT_EQ(h.loop.lastSeen(), 0u);
}
