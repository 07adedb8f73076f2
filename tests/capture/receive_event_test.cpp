#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

#include "record/live_buffer.h"
#include "capture/receive_event.h"

using namespace kestrel;
using namespace std::chrono_literals;

TEST(ReceiveEvent, WaitTimesOutWhileABurstRunsAndWakesWhenItEnds)
{
    ReceiveEvent ev;
    EXPECT_TRUE(ev.wait(0ms)); // set at start
    std::optional<ReceiveBurstGuard> burst(std::in_place, ev);
    EXPECT_FALSE(ev.isSet());
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_FALSE(ev.wait(15ms));
    EXPECT_GE(std::chrono::steady_clock::now() - t0, 15ms);

    std::atomic<bool> woke{false};
    std::thread waiter([&] { woke = ev.wait(5s); });
    std::this_thread::sleep_for(20ms);
    burst.reset(); // the burst ends: the event is set
    waiter.join();
    EXPECT_TRUE(woke);
}

TEST(LiveBuffer, SnapshotsWhilePushingAreAlwaysConsecutive)
{
    LiveBuffer live;
    live.setSize(500);
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (std::uint32_t n = 0; n < 200'000; ++n) {
            MpRecord mp;
            mp.number = n;
            live.push(mp);
        }
        done = true;
    });
    int checked = 0;
    while (!done || checked == 0) {
        const auto snap = live.snapshot();
        for (std::size_t i = 1; i < snap.size(); ++i)
            ASSERT_EQ(snap[i].number, snap[i - 1].number + 1);
        EXPECT_LE(snap.size(), 500u);
        ++checked;
    }
    writer.join();
    EXPECT_EQ(live.snapshot().back().number, 199'999u);
    EXPECT_EQ(live.fillCount(), 200'000u);
}
