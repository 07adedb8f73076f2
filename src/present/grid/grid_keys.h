#pragma once
// Keyboard and scroll rules of the record grid as pure functions. The grid
// shows the records from its scroll position on (row 1 is MP position + 1);
// the logical maximum is the number of MPs in the file, the small change one
// grid line of MPs, the large change one page.

#include <cstdint>

namespace kestrel::grid {

enum class GridKey { PageUp, PageDown, Home, End, Up, Down, Left, Right };

struct KeyContext {
    std::int64_t position = 0;    // scroll position in MPs
    std::int64_t maximum = 0;     // MPs in the record file
    std::int64_t smallChange = 1;
    std::int64_t largeChange = 1;
    int col = 0;                  // current cell
    int row = 1;
    int colCount = 1;
    int rowCount = 2;             // grid rows including the header row 0
    int view = 1;
    bool followEnd = false;       // while set, every key but End is ignored
    bool fileOpen = false;        // keys act only on an open recording
};

struct KeyOutcome {
    bool consumed = false;        // the grid's own cursor movement is suppressed
    bool invalidate = false;
    std::int64_t position = 0;
    int col = 0;
    int row = 1;
    [[nodiscard]] bool moved(const KeyContext &before) const { return position != before.position; }
};

// The position End goes to: the last full page (never below 0).
[[nodiscard]] std::int64_t EndPosition(std::int64_t maximum, std::int64_t largeChange);

[[nodiscard]] KeyOutcome ApplyGridKey(GridKey key, const KeyContext &ctx);

// Wheel: down acts as Down, up as Up; nothing while following the end.
[[nodiscard]] KeyOutcome ApplyWheel(bool down, const KeyContext &ctx);

// QScrollBar holds an int; recordings may have more MPs than that. Positions
// above kScrollBarLimit are scaled onto the bar so that 0 and the last
// position map exactly and the mapping stays monotonic.
inline constexpr std::int64_t kScrollBarLimit = std::int64_t{1} << 30;

struct ScrollMapping {
    std::int64_t maxPosition = 0; // largest scroll position
    [[nodiscard]] bool scaled() const { return maxPosition > kScrollBarLimit; }
    [[nodiscard]] int barMaximum() const;
    [[nodiscard]] int ToBar(std::int64_t position) const;
    [[nodiscard]] std::int64_t FromBar(int value) const;
};

} // namespace kestrel::grid
