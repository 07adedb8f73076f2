#include <gtest/gtest.h>

#include "search/search.h"
#include "search/search_args.h"

using namespace kestrel;

TEST(SearchArgs, LevelsByEitherNameAndAnyCase)
{
    const auto s = ParseSignalCriteria(" dtr=1 , M2=0,ri=1");
    ASSERT_TRUE(s) << s.result.detail;
    // 2 wants high, 1 wants low, 0 ignores the line.
    EXPECT_EQ(std::vector<int>(s.value.level, s.value.level + 6), (std::vector<int>{2, 0, 0, 1, 0, 2}));

    const auto e = ParseErrorCriteria("F=1,le=0");
    ASSERT_TRUE(e) << e.result.detail;
    EXPECT_EQ(std::vector<int>(e.value.flag, e.value.flag + 3), (std::vector<int>{0, 2, 1}));

    struct Case {
        const char *text;
        const char *says;
    } bad[] = {
        {"", "no signal given"},         {"S1", "expected NAME=0"}, {"S1=2", "expected NAME=0"},
        {"S1=1,", "expected NAME=0"},    {"X9=1", "unknown signal 'X9'"}, {"PE=1", "unknown signal"},
    };
    for (const auto &c : bad) {
        const auto r = ParseSignalCriteria(c.text);
        EXPECT_EQ(r.result.code, kMalformedSearchValue) << c.text;
        EXPECT_NE(r.result.detail.find(c.says), std::string::npos) << c.text << ": " << r.result.detail;
    }
    EXPECT_NE(ParseErrorCriteria("S1=1").result.detail.find("unknown error flag"), std::string::npos);
}

TEST(SearchArgs, HexPatterns)
{
    const auto p = ParseHexPattern("41 4a0d ff");
    ASSERT_TRUE(p) << p.result.detail;
    EXPECT_EQ(p.value, (std::vector<std::uint8_t>{0x41, 0x4A, 0x0D, 0xFF}));

    for (const char *malformed : {"4", "4 1", "4G", "0x41"})
        EXPECT_EQ(ParseHexPattern(malformed).result.code, kMalformedSearchValue) << malformed;
    // The window's own text for what can never be searched for.
    for (const char *unsearchable : {"", "  ", "41 00", "00"})
        EXPECT_EQ(ParseHexPattern(unsearchable).result.code, SearchText::BadPattern) << unsearchable;
}
