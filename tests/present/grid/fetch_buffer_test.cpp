#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "record/record_reader.h"
#include "record/recording_check.h"
#include "present/grid/fetch_buffer.h"
#include "support/temp_dir.h"

using namespace kestrel;
using namespace kestrel::grid;

namespace {

MpRecord Mp(std::uint32_t n)
{
    MpRecord mp;
    mp.number = n;
    mp.time = 46000.0 + n / 86400.0;
    mp.d1 = static_cast<std::uint8_t>(n);
    mp.d1Valid = 1;
    return mp;
}

// Writes MPs 0..count-1 and, when tornBytes > 0, a cut-off record after them.
std::string WriteRecording(const test::TempDir &dir, std::uint32_t count, int tornBytes = 0)
{
    const std::string path = dir.file("rec.ksr");
    std::ofstream out(path, std::ios::binary);
    for (std::uint32_t n = 0; n < count; ++n) {
        const MpBytes b = EncodeMp(Mp(n));
        out.write(reinterpret_cast<const char *>(b.data()), static_cast<std::streamsize>(b.size()));
    }
    const MpBytes torn = EncodeMp(Mp(count));
    out.write(reinterpret_cast<const char *>(torn.data()), tornBytes);
    return path;
}

} // namespace

TEST(FetchBuffer, FullWindowIsValidAndMapsSlotsToMps)
{
    test::TempDir dir;
    RecordReader r;
    ASSERT_TRUE(r.open(WriteRecording(dir, 12000)));
    FetchBuffer buf;
    const auto base = buf.Fetch(r, 1500);
    EXPECT_TRUE(buf.valid());
    EXPECT_FALSE(base.has_value()); // MP 1 is not in this block
    EXPECT_EQ(buf.filled(), 10000u);
    EXPECT_EQ(buf.Slot(0).number, 1500u);
    EXPECT_EQ(buf.Slot(10000).number, 0u); // outside: a zero record
    EXPECT_EQ(buf.Mp(1499), nullptr);
    EXPECT_EQ(buf.lastReadBytes(), 10000u * kMpSize);
}

TEST(FetchBuffer, ShortReadZeroesTheRestAndClearsValid)
{
    test::TempDir dir;
    RecordReader r;
    ASSERT_TRUE(r.open(WriteRecording(dir, 50, 30)));
    FetchBuffer buf;
    buf.Fetch(r, 0); // fill some slots first so zeroing is observable below
    const auto base = buf.Fetch(r, 40);
    EXPECT_FALSE(buf.valid());
    EXPECT_EQ(buf.filled(), 10u); // the torn 51st record does not count
    EXPECT_EQ(buf.Slot(9).number, 49u);
    const MpRecord zero{};
    for (int i = 10; i < 50; ++i) // everything the first fetch held past the short one
        ASSERT_EQ(buf.Slot(i), zero) << i;
    EXPECT_FALSE(base.has_value());
    EXPECT_EQ(buf.lastReadBytes(), 10u * kMpSize);

    // MP 1 in the block gives the relative time base.
    const auto base1 = buf.Fetch(r, 0);
    ASSERT_TRUE(base1.has_value());
    EXPECT_DOUBLE_EQ(*base1, Mp(1).time);
}

TEST(FetchBuffer, CoversDecidesWhetherScrollingMustRead)
{
    test::TempDir dir;
    RecordReader r;
    ASSERT_TRUE(r.open(WriteRecording(dir, 20000)));
    FetchBuffer buf;
    buf.Fetch(r, 1000);
    EXPECT_TRUE(buf.Covers(10959, 41, 20000));
    EXPECT_FALSE(buf.Covers(10960, 41, 20000));
    // Near the end of a file the block is short; it still covers the last page
    // unless the file has grown since.
    buf.Fetch(r, 19900);
    EXPECT_TRUE(buf.Covers(19950, 60, 20000));
    EXPECT_FALSE(buf.Covers(19950, 60, 20010));
    // A file cut shorter than the block (replaced underneath the grid): the
    // block holds records that are gone and must be read again.
    buf.Fetch(r, 1000);
    EXPECT_FALSE(buf.Covers(1000, 41, 5000));
}

TEST(FetchBuffer, FillFromLiveRecordsReadsNothing)
{
    FetchBuffer buf;
    buf.FillFromRecords({Mp(7), Mp(8), Mp(9)});
    EXPECT_EQ(buf.first(), 7u);
    EXPECT_EQ(buf.lastReadBytes(), 0u);
    ASSERT_NE(buf.Mp(9), nullptr);
    EXPECT_EQ(buf.Mp(9)->number, 9u);

    // Across the 32-bit number wrap the live MPs sit at their places, found from the
    // file's length; the MP numbered 1 after the wrap is not MP 1.
    constexpr std::uint64_t kWrap = 1ull << 32;
    const std::uint64_t last = MpIndexAtOrBefore(1, kWrap + 3); // the file has MPs up to 2^32 + 3
    EXPECT_EQ(last, kWrap + 1);
    EXPECT_FALSE(buf.FillFromRecords({Mp(0xFFFFFFFFu), Mp(0), Mp(1)}, last).has_value());
    EXPECT_EQ(buf.first(), kWrap - 1);
    ASSERT_NE(buf.Mp(kWrap), nullptr);
    EXPECT_EQ(buf.Mp(kWrap)->number, 0u);
    EXPECT_TRUE(buf.FillFromRecords({Mp(0), Mp(1)}).has_value()); // a young recording: MP 1 starts relative time
    EXPECT_EQ(MpIndexAtOrBefore(5, 9), 5u);
    EXPECT_EQ(MpIndexAtOrBefore(5, 3), 5u); // cannot lie before: the number itself
}
