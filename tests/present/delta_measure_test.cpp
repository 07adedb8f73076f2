// The delta-time measurement: exact microseconds between the shown stamps,
// milliseconds and seconds rounded half away from zero, either order.

#include <gtest/gtest.h>

#include "present/delta_measure.h"

namespace kestrel {
namespace {

constexpr double kUs = 1.0 / 86400e6; // one microsecond in days

TEST(MeasureDelta, RoundsTheExactDifferenceHalfAwayFromZero)
{
    const double t0 = 46082.5; // 2026-03-01 12:00:00
    struct Case {
        double us;
        std::int64_t ms, s;
    };
    for (const Case c : {Case{1'500, 2, 0}, Case{1'499, 1, 0}, Case{499'999, 500, 0}, Case{500'000, 500, 1},
                         Case{-1'500, -2, 0}, Case{-2'500'000, -2'500, -3}, Case{90'061'000'001.0, 90'061'000, 90'061}}) {
        const DeltaMeasure m = MeasureDelta(t0, t0 + c.us * kUs, TimeLocale::Fixed(), " day(s)");
        ASSERT_TRUE(m.valid);
        EXPECT_EQ(m.microseconds, static_cast<std::int64_t>(c.us)) << c.us;
        EXPECT_EQ(m.milliseconds, c.ms) << c.us;
        EXPECT_EQ(m.seconds, c.s) << c.us;
    }
    const DeltaMeasure day = MeasureDelta(t0, t0 + 90'061'000'001.0 * kUs, TimeLocale::Fixed(), " day(s)");
    EXPECT_EQ(day.deltaText, "1 day(s)  01:01:01,000001 ");
    EXPECT_EQ(day.startText, "01.03.2026 12:00:00,000000 ");
    const DeltaMeasure back = MeasureDelta(t0 + 1.25 / 86400, t0, TimeLocale::Fixed(), " day(s)");
    EXPECT_EQ(back.deltaText, "-0 day(s)  00:00:01,250000 ");
}

TEST(MeasureDelta, ADamagedStampGivesTextsButNoNumbers)
{
    const DeltaMeasure m = MeasureDelta(46082.5, std::numeric_limits<double>::quiet_NaN(), TimeLocale::Fixed(), " d");
    EXPECT_FALSE(m.valid);
    EXPECT_EQ(m.microseconds, 0);
    EXPECT_FALSE(m.stopText.empty());
}

} // namespace
} // namespace kestrel
