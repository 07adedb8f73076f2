#include "export/export_run.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "export/csv_line.h"

namespace kestrel {
namespace {

constexpr std::uint64_t kBlockRecords = 16384;   // 1.3 MB read per call
constexpr std::size_t kFlushBytes = 1u << 20;    // output handed on per MiB

} // namespace

ExportRange FullRange(const RecordReader &reader)
{
    const std::uint64_t count = reader.recordCount();
    if (count == 0)
        return {1, 0};
    return {0, count - 1};
}

bool ValidateRange(const RecordReader &reader, const ExportRange &range, std::string &error)
{
    const std::uint64_t count = reader.recordCount();
    if (count == 0) {
        error = "the recording holds no MPs";
        return false;
    }
    if (range.first > range.last) {
        error = "the range starts after it ends (" + std::to_string(range.first) + " > " +
                std::to_string(range.last) + ")";
        return false;
    }
    if (range.last >= count) {
        error = "the range ends beyond the recording: its MPs are 0 to " + std::to_string(count - 1);
        return false;
    }
    return true;
}

void SeedExportTime(const RecordReader &reader, const ExportRange &range, ExportTimeState &state)
{
    MpRecord mp;
    // Relative time starts at MP 1; a recording of the opening mark alone
    // starts at MP 0, where its counters were reset.
    if (reader.read(1, mp) || reader.read(0, mp))
        state.relativeBase.value = mp.time;
    if (range.first > 0 && reader.read(range.first - 1, mp))
        state.previous = mp.time;
}

ExportResult RunExport(const RecordReader &reader, const ExportOptions &options, const ExportRange &range,
                       ExportSink &sink, ExportTimeState &time, const ExportHooks &hooks)
{
    ExportResult result;
    if (!ValidateRange(reader, range, result.error)) {
        result.status = ExportStatus::BadRange;
        return result;
    }
    const bool csv = options.format == ExportFormat::Csv;
    std::string out;
    out.reserve(kFlushBytes + 4096);
    auto flush = [&]() {
        if (out.empty())
            return true;
        const bool ok = sink.write(out);
        out.clear();
        return ok;
    };
    auto writeFailed = [&]() {
        result.status = ExportStatus::WriteFailed;
        result.error = sink.errorText();
        if (result.error.empty())
            result.error = "the export could not be written";
        return result;
    };

    if (csv && options.header) {
        out += BuildCSVHeadLine(options);
        out += "\r\n";
    }

    const CsvLineWriter lineWriter(options);
    const std::uint64_t total = range.last - range.first + 1;
    std::vector<std::uint8_t> block(kBlockRecords * kMpSize);
    std::uint64_t untilPump = 0;
    for (std::uint64_t i = range.first; i <= range.last;) {
        const std::uint64_t want = std::min(kBlockRecords, range.last - i + 1);
        const std::uint64_t got = reader.readRaw(i, want, block.data());
        if (got == 0)
            break; // the file was cut while we read it: what is there has been written
        for (std::uint64_t k = 0; k < got; ++k, ++i) {
            if (untilPump == 0) {
                untilPump = hooks.pumpInterval ? hooks.pumpInterval : 1;
                if (hooks.progress)
                    hooks.progress(static_cast<int>((i - range.first) * 100 / total));
                if (hooks.stop && hooks.stop->load(std::memory_order_relaxed)) {
                    if (!flush() || !sink.finish())
                        return writeFailed();
                    result.status = ExportStatus::Stopped;
                    return result;
                }
            }
            --untilPump;
            const std::uint8_t *rec = block.data() + k * kMpSize;
            if (csv) {
                lineWriter.append(out, DecodeMp(rec), i, time);
                out += "\r\n";
            } else {
                // Raw data stream: the bare bytes, D1 before D2, nothing between them.
                if (options.columns.d1 && rec[offsetof(MpRecord, d1Valid)])
                    out += static_cast<char>(rec[offsetof(MpRecord, d1)]);
                if (options.columns.d2 && rec[offsetof(MpRecord, d2Valid)])
                    out += static_cast<char>(rec[offsetof(MpRecord, d2)]);
            }
            ++result.exported;
            if (out.size() >= kFlushBytes && !flush())
                return writeFailed();
        }
        if (got < want)
            break;
    }
    if (!flush() || !sink.finish())
        return writeFailed();
    if (hooks.progress)
        hooks.progress(100);
    return result;
}

} // namespace kestrel
