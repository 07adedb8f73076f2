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
#include <functional>
#include <optional>
#include <string>

#include "base/result.h"
#include "record/mp_record.h"
#include "record/record_codes.h"
#include "record/record_reader.h"
#include "record/record_store.h"
#include "record/recording_check.h"

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
    // The record handle takes the writer's lock. 3001 (or 7102 when another
    // recorder holds the file) with the reason on failure.
    Result open(RecordHandle kind);
    // The record handle: opens the file, making it when it is missing, and takes the
    // lock before anything can change it; 3002 (or 7102) on failure. What the file
    // holds is then looked at under the lock (checkLocked) and only then emptied
    // (emptyLocked) or appended to, so a file another recorder holds is never touched.
    Result lockForRecording();
    [[nodiscard]] RecordingCheck checkLocked() const;
    Result emptyLocked();
    // Record handle: lockForRecording + emptyLocked. View handle: makes a missing
    // file (never empties one) and opens it. 3002 on failure.
    Result create(RecordHandle kind);
    // Tests: runs between opening the record handle and taking its lock, where
    // another recorder may get in.
    void setBeforeLockHook(std::function<void()> hook) { beforeLock_ = std::move(hook); }
    void close(RecordHandle kind);
    [[nodiscard]] bool isOpen(RecordHandle kind) const;
    // Open counter: +1 on each open, -1 on each close.
    [[nodiscard]] int openCount(RecordHandle kind) const;
    // Why the last write or cut fell short (the system's text); empty after success.
    [[nodiscard]] const std::string &writeError() const { return writeError_; }

    [[nodiscard]] bool exists() const;
    // Bytes an ordinary user may still write on the drive of the record file; nullopt when unknown.
    [[nodiscard]] std::optional<std::uint64_t> freeSpace() const;
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
    Result lockRecordHandle(int flags, int failCode);

    std::string path_;
    std::string writeError_;
    RecordReader view_;
    int viewCount_ = 0;
    int recordFd_ = -1;
    int recordCount_ = 0;
    std::uint64_t writePos_ = 0;
    std::function<void()> beforeLock_;
};

} // namespace kestrel
