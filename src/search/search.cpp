#include "search/search.h"

#include "search/block_cursor.h"
#include "search/mp_fields.h"

namespace kestrel {
namespace {

// True when pattern[1..] follows MP i on the circuit whose byte sits at
// valueOffset: walk forward, skipping MPs without a byte on that circuit.
bool restFollows(BlockCursor &ahead, std::uint64_t i, const std::vector<std::uint8_t> &pattern, int validOffset,
                 int valueOffset)
{
    std::uint64_t j = i + 1;
    for (std::size_t k = 1; k < pattern.size(); ++j) {
        const std::uint8_t *r = ahead.at(j, +1);
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

enum class DataMatch { None, Partial, Full };

DataMatch matchData(const std::uint8_t *rec, BlockCursor &ahead, std::uint64_t i, const DataCriteria &c)
{
    bool partial = false;
    const struct {
        bool ticked;
        int valid, value;
    } circuits[2] = {{c.d1, mpraw::kOffD1Valid, mpraw::kOffD1}, {c.d2, mpraw::kOffD2Valid, mpraw::kOffD2}};
    for (const auto &cc : circuits) {
        if (!cc.ticked || !rec[cc.valid] || rec[cc.value] != c.pattern[0])
            continue;
        if (restFollows(ahead, i, c.pattern, cc.valid, cc.value))
            return DataMatch::Full;
        partial = true;
    }
    return partial ? DataMatch::Partial : DataMatch::None;
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
    std::uint64_t untilPump = 0;
    out.status = SearchStatus::NotFound;
    out.messageNo = NotFoundText(c.kind);

    // A partial data match steps by two, so "past the end" ends the walk too.
    while (dir > 0 ? i < end : i > end) {
        if (untilPump == 0) {
            untilPump = hooks.pumpInterval ? hooks.pumpInterval : 1;
            if (hooks.progress)
                hooks.progress(SearchProgressPercent(i, request.maximum));
            if (hooks.stop && hooks.stop->load(std::memory_order_relaxed)) {
                out.status = SearchStatus::Stopped;
                out.messageNo = 0;
                return out;
            }
        }
        --untilPump;
        const std::uint8_t *rec = cursor.at(static_cast<std::uint64_t>(i), dir);
        if (!rec)
            break; // the file is shorter than it was when the search started
        ++out.tested;
        std::int64_t step = dir;
        bool hit = false;
        switch (c.kind) {
        case SearchKind::TriggerPoint:
            hit = MatchesTriggerPoint(rec, c.triggerNumber);
            break;
        case SearchKind::DateTime:
            hit = MatchesDateTime(rec, c.dateTime, dir);
            break;
        case SearchKind::Error:
            hit = MatchesError(rec, c.error);
            break;
        case SearchKind::Signal:
            hit = MatchesSignal(rec, c.signal);
            break;
        case SearchKind::Data:
            switch (matchData(rec, ahead, static_cast<std::uint64_t>(i), c.data)) {
            case DataMatch::Full:
                hit = true;
                break;
            case DataMatch::Partial:
                step = 2 * dir; // the MP after a partial match is not tried as a new start
                break;
            case DataMatch::None:
                break;
            }
            break;
        }
        if (hit) {
            out.status = SearchStatus::Found;
            out.mp = i;
            out.messageNo = 0;
            return out;
        }
        i += step;
    }
    return out;
}

} // namespace kestrel
