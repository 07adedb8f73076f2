#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

#include "record/record_file.h"
#include "record/record_paths.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

using namespace kestrel;
using test::RecordingBuilder;

namespace {

std::uint64_t sizeOf(const std::string &path)
{
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 ? static_cast<std::uint64_t>(st.st_size) : 0;
}

} // namespace

TEST(RecordFile, AppendLandsAtTheEndAndTheViewSeesItAtOnce)
{
    test::TempDir dir;
    RecordFile f;
    f.setPath(dir.file("ten.ksr"));
    RecordingBuilder::writeNumbered(f.path(), 10);
    ASSERT_TRUE(f.open(RecordHandle::View));
    ASSERT_TRUE(f.open(RecordHandle::Record));
    f.seekToEnd();
    EXPECT_EQ(f.writePosition(), 800u);
    MpRecord mp;
    mp.number = 10;
    const MpBytes b = EncodeMp(mp);
    ASSERT_EQ(f.appendRecords(b.data(), b.size()), kMpSize);
    ASSERT_TRUE(f.view().read(10, mp)); // the other handle, no reopening
    EXPECT_EQ(mp.number, 10u);
    EXPECT_EQ(f.view().recordCount(), 11u);
    ASSERT_TRUE(f.readRecord(9, mp));
    EXPECT_EQ(mp.number, 9u);
    EXPECT_FALSE(f.readRecord(11, mp));

    f.close(RecordHandle::Record);
    f.close(RecordHandle::Record); // closing twice does not count twice
    EXPECT_EQ(f.openCount(RecordHandle::Record), 0);
    EXPECT_TRUE(f.isOpen(RecordHandle::View));
}

TEST(RecordFile, OnlyOneRecorderWritesAFileWhileReadersGoOn)
{
    test::TempDir dir;
    RecordingBuilder::writeNumbered(dir.file("busy.ksr"), 3);
    RecordFile first, second;
    first.setPath(dir.file("busy.ksr"));
    second.setPath(dir.file("busy.ksr"));
    ASSERT_TRUE(first.open(RecordHandle::Record));
    EXPECT_EQ(second.open(RecordHandle::Record).code, kRecordFileBusy);
    ASSERT_TRUE(second.open(RecordHandle::View));
    EXPECT_EQ(second.view().recordCount(), 3u);
    first.close(RecordHandle::Record);
    EXPECT_TRUE(second.open(RecordHandle::Record));
}

TEST(RecordFile, TornTailIsReadableAndCutBeforeAppending)
{
    test::TempDir dir;
    RecordFile f;
    f.setPath(dir.file("torn.ksr"));
    RecordingBuilder::writeNumbered(f.path(), 7, 45);
    ASSERT_TRUE(f.open(RecordHandle::Record));
    EXPECT_EQ(f.recordCount(), 7u);
    MpRecord mp;
    ASSERT_TRUE(f.readLastRecord(mp));
    EXPECT_EQ(mp.number, 6u);
    EXPECT_EQ(f.cutTornTail(), 45u);
    EXPECT_EQ(sizeOf(f.path()), 560u);

    // Should the tail stay (it could not be cut), the end is still that of the last whole record.
    f.close(RecordHandle::Record);
    RecordingBuilder::writeNumbered(f.path(), 3, 45);
    ASSERT_TRUE(f.open(RecordHandle::Record));
    f.seekToEnd();
    EXPECT_EQ(f.writePosition(), 240u);
    const MpBytes b = EncodeMp(mp);
    ASSERT_EQ(f.appendRecords(b.data(), b.size()), kMpSize);
    EXPECT_EQ(sizeOf(f.path()), 320u);
}

TEST(RecordPaths, SizeLabelAndWhereBareNamesGo)
{
    EXPECT_EQ(RecordSizeLabel("f.ksr", 5000), "f.ksr   [  4 KB ]");
    EXPECT_EQ(RecordSizeLabel("f.ksr", (1ull << 40) + 5), "f.ksr   [  1073741824 KB ]");
    EXPECT_EQ(ResolveRecordPath("x.ksr", "/data").path, "/data/recordings/x.ksr");
    EXPECT_EQ(ResolveRecordPath("", "/data").path, "/data/recordings/Default.ksr");
    EXPECT_EQ(ResolveRecordPath("sub/x.ksr", "/data").path, "sub/x.ksr");
}

TEST(RecordPaths, SaveAsCopiesEverythingAndRefusesBadTargets)
{
    test::TempDir dir;
    const std::string src = dir.file("src.ksr");
    RecordingBuilder::writeNumbered(src, 20'000, 17); // 1.6 MB: more than one buffer
    CopyResult r = SaveRecordFileAs(src, dir.file("copy.ksr"));
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(r.bytes, sizeOf(src));
    std::ifstream a(src, std::ios::binary), b(dir.file("copy.ksr"), std::ios::binary);
    EXPECT_TRUE(std::equal(std::istreambuf_iterator<char>(a), {}, std::istreambuf_iterator<char>(b)));

    r = SaveRecordFileAs(src, src); // would truncate the source
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(sizeOf(src), 20'000u * 80 + 17);
    r = SaveRecordFileAs(src, dir.file("missing/x.ksr"));
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("missing/x.ksr"), std::string::npos);
}
