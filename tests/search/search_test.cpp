#include <gtest/gtest.h>

#include <atomic>

#include "record/block_cursor.h"
#include "search/search.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

using namespace kestrel;
using test::RecordingBuilder;

namespace {

struct Fixture {
    test::TempDir dir;
    RecordReader reader;
    explicit Fixture(const RecordingBuilder &b)
    {
        b.write(dir.file("r.ksr"));
        if (!reader.open(dir.file("r.ksr")))
            throw std::runtime_error("open failed");
    }
    // Whole file: forward from before MP 0, backward from after the last MP.
    SearchOutcome run(const SearchCriteria &c, int dir, std::int64_t from)
    {
        const auto count = static_cast<std::int64_t>(reader.recordCount());
        return RunSearch(reader, {.criteria = c, .direction = dir, .position = from, .minimum = -1, .maximum = count});
    }
};

SearchCriteria trigger(int n)
{
    SearchCriteria c;
    c.kind = SearchKind::TriggerPoint;
    c.triggerNumber = n;
    return c;
}

SearchCriteria data(std::vector<std::uint8_t> pattern, bool d1, bool d2)
{
    SearchCriteria c;
    c.kind = SearchKind::Data;
    c.data.pattern = std::move(pattern);
    c.data.d1 = d1;
    c.data.d2 = d2;
    return c;
}

} // namespace

TEST(SearchLoop, EndMpIsNeverTested)
{
    // MPs 0..5; trigger mark 7 on the last one (MP 5).
    RecordingBuilder b;
    b.d1('a').d1('b').d1('c').mark(1, 0, 7);
    Fixture f(b);
    const auto last = static_cast<std::int64_t>(f.reader.recordCount()) - 1;

    // The grid's scroll range ends at the last MP.
    SearchRequest r{.criteria = trigger(7), .position = last - 1, .minimum = 0, .maximum = last};
    SearchOutcome o = RunSearch(f.reader, r);
    EXPECT_EQ(o.status, SearchStatus::NotFound);
    EXPECT_EQ(o.messageNo, 2123);
    EXPECT_EQ(o.tested, 0u);

    // With room past the last MP it is found; start = position + row + direction.
    r.maximum = last + 1;
    o = RunSearch(f.reader, r);
    ASSERT_EQ(o.status, SearchStatus::Found);
    EXPECT_EQ(o.mp, last);

    // Backward, the minimum itself is never tested either.
    Fixture g(RecordingBuilder(45000.0, 0.001, false).mark(1, 0, 3).d1('x').d1('y'));
    SearchRequest back{.criteria = trigger(3), .direction = -1, .position = 2, .minimum = 0, .maximum = 2};
    EXPECT_EQ(RunSearch(g.reader, back).status, SearchStatus::NotFound);
    back.minimum = -1;
    EXPECT_EQ(RunSearch(g.reader, back).mp, 0);
}

// After a partial match the next MP is skipped (the differential test pins that); the
// step of two must not jump over the end and run on.
TEST(DataSearch, APartialMatchDoesNotStepOverTheEnd)
{
    RecordingBuilder c(45000.0, 0.001, false);
    c.d1('A').d1('x').d1('A').d1('B'); // a match past the end must stay unseen
    Fixture g(c);
    const SearchRequest r{.criteria = data({'A', 'B'}, true, false), .position = -1, .minimum = 0, .maximum = 1};
    EXPECT_EQ(RunSearch(g.reader, r).status, SearchStatus::NotFound);
}

TEST(DataSearch, RefusesNoLineAndUnsearchablePatterns)
{
    RecordingBuilder b;
    b.d1(0).d1('A');
    Fixture f(b);
    const std::pair<SearchCriteria, int> cases[] = {{data({'A'}, false, false), 2204},
                                                    {data({}, true, false), SearchText::BadPattern},
                                                    {data({0x00}, true, false), SearchText::BadPattern},
                                                    {data({'A', 0}, true, false), SearchText::BadPattern}};
    for (const auto &[criteria, message] : cases) {
        const SearchOutcome o = f.run(criteria, +1, -1);
        EXPECT_EQ(o.status, SearchStatus::NothingToSearch);
        EXPECT_EQ(o.messageNo, message);
    }
}

TEST(SearchLoop, PumpsEveryFewThousandMpsAndHonoursTheStopFlag)
{
    RecordingBuilder b;
    for (int i = 0; i < 20000; ++i)
        b.d1('x');
    Fixture f(b);
    std::atomic<bool> stop{false};
    std::vector<int> seen;
    SearchHooks hooks{[&](int p) { seen.push_back(p); }, &stop, 4096};
    const auto count = static_cast<std::int64_t>(f.reader.recordCount());
    const SearchRequest r{.criteria = data({'y'}, true, true), .position = -1, .minimum = -1, .maximum = count};
    SearchOutcome o = RunSearch(f.reader, r, hooks);
    EXPECT_EQ(o.status, SearchStatus::NotFound);
    EXPECT_EQ(o.tested, f.reader.recordCount());
    ASSERT_EQ(seen.size(), 5u); // 20002 MPs / 4096, rounded up
    EXPECT_EQ(seen[0], SearchProgressPercent(0, r.maximum));

    // Set the flag from inside the pump, as a stop button would.
    seen.clear();
    hooks.progress = [&](int p) {
        seen.push_back(p);
        if (seen.size() == 2)
            stop = true;
    };
    o = RunSearch(f.reader, r, hooks);
    EXPECT_EQ(o.status, SearchStatus::Stopped);
    EXPECT_EQ(o.messageNo, 0);
    EXPECT_EQ(o.tested, 4096u);
}

TEST(SearchLoop, GridJumpKeepsTheHitOnTheSecondRow)
{
    EXPECT_TRUE(GridPositionForHit(10, 3).position == 9 && GridPositionForHit(10, 3).currentRow == 1);
    EXPECT_EQ(GridPositionForHit(3, 3).position, 3);
}

TEST(DataSearch, BackwardScanWithFrequentFirstBytesStillReadsLargeBlocks)
{
    // Every other MP starts the pattern and fails on the next one: each start
    // looks ahead, and walking backward that look-ahead must not cost a read.
    RecordingBuilder b;
    for (int i = 0; i < 50000; ++i)
        b.d1(i % 2 ? 'x' : 'A');
    Fixture f(b);
    const std::uint64_t blocks = f.reader.recordCount() / BlockCursor::kDefaultBlock + 1;
    for (int dir : {+1, -1}) {
        const SearchOutcome o = f.run(data({'A', 'B'}, true, false), dir, dir > 0 ? -1 : 50002);
        EXPECT_EQ(o.status, SearchStatus::NotFound);
        EXPECT_LE(o.blockReads, 4 * blocks) << "direction " << dir;
    }
}
