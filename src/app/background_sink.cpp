#include "app/background_sink.h"

#include <chrono>
#include <utility>

namespace kestrel {

namespace {
constexpr auto kPumpEvery = std::chrono::milliseconds(5);
} // namespace

BackgroundSink::BackgroundSink(Pump pump, std::size_t maxQueued) : pump_(std::move(pump)), maxQueued_(maxQueued) {}

BackgroundSink::~BackgroundSink()
{
    if (!writer_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        finishAsked_ = true;
    }
    changed_.notify_all();
    writer_.join();
}

void BackgroundSink::waitUntil(std::unique_lock<std::mutex> &lock, const std::function<bool()> &done)
{
    while (!changed_.wait_for(lock, kPumpEvery, done)) {
        lock.unlock();
        if (pump_)
            pump_();
        lock.lock();
    }
}

bool BackgroundSink::open(const std::string &path, const std::string &source)
{
    if (writer_.joinable())
        return false;
    writer_ = std::thread([this, path, source] { run(path, source); });
    std::unique_lock lock(mutex_);
    waitUntil(lock, [this] { return opened_; });
    return !failed_;
}

void BackgroundSink::run(const std::string &path, const std::string &source)
{
    const bool ok = file_.open(path, source);
    std::unique_lock lock(mutex_);
    opened_ = true;
    if (!ok) {
        failed_ = true;
        error_ = file_.errorText();
        finished_ = true;
        changed_.notify_all();
        return;
    }
    changed_.notify_all();
    for (;;) {
        changed_.wait(lock, [this] { return !queue_.empty() || finishAsked_; });
        if (!queue_.empty()) {
            std::string chunk = std::move(queue_.front());
            queue_.pop_front();
            const bool skip = failed_; // after a failure the rest is dropped; the file gets closed
            lock.unlock();
            const bool written = skip || file_.write(chunk);
            lock.lock();
            queued_ -= chunk.size();
            if (!written && !failed_) {
                failed_ = true;
                error_ = file_.errorText();
            }
            changed_.notify_all();
            continue;
        }
        lock.unlock();
        const bool closed = file_.finish();
        lock.lock();
        if (!closed && !failed_) {
            failed_ = true;
            error_ = file_.errorText();
        }
        finishOk_ = !failed_;
        finished_ = true;
        changed_.notify_all();
        return;
    }
}

bool BackgroundSink::write(std::string_view bytes)
{
    std::unique_lock lock(mutex_);
    if (!writer_.joinable() || finishAsked_)
        return false;
    waitUntil(lock, [this] { return failed_ || queued_ < maxQueued_; });
    if (failed_)
        return false;
    queue_.emplace_back(bytes);
    queued_ += bytes.size();
    changed_.notify_all();
    return true;
}

bool BackgroundSink::finish()
{
    if (!writer_.joinable())
        return false;
    {
        std::unique_lock lock(mutex_);
        finishAsked_ = true;
        changed_.notify_all();
        waitUntil(lock, [this] { return finished_; });
    }
    writer_.join();
    return finishOk_;
}

std::string BackgroundSink::errorText() const
{
    const std::lock_guard lock(mutex_);
    return error_;
}

} // namespace kestrel
