#pragma once
// Runs an export over a range of MPs: raw mode writes the bare data bytes,
// CSV mode an optional head line and one line per MP, each ended by "\r\n".
// The range is read in large blocks and the output streamed through a
// bounded buffer, so memory stays flat whatever the range; every
// `pumpInterval` MPs the caller's progress hook runs (it may let an event
// loop run) and the stop flag is checked.
//
//   ExportRange     FullRange(reader)
//   bool            ValidateRange(reader, range, error)
//   void            SeedExportTime(reader, range, state)
//   ExportResult    RunExport(reader, options, range, sink, state, hooks)

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "record/record_reader.h"
#include "export/export_options.h"
#include "export/export_sink.h"
#include "export/export_time.h"

namespace kestrel {

struct ExportRange {
    std::uint64_t first = 0;
    std::uint64_t last = 0; // inclusive
};

struct ExportHooks {
    std::function<void(int percent)> progress; // 0..100
    const std::atomic<bool> *stop = nullptr;
    std::uint64_t pumpInterval = 4096;
};

enum class ExportStatus { Done, Stopped, BadRange, WriteFailed };

struct ExportResult {
    ExportStatus status = ExportStatus::Done;
    std::uint64_t exported = 0; // MPs written
    std::string error;          // for BadRange and WriteFailed
};

// Every MP of the recording; first > last when it is empty.
[[nodiscard]] ExportRange FullRange(const RecordReader &reader);
// True when first <= last and both lie inside the recording; else error says why.
[[nodiscard]] bool ValidateRange(const RecordReader &reader, const ExportRange &range, std::string &error);

// Prepares the time state as the grid would have it: the relative base from
// MP 1 (MP 0 when the recording has nothing after its opening mark) and the
// previous time from MP first - 1.
void SeedExportTime(const RecordReader &reader, const ExportRange &range, ExportTimeState &state);

[[nodiscard]] ExportResult RunExport(const RecordReader &reader, const ExportOptions &options,
                                     const ExportRange &range, ExportSink &sink, ExportTimeState &time,
                                     const ExportHooks &hooks = {});

} // namespace kestrel
