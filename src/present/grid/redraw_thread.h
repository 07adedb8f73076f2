#pragma once
// The redraw thread: runs the redraw loop on a thread of its own and carries
// each of its drawing steps over to the grid's (GUI) thread, one at a time,
// waiting for it to finish. A stop request wakes any such wait, so ending the
// thread never deadlocks against a GUI thread that waits for the join.

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
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
    void SetMpsPerRow(int n) { loop_.mpsPerRow = n; }
    [[nodiscard]] const RedrawLoop &loop() const { return loop_; }

    // RedrawTarget (called on the GUI thread).
    void BeginPass(int &rowCount, int &colCount) override;
    void RepaintGauge(int phase) override;
    void FetchCellRect(int col, int row) override;
    void DrawCurrentCell() override;
    void RefreshStatusLine() override;
    void SetProgressText(const std::string &text) override;

private:
    bool RunOnGuiThread(const std::function<void()> &step);

    RecordGrid &grid_;
    RedrawLoop loop_;
    // Shared with steps still queued on the GUI thread after a stop.
    std::shared_ptr<std::atomic<bool>> stop_ = std::make_shared<std::atomic<bool>>(false);
    std::thread thread_;
};

} // namespace kestrel::grid
