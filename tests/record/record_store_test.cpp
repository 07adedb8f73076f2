#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "record/record_store.h"

using namespace kestrel;

namespace {

// Keeps what reached the "file"; refuses everything past a byte budget, keeping whole records only.
class MemorySink final : public MpSink {
public:
    std::size_t appendRecords(const std::uint8_t *data, std::size_t bytes) override
    {
        ++writes;
        std::size_t n = std::min(bytes, budget);
        n -= n % kMpSize;
        budget -= n;
        bytes_.insert(bytes_.end(), data, data + n);
        return n;
    }
    [[nodiscard]] MpRecord last() const { return DecodeMp(bytes_.data() + bytes_.size() - kMpSize); }
    [[nodiscard]] std::vector<MpRecord> records() const
    {
        std::vector<MpRecord> out;
        for (std::size_t at = 0; at + kMpSize <= bytes_.size(); at += kMpSize)
            out.push_back(DecodeMp(bytes_.data() + at));
        return out;
    }
    std::size_t budget = SIZE_MAX;
    int writes = 0;

private:
    std::vector<std::uint8_t> bytes_;
};

constexpr std::int64_t kF = 1'000'000'000;

struct StoreFixture : ::testing::Test {
    ManualClock clock{46000.25, kF};
    RecordStore store{clock};
    MemorySink sink;
    void SetUp() override
    {
        store.setSink(&sink);
        store.SetLineTiming({10 * kF / 9600 + 1, 960.0}); // 9600 baud, 10 bits a character
    }
    void startNewFile()
    {
        store.ResetCounters();
        ASSERT_EQ(store.WriteSystemMark(SystemMark::NewFile, true), 0);
        ASSERT_EQ(store.WriteSystemMark(SystemMark::Started), 0);
        store.RebaseCounter();
    }
    int byteOnD1(std::uint8_t b, std::uint16_t burst = 0)
    {
        store.pending().d1 = b;
        store.pending().d1Valid = 1;
        const int r = store.RecordComEvent(burst);
        store.pending().clearData();
        return r;
    }
};

} // namespace

TEST_F(StoreFixture, BurstBytesAreSpreadOneCharacterTimeApart)
{
    startNewFile();
    const std::int64_t tchar = store.lineTiming().tchar;
    clock.advance(100 * tchar); // the burst arrives well after the start marks
    for (std::uint16_t i = 0; i < 10; ++i) {
        ASSERT_EQ(byteOnD1(static_cast<std::uint8_t>('0' + i), i), 0);
        clock.advance(2 * tchar); // a slow read pass: the counter runs ahead of the line
    }
    const auto recs = sink.records();
    ASSERT_EQ(recs.size(), 12u);
    const double tcharDays = static_cast<double>(tchar) / kF / 86400.0;
    // The first two bytes take the counter; from the third on, exactly one Tchar apart.
    EXPECT_GT(recs[2].time - recs[1].time, 50 * tcharDays);
    EXPECT_NEAR(recs[3].time - recs[2].time, 2 * tcharDays, 2e-11);
    for (std::size_t i = 4; i < recs.size(); ++i)
        EXPECT_NEAR(recs[i].time - recs[i - 1].time, tcharDays, 2e-11) << "MP " << i;
}

// Bytes that come faster than the line settings allow (a simulated line paced at
// 921,600 baud into a recorder set to 9,600) must not stamp time that has not
// passed: a stamp stays within its burst's length at the line rate of the moment
// the burst was read, and times still never go back.
TEST_F(StoreFixture, StampsNeverRunAheadOfTheClockWhenBytesComeTooFast)
{
    startNewFile();
    const std::int64_t tchar = store.lineTiming().tchar;
    constexpr std::uint16_t kBurst = 16;
    const std::int64_t fastChar = tchar / 96; // 921,600 baud
    for (int b = 0; b < 200; ++b) {
        clock.advance(kBurst * fastChar);
        const double readAt = clock.nowDateTime();
        for (std::uint16_t i = 0; i < kBurst; ++i) {
            ASSERT_EQ(byteOnD1('x', i), 0);
            const double ahead = (sink.last().time - readAt) * 86400.0 * kF;
            // One character time more: the start marks stand one apart, and time goes on from them.
            ASSERT_LE(ahead, static_cast<double>((kBurst + 1) * tchar) + 1e3) << "burst " << b << " byte " << i;
        }
    }
    const auto recs = sink.records();
    for (std::size_t i = 1; i < recs.size(); ++i)
        ASSERT_GE(recs[i].time, recs[i - 1].time) << "MP " << i;
    // 200 bursts took 200 * 16 fast character times; the recording spans about that, not
    // 3,200 slow ones (which would be 3.3 s).
    const double span = (recs.back().time - recs[2].time) * 86400.0;
    EXPECT_LT(span, 0.1);
}

