#pragma once
// Is this file a Kestrel recording? Two depths of the same check:
//
// - Readable: what a tool needs before it walks a file (info, export, search,
//   dump): MP n sits at n * 80, so the first record is numbered 0 and the last
//   whole one count - 1 (numbers are 32 bits on disk and wrap). Anything else
//   (a random file, a text file, a recording cut at the front) would give
//   nonsense.
// - Writable: what the recorder needs before it appends to a file or cuts its
//   torn tail: also an opening mark in MP 0 and time stamps that are real
//   dates. A file that fails here is not ours, and is never changed without
//   the user's explicit yes.
//
// A torn tail (size not a multiple of 80) is fine at both depths.

#include <cstdint>
#include <string>

#include "record/record_reader.h"

namespace kestrel {

enum class RecordingKind {
    Recording,    // passes the check
    Empty,        // zero bytes: nothing to lose
    NotRecording, // holds bytes, but not a recording (see problem)
};

enum class RecordingProblem {
    None,
    TooShort,     // fewer than 80 bytes, yet not empty
    Numbering,    // the first or last record has the wrong number
    NoOpeningMark,
    BadTime,      // a time stamp that is no date a recorder writes
};

enum class CheckDepth { Readable, Writable };

struct RecordingCheck {
    RecordingKind kind = RecordingKind::Empty;
    RecordingProblem problem = RecordingProblem::None;
    std::uint64_t records = 0;   // whole records
    std::uint64_t tornBytes = 0; // bytes after the last whole record
    std::uint32_t firstNumber = 0, lastNumber = 0;
    [[nodiscard]] bool isRecording() const { return kind == RecordingKind::Recording; }
};

[[nodiscard]] RecordingCheck CheckRecording(const RecordReader &reader, CheckDepth depth);
// Checks the file at fd (a record handle the caller holds).
[[nodiscard]] RecordingCheck CheckRecordingFd(int fd, CheckDepth depth);

// What is wrong, in words, for the command line ("its first record is not an opening mark").
[[nodiscard]] std::string DescribeProblem(const RecordingCheck &check);

// Opens path into reader for a tool that walks it; false with a message for the
// user when the file cannot be opened, is empty, or is not a recording.
[[nodiscard]] bool OpenRecording(RecordReader &reader, const std::string &path, std::string &error);

// The number that MP index carries on disk: 32 bits, so it wraps after 2^32 MPs
// (some 6.5 hours of a full line both ways). Readers locate MPs by offset and
// take the place, never the number, as an MP's identity.
[[nodiscard]] constexpr std::uint32_t MpNumberAt(std::uint64_t index) { return static_cast<std::uint32_t>(index); }
// The place of an MP that carries number and lies at or before place last, the nearest
// such place (the newest MPs of a recording, found from the file's length); number
// itself when last is too small to be after a wrap.
[[nodiscard]] constexpr std::uint64_t MpIndexAtOrBefore(std::uint32_t number, std::uint64_t last)
{
    const std::uint32_t back = MpNumberAt(last) - number;
    return back <= last ? last - back : number;
}

} // namespace kestrel
