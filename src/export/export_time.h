#pragma once
// The running time state of an export: the relative base (the time stamp of
// MP 1, taken whenever MP 1 is exported, else what the caller seeded), the
// previous MP's time stamp for delta times, and a cached formatter so that
// millions of lines do not format the same date again and again.

#include <optional>
#include <string>

#include "record/mp_record.h"
#include "present/time_text.h"

namespace kestrel {

struct ExportTimeState {
    explicit ExportTimeState(TimeLocale locale = TimeLocale::System(), int langOffset = -1)
        : formatter(std::move(locale), langOffset)
    {
    }

    TimeTextFormatter formatter;
    RelativeTimeBase relativeBase;
    std::optional<double> previous; // time stamp of the MP before the next one exported
    std::string scratch;            // reused per line

    void noteRead(const MpRecord &mp, std::uint64_t index) { relativeBase.NoteRecord(index, mp.time); }
};

// The time field of one MP in the given mode, without the grid's trailing blank.
void AppendExportTime(std::string &out, double t, int mode, ExportTimeState &state);

// The next MP of a walk in MP order: notes it for the relative base, appends
// its time field (as AppendExportTime) and makes it the previous MP.
// index: the MP's place in the file.
void AppendTimeOfNext(std::string &out, const MpRecord &mp, std::uint64_t index, int mode, ExportTimeState &state);

} // namespace kestrel
