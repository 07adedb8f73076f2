#include "export/export_sink.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/stat.h>

namespace kestrel {

FileSink::~FileSink()
{
    if (file_ && ownsFile_)
        std::fclose(file_);
}

void FileSink::fail(const char *what)
{
    error_ = std::string(what) + " " + (path_ == "-" ? std::string("standard output") : path_) + ": " +
             std::strerror(errno);
}

namespace {
bool sameFile(const std::string &a, const std::string &b)
{
    struct stat sa {}, sb {};
    return ::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}
} // namespace

bool FileSink::open(const std::string &path, const std::string &source)
{
    path_ = path;
    if (path == "-") {
        file_ = stdout;
        ownsFile_ = false;
        return true;
    }
    if (!source.empty() && sameFile(path, source)) {
        error_ = "will not write to " + path + ": it is the recording itself";
        return false;
    }
    file_ = std::fopen(path.c_str(), "wb");
    ownsFile_ = true;
    if (!file_) {
        fail("cannot create");
        return false;
    }
    // A pipe's reader (Wireshark on a live capture) waits for each piece the moment it
    // is handed over, not for a full buffer; the writers hand over large pieces anyway.
    struct stat st {};
    if (::fstat(::fileno(file_), &st) == 0 && S_ISFIFO(st.st_mode))
        std::setvbuf(file_, nullptr, _IONBF, 0);
    return true;
}

bool FileSink::write(std::string_view bytes)
{
    if (!file_)
        return false;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
        fail("cannot write");
        return false;
    }
    return true;
}

bool FileSink::readerClosed() const
{
    if (file_ == nullptr)
        return false;
    // The writing end of a pipe reports POLLERR once no reader is left; a file never does.
    pollfd p{::fileno(file_), 0, 0};
    return ::poll(&p, 1, 0) > 0 && (p.revents & (POLLERR | POLLHUP)) != 0;
}

bool FileSink::finish()
{
    if (!file_)
        return error_.empty();
    bool ok = std::fflush(file_) == 0;
    if (!ok)
        fail("cannot write");
    if (ownsFile_ && std::fclose(file_) != 0 && ok) {
        fail("cannot close");
        ok = false;
    }
    file_ = nullptr;
    return ok;
}

} // namespace kestrel
