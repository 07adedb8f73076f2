#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "config/date_time_text.h"

using namespace kestrel;

TEST(SettingsDateTime, ReadsBothFormsAndRejectsImpossibleDates)
{
    const std::pair<const char *, std::optional<double>> cases[] = {
        {"1899-12-30 00:00:00", 0.0},
        {"2026-11-21 12:00:00", 46347.5},
        {"2026-11-21T18:00", 46347.75},
        {"21.11.2026 06:00:00", 46347.25},
        {" 2026-11-21 12:00:00.5 ", 46347.5 + 0.5 / 86400.0},
        {"2024-02-29 00:00:00", 45351.0},
        {"2023-02-29 00:00:00", std::nullopt},
        {"2026-11-21 24:00:00", std::nullopt},
        {"2026-11-21 12:00:00 x", std::nullopt},
        {"46347.5", std::nullopt},
        {"garbage", std::nullopt},
    };
    for (const auto &[text, expected] : cases) {
        const auto got = ParseSettingsDateTime(text);
        ASSERT_EQ(got.has_value(), expected.has_value()) << text;
        if (expected) {
            EXPECT_DOUBLE_EQ(*got, *expected) << text;
        }
    }
}

TEST(SettingsDateTime, WritesTheShortestTextThatReadsBackExactly)
{
    EXPECT_EQ(FormatSettingsDateTime(46347.5), "2026-11-21 12:00:00");
    EXPECT_EQ(FormatSettingsDateTime(-1.25), "1899-12-29 06:00:00"); // before the epoch the fraction is still the time
    const double withMs = 46347.0 + (3600.0 + 0.25) / 86400.0;
    EXPECT_EQ(FormatSettingsDateTime(withMs).substr(0, 23), "2026-11-21 01:00:00.250");

    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> days(-600000.0, 2958465.0);
    for (int i = 0; i < 20000; ++i) {
        const double x = i % 2 ? days(rng) : std::floor(days(rng) * 86400.0) / 86400.0;
        const std::string text = FormatSettingsDateTime(x);
        const auto back = ParseSettingsDateTime(text);
        ASSERT_TRUE(back.has_value()) << text;
        ASSERT_EQ(*back, x) << text;
    }
}

TEST(SettingsDateTime, OutOfRangeValuesStillGiveReadableText)
{
    for (double bad : {double(NAN), double(INFINITY), -1e300, 1e300})
        EXPECT_TRUE(ParseSettingsDateTime(FormatSettingsDateTime(bad)).has_value());
}
