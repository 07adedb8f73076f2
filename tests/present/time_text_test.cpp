#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "present/time_text.h"
#include "base/string_table.h"

using namespace kestrel;

namespace {
constexpr double kDay = 1.0;
constexpr double kSecond = 1.0 / 86400.0;
// 2026-11-21 00:00 in days since 1899-12-30.
constexpr double k20261121 = 46347.0;

double At(double days, int h, int m, int s, std::int64_t micros)
{
    return days + (h * 3600.0 + m * 60.0 + s + static_cast<double>(micros) / 1e6) * kSecond;
}

struct LangPinned : ::testing::Test {
    void SetUp() override { SetGlobalLang(kLangEnglish); }
    void TearDown() override { SetGlobalLang(kLangGerman); }
};
using TimeTexts = LangPinned;
} // namespace

TEST(TimeParts, SplitsIntoClockPartsAndCarriesRoundedDays)
{
    struct Case {
        double t;
        TimeParts want;
    } cases[] = {
        {At(0, 1, 2, 3, 4), {false, 0, 1, 2, 3, 4}},
        {At(k20261121, 13, 5, 9, 500000), {false, 46347, 13, 5, 9, 500000}},
        {1.0 / 24.0, {false, 0, 1, 0, 0, 0}}, // not 00:59:59,999999
        {3 * kDay + 25 * 3600 * kSecond, {false, 4, 1, 0, 0, 0}}, // hours stay below 24
        {1.0 - 1e-12, {false, 1, 0, 0, 0, 0}},                     // rounds up into the next day
        {-1.5 * kSecond, {true, 0, 0, 0, 1, 500000}},
        {-2.25, {true, 2, 6, 0, 0, 0}},
        {-2.0 + 1e-13, {true, 2, 0, 0, 0, 0}}, // a carry moves away from zero: -2 days, not -0
        {-1e-13, {false, 0, 0, 0, 0, 0}}, // rounds to zero: no "-0" for noise
        {0.0, {}},
        {std::nan(""), {}},
        {1e300, {}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(FormatTimeParts(c.t), c.want) << c.t;
    EXPECT_FALSE(IsDisplayableTime(std::nan("")));
    EXPECT_TRUE(IsDisplayableTime(-3.0));
}

TEST_F(TimeTexts, DurationTextsInBothLanguagesAndWithASign)
{
    EXPECT_EQ(FormatDurationText(At(0, 1, 2, 3, 4), DayWord()), "0 day(s)  01:02:03,000004 ");
    EXPECT_EQ(FormatDurationText(-1.5 * kSecond, " day(s)"), "-0 day(s)  00:00:01,500000 ");
    EXPECT_EQ(FormatDurationText(std::nan(""), " day(s)"), "(invalid time) ");
    // Two stamps 0.25 s apart whose raw difference is a hair above 0.25 s.
    const double a = 46082.5 + 3 * 0.25 / 86400, b = 46082.5 + 4 * 0.25 / 86400;
    ASSERT_NE(FormatDurationText(b - a, " day(s)"), "0 day(s)  00:00:00,250000 ");
    EXPECT_EQ(FormatTimeDifference(b, a, " day(s)"), "0 day(s)  00:00:00,250000 ");
    EXPECT_EQ(FormatTimeDifference(a, b, DayWord(kLangGerman)), "-0 Tag(e)  00:00:00,250000 ");
}

TEST_F(TimeTexts, AbsoluteTextsUseThePinnedPatternAndTheCalendar)
{
    const TimeLocale de = TimeLocale::Fixed();
    const TimeLocale iso = TimeLocale::Iso();
    EXPECT_EQ(FormatAbsoluteTime(At(k20261121, 13, 5, 9, 500000), de), "21.11.2026 13:05:09,500000 ");
    EXPECT_EQ(FormatAbsoluteTime(45351.75, iso), "2024-02-29 18:00:00,000000 ");
    EXPECT_EQ(FormatAbsoluteTime(k20261121 - 1e-12, iso), "2026-11-21 00:00:00,000000 ");
    // Below zero: days count back, the fraction is still a time of day.
    EXPECT_EQ(FormatAbsoluteTime(-1.25, iso), "1899-12-29 06:00:00,000000 ");
    // Garbage from a damaged record never reaches the calendar.
    for (double bad : {2958466.0, -693594.0, 1e300, std::nan(""), -HUGE_VAL})
        EXPECT_EQ(FormatAbsoluteTime(bad, iso), "(invalid time) ") << bad;
}

TEST_F(TimeTexts, FormatterModesCacheAndLanguage)
{
    TimeTextFormatter f(TimeLocale::Iso());
    const double base = At(k20261121, 10, 0, 0, 0);
    const double t = At(k20261121, 11, 2, 3, 4);
    EXPECT_EQ(f.Text(TimeMode::Absolute, t, base, std::nullopt), "2026-11-21 11:02:03,000004 ");
    EXPECT_EQ(f.Text(TimeMode::Relative, t, base, std::nullopt), "0 day(s)  01:02:03,000004 ");
    EXPECT_EQ(f.Text(TimeMode::Delta, t, base, At(k20261121, 11, 2, 3, 0)), "0 day(s)  00:00:00,000004 ");
    EXPECT_EQ(f.Text(77, t, base, std::nullopt), f.Text(TimeMode::Absolute, t, base, std::nullopt));

    // The cached second must follow the day as well as the time of day.
    EXPECT_EQ(f.Text(0, t + 1, 0, std::nullopt), "2026-11-22 11:02:03,000004 ");
    EXPECT_EQ(f.Text(0, t + 1 + 0.5 * kSecond, 0, std::nullopt), "2026-11-22 11:02:03,500004 ");

    SetGlobalLang(kLangGerman);
    EXPECT_EQ(f.Text(TimeMode::Relative, t, base, std::nullopt), "0 Tag(e)  01:02:03,000004 ");
}

TEST(RelativeBase, OnlyMpOneAndResetsMoveIt)
{
    RelativeTimeBase b;
    b.Reset(100.0);
    b.NoteRecord(0, 5.0);
    b.NoteRecord(2, 6.0);
    EXPECT_EQ(b.value, 100.0);
    b.NoteRecord(1, 7.0);
    EXPECT_EQ(b.value, 7.0);
}

TEST(TimeLocaleTest, ZoneFieldsAreDroppedAndAMissingLocaleReadsIso)
{
    EXPECT_EQ(StripZoneFields("%H:%M:%S %Z"), "%H:%M:%S");
    EXPECT_EQ(StripZoneFields("%z %H"), " %H");
    EXPECT_EQ(StripZoneFields("%%Z%H"), "%%Z%H");

    const char *old = std::getenv("LC_ALL");
    const std::string saved = old ? old : "";
    setenv("LC_ALL", "xx_NOWHERE.UTF-8", 1); // not installed: still a usable pattern
    const TimeLocale c = TimeLocale::System();
    EXPECT_EQ(c.dateFormat, "%Y-%m-%d");
    EXPECT_EQ(c.timeFormat, "%H:%M:%S");
    if (old)
        setenv("LC_ALL", saved.c_str(), 1);
    else
        unsetenv("LC_ALL");
}

TEST_F(TimeTexts, DifferencesAgreeWithTheAbsoluteTextsTheyAreTakenFrom)
{
    // Stamps a whole number of microseconds apart show that many in relative
    // and delta mode, never one more or less from the double's rounding: the
    // delta of two rows is the difference of their absolute texts.
    std::mt19937_64 rng(11);
    std::uniform_int_distribution<std::int64_t> us(0, 3 * 86'400'000'000LL);
    TimeTextFormatter f(TimeLocale::Iso(), kLangEnglish);
    const auto stamp = [](std::int64_t u) { return k20261121 + static_cast<double>(u) / 86'400'000'000.0; };
    const auto durationText = [](std::int64_t d) {
        const std::int64_t a = d < 0 ? -d : d;
        char buf[64];
        std::snprintf(buf, sizeof buf, "%s%lld day(s)  %02lld:%02lld:%02lld,%06lld ", d < 0 ? "-" : "",
                      static_cast<long long>(a / 86'400'000'000LL), static_cast<long long>(a / 3'600'000'000LL % 24),
                      static_cast<long long>(a / 60'000'000 % 60), static_cast<long long>(a / 1'000'000 % 60),
                      static_cast<long long>(a % 1'000'000));
        return std::string(buf);
    };
    for (int i = 0; i < 100000; ++i) {
        const std::int64_t a = us(rng), b = us(rng);
        ASSERT_EQ(f.Text(TimeMode::Delta, stamp(b), 0, stamp(a)), durationText(b - a)) << a << " " << b;
        ASSERT_EQ(f.Text(TimeMode::Relative, stamp(b), stamp(a), std::nullopt), durationText(b - a)) << a << " " << b;
    }
}