TEST_F(StoreFixture, LoadIsTheBusierLinesShareOfTheLineRate)
{
    startNewFile();
    for (int i = 0; i < 100; ++i) {
        clock.advance(store.lineTiming().tchar);
        store.pending().d2Valid = 1;
        ASSERT_EQ(store.RecordComEvent(0), 0);
        store.pending().clearData();
    }
    EXPECT_EQ(sink.last().loadActual, 100); // within the first second any data means 100 %
    // Two seconds later: 100 characters on D2 in 2 s at 960 cps = 5 %; the peak stays.
    clock.advance(2 * kF);
    ASSERT_EQ(byteOnD1(1), 0);
    EXPECT_EQ(sink.last().loadActual, 100 * 100 / (2 * 960));
    EXPECT_EQ(sink.last().loadPeak, 100);
}

// Quality is the exact integer (data - errors) * 100 / data, 0 once errors reach the data.
// Uneven ratios tell it apart from "100 - errors", from "100 - errors * 100 / data" and
// from the floating-point (1 - errors / data) * 100, which gives 19 for 4 errors in 5 bytes.
TEST_F(StoreFixture, QualityIsTheExactIntegerShareOfGoodData)
{
    struct Case {
        int data, errors, quality;
    };
    const Case cases[] = {{5, 4, 20}, {3, 1, 66}, {7, 2, 71}, {9, 8, 11}, {200, 1, 99},
                          {100, 3, 97}, {1, 0, 100}, {6, 6, 0}, {4, 5, 0}};
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.errors << " errors in " << c.data << " bytes");
        startNewFile();
        EXPECT_EQ(sink.last().quality, 0); // no data at all
        // Errors of every kind on both circuits; each error MP also carries one byte.
        for (int i = 0; i < std::max(c.data, c.errors); ++i) {
            ComEvent &e = store.pending();
            if (i < c.data)
                (i % 2 ? e.d1Valid : e.d2Valid) = 1;
            if (i < c.errors) {
                std::uint8_t *flags[] = {&e.peD1, &e.feD2, &e.leD1, &e.peD2, &e.feD1, &e.leD2};
                *flags[i % 6] = 1;
            }
            ASSERT_EQ(store.RecordComEvent(0), 0);
            e.clearData();
            e.clearErrors();
        }
        EXPECT_EQ(sink.last().quality, c.quality);
    }
}

// Every field of random events survives the writer and the codec, and the counters
// follow the valid and error flags (an error kind counts once per MP, whichever port).
TEST_F(StoreFixture, EveryFieldOfARandomEventReachesTheFile)
{
    startNewFile();
    std::mt19937 rng(20261123);
    auto bit = [&] { return static_cast<std::uint8_t>(rng() & 1); };
    std::uint64_t counts[5] = {};
    double before = sink.last().time;
    for (int i = 0; i < 2000; ++i) {
        ComEvent e;
        e.d1 = static_cast<std::uint8_t>(rng());
        e.d2 = static_cast<std::uint8_t>(rng());
        e.d1Valid = bit();
        e.d2Valid = bit();
        for (auto *l : {&e.s1, &e.m1, &e.s2, &e.m2, &e.m5, &e.m3})
            *l = bit();
        for (auto *f : {&e.peD1, &e.feD1, &e.leD1, &e.peD2, &e.feD2, &e.leD2})
            *f = (rng() % 8 == 0) ? 1 : 0;
        store.pending() = e;
        clock.advance(static_cast<std::int64_t>(rng() % (3 * kF / 1000)));
        ASSERT_EQ(store.RecordComEvent(static_cast<std::uint16_t>(rng() % 3)), 0);

        counts[0] += e.d1Valid;
        counts[1] += e.d2Valid;
        counts[2] += (e.peD1 | e.peD2);
        counts[3] += (e.feD1 | e.feD2);
        counts[4] += (e.leD1 | e.leD2);
        const MpRecord mp = sink.last();
        ASSERT_EQ(mp.number, static_cast<std::uint32_t>(i + 2));
        const std::pair<std::uint8_t, std::uint8_t> fields[] = {
            {mp.d1, e.d1},     {mp.d2, e.d2},     {mp.d1Valid, e.d1Valid}, {mp.d2Valid, e.d2Valid},
            {mp.s1, e.s1},     {mp.m1, e.m1},     {mp.s2, e.s2},           {mp.m2, e.m2},
            {mp.m5, e.m5},     {mp.m3, e.m3},     {mp.peD1, e.peD1},       {mp.feD1, e.feD1},
            {mp.leD1, e.leD1}, {mp.peD2, e.peD2}, {mp.feD2, e.feD2},       {mp.leD2, e.leD2},
            {mp.markCode, 0},  {mp.markKind, 0},  {mp.markExtra, 0}};
        for (std::size_t f = 0; f < std::size(fields); ++f)
            ASSERT_EQ(fields[f].first, fields[f].second) << "field " << f << " of MP " << mp.number;
        for (int c = 0; c < 5; ++c)
            ASSERT_EQ(mp.counts[c], counts[c]) << "counter " << c << " of MP " << mp.number;
        ASSERT_GE(mp.time, before); // equal only where bytes came faster than the line allows
        before = mp.time;
    }
}

