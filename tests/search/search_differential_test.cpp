// The block-reading search against a plain one-MP-at-a-time reference of the
// same loop, over random recordings, criteria, positions and directions.

#include <gtest/gtest.h>

#include <random>

#include "search/search.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

using namespace kestrel;

namespace {

bool holds(int c, std::uint8_t v) { return c <= 0 || (v != 0) == (c == 2); }

// Straight from the loop's description: load MP i, test, step.
std::int64_t reference(const RecordReader &r, const SearchRequest &q)
{
    const SearchCriteria &c = q.criteria;
    const int dir = q.direction;
    std::int64_t i = q.position + q.currentRow + dir;
    const std::int64_t end = dir > 0 ? q.maximum : q.minimum;
    const auto count = static_cast<std::int64_t>(r.recordCount());
    while (dir > 0 ? i < end : i > end) {
        if (i < 0 || i >= count)
            return -1;
        MpRecord mp;
        EXPECT_TRUE(r.read(static_cast<std::uint64_t>(i), mp));
        std::int64_t step = dir;
        bool hit = false;
        switch (c.kind) {
        case SearchKind::TriggerPoint:
            hit = mp.markExtra == c.triggerNumber;
            break;
        case SearchKind::DateTime:
            hit = dir > 0 ? mp.time > c.dateTime : mp.time < c.dateTime;
            break;
        case SearchKind::Error: {
            const std::uint8_t a[3] = {mp.peD2, mp.feD2, mp.leD2}, b[3] = {mp.peD1, mp.feD1, mp.leD1};
            bool okA = true, okB = true;
            for (int k = 0; k < 3; ++k) {
                okA = okA && holds(c.error.flag[k], a[k]);
                okB = okB && holds(c.error.flag[k], b[k]);
            }
            hit = okA || okB;
            break;
        }
        case SearchKind::Signal: {
            const std::uint8_t lv[6] = {mp.s1, mp.m1, mp.s2, mp.m2, mp.m5, mp.m3};
            hit = true;
            for (int k = 0; k < 6; ++k)
                hit = hit && holds(c.signal.level[k], lv[k]);
            break;
        }
        case SearchKind::Data: {
            bool partial = false;
            for (int circuit = 0; circuit < 2 && !hit; ++circuit) {
                const bool ticked = circuit == 0 ? c.data.d1 : c.data.d2;
                auto valid = [&](const MpRecord &m) { return circuit == 0 ? m.d1Valid : m.d2Valid; };
                auto byte = [&](const MpRecord &m) { return circuit == 0 ? m.d1 : m.d2; };
                if (!ticked || !valid(mp) || byte(mp) != c.data.pattern[0])
                    continue;
                std::size_t k = 1;
                MpRecord next;
                for (std::uint64_t j = static_cast<std::uint64_t>(i) + 1; k < c.data.pattern.size() && r.read(j, next); ++j) {
                    if (!valid(next))
                        continue;
                    if (byte(next) != c.data.pattern[k])
                        break;
                    ++k;
                }
                if (k == c.data.pattern.size())
                    hit = true;
                else
                    partial = true;
            }
            if (!hit && partial)
                step = 2 * dir;
            break;
        }
        }
        if (hit)
            return i;
        i += step;
    }
    return -1;
}

} // namespace

TEST(SearchDifferential, BlockSearchAgreesWithOneByOneReference)
{
    std::mt19937 rng(20260121);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    test::TempDir dir;
    int hits = 0, cases = 0;
    for (int rec = 0; rec < 8; ++rec) {
        // Enough MPs to span several read blocks, with a tiny alphabet so patterns recur.
        test::RecordingBuilder b(45000.0 + rec, 0.0005);
        const int n = 20000 + pick(30000);
        for (int k = 0; k < n; ++k) {
            switch (pick(6)) {
            case 0: b.d1(static_cast<std::uint8_t>('a' + pick(3))); break;
            case 1: b.d2(static_cast<std::uint8_t>('a' + pick(3))); break;
            case 2: b.both(static_cast<std::uint8_t>('a' + pick(3)), static_cast<std::uint8_t>('a' + pick(3))); break;
            case 3: b.level(pick(6), static_cast<std::uint8_t>(pick(2))).plain(); break;
            case 4: // one to three error flags, on either port or across both
                b.plain();
                for (int e = pick(3); e >= 0; --e)
                    (&b.last().peD1)[pick(6)] = 1;
                break;
            default:
                if (pick(50) == 0)
                    b.mark(1, 0, static_cast<std::uint8_t>(1 + pick(5)));
                else
                    b.plain();
            }
        }
        const std::string path = dir.file("r" + std::to_string(rec) + ".ksr");
        b.write(path, rec % 3 == 0 ? 33 : 0); // some with a torn tail
        RecordReader reader;
        ASSERT_TRUE(reader.open(path));
        const auto count = static_cast<std::int64_t>(reader.recordCount());
        ASSERT_EQ(count, n + 2);

        for (int q = 0; q < 60; ++q) {
            SearchRequest r;
            r.direction = pick(2) ? 1 : -1;
            r.position = pick(static_cast<int>(count));
            r.currentRow = pick(3);
            r.minimum = pick(2) ? -1 : 0;
            r.maximum = count - pick(2);
            SearchCriteria &c = r.criteria;
            c.kind = static_cast<SearchKind>(pick(5));
            c.triggerNumber = 1 + pick(6);
            c.dateTime = b.mps()[static_cast<std::size_t>(pick(static_cast<int>(count)))].time;
            for (int &f : c.error.flag)
                f = pick(4) - 1;
            for (int &l : c.signal.level)
                l = pick(4) - 1;
            c.data.d1 = pick(2);
            c.data.d2 = !c.data.d1 || pick(2);
            c.data.pattern.resize(1 + pick(4));
            for (auto &p : c.data.pattern)
                p = static_cast<std::uint8_t>('a' + pick(3));

            const SearchOutcome got = RunSearch(reader, r);
            const std::int64_t want = reference(reader, r);
            ASSERT_EQ(got.status == SearchStatus::Found ? got.mp : -1, want)
                << "kind " << int(c.kind) << " dir " << r.direction << " pos " << r.position;
            hits += want >= 0;
            ++cases;
        }
    }
    // The comparison means little unless both outcomes occur often.
    EXPECT_GT(hits, cases / 4);
    EXPECT_LT(hits, cases);
}
