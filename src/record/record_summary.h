#pragma once
// What a recording holds, in one sequential pass: the count, first and last
// time, the counters and load of the last MP, every system and trigger mark,
// and the checks that a sound recording passes (numbers without gaps, times
// that never go back, counters that agree with the data and error flags).

#include <cstdint>
#include <string>
#include <vector>

#include "record/mp_record.h"
#include "record/record_reader.h"

namespace kestrel {

struct MarkEntry {
    std::uint64_t mp = 0;
    double time = 0.0;
    std::uint8_t code = 0, kind = 0, extra = 0;
    [[nodiscard]] bool system() const { return kind == kSystemMarkKind; }
};

struct RecordingSummary {
    std::uint64_t fileSize = 0;
    std::uint64_t mpCount = 0;
    std::uint64_t tornBytes = 0; // a partly written last record (cut off by a crash)
    MpRecord first, last;       // valid when mpCount > 0
    std::vector<MarkEntry> marks;
    std::uint64_t numberGaps = 0;        // MPs whose number is not their index
    std::uint64_t timeBackwards = 0;     // MPs earlier than the one before
    std::uint64_t counterMismatches = 0; // MPs whose counters disagree with the flags so far
    // The last record is the stop mark: the recorder stopped in good order.
    [[nodiscard]] bool endsWithStopMark() const
    {
        return mpCount > 0 && last.isSystemMark() && last.markCode == SystemMark::Stopped;
    }
    [[nodiscard]] bool sound() const { return numberGaps == 0 && timeBackwards == 0 && counterMismatches == 0; }
};

[[nodiscard]] RecordingSummary SummarizeRecording(const RecordReader &reader);

// "YYYY-MM-DD HH:MM:SS.uuuuuu" of a date-time (days since 1899-12-30, already local).
[[nodiscard]] std::string FormatDateTimeIso(double dateTime);
// Name of a system mark code ("new file", "started", "appended", "stopped").
[[nodiscard]] const char *SystemMarkName(std::uint8_t code);

} // namespace kestrel
