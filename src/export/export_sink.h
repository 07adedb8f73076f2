#pragma once
// Where an export's bytes go: a file, standard output, or memory (tests).

#include <cstdio>
#include <string>
#include <string_view>

namespace kestrel {

class ExportSink {
public:
    virtual ~ExportSink() = default;
    // False when the bytes could not all be written (errorText() says why).
    [[nodiscard]] virtual bool write(std::string_view bytes) = 0;
    [[nodiscard]] virtual bool finish() { return true; }
    [[nodiscard]] virtual std::string errorText() const { return {}; }
};

class StringSink final : public ExportSink {
public:
    bool write(std::string_view bytes) override
    {
        data += bytes;
        return true;
    }
    std::string data;
};

// A file opened for writing and cut to length 0 (created when missing), or
// standard output for the path "-". `source` names the recording being
// exported: a path that leads to that same file (itself, a link, another
// spelling) is refused before anything is cut, so a slip in the file name
// never destroys a recording.
class FileSink final : public ExportSink {
public:
    FileSink() = default;
    ~FileSink() override;
    FileSink(const FileSink &) = delete;
    FileSink &operator=(const FileSink &) = delete;

    [[nodiscard]] bool open(const std::string &path, const std::string &source = {});
    bool write(std::string_view bytes) override;
    // Flushes and closes; false when the last bytes could not be written (disk full).
    bool finish() override;
    [[nodiscard]] std::string errorText() const override { return error_; }
    // A pipe or FIFO whose reader has closed its end: nothing written would arrive.
    // Asks without writing, so a quiet writer notices it too.
    [[nodiscard]] bool readerClosed() const;

private:
    void fail(const char *what);

    std::FILE *file_ = nullptr;
    bool ownsFile_ = false;
    std::string path_;
    std::string error_;
};

} // namespace kestrel
