#pragma once
// A FileSink driven from a thread of its own, for the export window: opening
// (which cuts an existing file to length 0), writing and closing can each
// stall for a long time on a busy disk (writeback throttling; ext4 flushes a
// file that was cut to 0 when it is closed, hundreds of milliseconds for a
// large export). Here those calls run on the writer thread while the calling
// thread waits, running `pump` (the window's event loop) every few
// milliseconds, so the window answers throughout. Up to `maxQueued` bytes wait
// in memory for the writer; a failure shows at the next write or at finish,
// with the FileSink's own error text.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "export/export_sink.h"

namespace kestrel {

class BackgroundSink final : public ExportSink {
public:
    using Pump = std::function<void()>;

    explicit BackgroundSink(Pump pump, std::size_t maxQueued = std::size_t{16} << 20);
    ~BackgroundSink() override; // finishes and joins the writer if finish() was not called
    BackgroundSink(const BackgroundSink &) = delete;
    BackgroundSink &operator=(const BackgroundSink &) = delete;

    // As FileSink::open, on the writer thread; false with errorText() set.
    [[nodiscard]] bool open(const std::string &path, const std::string &source = {});
    bool write(std::string_view bytes) override;
    bool finish() override;
    [[nodiscard]] std::string errorText() const override;

private:
    void run(const std::string &path, const std::string &source);
    void waitUntil(std::unique_lock<std::mutex> &lock, const std::function<bool()> &done);

    Pump pump_;
    std::size_t maxQueued_;
    FileSink file_; // the writer thread's only

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> queue_;
    std::size_t queued_ = 0;
    bool opened_ = false;    // open has been tried
    bool failed_ = false;    // open or a write failed
    bool finishAsked_ = false;
    bool finished_ = false;  // the file is closed (or was never opened)
    bool finishOk_ = false;
    std::string error_;
    std::thread writer_;
};

} // namespace kestrel
