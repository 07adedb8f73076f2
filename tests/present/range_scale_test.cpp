// The range controls' arithmetic: MP numbers onto an int track bar and back,
// exact at both ends for any length of recording, and what an edit field or a
// step button does to the range.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "present/range_scale.h"

using namespace kestrel;

namespace {

constexpr std::uint64_t kSteps = kTrackBarSteps;

// Bar values worth checking on a scaled bar: both ends, their neighbours, and a random spread.
std::vector<int> SampleBarValues(int maximum)
{
    std::vector<int> values{0, 1, 2, maximum / 2, maximum - 2, maximum - 1, maximum};
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> any(0, maximum);
    for (int i = 0; i < 20000; ++i)
        values.push_back(any(rng));
    return values;
}

// What every scale must do, whatever its length.
void ExpectExactEndsAndRoundTrips(std::uint64_t first, std::uint64_t last)
{
    SCOPED_TRACE(testing::Message() << first << " ... " << last);
    const TrackScale s(first, last);
    ASSERT_FALSE(s.empty());
    const int top = s.barMaximum();
    EXPECT_EQ(s.ToBar(first), 0);
    EXPECT_EQ(s.ToBar(last), top);
    EXPECT_EQ(s.FromBar(0), first);
    EXPECT_EQ(s.FromBar(top), last);
    // Outside the range: the nearer end.
    if (first > 0) {
        EXPECT_EQ(s.ToBar(first - 1), 0);
    }
    if (last < std::numeric_limits<std::uint64_t>::max()) {
        EXPECT_EQ(s.ToBar(last + 1), top);
    }
    EXPECT_EQ(s.FromBar(-5), first);
    EXPECT_EQ(s.FromBar(top + 1), last);
    // Only the last MP reaches the bar's end, so a bar at its end always means the last MP.
    if (last > first) {
        EXPECT_LT(s.ToBar(last - 1), top);
    }

    const std::uint64_t span = last - first;
    const std::uint64_t stride = span / kSteps + 1; // MPs per bar position, at most
    std::uint64_t previousMp = first;
    std::vector<int> values = SampleBarValues(top);
    std::sort(values.begin(), values.end());
    for (int v : values) {
        const std::uint64_t mp = s.FromBar(v);
        ASSERT_GE(mp, first);
        ASSERT_LE(mp, last);
        ASSERT_EQ(s.ToBar(mp), v) << "bar " << v << " -> MP " << mp;
        ASSERT_GE(mp, previousMp) << "the mapping ran backwards at bar " << v;
        previousMp = mp;
        // Any MP maps to a bar position whose first MP is at most one stride before it.
        const std::uint64_t probe = mp + (last - mp) / 3;
        const std::uint64_t back = s.FromBar(s.ToBar(probe));
        ASSERT_LE(back, probe);
        ASSERT_LT(probe - back, stride);
    }
}

} // namespace

TEST(RangeScale, ShortRangesMapOneMpToOneBarPosition)
{
    // The sampled bar values cover all 1001 positions: each MP has its own, both ways.
    EXPECT_EQ(TrackScale(5, 1005).barMaximum(), 1000);
    ExpectExactEndsAndRoundTrips(5, 1005);
    // Exactly as many MPs as the bar has positions is still one to one; one more is scaled.
    EXPECT_FALSE(TrackScale(0, kSteps).scaled());
    EXPECT_TRUE(TrackScale(0, kSteps + 1).scaled());
    ExpectExactEndsAndRoundTrips(0, kSteps);
    ExpectExactEndsAndRoundTrips(0, kSteps + 1);
    ExpectExactEndsAndRoundTrips(1, kSteps + 2);
}

TEST(RangeScale, OneMpAndNoMp)
{
    const TrackScale one(7, 7);
    EXPECT_FALSE(one.empty());
    EXPECT_EQ(one.barMaximum(), 0);
    EXPECT_EQ(one.ToBar(0), 0);
    EXPECT_EQ(one.ToBar(1000), 0);
    EXPECT_EQ(one.FromBar(0), 7u);
    EXPECT_EQ(one.FromBar(12345), 7u);

    const TrackScale none(1, 0); // first after last: a recording without MPs
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.barMaximum(), 0);
    EXPECT_EQ(none.ToBar(99), 0);
    EXPECT_EQ(none.FromBar(99), 0u);
    EXPECT_TRUE(TrackScale().empty());
}

