#include <gtest/gtest.h>

#include <fstream>

#include "capture/record_reader.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {
void writeRecords(const std::string &path, std::uint32_t count, std::size_t tail = 0)
{
    std::ofstream f(path, std::ios::binary);
    for (std::uint32_t i = 0; i < count; ++i) {
        MpRecord mp;
        mp.number = i;
        mp.d1 = static_cast<std::uint8_t>(i);
        const MpBytes b = EncodeMp(mp);
        f.write(reinterpret_cast<const char *>(b.data()), b.size());
    }
    for (std::size_t i = 0; i < tail; ++i)
        f.put('\x7f');
}
} // namespace

TEST(RecordReader, ReadsByOffsetAndReportsShortReads)
{
    test::TempDir dir;
    writeRecords(dir.file("a.ksr"), 2);
    RecordReader r;
    ASSERT_TRUE(r.open(dir.file("a.ksr")));
    EXPECT_EQ(r.recordCount(), 2u);
    MpRecord mp;
    ASSERT_TRUE(r.read(1, mp));
    EXPECT_EQ(mp.number, 1u);
    EXPECT_FALSE(r.read(2, mp));
}

TEST(RecordReader, TornTailCountsOnlyWholeRecords)
{
    test::TempDir dir;
    writeRecords(dir.file("torn.ksr"), 5, 33);
    RecordReader r;
    ASSERT_TRUE(r.open(dir.file("torn.ksr")));
    EXPECT_EQ(r.fileSize(), 5 * 80 + 33u);
    EXPECT_EQ(r.recordCount(), 5u);
    std::vector<MpRecord> block;
    EXPECT_EQ(r.readBlock(3, 10, block), 2u);
    ASSERT_EQ(block.size(), 2u);
    EXPECT_EQ(block[1].number, 4u);
}

TEST(RecordReader, BlockReadMatchesSingleReads)
{
    test::TempDir dir;
    writeRecords(dir.file("b.ksr"), 1000);
    RecordReader r;
    ASSERT_TRUE(r.open(dir.file("b.ksr")));
    std::vector<MpRecord> block;
    ASSERT_EQ(r.readBlock(250, 500, block), 500u);
    for (std::uint64_t i = 0; i < 500; i += 37) {
        MpRecord one;
        ASSERT_TRUE(r.read(250 + i, one));
        EXPECT_EQ(one, block[i]);
    }
}

TEST(RecordReader, MissingFileAndDirectoryFailWithText)
{
    test::TempDir dir;
    RecordReader r;
    EXPECT_FALSE(r.open(dir.file("nope.ksr")));
    EXPECT_FALSE(r.errorText().empty());
    EXPECT_FALSE(r.open(dir.path().string()));
    EXPECT_FALSE(r.isOpen());
    EXPECT_EQ(r.recordCount(), 0u);
}
