#include "frames/frame_splitter.h"

#include <algorithm>
#include <limits>

namespace kestrel {
namespace {
constexpr double kSecondsPerDay = 86400.0;
} // namespace

FrameSplitter::FrameSplitter(const FrameRules &rules, Sink sink)
    : rules_(rules), sink_(std::move(sink)), gapDays_(rules.gapSeconds() / kSecondsPerDay),
      charDays_(rules.charSeconds / kSecondsPerDay), toleranceDays_(kStampTolerance / kSecondsPerDay)
{
    if (rules_.maxBytes == 0)
        rules_.maxBytes = kMaxFrameBytes;
}

bool FrameSplitter::idleLongEnough(double from, double to) const
{
    return (to - from) - charDays_ >= gapDays_ - toleranceDays_;
}

void FrameSplitter::add(std::uint64_t index, const MpRecord &mp)
{
    closeIdle(mp.time);
    if (mp.isSystemMark()) {
        // A start or stop of the recording: the line's flow is broken here.
        for (Circuit &c : circuits_) {
            if (c.open)
                close(c, FrameEnd::Interrupt);
            loneErrors_ += c.pending.size();
            c.pending.clear();
        }
        levels_.reset();
        release();
        return;
    }

    // An error comes before the byte it belongs to (a receiver reports it first).
    for (int i = 0; i < 2; ++i) {
        const auto which = static_cast<FrameCircuit>(i);
        if (const std::uint8_t kinds = ErrorBits(mp, which))
            circuits_[i].pending.push_back({index, mp.time, 0, kinds});
    }
    if (mp.d1Valid)
        byte(FrameCircuit::D1, index, mp, mp.d1);
    if (mp.d2Valid)
        byte(FrameCircuit::D2, index, mp, mp.d2);

    const std::uint8_t levels = LevelBits(mp);
    if (levels_ ? *levels_ != levels : levels != 0) {
        for (Circuit &c : circuits_)
            if (c.open)
                c.open->lineChanges.push_back({index, mp.time, levels});
    }
    levels_ = levels;

    for (int i = 0; i < 2; ++i) {
        Circuit &c = circuits_[i];
        if (!c.open || c.open->lastMp != index)
            continue;
        if (rules_.endByte && c.open->bytes.back() == *rules_.endByte)
            close(c, FrameEnd::EndByte);
        else if (c.open->bytes.size() >= rules_.maxBytes)
            close(c, FrameEnd::Full);
    }
    release();
}

void FrameSplitter::byte(FrameCircuit which, std::uint64_t index, const MpRecord &mp, std::uint8_t value)
{
    Circuit &c = circuits_[static_cast<int>(which)];
    if (c.open) {
        ++following_;
        if (mp.time - c.open->endTime < 0.5 * charDays_)
            ++crowded_;
    }
    if (c.open && idleLongEnough(c.open->endTime, mp.time))
        close(c, FrameEnd::Gap);
    dropStaleErrors(c, mp.time);
    if (!c.open) {
        Frame f;
        f.circuit = which;
        f.firstMp = index;
        f.startTime = mp.time;
        f.levelsAtStart = LevelBits(mp);
        c.open = std::move(f);
    }
    Frame &f = *c.open;
    for (FrameError &e : c.pending) {
        e.beforeByte = static_cast<std::uint32_t>(f.bytes.size());
        f.errors.push_back(e);
    }
    c.pending.clear();
    f.bytes.push_back(value);
    f.lastMp = index;
    f.endTime = mp.time;
}

void FrameSplitter::dropStaleErrors(Circuit &c, double time)
{
    // An error that no byte followed within the gap stands alone (a break, a lost character).
    std::size_t stale = 0;
    while (stale < c.pending.size() && idleLongEnough(c.pending[stale].time, time))
        ++stale;
    loneErrors_ += stale;
    c.pending.erase(c.pending.begin(), c.pending.begin() + static_cast<std::ptrdiff_t>(stale));
}

void FrameSplitter::closeIdle(double time)
{
    for (Circuit &c : circuits_) {
        if (c.open && idleLongEnough(c.open->endTime, time))
            close(c, FrameEnd::Gap);
        dropStaleErrors(c, time);
    }
}

void FrameSplitter::advanceTo(double time)
{
    closeIdle(time);
    release();
}

void FrameSplitter::finish()
{
    for (Circuit &c : circuits_) {
        if (c.open)
            close(c, FrameEnd::Interrupt);
        loneErrors_ += c.pending.size();
        c.pending.clear();
    }
    release();
}

void FrameSplitter::close(Circuit &c, FrameEnd why)
{
    Frame f = std::move(*c.open);
    c.open.reset();
    f.end = why;
    // Changes after the last byte were seen while the frame could still go on.
    while (!f.lineChanges.empty() && f.lineChanges.back().mp > f.lastMp)
        f.lineChanges.pop_back();
    const auto at = std::upper_bound(waiting_.begin(), waiting_.end(), f.firstMp,
                                     [](std::uint64_t mp, const Frame &w) { return mp < w.firstMp; });
    waiting_.insert(at, std::move(f));
}

std::optional<std::uint64_t> FrameSplitter::pendingFrom() const
{
    std::uint64_t from = std::numeric_limits<std::uint64_t>::max();
    for (const Circuit &c : circuits_)
        if (c.open)
            from = std::min(from, c.open->firstMp);
    if (!waiting_.empty())
        from = std::min(from, waiting_.front().firstMp);
    if (from == std::numeric_limits<std::uint64_t>::max())
        return std::nullopt;
    return from;
}

void FrameSplitter::release()
{
    if (waiting_.empty())
        return;
    std::uint64_t openFrom = std::numeric_limits<std::uint64_t>::max();
    for (const Circuit &c : circuits_)
        if (c.open)
            openFrom = std::min(openFrom, c.open->firstMp);
    std::size_t n = 0;
    while (n < waiting_.size() && waiting_[n].firstMp < openFrom)
        ++n;
    if (n == 0)
        return;
    for (std::size_t i = 0; i < n; ++i)
        sink_(std::move(waiting_[i]));
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(n));
}

} // namespace kestrel
