#include <gtest/gtest.h>

#include "export/export_args.h"

using namespace kestrel;

TEST(ExportArgs, ColumnListSwitchesExactlyTheNamedBoxes)
{
    std::string error;
    ExportColumns c;
    ASSERT_TRUE(ParseColumnList("d1,hex,desc", c, error)) << error;
    EXPECT_TRUE(c.d1 && c.hex && c.description);
    EXPECT_FALSE(c.prefix || c.mpNo || c.timestamp || c.d2 || c.dec || c.oct || c.bin || c.s1 || c.m3 || c.pfl);

    ASSERT_TRUE(ParseColumnList("-hex,-m5", c, error)) << error; // leading '-' starts from all
    EXPECT_FALSE(c.hex || c.m5);
    EXPECT_TRUE(c.prefix && c.d2 && c.bin && c.m3 && c.description);

    ASSERT_TRUE(ParseColumnList("all,-time", c, error));
    EXPECT_FALSE(c.timestamp);
    EXPECT_TRUE(c.mpNo);

    for (const char *bad : {"", "d1,,hex", "d3", "hex,Time", "-"}) {
        error.clear();
        EXPECT_FALSE(ParseColumnList(bad, c, error)) << bad;
        EXPECT_FALSE(error.empty()) << bad;
    }
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
    };
    for (const auto &c : cases) {
        MpRangeText r;
        std::string error;
        ASSERT_EQ(ParseMpRange(c.text, r, error), c.ok) << c.text;
        if (!c.ok) {
            EXPECT_FALSE(error.empty());
            continue;
        }
        EXPECT_EQ(r.first ? static_cast<long long>(*r.first) : -1, c.first) << c.text;
        EXPECT_EQ(r.last ? static_cast<long long>(*r.last) : -1, c.last) << c.text;
    }
}

TEST(ExportArgs, OptionsOverrideTheDialogsDefaults)
{
    std::string error;
    ExportCommandLine x;
    ASSERT_TRUE(ParseExportArgs({"--format", "raw", "-o", "out.dat", "--separator", "tab", "--frame", "none",
                                 "--no-header", "--time", "delta", "--language", "en", "--naming", "rs232",
                                 "--range", "2:4", "r.ksr"},
                                x, error))
        << error;
    EXPECT_EQ(x.options.format, ExportFormat::Raw);
    EXPECT_EQ(x.options.separator, '\t');
    EXPECT_EQ(x.options.timeMode, 2);
    EXPECT_EQ(x.options.langOffset, kLangEnglish);
    EXPECT_EQ(x.options.naming, 1);
    EXPECT_EQ(*x.range->last, 4u);

    const std::vector<std::vector<std::string>> bad = {
        {},
        {"a.ksr", "b.ksr"},
        {"a.ksr", "--separator"},
        {"a.ksr", "--bogus"},
        {"a.ksr", "--range", "5:1"},
    };
    for (const auto &args : bad) {
        ExportCommandLine y;
        error.clear();
        EXPECT_FALSE(ParseExportArgs(args, y, error)) << (args.empty() ? "(none)" : args.back());
        EXPECT_FALSE(error.empty());
    }
}
