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

int OpenRegularFile(const std::string &path, int flags, std::string &why, std::uint64_t *size)
{
    const int fd = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0644);
    if (fd < 0) {
        why = std::strerror(errno);
        return -1;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        const int err = errno;
        ::close(fd);
        why = S_ISDIR(st.st_mode) ? std::strerror(EISDIR) : st.st_mode != 0 ? kNotARegularFile : std::strerror(err);
        return -1;
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    if (size != nullptr)
        *size = static_cast<std::uint64_t>(st.st_size);
    return fd;
}

Result RecordReader::open(const std::string &path)
{
    close();
    path_ = path;
    std::string why;
    fd_ = OpenRegularFile(path, O_RDONLY, why);
    return fd_ < 0 ? Result::Fail(kRecordOpenFailed, why) : Result::Ok();
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
