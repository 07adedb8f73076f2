#include <gtest/gtest.h>

#include <fstream>

#include "record/record_summary.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

MpRecord mark(std::uint32_t n, std::uint8_t code, double t)
{
    MpRecord mp;
    mp.number = n;
    mp.time = t;
    mp.markCode = code;
    mp.markKind = kSystemMarkKind;
    return mp;
}

// A sound recording: marks 0 and 6, bytes with counters that match, a trigger, mark 5.
std::vector<MpRecord> soundRecording()
{
    std::vector<MpRecord> v{mark(0, 0, 46000.0), mark(1, 6, 46000.0)};
    for (std::uint32_t i = 2; i < 10; ++i) {
        MpRecord mp;
        mp.number = i;
        mp.time = 46000.0 + i * 1e-6;
        mp.d1Valid = 1;
        mp.peD1 = (i == 4);
        mp.counts[0] = i - 1;
        mp.counts[2] = i >= 4;
        v.push_back(mp);
    }
    MpRecord trig = v.back();
    trig.number = 10;
    trig.d1Valid = 0;
    trig.peD1 = 0;
    trig.markCode = 2;
    trig.markKind = 0;
    trig.markExtra = 7;
    v.push_back(trig);
    MpRecord stop = mark(11, 5, trig.time);
    std::copy(std::begin(trig.counts), std::end(trig.counts), stop.counts);
    v.push_back(stop);
    return v;
}

RecordingSummary summarize(const std::vector<MpRecord> &recs, std::size_t torn = 0)
{
    test::TempDir dir;
    {
        std::ofstream f(dir.file("s.ksr"), std::ios::binary);
        for (const auto &mp : recs) {
            const MpBytes b = EncodeMp(mp);
            f.write(reinterpret_cast<const char *>(b.data()), b.size());
        }
        f << std::string(torn, 'x');
    }
    RecordReader r;
    EXPECT_TRUE(r.open(dir.file("s.ksr")));
    return SummarizeRecording(r);
}

} // namespace

TEST(RecordingSummary, SoundRecordingListsMarksAndPassesTheChecks)
{
    const RecordingSummary s = summarize(soundRecording(), 12);
    EXPECT_EQ(s.mpCount, 12u);
    EXPECT_EQ(s.tornBytes, 12u);
    EXPECT_TRUE(s.sound());
    ASSERT_EQ(s.marks.size(), 4u);
    EXPECT_TRUE(s.marks[0].mp == 0u && s.marks[1].code == 6);
    EXPECT_TRUE(!s.marks[2].system() && s.marks[2].mp == 10u && s.marks[2].extra == 7);
    EXPECT_EQ(s.marks[3].code, 5);
    EXPECT_EQ(s.last.count(Counter::D1), 8u);
}

TEST(RecordingSummary, EachKindOfFaultIsFoundOnce)
{
    struct Case {
        const char *what;
        void (*spoil)(std::vector<MpRecord> &);
        std::uint64_t gaps, backwards, mismatches;
    };
    const Case cases[] = {
        {"number skipped", [](std::vector<MpRecord> &v) { for (std::size_t i = 5; i < v.size(); ++i) ++v[i].number; }, 7, 0, 0},
        {"time back", [](std::vector<MpRecord> &v) { v[6].time = 45999.0; }, 0, 1, 0},
        // A lone wrong counter disagrees going in and coming out.
        {"counter off", [](std::vector<MpRecord> &v) { v[5].counts[0] += 1; }, 0, 0, 2},
        {"flag without count", [](std::vector<MpRecord> &v) { v[3].d2Valid = 1; }, 0, 0, 1},
    };
    for (const auto &c : cases) {
        auto recs = soundRecording();
        c.spoil(recs);
        const RecordingSummary s = summarize(recs);
        EXPECT_EQ(s.numberGaps, c.gaps) << c.what;
        EXPECT_EQ(s.timeBackwards, c.backwards) << c.what;
        EXPECT_EQ(s.counterMismatches, c.mismatches) << c.what;
        EXPECT_FALSE(s.sound()) << c.what;
    }
}

TEST(RecordingSummary, DateTimeText)
{
    const std::pair<double, const char *> cases[] = {
        {25569.5, "1970-01-01 12:00:00.000000"},
        {46000.0 + (3600 + 2 * 60 + 3.25) / 86400.0, "2025-12-09 01:02:03.250000"},
        {45999.0 + 86399.9999996 / 86400.0, "2025-12-09 00:00:00.000000"},
        {1e300, "(invalid)"},
    };
    for (const auto &[t, text] : cases)
        EXPECT_EQ(FormatDateTimeIso(t), text) << t;
}
