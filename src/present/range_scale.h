#pragma once
// The arithmetic behind a pair of MP range controls (two edit fields, two
// track bars): MP numbers are 64-bit, a track bar holds an int, so a range
// longer than kTrackBarSteps is scaled onto the bar. The first and the last
// MP map exactly onto the bar's two ends, the mapping never runs backwards,
// and a bar value taken to an MP and back comes out as the same bar value, so
// syncing an edit field from a bar never makes the bar jump.
//
//   TrackScale(first, last)        ToBar(mp), FromBar(value), Clamp(mp)
//   ReadMpField(text, scale, last) what leaving an edit field with that text yields
//   MoveStart / MoveStop / StepStart / StepStop   the range after the user moved one end

#include <cstdint>
#include <string_view>

namespace kestrel {

// Bar positions of a scaled range: 0 ... kTrackBarSteps.
inline constexpr int kTrackBarSteps = 1 << 30;

class TrackScale {
public:
    TrackScale() = default; // no MPs at all
    TrackScale(std::uint64_t first, std::uint64_t last);

    [[nodiscard]] bool empty() const { return empty_; }
    [[nodiscard]] std::uint64_t first() const { return first_; }
    [[nodiscard]] std::uint64_t last() const { return last_; }
    // True when several MPs share a bar position.
    [[nodiscard]] bool scaled() const { return !empty_ && last_ - first_ > std::uint64_t{kTrackBarSteps}; }

    // The bar runs from 0 to barMaximum() (0 for one MP or none).
    [[nodiscard]] int barMaximum() const;
    [[nodiscard]] int ToBar(std::uint64_t mp) const;        // mp is clamped into the range first
    [[nodiscard]] std::uint64_t FromBar(int value) const;   // value is clamped into 0 ... barMaximum()
    [[nodiscard]] std::uint64_t Clamp(std::uint64_t mp) const;

private:
    std::uint64_t first_ = 0;
    std::uint64_t last_ = 0;
    bool empty_ = true;
};

enum class FieldVerdict {
    Valid,      // a number inside the range: taken as it is
    OutOfRange, // a number outside: the nearest end of the range is taken
    NotANumber, // anything else (letters, a sign, nothing, more digits than 64 bits hold): the last valid value stays
};

struct MpFieldValue {
    FieldVerdict verdict = FieldVerdict::Valid;
    std::uint64_t value = 0; // what the field shows once it is left
};

// Decimal digits with blanks around them are a number; nothing else is.
[[nodiscard]] MpFieldValue ReadMpField(std::string_view text, const TrackScale &scale, std::uint64_t lastValid);

struct MpRangeEnds {
    std::uint64_t from = 0;
    std::uint64_t to = 0;
    friend bool operator==(const MpRangeEnds &, const MpRangeEnds &) = default;
};

// The end the user moved wins: the other end is pushed along when the two would
// cross, so from <= to always holds. Values are clamped into the scale.
[[nodiscard]] MpRangeEnds MoveStart(MpRangeEnds ends, std::uint64_t from, const TrackScale &scale);
[[nodiscard]] MpRangeEnds MoveStop(MpRangeEnds ends, std::uint64_t to, const TrackScale &scale);
// One step (+1 or -1, or more) of one end; it stops at the ends of the scale.
[[nodiscard]] MpRangeEnds StepStart(MpRangeEnds ends, std::int64_t delta, const TrackScale &scale);
[[nodiscard]] MpRangeEnds StepStop(MpRangeEnds ends, std::int64_t delta, const TrackScale &scale);

} // namespace kestrel