TEST(RangeScale, LongRecordingsAreScaledExactlyAtBothEnds)
{
    ExpectExactEndsAndRoundTrips(0, 9'999'999'999); // 10^10 MPs, past the 32-bit MP number
    ExpectExactEndsAndRoundTrips(0, std::numeric_limits<std::uint64_t>::max());
    ExpectExactEndsAndRoundTrips(123, std::numeric_limits<std::uint64_t>::max() - 5);

    const TrackScale s(0, 9'999'999'999);
    EXPECT_TRUE(s.scaled());
    EXPECT_EQ(s.barMaximum(), kTrackBarSteps);
    // Half-way on the bar is half-way through the recording, to within one bar step.
    const std::uint64_t middle = s.FromBar(kTrackBarSteps / 2);
    EXPECT_NEAR(static_cast<double>(middle), 5e9, 10.0);
}

TEST(RangeScale, LeavingAFieldKeepsNumbersInsideAndPutsBackTheRest)
{
    const TrackScale s(1, 999);
    auto read = [&](const char *text) { return ReadMpField(text, s, 40); };

    EXPECT_EQ(read("42").verdict, FieldVerdict::Valid);
    EXPECT_EQ(read("42").value, 42u);
    EXPECT_EQ(read(" \t42 ").value, 42u);
    EXPECT_EQ(read("999").verdict, FieldVerdict::Valid);

    for (const char *garbage : {"", "   ", "abc", "4 2", "12x", "-3", "+3", "0x10", "1e3", "3.5",
                                "99999999999999999999999999"}) { // more than 64 bits
        SCOPED_TRACE(garbage);
        const MpFieldValue r = read(garbage);
        EXPECT_EQ(r.verdict, FieldVerdict::NotANumber);
        EXPECT_EQ(r.value, 40u);
    }

    EXPECT_EQ(read("5000").verdict, FieldVerdict::OutOfRange);
    EXPECT_EQ(read("5000").value, 999u);
    EXPECT_EQ(read("0").verdict, FieldVerdict::OutOfRange);
    EXPECT_EQ(read("0").value, 1u);
    EXPECT_EQ(read("18446744073709551615").value, 999u); // the largest 64-bit number is a number

    // A last valid value that the recording no longer holds comes back clamped.
    EXPECT_EQ(ReadMpField("x", TrackScale(1, 30), 40).value, 30u);
    // Without MPs nothing is a valid MP number.
    EXPECT_EQ(ReadMpField("0", TrackScale(), 0).verdict, FieldVerdict::NotANumber);
}

TEST(RangeScale, TheMovedEndWinsAndPushesTheOtherAlong)
{
    const TrackScale s(0, 100);
    const MpRangeEnds r{20, 60};
    EXPECT_EQ(MoveStart(r, 30, s), (MpRangeEnds{30, 60}));
    EXPECT_EQ(MoveStart(r, 80, s), (MpRangeEnds{80, 80}));
    EXPECT_EQ(MoveStart(r, 500, s), (MpRangeEnds{100, 100}));
    EXPECT_EQ(MoveStop(r, 10, s), (MpRangeEnds{10, 10}));
    EXPECT_EQ(MoveStop(r, 500, s), (MpRangeEnds{20, 100}));

    EXPECT_EQ(StepStart(r, +1, s), (MpRangeEnds{21, 60}));
    EXPECT_EQ(StepStop(r, -1, s), (MpRangeEnds{20, 59}));
    EXPECT_EQ(StepStart({0, 5}, -1, s), (MpRangeEnds{0, 5}));     // stops at the first MP
    EXPECT_EQ(StepStop({3, 100}, +1, s), (MpRangeEnds{3, 100}));  // and at the last
    EXPECT_EQ(StepStart({60, 60}, +1, s), (MpRangeEnds{61, 61})); // pushes the stop
    EXPECT_EQ(StepStop({60, 60}, -1, s), (MpRangeEnds{59, 59}));
    EXPECT_EQ(StepStart(r, std::numeric_limits<std::int64_t>::min(), s), (MpRangeEnds{0, 60}));
    EXPECT_EQ(StepStop(r, std::numeric_limits<std::int64_t>::max(), s), (MpRangeEnds{20, 100}));

    // At the top of the 64-bit numbers a step neither wraps nor leaves the range.
    const TrackScale huge(0, std::numeric_limits<std::uint64_t>::max());
    const std::uint64_t top = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(StepStop({top, top}, +1, huge), (MpRangeEnds{top, top}));
    EXPECT_EQ(StepStart({0, 0}, -1, huge), (MpRangeEnds{0, 0}));
}
