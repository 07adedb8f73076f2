#include <gtest/gtest.h>

#include <atomic>

#include "export/export_run.h"
#include "record/recording_check.h"
#include "support/recording_builder.h"
#include "only_columns.h"
#include "support/temp_dir.h"

using namespace kestrel;
using test::RecordingBuilder;

namespace {

struct Recording {
    test::TempDir dir;
    RecordReader reader;
    explicit Recording(const RecordingBuilder &b, std::size_t tail = 0)
    {
        b.write(dir.file("r.ksr"), tail);
        if (!reader.open(dir.file("r.ksr")))
            throw std::runtime_error("open failed");
    }
};

std::size_t countLines(const std::string &s)
{
    std::size_t n = 0;
    for (std::size_t p = s.find("\r\n"); p != std::string::npos; p = s.find("\r\n", p + 2))
        ++n;
    return n;
}

} // namespace

TEST(ExportRun, RawModeWritesBareBytesOfTheCheckedCircuits)
{
    RecordingBuilder b;
    b.d1('a').d2('1').both('b', '2').plain().d2('3').d1('c');
    Recording r(b);
    ExportOptions o;
    o.format = ExportFormat::Raw;
    auto run = [&](bool d1, bool d2, ExportRange range) {
        o.columns.d1 = d1;
        o.columns.d2 = d2;
        StringSink sink;
        ExportTimeState t(TimeLocale::Fixed());
        const ExportResult res = RunExport(r.reader, o, range, sink, t);
        EXPECT_EQ(res.status, ExportStatus::Done);
        return sink.data;
    };
    EXPECT_EQ(run(true, true, FullRange(r.reader)), "a1b23c"); // D1 before D2 within one MP
    EXPECT_EQ(run(false, true, FullRange(r.reader)), "123");
    EXPECT_EQ(run(true, false, {4, 7}), "bc");
}

// Range, head line and line ends are pinned end to end by the CLI tests; the
// switch without a head line and a torn tail are not.
TEST(ExportRun, NoHeadLineAndATornTailThatDoesNotCount)
{
    RecordingBuilder b;
    for (int i = 0; i < 10; ++i)
        b.d1(static_cast<std::uint8_t>('0' + i));
    Recording r(b, 17);
    ExportOptions o;
    o.header = false;
    StringSink sink;
    ExportTimeState t(TimeLocale::Fixed());
    ASSERT_EQ(RunExport(r.reader, o, FullRange(r.reader), sink, t).status, ExportStatus::Done);
    EXPECT_EQ(countLines(sink.data), 12u);
    EXPECT_EQ(sink.data.rfind("\"\";\"0\";", 0), 0u);
}

TEST(ExportRun, RejectsRangesOutsideTheRecording)
{
    RecordingBuilder b;
    b.d1('x');
    Recording r(b);
    ExportOptions o;
    for (ExportRange bad : {ExportRange{0, 3}, ExportRange{2, 1}, ExportRange{5, 9}}) {
        StringSink sink;
        ExportTimeState t(TimeLocale::Fixed());
        const ExportResult res = RunExport(r.reader, o, bad, sink, t);
        EXPECT_TRUE(res.status == ExportStatus::BadRange && !res.error.empty() && sink.data.empty());
    }
}

