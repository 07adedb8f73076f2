#pragma once
// The redraw thread: runs the redraw loop on a thread of its own and carries
// its passes over to the grid's (GUI) thread, one queued call per pass at
// most, never waiting for it. Ending the thread only waits for the loop's
// current poll (at most one receive wait and one poll interval).

#include <atomic>
#include <memory>
#include <thread>

#include "present/grid/redraw_loop.h"

namespace kestrel::grid {

class LiveSource;
class RecordGrid;

class RedrawThread final : public RedrawTarget {
public:
    RedrawThread(RecordGrid &grid, LiveSource &source);
    ~RedrawThread() override; // stops and joins

    void Start();
    // Asks the loop to end and joins it. Safe to call twice.
    void Stop();
    [[nodiscard]] bool running() const { return thread_.joinable(); }

    void SetHold(bool on) { loop_.hold = on; }

    // RedrawTarget (called on the worker).
    bool Post(const PassRequest &pass) override;

private:
    // Shared with hand-offs still queued on the GUI thread after a stop.
    struct Shared {
        std::atomic<bool> stop{false};
        PassMailbox mailbox;
    };

    RecordGrid &grid_;
    RedrawLoop loop_;
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    std::thread thread_;
};

} // namespace kestrel::grid
