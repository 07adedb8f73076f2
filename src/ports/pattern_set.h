#pragma once
// The data triggers of one port: each pattern is found in the byte stream,
// also across reads and overlapping itself. A byte only costs the patterns
// that are part-way matched or that begin with it, so many armed triggers
// cost little more than one while the traffic does not look like them.

#include <array>
#include <cstdint>
#include <map>
#include <vector>

namespace kestrel {

// One pattern (Knuth-Morris-Pratt).
class PatternMatcher {
public:
    explicit PatternMatcher(std::vector<std::uint8_t> pattern);
    // true when this byte completes an occurrence of the pattern.
    bool feed(std::uint8_t byte);
    void reset() { matched_ = 0; }
    [[nodiscard]] std::size_t matched() const { return matched_; }
    [[nodiscard]] std::uint8_t first() const { return pattern_.front(); }

private:
    std::vector<std::uint8_t> pattern_;
    std::vector<std::size_t> fallback_; // longest proper border of each prefix
    std::size_t matched_ = 0;
};

class PatternSet {
public:
    // pattern must not be empty; a new pattern starts with nothing matched.
    void add(int handle, std::vector<std::uint8_t> pattern);
    void remove(int handle);
    void clear();
    [[nodiscard]] bool contains(int handle) const { return entries_.count(handle) != 0; }
    [[nodiscard]] bool empty() const { return entries_.empty(); }

    // Feeds one byte; the handles whose pattern it completes, in ascending order, go into
    // completed (cleared first).
    void feed(std::uint8_t byte, std::vector<int> &completed);

private:
    struct Entry {
        int handle;
        PatternMatcher matcher;
        bool partial = false; // in active_
    };

    std::map<int, Entry> entries_; // nodes stay put: the lists below point into them
    std::array<std::vector<Entry *>, 256> byFirstByte_;
    std::vector<Entry *> active_; // part-way matched
    std::vector<Entry *> dropped_; // scratch of feed()
};

} // namespace kestrel
