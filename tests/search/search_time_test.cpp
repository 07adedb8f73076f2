#include <gtest/gtest.h>

#include <cmath>

#include "search/search_time.h"

using namespace kestrel;

TEST(SearchTime, ParsesTheCommandLineForm)
{
    struct Case {
        const char *text;
        double want; // NAN: rejected
    } cases[] = {
        {"2026-03-01 18:00:00", 46082.75},
        {"2026-03-01T18:00:00", 46082.75},
        {"  2026-03-01 18:00:00.5 ", 46082.75 + 0.5 / 86400},
        {"2024-02-29 00:00:00", MakeDateTime(2024, 2, 29, 0, 0, 0)},
        {"2023-02-29 00:00:00", NAN},
        {"2026-03-01 24:00:00", NAN},
        {"2026-03-01 18:00", NAN},
        {"2026-03-01 18:00:00.1234567", NAN},
        {"2026-3-1 18:00:00", NAN},
        {"2026-03-01 18:00:00x", NAN},
        {"yesterday", NAN},
    };
    for (const auto &c : cases) {
        const auto got = ParseSearchDateTime(c.text);
        if (std::isnan(c.want))
            EXPECT_FALSE(got.has_value()) << c.text;
        else {
            ASSERT_TRUE(got.has_value()) << c.text;
            EXPECT_NEAR(*got, c.want, 1e-11) << c.text;
        }
    }
}
