#include "record/record_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrel {
namespace {

std::string systemError(int err) { return std::strerror(err); }

} // namespace

RecordFile::~RecordFile()
{
    close(RecordHandle::Record);
    close(RecordHandle::View);
}

Result RecordFile::open(RecordHandle kind)
{
    if (kind == RecordHandle::View) {
        Result r = view_.open(path_);
        if (r)
            ++viewCount_;
        return r;
    }
    close(RecordHandle::Record);
    const int fd = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return Result::Fail(kRecordOpenFailed, systemError(errno));
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        const int err = S_ISDIR(st.st_mode) ? EISDIR : EINVAL;
        ::close(fd);
        return Result::Fail(kRecordOpenFailed, systemError(err));
    }
    // Two recorders appending to one file would overwrite each other's records;
    // readers are not affected (they take no lock).
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int err = errno;
        ::close(fd);
        return err == EWOULDBLOCK ? Result::Fail(kRecordFileBusy) : Result::Fail(kRecordOpenFailed, systemError(err));
    }
    recordFd_ = fd;
    ++recordCount_;
    writePos_ = 0;
    return Result::Ok();
}

Result RecordFile::create(RecordHandle kind)
{
    close(kind);
    const int fd = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return Result::Fail(kRecordCreateFailed, systemError(errno));
    ::close(fd);
    // Opened again the ordinary way, so both handles are alike.
    Result r = open(kind);
    if (!r && r.code == kRecordOpenFailed)
        r.code = kRecordCreateFailed;
    return r;
}

void RecordFile::close(RecordHandle kind)
{
    if (kind == RecordHandle::View) {
        if (view_.isOpen()) {
            view_.close();
            --viewCount_;
        }
        return;
    }
    if (recordFd_ >= 0) {
        ::fdatasync(recordFd_); // the recording is on the disk, not only in the cache, once it is closed
        ::close(recordFd_);
        recordFd_ = -1;
        --recordCount_;
    }
}

bool RecordFile::isOpen(RecordHandle kind) const
{
    return kind == RecordHandle::View ? view_.isOpen() : recordFd_ >= 0;
}

int RecordFile::openCount(RecordHandle kind) const { return kind == RecordHandle::View ? viewCount_ : recordCount_; }

bool RecordFile::exists() const
{
    struct stat st {};
    return ::stat(path_.c_str(), &st) == 0;
}

Result RecordFile::removeFile()
{
    if (::unlink(path_.c_str()) != 0 && errno != ENOENT)
        return Result::Fail(kRecordDeleteFailed, systemError(errno));
    return Result::Ok();
}

std::uint64_t RecordFile::fileSize() const
{
    struct stat st {};
    if (recordFd_ >= 0) {
        if (::fstat(recordFd_, &st) == 0)
            return static_cast<std::uint64_t>(st.st_size);
        return 0;
    }
    if (view_.isOpen())
        return view_.fileSize();
    if (::stat(path_.c_str(), &st) == 0 && S_ISREG(st.st_mode))
        return static_cast<std::uint64_t>(st.st_size);
    return 0;
}

// The end of the last whole record: a torn tail that could not be cut is written over,
// so MP n still lands at n * 80.
void RecordFile::seekToEnd() { writePos_ = recordFd_ >= 0 ? MpOffset(recordCount()) : 0; }

std::uint64_t RecordFile::cutTornTail()
{
    if (recordFd_ < 0)
        return 0;
    const std::uint64_t size = fileSize();
    const std::uint64_t torn = size % kMpSize;
    if (torn == 0)
        return 0;
    if (::ftruncate(recordFd_, static_cast<off_t>(size - torn)) != 0) {
        writeError_ = systemError(errno);
        return 0;
    }
    if (writePos_ > size - torn)
        writePos_ = size - torn;
    return torn;
}

bool RecordFile::readRecord(std::uint64_t n, MpRecord &out) const
{
    if (recordFd_ < 0)
        return view_.read(n, out);
    std::uint8_t buf[kMpSize];
    if (ReadFullyAt(recordFd_, buf, kMpSize, MpOffset(n)) != kMpSize)
        return false;
    out = DecodeMp(buf);
    return true;
}

bool RecordFile::readLastRecord(MpRecord &out) const
{
    const std::uint64_t count = recordCount();
    return count > 0 && readRecord(count - 1, out);
}

std::size_t RecordFile::appendRecords(const std::uint8_t *data, std::size_t bytes)
{
    writeError_.clear();
    if (recordFd_ < 0) {
        writeError_ = systemError(EBADF);
        return 0;
    }
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t w = ::pwrite(recordFd_, data + done, bytes - done, static_cast<off_t>(writePos_ + done));
        if (w < 0 && errno == EINTR)
            continue;
        if (w <= 0) {
            writeError_ = systemError(w < 0 ? errno : ENOSPC);
            break;
        }
        done += static_cast<std::size_t>(w);
    }
    const std::size_t whole = done - done % kMpSize;
    if (whole != done) {
        // A record that made it only in part is taken back, so the next one lands at its place.
        if (::ftruncate(recordFd_, static_cast<off_t>(writePos_ + whole)) != 0)
            writeError_ = systemError(errno);
    }
    writePos_ += whole;
    return whole;
}

} // namespace kestrel
