#include "record/record_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
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
    return lockRecordHandle(O_RDWR, kRecordOpenFailed);
}

Result RecordFile::lockRecordHandle(int flags, int failCode)
{
    close(RecordHandle::Record);
    std::string why;
    const int fd = OpenRegularFile(path_, flags, why);
    if (fd < 0)
        return Result::Fail(failCode, why);
    if (beforeLock_)
        beforeLock_();
    // Two recorders appending to one file would overwrite each other's records;
    // readers are not affected (they take no lock). The lock comes before
    // anything that changes the file.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int err = errno;
        ::close(fd);
        return err == EWOULDBLOCK ? Result::Fail(kRecordFileBusy) : Result::Fail(failCode, systemError(err));
    }
    recordFd_ = fd;
    ++recordCount_;
    writePos_ = 0;
    return Result::Ok();
}

Result RecordFile::lockForRecording()
{
    return lockRecordHandle(O_RDWR | O_CREAT, kRecordCreateFailed);
}

Result RecordFile::emptyLocked()
{
    if (recordFd_ < 0)
        return Result::Fail(kRecordCreateFailed, systemError(EBADF));
    if (::ftruncate(recordFd_, 0) != 0)
        return Result::Fail(kRecordCreateFailed, systemError(errno));
    writePos_ = 0;
    return Result::Ok();
}

RecordingCheck RecordFile::checkLocked() const
{
    return recordFd_ >= 0 ? CheckRecordingFd(recordFd_, CheckDepth::Writable) : RecordingCheck{};
}

Result RecordFile::create(RecordHandle kind)
{
    if (kind == RecordHandle::Record) {
        if (Result r = lockForRecording(); !r)
            return r;
        return emptyLocked();
    }
    // The view never changes a file: it only makes a missing one.
    close(kind);
    std::string why;
    const int fd = OpenRegularFile(path_, O_WRONLY | O_CREAT, why);
    if (fd < 0)
        return Result::Fail(kRecordCreateFailed, why);
    ::close(fd);
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

std::optional<std::uint64_t> RecordFile::freeSpace() const
{
    struct statvfs vfs {};
    const int r = recordFd_ >= 0 ? ::fstatvfs(recordFd_, &vfs) : ::statvfs(path_.c_str(), &vfs);
    if (r != 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(vfs.f_bavail) * vfs.f_frsize;
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
