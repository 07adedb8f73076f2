#include "record/record_paths.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrel {
namespace {

constexpr std::size_t kCopyBuffer = 1'048'576;

class Fd {
public:
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;
    [[nodiscard]] int get() const { return fd_; }
    int release()
    {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_;
};

std::string failure(const std::string &path) { return std::string(std::strerror(errno)) + "\n\n" + path; }

} // namespace

std::string DefaultRecordFolder(const std::string &dataDir)
{
    return (std::filesystem::path(dataDir) / "recordings").string();
}

ResolvedRecordPath ResolveRecordPath(const std::string &path, const std::string &dataDir)
{
    std::filesystem::path p(path.empty() ? std::string(kDefaultRecordName) + kRecordExtension : path);
    if (p.has_parent_path())
        return {p.string(), false};
    return {(std::filesystem::path(DefaultRecordFolder(dataDir)) / p).string(), true};
}

std::string RecordSizeLabel(const std::string &path, std::uint64_t fileSize)
{
    return path + "   [  " + std::to_string(fileSize >> 10) + " KB ]";
}

CopyResult SaveRecordFileAs(const std::string &source, const std::string &target)
{
    CopyResult r;
    Fd in(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    if (in.get() < 0) {
        r.error = failure(source);
        return r;
    }
    struct stat src {}, dst {};
    ::fstat(in.get(), &src);
    if (::stat(target.c_str(), &dst) == 0 && dst.st_dev == src.st_dev && dst.st_ino == src.st_ino) {
        errno = EINVAL;
        r.error = failure(target);
        return r;
    }
    Fd out(::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (out.get() < 0) {
        r.error = failure(target);
        return r;
    }
    auto buffer = std::make_unique<std::uint8_t[]>(kCopyBuffer);
    for (;;) {
        const ssize_t got = ::read(in.get(), buffer.get(), kCopyBuffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            r.error = failure(source);
            return r;
        }
        if (got == 0)
            break;
        ssize_t done = 0;
        while (done < got) {
            const ssize_t w = ::write(out.get(), buffer.get() + done, static_cast<std::size_t>(got - done));
            if (w < 0 && errno == EINTR)
                continue;
            if (w <= 0) {
                if (w == 0)
                    errno = ENOSPC;
                r.error = failure(target);
                return r;
            }
            done += w;
        }
        r.bytes += static_cast<std::uint64_t>(got);
    }
    if (::close(out.release()) != 0) {
        r.error = failure(target);
        return r;
    }
    r.ok = r.bytes > 0;
    if (!r.ok) {
        errno = ENODATA;
        r.error = failure(source);
    }
    return r;
}

} // namespace kestrel
