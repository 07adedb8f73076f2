#include "search/search.h"

#include <algorithm>
#include <cstddef>

#include "record/block_cursor.h"
#include "record/mp_fields.h"

namespace kestrel {
namespace {

// True when pattern[1..] follows MP i on the circuit whose byte sits at
// valueOffset: walk forward, skipping MPs without a byte on that circuit.
// `refill` is the look-ahead cursor's refill direction: +1 in a forward
// search, 0 (centred) in a backward one, whose next starts lie behind i.
bool restFollows(BlockCursor &ahead, int refill, std::uint64_t i, const std::vector<std::uint8_t> &pattern,
                 int validOffset, int valueOffset)
{
    std::uint64_t j = i + 1;
    for (std::size_t k = 1; k < pattern.size(); ++j) {
        const std::uint8_t *r = ahead.at(j, refill);
        if (!r)
            return false; // the recording ends inside the pattern
        if (!r[validOffset])
            continue;
        if (r[valueOffset] != pattern[k])
            return false;
        ++k;
    }
    return true;
}

} // namespace

int NotFoundText(SearchKind kind)
{
    switch (kind) {
    case SearchKind::TriggerPoint:
        return SearchText::TriggerNotFound;
    case SearchKind::DateTime:
        return SearchText::TimeNotReached;
    case SearchKind::Error:
    case SearchKind::Signal: // the signal search has always shown the error search's text
        return SearchText::ConditionNotFound;
    case SearchKind::Data:
        return SearchText::DataNotFound;
    }
    return SearchText::DataNotFound;
}

int SearchProgressPercent(std::int64_t i, std::int64_t maximum)
{
    if (maximum - 1 <= 0)
        return 100;
    return static_cast<int>((i * 100 + 100) / (maximum - 1));
}

GridJump GridPositionForHit(std::int64_t found, std::int64_t position)
{
    return {found != position ? found - 1 : position, 1};
}

namespace {

// Tests the MPs of one stretch of the current block, which holds `n` MPs
// from `rec` on in the walk's direction. Returns the offset (in MPs walked)
// of the hit, or the offset at which the walk leaves the stretch (n, or n + 1
// after a partial data match on the last MP). Kept free of calls and checks
// that do not depend on the MP, so a scan runs close to memory speed.
template <typename Test>
std::int64_t scanStretch(const std::uint8_t *rec, std::int64_t n, int dir, bool &hit, Test &&test)
{
    const std::ptrdiff_t stride = dir * static_cast<std::ptrdiff_t>(kMpSize);
    std::int64_t k = 0;
    while (k < n) {
        const std::int64_t step = test(rec + k * stride, k);
        if (step == 0) {
            hit = true;
            return k;
        }
        k += step;
    }
    return k;
}

} // namespace

SearchOutcome RunSearch(const RecordReader &reader, const SearchRequest &request, const SearchHooks &hooks)
{
    SearchOutcome out;
    const SearchCriteria &c = request.criteria;
    if (c.kind == SearchKind::Data) {
        if (!c.data.d1 && !c.data.d2) {
            out.status = SearchStatus::NothingToSearch;
            out.messageNo = SearchText::NoLineSelected;
            return out;
        }
        bool zero = c.data.pattern.empty();
        for (std::uint8_t b : c.data.pattern)
            zero = zero || b == 0;
        if (zero) {
            out.status = SearchStatus::NothingToSearch;
            out.messageNo = SearchText::BadPattern;
            return out;
        }
    }

    const int dir = request.direction < 0 ? -1 : 1;
    const auto count = static_cast<std::int64_t>(reader.recordCount());
    std::int64_t i = request.position + request.currentRow + dir;
    std::int64_t end = dir > 0 ? request.maximum : request.minimum;
    // MPs outside the file cannot match: keep the walk inside it.
    if (dir > 0) {
        if (end > count)
            end = count;
        if (i < 0)
            i = 0;
    } else {
        if (end < -1)
            end = -1;
        if (i > count - 1)
            i = count - 1;
    }

    BlockCursor cursor(reader);
    BlockCursor ahead(reader); // the data search's forward look-ahead keeps its own block
    const std::int64_t pumpInterval = hooks.pumpInterval ? static_cast<std::int64_t>(hooks.pumpInterval) : 1;
    std::int64_t untilPump = 0;
    out.status = SearchStatus::NotFound;
    out.messageNo = NotFoundText(c.kind);

    // Step 0 means a hit; a partial data match steps by two.
    const std::uint8_t first = c.data.pattern.empty() ? 0 : c.data.pattern[0];
    const bool d1 = c.data.d1, d2 = c.data.d2;
    const int aheadRefill = dir > 0 ? +1 : 0;
    auto dataTest = [&](const std::uint8_t *rec, std::int64_t k) -> std::int64_t {
        const bool start1 = d1 && rec[mpraw::kOffD1Valid] && rec[mpraw::kOffD1] == first;
        const bool start2 = d2 && rec[mpraw::kOffD2Valid] && rec[mpraw::kOffD2] == first;
        if (!start1 && !start2)
            return 1;
        const auto at = static_cast<std::uint64_t>(i + k * dir);
        if (start1 && restFollows(ahead, aheadRefill, at, c.data.pattern, mpraw::kOffD1Valid, mpraw::kOffD1))
            return 0;
        if (start2 && restFollows(ahead, aheadRefill, at, c.data.pattern, mpraw::kOffD2Valid, mpraw::kOffD2))
            return 0;
        return 2; // the MP after a partial match is not tried as a new start
    };
    auto simple = [](bool hit) -> std::int64_t { return hit ? 0 : 1; };
    auto done = [&]() -> SearchOutcome & {
        out.blockReads = cursor.readCalls() + ahead.readCalls();
        return out;
    };

    // "Past the end" ends the walk too: a partial data match may step over it.
    while (dir > 0 ? i < end : i > end) {
        if (untilPump <= 0) {
            untilPump = pumpInterval;
            if (hooks.progress)
                hooks.progress(SearchProgressPercent(i, request.maximum));
            if (hooks.stop && hooks.stop->load(std::memory_order_relaxed)) {
                out.status = SearchStatus::Stopped;
                out.messageNo = 0;
                return done();
            }
        }
        const std::uint8_t *rec = cursor.at(static_cast<std::uint64_t>(i), dir);
        if (!rec)
            break; // the file is shorter than it was when the search started
        std::int64_t n = static_cast<std::int64_t>(cursor.span(static_cast<std::uint64_t>(i), dir));
        n = std::min({n, untilPump, dir > 0 ? end - i : i - end});
        bool hit = false;
        std::int64_t walked = 0;
        switch (c.kind) {
        case SearchKind::TriggerPoint:
            walked = scanStretch(rec, n, dir, hit, [&](const std::uint8_t *r, std::int64_t) {
                return simple(MatchesTriggerPoint(r, c.triggerNumber));
            });
            break;
        case SearchKind::DateTime:
            walked = scanStretch(rec, n, dir, hit, [&](const std::uint8_t *r, std::int64_t) {
                return simple(MatchesDateTime(r, c.dateTime, dir));
            });
            break;
        case SearchKind::Error:
            walked = scanStretch(rec, n, dir, hit,
                                 [&](const std::uint8_t *r, std::int64_t) { return simple(MatchesError(r, c.error)); });
            break;
        case SearchKind::Signal:
            walked = scanStretch(rec, n, dir, hit, [&](const std::uint8_t *r, std::int64_t) {
                return simple(MatchesSignal(r, c.signal));
            });
            break;
        case SearchKind::Data:
            walked = scanStretch(rec, n, dir, hit, dataTest);
            break;
        }
        if (hit) {
            out.tested += static_cast<std::uint64_t>(walked) + 1;
            out.status = SearchStatus::Found;
            out.mp = i + walked * dir;
            out.messageNo = 0;
            return done();
        }
        out.tested += static_cast<std::uint64_t>(std::min(walked, n));
        untilPump -= walked;
        i += walked * dir;
    }
    return done();
}

} // namespace kestrel
