#pragma once
// Random and block access to the MPs of a record file by offset: MP n is the
// 80 bytes at n * 80. Nothing here ever loads a whole recording. A file whose
// size is not a multiple of 80 (cut off by a crash) counts its whole records.
// The file may grow while it is read (the recorder appends through its own
// handle), so the count is taken fresh on each call.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/result.h"
#include "record/record_codes.h"
#include "record/mp_record.h"

namespace kestrel {

// Reads up to size bytes at offset, going on after short reads and interruptions;
// returns the bytes read (fewer at the end of the file or on an error).
[[nodiscard]] std::size_t ReadFullyAt(int fd, std::uint8_t *buf, std::size_t size, std::uint64_t offset);

// Why a FIFO, a device or a socket is not read as a recording.
inline constexpr const char *kNotARegularFile = "not a regular file (a pipe, device or socket)";

// Opens path with flags and keeps it only when it is a regular file. The open does not
// block (a FIFO would hang it); the descriptor is blocking again when returned. On
// failure -1, and why says the system's reason, "Is a directory" or kNotARegularFile.
// size, when given, receives the file's size.
[[nodiscard]] int OpenRegularFile(const std::string &path, int flags, std::string &why,
                                  std::uint64_t *size = nullptr);

class RecordReader {
public:
    RecordReader() = default;
    ~RecordReader();
    RecordReader(const RecordReader &) = delete;
    RecordReader &operator=(const RecordReader &) = delete;
    RecordReader(RecordReader &&other) noexcept;
    RecordReader &operator=(RecordReader &&other) noexcept;

    // Opens a regular file read-only; code 3001 with the system's reason when the
    // file cannot be opened or is not a regular file.
    Result open(const std::string &path);
    void close();
    [[nodiscard]] bool isOpen() const { return fd_ >= 0; }
    [[nodiscard]] const std::string &path() const { return path_; }

    [[nodiscard]] std::uint64_t fileSize() const;
    [[nodiscard]] std::uint64_t recordCount() const { return fileSize() / kMpSize; }

    // MP n; false when n is at or beyond the end (a short read).
    [[nodiscard]] bool read(std::uint64_t n, MpRecord &out) const;
    // Up to count consecutive MPs from first, decoded; returns how many were read.
    std::uint64_t readBlock(std::uint64_t first, std::uint64_t count, std::vector<MpRecord> &out) const;
    // Up to count raw 80-byte records from first into buf (count * 80 bytes); returns records read.
    std::uint64_t readRaw(std::uint64_t first, std::uint64_t count, std::uint8_t *buf) const;

private:
    int fd_ = -1;
    std::string path_;
};

} // namespace kestrel