TEST_F(StoreFixture, LiveBufferHoldsTheNNewestInOrder)
{
    store.liveBuffer().setSize(3);
    store.ResetCounters();
    ASSERT_EQ(store.WriteSystemMark(SystemMark::NewFile, true), 0);
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(byteOnD1(static_cast<std::uint8_t>(i)), 0);
    std::vector<std::uint32_t> numbers;
    for (const MpRecord &mp : store.liveBuffer().snapshot())
        numbers.push_back(mp.number);
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{3, 4, 5}));

    // Past the ring's own size the order still holds.
    store.liveBuffer().setSize(kLiveBufferSlots);
    for (int i = 0; i < 12'345; ++i)
        ASSERT_EQ(byteOnD1(static_cast<std::uint8_t>(i)), 0);
    const auto full = store.liveBuffer().snapshot();
    ASSERT_EQ(full.size(), kLiveBufferSlots);
    EXPECT_EQ(full.back().number, 5u + 12'345u);
    EXPECT_EQ(full.front().number, full.back().number - (kLiveBufferSlots - 1));
    store.ClearLiveBuffer();
    EXPECT_TRUE(store.liveBuffer().snapshot().empty());
}

TEST_F(StoreFixture, AppendContinuesNumbersCountersAndTime)
{
    MpRecord first;
    first.time = 45000.0;
    MpRecord last;
    last.number = 41;
    last.time = clock.nowDateTime() + 1.0; // ran ahead of the wall clock
    last.counts[0] = 30;
    last.counts[2] = 2;
    last.loadPeak = 77;
    store.RestoreFromFirstMp(&first);
    store.RestoreFromLastMp(&last);
    ASSERT_EQ(store.WriteSystemMark(SystemMark::Appended), 0);
    ASSERT_EQ(byteOnD1(9), 0);
    const auto recs = sink.records();
    ASSERT_EQ(recs.size(), 2u);
    EXPECT_EQ(recs[0].number, 42u);
    EXPECT_GE(recs[0].time, last.time);
    EXPECT_EQ(recs[1].number, 43u);
    EXPECT_EQ(recs[1].count(Counter::D1), 31u);
    EXPECT_EQ(recs[1].count(Counter::PE), 2u);
    // The appended part's peak starts again: not the 77 % of the recording before.
    EXPECT_EQ(recs[0].loadPeak, recs[0].loadActual);
    EXPECT_EQ(recs[1].loadPeak, std::max(recs[0].loadActual, recs[1].loadActual));

    // The load of an appended file is averaged from the file's own first MP, not from the
    // start of whatever this session recorded before: 4800 characters in 10 s at 960 cps.
    clock.advance(3600 * kF);
    first.time = clock.nowDateTime() - 10.0 / 86400.0;
    last = first;
    last.counts[0] = 4799;
    store.RestoreFromFirstMp(&first);
    store.RestoreFromLastMp(&last);
    ASSERT_EQ(byteOnD1('x'), 0);
    EXPECT_EQ(sink.last().loadActual, 50);
}

TEST_F(StoreFixture, BurstIsOneWriteAndAShortOneRollsBackToTheLastWholeRecord)
{
    startNewFile();
    const int writesBefore = sink.writes;
    store.beginBurst();
    for (std::uint16_t i = 0; i < 50; ++i)
        ASSERT_EQ(byteOnD1(static_cast<std::uint8_t>(i), i), 0);
    EXPECT_EQ(store.endBurst(), 0);
    EXPECT_EQ(sink.writes, writesBefore + 1);
    EXPECT_EQ(store.writtenCounter().load(), 52u);

    sink.budget = 20 * kMpSize + 33; // room for 20 whole records of the next burst
    store.beginBurst();
    for (std::uint16_t i = 0; i < 50; ++i)
        ASSERT_EQ(byteOnD1(0xAA, i), 0);
    EXPECT_EQ(store.endBurst(), WriteResult::WriteFailed);
    EXPECT_EQ(store.previous().number, 71u);
    EXPECT_EQ(store.previous().count(Counter::D1), 70u);
    EXPECT_EQ(store.lostCount(), 30u);
    sink.budget = SIZE_MAX;
    ASSERT_EQ(byteOnD1(0xBB), 0);
    const auto recs = sink.records();
    for (std::size_t i = 0; i < recs.size(); ++i)
        ASSERT_EQ(recs[i].number, i);
}

TEST_F(StoreFixture, LastChangeTableFollowsDataAndLevels)
{
    startNewFile();
    store.pending().m1 = 1;
    store.ResetLastChange();
    const auto &t = store.lastChange();
    const auto m1 = static_cast<int>(Channel::M1), d1 = static_cast<int>(Channel::D1);
    const double base = t[m1].time;
    EXPECT_EQ(t[m1].value, 1);
    clock.advance(kF);
    ASSERT_EQ(byteOnD1('x'), 0); // M1 still high: a non-zero level counts as a change
    EXPECT_EQ(t[d1].value, 'x');
    EXPECT_GT(t[m1].time, base);
    const double d1Time = t[d1].time;
    clock.advance(kF);
    ASSERT_EQ(byteOnD1('x'), 0); // same byte again: no change of D1
    EXPECT_EQ(t[d1].time, d1Time);
}
