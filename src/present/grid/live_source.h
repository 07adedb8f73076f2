#pragma once
// What the grid and its redraw thread need from the recorder while a
// recording runs: the written-MP counter, a timed wait on the receive event,
// and the newest MPs in order. The main window plugs its record store in,
// e.g. through FunctionLiveSource with three lambdas.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "record/mp_record.h"

namespace kestrel::grid {

class LiveSource {
public:
    virtual ~LiveSource() = default;
    // Incremented after each MP written; 0 once the recorder is unloaded.
    // Read from the redraw thread without a lock.
    [[nodiscard]] virtual std::uint32_t WrittenMpCount() const = 0;
    // Waits until no receive burst is in progress, at most timeout.
    virtual bool WaitReceive(std::chrono::milliseconds timeout) = 0;
    // The newest MPs, oldest first (any count; the grid takes what it needs).
    [[nodiscard]] virtual std::vector<MpRecord> NewestMps() const = 0;
    // How many newest MPs the grid would like to be kept (its page + 1).
    virtual void WantNewest(std::size_t /*count*/) {}
};

class FunctionLiveSource final : public LiveSource {
public:
    using CountFn = std::function<std::uint32_t()>;
    using WaitFn = std::function<bool(std::chrono::milliseconds)>;
    using NewestFn = std::function<std::vector<MpRecord>()>;
    using WantFn = std::function<void(std::size_t)>;

    FunctionLiveSource(CountFn count, WaitFn wait, NewestFn newest, WantFn want = {})
        : count_(std::move(count)), wait_(std::move(wait)), newest_(std::move(newest)), want_(std::move(want)) {}

    std::uint32_t WrittenMpCount() const override { return count_ ? count_() : 0; }
    bool WaitReceive(std::chrono::milliseconds t) override { return wait_ ? wait_(t) : true; }
    std::vector<MpRecord> NewestMps() const override { return newest_ ? newest_() : std::vector<MpRecord>{}; }
    void WantNewest(std::size_t n) override
    {
        if (want_)
            want_(n);
    }

private:
    CountFn count_;
    WaitFn wait_;
    NewestFn newest_;
    WantFn want_;
};

} // namespace kestrel::grid
