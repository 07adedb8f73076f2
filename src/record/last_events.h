#pragma once
// When each kind of line event was last recorded: the clock that inactivity
// triggers read. Unlike the last-change table, every byte counts (a line
// that sends "AAAA" is not silent), and a status line counts as active for
// as long as it is held high.

#include <array>
#include <cstdint>

#include "record/mp_record.h"

namespace kestrel {

// In the order inactivity triggers list them.
enum class EventKind : int { D1, D2, S1, M1, S2, M2, M5, M3, PE, FE, LE };
inline constexpr int kEventKindCount = 11;

class LastEvents {
public:
    // An MP was recorded: every kind it carries happened at its time.
    void Note(const MpRecord &mp);
    // All kinds happened now, the lines at these levels (S1, M1, S2, M2, M5, M3).
    void ResetAll(double now, const std::array<std::uint8_t, 6> &levels);
    // The kind counts as having happened now (its silence was reported).
    void Touch(EventKind kind, double now) { times_[index(kind)] = now; }

    [[nodiscard]] double time(EventKind kind) const { return times_[index(kind)]; }
    // The level of a status line in its last recorded event (0 for data and errors).
    [[nodiscard]] std::uint8_t level(EventKind kind) const { return levels_[index(kind)]; }
    [[nodiscard]] static bool IsLine(EventKind kind) { return kind >= EventKind::S1 && kind <= EventKind::M3; }

private:
    [[nodiscard]] static int index(EventKind kind) { return static_cast<int>(kind); }

    std::array<double, kEventKindCount> times_{};
    std::array<std::uint8_t, kEventKindCount> levels_{};
};

} // namespace kestrel
