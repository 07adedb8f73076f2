#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

#include "record/record_file.h"
#include "record/record_paths.h"
#include "record/recording_check.h"
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
    EXPECT_TRUE(test::ReadWholeFile(src) == test::ReadWholeFile(dir.file("copy.ksr")));

    r = SaveRecordFileAs(src, src); // would truncate the source
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(sizeOf(src), 20'000u * 80 + 17);
    r = SaveRecordFileAs(src, dir.file("missing/x.ksr"));
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("missing/x.ksr"), std::string::npos);
}

// A second recorder that starts on the same file never changes it: not when the
// first one holds it already, and not when the first one gets in between the
// second one's open and its lock.
TEST(RecordFile, ASecondRecorderNeverEmptiesAFileTheFirstHolds)
{
    test::TempDir dir;
    const std::string path = dir.file("race.ksr");
    RecordingBuilder().d1('a').d1('b').write(path);
    const std::string before = test::ReadWholeFile(path);

    RecordFile first, second;
    first.setPath(path);
    second.setPath(path);
    ASSERT_TRUE(first.open(RecordHandle::Record));
    EXPECT_EQ(second.create(RecordHandle::Record).code, kRecordFileBusy);
    EXPECT_EQ(test::ReadWholeFile(path), before);
    first.close(RecordHandle::Record);

    const std::string fresh = dir.file("fresh.ksr");
    first.setPath(fresh);
    second.setPath(fresh);
    MpRecord mp;
    const MpBytes rec = EncodeMp(mp);
    second.setBeforeLockHook([&] {
        // The first recorder makes the file, locks it and writes while the second waits for its lock.
        ASSERT_TRUE(first.create(RecordHandle::Record));
        ASSERT_EQ(first.appendRecords(rec.data(), rec.size()), kMpSize);
    });
    EXPECT_EQ(second.create(RecordHandle::Record).code, kRecordFileBusy);
    EXPECT_EQ(sizeOf(fresh), kMpSize);
    EXPECT_FALSE(second.isOpen(RecordHandle::Record));
}

// What may be written over without asking: nothing, or a recording.
TEST(RecordingCheck, OnlyEmptyFilesAndRecordingsPassTheWritersCheck)
{
    test::TempDir dir;
    struct Case {
        const char *name;
        std::string bytes;
        RecordingKind kind;
        RecordingProblem problem;
    };
    RecordingBuilder sound;
    sound.d1('x').d2('y');
    RecordingBuilder noMark(45000.5, 0.001, false);
    noMark.d1('x').d1('y');
    RecordingBuilder year1899(0.0);
    year1899.d1('x');
    const std::string text(117, 't');
    std::string zeros(160, '\0'); // numbered 0 and 0: the last number is wrong
    const std::vector<Case> cases = {
        {"empty", "", RecordingKind::Empty, RecordingProblem::None},
        {"note", "buy milk\n", RecordingKind::NotRecording, RecordingProblem::TooShort},
        {"text", text, RecordingKind::NotRecording, RecordingProblem::Numbering},
        {"zeros", zeros, RecordingKind::NotRecording, RecordingProblem::Numbering},
        {"no opening mark", noMark.bytes(), RecordingKind::NotRecording, RecordingProblem::NoOpeningMark},
        {"time 1899", year1899.bytes(), RecordingKind::NotRecording, RecordingProblem::BadTime},
        {"recording", sound.bytes(), RecordingKind::Recording, RecordingProblem::None},
        {"torn recording", sound.bytes() + "abc", RecordingKind::Recording, RecordingProblem::None},
    };
    for (const Case &c : cases) {
        const std::string path = dir.file(std::string(c.name) + ".ksr");
        std::ofstream(path, std::ios::binary) << c.bytes;
        RecordFile f;
        f.setPath(path);
        ASSERT_TRUE(f.lockForRecording()) << c.name;
        const RecordingCheck got = f.checkLocked();
        EXPECT_EQ(got.kind, c.kind) << c.name;
        EXPECT_EQ(got.problem, c.problem) << c.name;
        f.close(RecordHandle::Record);
        EXPECT_EQ(test::ReadWholeFile(path), c.bytes) << c.name << ": looking changed the file";
    }
    // The readers' check is milder: numbering only.
    RecordReader reader;
    ASSERT_TRUE(reader.open(dir.file("no opening mark.ksr")));
    EXPECT_TRUE(CheckRecording(reader, CheckDepth::Readable).isRecording());
}
