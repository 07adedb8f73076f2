#include <gtest/gtest.h>

#include "record/record_reader.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

using namespace kestrel;
using test::RecordingBuilder;

TEST(RecordReader, SingleAndBlockReadsAgreeAndATornTailCountsOnlyWholeRecords)
{
    test::TempDir dir;
    RecordingBuilder::writeNumbered(dir.file("b.ksr"), 1000, 33);
    RecordReader r;
    ASSERT_TRUE(r.open(dir.file("b.ksr")));
    EXPECT_EQ(r.fileSize(), 1000 * 80 + 33u);
    EXPECT_EQ(r.recordCount(), 1000u);
    std::vector<MpRecord> block;
    ASSERT_EQ(r.readBlock(250, 500, block), 500u);
    for (std::uint64_t i = 0; i < 500; i += 37) {
        MpRecord one;
        ASSERT_TRUE(r.read(250 + i, one));
        EXPECT_EQ(one.number, 250 + i);
        EXPECT_EQ(one, block[i]);
    }
    EXPECT_EQ(r.readBlock(997, 10, block), 3u); // stops before the torn tail
    ASSERT_EQ(block.size(), 3u);
    EXPECT_EQ(block[2].number, 999u);
    MpRecord mp;
    EXPECT_FALSE(r.read(1000, mp));
}