TEST(ExportRun, SeedsTimesFromMpOneAndThePreviousMp)
{
    RecordingBuilder b(45000.0, 2.0); // two seconds apart
    b.d1('a').d1('b').d1('c');         // MPs 2..4
    Recording r(b);
    ExportOptions o;
    o.langOffset = kLangEnglish;
    o.header = false;
    o.frame = kNoFrame;
    o.columns = test::Only({&ExportColumns::timestamp, &ExportColumns::hex, &ExportColumns::dec, &ExportColumns::oct,
                            &ExportColumns::bin});
    auto exportOne = [&](int mode) {
        o.timeMode = mode;
        StringSink sink;
        ExportTimeState t(TimeLocale::Fixed(), kLangEnglish);
        SeedExportTime(r.reader, {3, 3}, t);
        EXPECT_EQ(RunExport(r.reader, o, {3, 3}, sink, t).status, ExportStatus::Done);
        return sink.data;
    };
    // MP 3 is four seconds after MP 1 and two after MP 2.
    EXPECT_EQ(exportOne(1), "0 day(s)  00:00:04,000000;\r\n");
    EXPECT_EQ(exportOne(2), "0 day(s)  00:00:02,000000;\r\n");
    EXPECT_EQ(exportOne(0), "15.03.2023 00:00:06,000000;\r\n");

    // A recording of its opening mark alone has no MP 1: its counters were
    // reset when MP 0 was written, so relative time starts there.
    Recording single(RecordingBuilder(45000.0, 2.0, false).mark(0, kSystemMarkKind, 0));
    o.timeMode = 1;
    StringSink sink;
    ExportTimeState t(TimeLocale::Fixed(), kLangEnglish);
    SeedExportTime(single.reader, {0, 0}, t);
    EXPECT_EQ(RunExport(single.reader, o, {0, 0}, sink, t).status, ExportStatus::Done);
    EXPECT_EQ(sink.data, "0 day(s)  00:00:00,000000;\r\n");
}

TEST(ExportRun, ProgressEveryIntervalAndStopFlag)
{
    RecordingBuilder b;
    for (int i = 0; i < 10000; ++i)
        b.d1('z');
    Recording r(b);
    ExportOptions o;
    std::atomic<bool> stop{false};
    std::vector<int> seen;
    const ExportHooks hooks{[&](int p) {
                                seen.push_back(p);
                                stop = seen.size() == 3;
                            },
                            &stop, 2500};
    StringSink sink;
    ExportTimeState t(TimeLocale::Fixed());
    const ExportResult res = RunExport(r.reader, o, FullRange(r.reader), sink, t, hooks);
    EXPECT_EQ(res.status, ExportStatus::Stopped);
    EXPECT_EQ(res.exported, 5000u);
    EXPECT_EQ(seen, (std::vector<int>{0, 24, 49}));
    EXPECT_EQ(countLines(sink.data), 5001u); // what was done is written, head line included
}

TEST(ExportRun, FullDiskIsReportedNotIgnored)
{
    RecordingBuilder b;
    for (int i = 0; i < 30000; ++i)
        b.d1('q');
    Recording r(b);
    FileSink sink;
    ASSERT_TRUE(sink.open("/dev/full"));
    ExportOptions o;
    ExportTimeState t(TimeLocale::Fixed());
    const ExportResult res = RunExport(r.reader, o, FullRange(r.reader), sink, t);
    EXPECT_EQ(res.status, ExportStatus::WriteFailed);
    EXPECT_NE(res.error.find("/dev/full"), std::string::npos) << res.error;
}

TEST(RecordingCheck, AcceptsATornTailAndRejectsAnEmptyFile)
{
    test::TempDir dir;
    RecordingBuilder b;
    b.d1('a');
    b.write(dir.file("ok.ksr"), 79);
    RecordReader reader;
    std::string error;
    EXPECT_TRUE(OpenRecording(reader, dir.file("ok.ksr"), error)) << error;
    // Missing files and files of another kind: the CLI tests run them through export, search and dump.
    std::fclose(std::fopen(dir.file("empty.ksr").c_str(), "wb"));
    EXPECT_FALSE(OpenRecording(reader, dir.file("empty.ksr"), error));
    EXPECT_NE(error.find("holds no MPs"), std::string::npos);

    // Numbered right at the start but not at the end (records spliced from
    // elsewhere): MP n would not be record n, so no reader may trust it.
    RecordingBuilder::writeNumbered(dir.file("spliced.ksr"), 10);
    {
        std::FILE *f = std::fopen(dir.file("spliced.ksr").c_str(), "r+b");
        ASSERT_NE(f, nullptr);
        std::fseek(f, 9 * 80, SEEK_SET);
        std::fputc(42, f); // MP 9 claims number 42
        std::fclose(f);
    }
    EXPECT_FALSE(OpenRecording(reader, dir.file("spliced.ksr"), error));
    EXPECT_NE(error.find("MP 9 says 42"), std::string::npos) << error;
}
