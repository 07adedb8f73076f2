#include "present/range_scale.h"

#include <algorithm>
#include <charconv>

namespace kestrel {

namespace {

__extension__ using Wide = unsigned __int128; // a span of up to 2^64 times up to 2^30 bar steps

constexpr auto kSteps = static_cast<std::uint64_t>(kTrackBarSteps);

std::uint64_t AddClamped(std::uint64_t v, std::int64_t delta, const TrackScale &scale)
{
    if (delta < 0) {
        const std::uint64_t down = static_cast<std::uint64_t>(-(delta + 1)) + 1; // no overflow at INT64_MIN
        v = v - scale.first() < down ? scale.first() : v - down;
    } else {
        const auto up = static_cast<std::uint64_t>(delta);
        v = scale.last() - v < up ? scale.last() : v + up;
    }
    return v;
}

} // namespace

TrackScale::TrackScale(std::uint64_t first, std::uint64_t last) : first_(first), last_(last), empty_(first > last)
{
    if (empty_)
        first_ = last_ = 0;
}

int TrackScale::barMaximum() const
{
    if (empty_)
        return 0;
    return static_cast<int>(std::min(last_ - first_, kSteps));
}

std::uint64_t TrackScale::Clamp(std::uint64_t mp) const
{
    return empty_ ? 0 : std::clamp(mp, first_, last_);
}

int TrackScale::ToBar(std::uint64_t mp) const
{
    if (empty_)
        return 0;
    const std::uint64_t offset = Clamp(mp) - first_;
    if (!scaled())
        return static_cast<int>(offset);
    // Rounded down: only the last MP reaches the bar's last position.
    return static_cast<int>(static_cast<Wide>(offset) * kSteps / (last_ - first_));
}

std::uint64_t TrackScale::FromBar(int value) const
{
    if (empty_)
        return 0;
    const auto v = static_cast<std::uint64_t>(std::clamp(value, 0, barMaximum()));
    if (!scaled())
        return first_ + v;
    // Rounded up: the smallest MP whose bar position is v, so ToBar(FromBar(v)) == v.
    const std::uint64_t span = last_ - first_;
    const Wide offset = (static_cast<Wide>(v) * span + kSteps - 1) / kSteps;
    return first_ + static_cast<std::uint64_t>(offset);
}

MpFieldValue ReadMpField(std::string_view text, const TrackScale &scale, std::uint64_t lastValid)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    std::uint64_t v = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size() || scale.empty())
        return {FieldVerdict::NotANumber, scale.Clamp(lastValid)};
    const std::uint64_t clamped = scale.Clamp(v);
    return {clamped == v ? FieldVerdict::Valid : FieldVerdict::OutOfRange, clamped};
}

MpRangeEnds MoveStart(MpRangeEnds ends, std::uint64_t from, const TrackScale &scale)
{
    ends.from = scale.Clamp(from);
    ends.to = std::max(scale.Clamp(ends.to), ends.from);
    return ends;
}

MpRangeEnds MoveStop(MpRangeEnds ends, std::uint64_t to, const TrackScale &scale)
{
    ends.to = scale.Clamp(to);
    ends.from = std::min(scale.Clamp(ends.from), ends.to);
    return ends;
}

MpRangeEnds StepStart(MpRangeEnds ends, std::int64_t delta, const TrackScale &scale)
{
    return MoveStart(ends, AddClamped(scale.Clamp(ends.from), delta, scale), scale);
}

MpRangeEnds StepStop(MpRangeEnds ends, std::int64_t delta, const TrackScale &scale)
{
    return MoveStop(ends, AddClamped(scale.Clamp(ends.to), delta, scale), scale);
}

} // namespace kestrel
