#pragma once
// Splits the data of a recording into frames, one circuit at a time, as the
// MPs are walked in file order. It keeps only the frames still open and those
// that wait for an earlier one on the other circuit, so it walks recordings
// of any length in flat memory.
//
// Frames come out in the order of their first byte (firstMp). A frame ends
// when its circuit has been idle for the rule's gap (seen on the next MP of
// either circuit that is late enough, or told through advanceTo), after the
// end byte, when it is full, and at a system mark (a recording's start or
// stop): no frame reaches across two recordings.
//
// A line error belongs to the next byte of its circuit when that byte comes
// within the gap; otherwise it is counted as lone. System marks carry no
// status lines: signal changes are taken between the MPs of the line only,
// and the first MP after a start counts as a change when any line is on.

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "frames/frame.h"
#include "frames/frame_rules.h"

namespace kestrel {

class FrameSplitter {
public:
    using Sink = std::function<void(Frame &&frame)>;

    FrameSplitter(const FrameRules &rules, Sink sink);

    // The MP at place index; MPs must come in file order.
    void add(std::uint64_t index, const MpRecord &mp);
    // No MP came until time (a live line that is quiet): frames whose gap has run out end.
    void advanceTo(double time);
    // The walk is over: every open frame ends (FrameEnd::Interrupt) and comes out.
    void finish();

    // Place of the first byte of the earliest frame not yet handed out (open or
    // waiting), or nothing: everything before it has come out.
    [[nodiscard]] std::optional<std::uint64_t> pendingFrom() const;
    // Line errors that no byte followed within the gap.
    [[nodiscard]] std::uint64_t loneErrors() const { return loneErrors_; }
    [[nodiscard]] const FrameRules &rules() const { return rules_; }
    // Bytes of a circuit that followed the one before by less than half a character
    // time, and all that followed one: many such bytes mean the line ran faster
    // than the settings the rule was made for.
    [[nodiscard]] std::uint64_t crowdedBytes() const { return crowded_; }
    [[nodiscard]] std::uint64_t followingBytes() const { return following_; }

private:
    struct Circuit {
        std::optional<Frame> open;
        std::vector<FrameError> pending; // errors waiting for their byte
    };
    void closeIdle(double time);
    void close(Circuit &c, FrameEnd why);
    void byte(FrameCircuit which, std::uint64_t index, const MpRecord &mp, std::uint8_t value);
    void dropStaleErrors(Circuit &c, double time);
    void release();
    [[nodiscard]] bool idleLongEnough(double from, double to) const;

    FrameRules rules_;
    Sink sink_;
    double gapDays_;
    double charDays_;
    double toleranceDays_;
    Circuit circuits_[2];
    std::vector<Frame> waiting_; // closed, behind an open frame that started earlier; by firstMp
    std::optional<std::uint8_t> levels_; // of the last MP of the line since the recording started
    std::uint64_t loneErrors_ = 0;
    std::uint64_t crowded_ = 0, following_ = 0;
};

} // namespace kestrel
