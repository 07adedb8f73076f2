#include "record/recording_check.h"

#include <cmath>
#include <sys/stat.h>

namespace kestrel {
namespace {

// 1970-01-01 and 9999-12-31 as days since 1899-12-30: a recorder stamps wall-clock
// dates, so a time outside them is not one of ours.
constexpr double kEarliestDate = 25569.0;
constexpr double kLatestDate = 2958465.0;

bool plausibleTime(double t) { return std::isfinite(t) && t >= kEarliestDate && t <= kLatestDate; }

template <class ReadAt>
RecordingCheck check(std::uint64_t size, ReadAt readAt, CheckDepth depth)
{
    RecordingCheck c;
    c.records = size / kMpSize;
    c.tornBytes = size % kMpSize;
    if (size == 0)
        return c;
    c.kind = RecordingKind::NotRecording;
    if (c.records == 0) {
        c.problem = RecordingProblem::TooShort;
        return c;
    }
    MpRecord first, last;
    if (!readAt(0, first) || !readAt(c.records - 1, last)) {
        c.problem = RecordingProblem::TooShort;
        return c;
    }
    c.firstNumber = first.number;
    c.lastNumber = last.number;
    if (first.number != 0 || last.number != MpNumberAt(c.records - 1)) {
        c.problem = RecordingProblem::Numbering;
        return c;
    }
    if (depth == CheckDepth::Writable) {
        if (!first.isSystemMark() || first.markCode != SystemMark::NewFile) {
            c.problem = RecordingProblem::NoOpeningMark;
            return c;
        }
        if (!plausibleTime(first.time) || !plausibleTime(last.time)) {
            c.problem = RecordingProblem::BadTime;
            return c;
        }
    }
    c.kind = RecordingKind::Recording;
    return c;
}

} // namespace

RecordingCheck CheckRecording(const RecordReader &reader, CheckDepth depth)
{
    return check(reader.fileSize(), [&](std::uint64_t n, MpRecord &mp) { return reader.read(n, mp); }, depth);
}

RecordingCheck CheckRecordingFd(int fd, CheckDepth depth)
{
    struct stat st {};
    const std::uint64_t size = ::fstat(fd, &st) == 0 ? static_cast<std::uint64_t>(st.st_size) : 0;
    return check(
        size,
        [fd](std::uint64_t n, MpRecord &mp) {
            std::uint8_t buf[kMpSize];
            if (ReadFullyAt(fd, buf, kMpSize, MpOffset(n)) != kMpSize)
                return false;
            mp = DecodeMp(buf);
            return true;
        },
        depth);
}

std::string DescribeProblem(const RecordingCheck &c)
{
    switch (c.problem) {
    case RecordingProblem::None:
        return c.kind == RecordingKind::Empty ? "it is empty" : "it is a recording";
    case RecordingProblem::TooShort:
        return "it is shorter than one 80-byte record";
    case RecordingProblem::Numbering:
        return "its records are not numbered 0 to " + std::to_string(c.records - 1) + " (MP 0 says " +
               std::to_string(c.firstNumber) +
               (c.records > 1 ? ", MP " + std::to_string(c.records - 1) + " says " + std::to_string(c.lastNumber)
                              : std::string()) +
               ")";
    case RecordingProblem::NoOpeningMark:
        return "its first record is not the opening mark a recording starts with";
    case RecordingProblem::BadTime:
        return "its time stamps are not dates a recorder writes";
    }
    return {};
}

bool OpenRecording(RecordReader &reader, const std::string &path, std::string &error)
{
    if (const Result opened = reader.open(path); !opened) {
        error = "cannot open " + path + (opened.detail.empty() ? "" : ": " + opened.detail);
        return false;
    }
    const RecordingCheck c = CheckRecording(reader, CheckDepth::Readable);
    if (c.kind == RecordingKind::Empty || c.problem == RecordingProblem::TooShort) {
        error = path + " holds no MPs (empty, or shorter than one 80-byte record)";
        return false;
    }
    if (!c.isRecording()) {
        error = path + " is not a Kestrel recording: " + DescribeProblem(c);
        return false;
    }
    return true;
}

} // namespace kestrel
