#include <gtest/gtest.h>

#include "export/export_args.h"

using namespace kestrel;

TEST(ExportArgs, ColumnListSwitchesExactlyTheNamedBoxes)
{
    auto c = ParseColumnList("d1,hex,desc");
    ASSERT_TRUE(c) << c.result.detail;
    EXPECT_TRUE(c.value.d1 && c.value.hex && c.value.description);
    EXPECT_FALSE(c.value.prefix || c.value.mpNo || c.value.timestamp || c.value.d2 || c.value.dec || c.value.oct ||
                 c.value.bin || c.value.s1 || c.value.m3 || c.value.pfl);

    c = ParseColumnList("-hex,-m5"); // leading '-' starts from all
    ASSERT_TRUE(c) << c.result.detail;
    EXPECT_FALSE(c.value.hex || c.value.m5);
    EXPECT_TRUE(c.value.prefix && c.value.d2 && c.value.bin && c.value.m3 && c.value.description);

    c = ParseColumnList("all,-time");
    ASSERT_TRUE(c);
    EXPECT_FALSE(c.value.timestamp);
    EXPECT_TRUE(c.value.mpNo);

    for (const char *bad : {"", "d1,,hex", "d3", "hex,Time", "-"}) {
        c = ParseColumnList(bad);
        EXPECT_EQ(c.result.code, kMalformedExportValue) << bad;
        EXPECT_FALSE(c.result.detail.empty()) << bad;
    }
    EXPECT_NE(ParseColumnList("d1,bogus").result.detail.find("'bogus'"), std::string::npos);
}

TEST(ExportArgs, Ranges)
{
    struct Case {
        const char *text;
        bool ok;
        long long first, last; // -1: open
    } cases[] = {
        {"3:9", true, 3, 9},  {"3:", true, 3, -1},   {":9", true, -1, 9},  {"7", true, 7, 7},
        {"9:3", false, 0, 0}, {"-1:4", false, 0, 0}, {"1:2:3", false, 0, 0}, {"99999999999999999999:1", false, 0, 0},
        {":", false, 0, 0},   {"", false, 0, 0},
    };
    for (const auto &c : cases) {
        const auto r = ParseMpRange(c.text);
        ASSERT_EQ(r.ok(), c.ok) << c.text;
        if (!c.ok) {
            EXPECT_EQ(r.result.code, kMalformedExportValue) << c.text;
            EXPECT_NE(r.result.detail.find(c.text), std::string::npos) << r.result.detail;
            continue;
        }
        EXPECT_EQ(r.value.first ? static_cast<long long>(*r.value.first) : -1, c.first) << c.text;
        EXPECT_EQ(r.value.last ? static_cast<long long>(*r.value.last) : -1, c.last) << c.text;
    }
}
