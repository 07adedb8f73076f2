#pragma once
// The current record file and its two handles: the view handle that the
// grid, search, export and report read through, and the record handle that
// the writer appends through. Both are open on the same file at once and take
// no lock, so the viewer reads while the recorder writes, and other programs
// may read the file during a recording.
//
// The file is headerless: MP n is the 80 bytes at n * 80. A file cut off in
// the middle of a record (a crash, a kill) stays readable, and its torn tail
// is cut before anything is appended, so that MP n stays at n * 80.

#include <cstdint>
#include <string>

#include "base/result.h"
#include "record/mp_record.h"
#include "record/record_codes.h"
#include "record/record_reader.h"
#include "record/record_store.h"

namespace kestrel {

enum class RecordHandle { View, Record };

class RecordFile final : public MpSink {
public:
    RecordFile() = default;
    ~RecordFile() override;
    RecordFile(const RecordFile &) = delete;
    RecordFile &operator=(const RecordFile &) = delete;

    void setPath(const std::string &path) { path_ = path; }
    [[nodiscard]] const std::string &path() const { return path_; }

    // Opens the current path; sets the handle's open flag and counts the opening.
    // 3001 (or 7102 when another recorder holds the file) with the reason on failure.
    Result open(RecordHandle kind);
    // Creates the file empty (truncating it), closes it and opens it again as that handle; 3002 on failure.
    Result create(RecordHandle kind);
    void close(RecordHandle kind);
    [[nodiscard]] bool isOpen(RecordHandle kind) const;
    // Open counter: +1 on each open, -1 on each close.
    [[nodiscard]] int openCount(RecordHandle kind) const;
    // Why the last write or cut fell short (the system's text); empty after success.
    [[nodiscard]] const std::string &writeError() const { return writeError_; }

    [[nodiscard]] bool exists() const;
    // 3003 with the reason when the file exists and cannot be removed.
    Result removeFile();
    [[nodiscard]] std::uint64_t fileSize() const;
    [[nodiscard]] std::uint64_t recordCount() const { return fileSize() / kMpSize; }

    // Record handle: the write position, and reading through it.
    void seekToStart() { writePos_ = 0; }
    void seekToEnd();
    [[nodiscard]] std::uint64_t writePosition() const { return writePos_; }
    // Cuts a partly written last record; returns the bytes cut (0 when the file ends on a record).
    [[nodiscard]] std::uint64_t cutTornTail();
    [[nodiscard]] bool readRecord(std::uint64_t n, MpRecord &out) const;
    [[nodiscard]] bool readLastRecord(MpRecord &out) const;

    // MpSink: appends at the write position.
    [[nodiscard]] std::size_t appendRecords(const std::uint8_t *data, std::size_t bytes) override;

    // View handle for readers.
    [[nodiscard]] const RecordReader &view() const { return view_; }

private:
    std::string path_;
    std::string writeError_;
    RecordReader view_;
    int viewCount_ = 0;
    int recordFd_ = -1;
    int recordCount_ = 0;
    std::uint64_t writePos_ = 0;
};

} // namespace kestrel
