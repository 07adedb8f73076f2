#include "export/recording_check.h"

namespace kestrel {

bool OpenRecording(RecordReader &reader, const std::string &path, std::string &error)
{
    if (const Result opened = reader.open(path); !opened) {
        error = "cannot open " + path + (opened.detail.empty() ? "" : ": " + opened.detail);
        return false;
    }
    const std::uint64_t count = reader.recordCount();
    if (count == 0) {
        error = path + " holds no MPs (empty, or shorter than one 80-byte record)";
        return false;
    }
    MpRecord first, last;
    if (!reader.read(0, first) || !reader.read(count - 1, last)) {
        error = "cannot read " + path;
        return false;
    }
    if (first.number != 0 || last.number != static_cast<std::uint32_t>(count - 1)) {
        error = path + " is not a Kestrel recording: its records are not numbered 0 to " +
                std::to_string(count - 1) + " (MP 0 says " + std::to_string(first.number) + ", MP " +
                std::to_string(count - 1) + " says " + std::to_string(last.number) + ")";
        return false;
    }
    return true;
}

} // namespace kestrel
