#include "record/record_reader.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrel {

std::size_t ReadFullyAt(int fd, std::uint8_t *buf, std::size_t size, std::uint64_t offset)
{
    std::size_t got = 0;
    while (got < size) {
        const ssize_t r = ::pread(fd, buf + got, size - got, static_cast<off_t>(offset + got));
        if (r < 0 && errno == EINTR)
            continue;
        if (r <= 0)
            break;
        got += static_cast<std::size_t>(r);
    }
    return got;
}

RecordReader::~RecordReader() { close(); }

RecordReader::RecordReader(RecordReader &&other) noexcept
    : fd_(other.fd_), path_(std::move(other.path_))
{
    other.fd_ = -1;
}

RecordReader &RecordReader::operator=(RecordReader &&other) noexcept
{
    if (this != &other) {
        close();
        fd_ = other.fd_;
        path_ = std::move(other.path_);
        other.fd_ = -1;
    }
    return *this;
}

Result RecordReader::open(const std::string &path)
{
    close();
    path_ = path;
    // Not blocking, so that a FIFO named as a recording cannot hang us in open();
    // anything but a regular file is refused below.
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd_ < 0)
        return Result::Fail(kRecordOpenFailed, std::strerror(errno));
    struct stat st {};
    if (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
        const int err = errno;
        const bool dir = S_ISDIR(st.st_mode);
        close();
        if (dir)
            return Result::Fail(kRecordOpenFailed, std::strerror(EISDIR));
        return Result::Fail(kRecordOpenFailed, st.st_mode != 0 ? kNotARegularFile : std::strerror(err));
    }
    ::fcntl(fd_, F_SETFL, ::fcntl(fd_, F_GETFL) & ~O_NONBLOCK);
    return Result::Ok();
}

void RecordReader::close()
{
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
}

std::uint64_t RecordReader::fileSize() const
{
    struct stat st {};
    if (fd_ < 0 || ::fstat(fd_, &st) != 0 || st.st_size < 0)
        return 0;
    return static_cast<std::uint64_t>(st.st_size);
}

std::uint64_t RecordReader::readRaw(std::uint64_t first, std::uint64_t count, std::uint8_t *buf) const
{
    if (fd_ < 0 || count == 0)
        return 0;
    return ReadFullyAt(fd_, buf, count * kMpSize, MpOffset(first)) / kMpSize;
}

bool RecordReader::read(std::uint64_t n, MpRecord &out) const
{
    std::uint8_t buf[kMpSize];
    if (readRaw(n, 1, buf) != 1)
        return false;
    out = DecodeMp(buf);
    return true;
}

std::uint64_t RecordReader::readBlock(std::uint64_t first, std::uint64_t count, std::vector<MpRecord> &out) const
{
    std::vector<std::uint8_t> raw(count * kMpSize);
    const std::uint64_t n = readRaw(first, count, raw.data());
    out.resize(n);
    for (std::uint64_t i = 0; i < n; ++i)
        out[i] = DecodeMp(raw.data() + i * kMpSize);
    return n;
}

} // namespace kestrel
