#include "ports/pattern_set.h"

#include <algorithm>

namespace kestrel {

PatternMatcher::PatternMatcher(std::vector<std::uint8_t> pattern) : pattern_(std::move(pattern))
{
    // Knuth-Morris-Pratt borders, so a pattern split across reads or overlapping itself is still found.
    fallback_.assign(pattern_.size(), 0);
    std::size_t k = 0;
    for (std::size_t i = 1; i < pattern_.size(); ++i) {
        while (k > 0 && pattern_[i] != pattern_[k])
            k = fallback_[k - 1];
        if (pattern_[i] == pattern_[k])
            ++k;
        fallback_[i] = k;
    }
}

bool PatternMatcher::feed(std::uint8_t byte)
{
    if (pattern_.empty())
        return false;
    while (matched_ > 0 && pattern_[matched_] != byte)
        matched_ = fallback_[matched_ - 1];
    if (pattern_[matched_] == byte)
        ++matched_;
    if (matched_ == pattern_.size()) {
        matched_ = fallback_[matched_ - 1];
        return true;
    }
    return false;
}

void PatternSet::add(int handle, std::vector<std::uint8_t> pattern)
{
    if (pattern.empty())
        return;
    remove(handle);
    auto [it, inserted] = entries_.emplace(handle, Entry{handle, PatternMatcher(std::move(pattern))});
    byFirstByte_[it->second.matcher.first()].push_back(&it->second);
}

void PatternSet::remove(int handle)
{
    const auto it = entries_.find(handle);
    if (it == entries_.end())
        return;
    Entry *e = &it->second;
    auto &starters = byFirstByte_[e->matcher.first()];
    starters.erase(std::remove(starters.begin(), starters.end(), e), starters.end());
    active_.erase(std::remove(active_.begin(), active_.end(), e), active_.end());
    entries_.erase(it);
}

void PatternSet::clear()
{
    entries_.clear();
    for (auto &list : byFirstByte_)
        list.clear();
    active_.clear();
}

void PatternSet::feed(std::uint8_t byte, std::vector<int> &completed)
{
    completed.clear();
    // Part-way matches go on or fall back; they stay marked partial until the starters
    // below are through, so none of them sees this byte twice.
    dropped_.clear();
    std::size_t kept = 0;
    for (Entry *e : active_) {
        if (e->matcher.feed(byte))
            completed.push_back(e->handle);
        if (e->matcher.matched() > 0)
            active_[kept++] = e;
        else
            dropped_.push_back(e);
    }
    active_.resize(kept);
    for (Entry *e : byFirstByte_[byte]) {
        if (e->partial)
            continue;
        if (e->matcher.feed(byte))
            completed.push_back(e->handle);
        if (e->matcher.matched() > 0) {
            e->partial = true;
            active_.push_back(e);
        }
    }
    for (Entry *e : dropped_)
        e->partial = false;
    if (completed.size() > 1)
        std::sort(completed.begin(), completed.end());
}

} // namespace kestrel
