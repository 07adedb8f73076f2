#pragma once
// The redraw worker's logic, free of any toolkit: it watches the written-MP
// counter and, after new MPs, has the GUI thread repaint one gauge and then
// the grid cell by cell; while the display is held it only animates a
// progress text. Every step that touches the window goes through sync, which
// runs the step on the GUI thread and returns false once the worker is asked
// to stop. The worker itself never touches a widget.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace kestrel::grid {

class LiveSource;

// Steps the worker has the GUI thread run (each inside sync).
class RedrawTarget {
public:
    virtual ~RedrawTarget() = default;
    // Takes the newest MPs into the grid's buffer and reports the grid size.
    virtual void BeginPass(int &rowCount, int &colCount) = 0;
    virtual void RepaintGauge(int phase) = 0; // 0 load actual, 1 load peak, 2 quality
    virtual void FetchCellRect(int col, int row) = 0;
    virtual void DrawCurrentCell() = 0;
    virtual void RefreshStatusLine() = 0;
    virtual void SetProgressText(const std::string &text) = 0;
};

inline constexpr std::chrono::milliseconds kIdleSleep{20};
inline constexpr std::chrono::milliseconds kReceiveWait{10};
inline constexpr int kProgressSteps = 30;
// One blank and 35 bars; a held display shows its first 1..30 characters.
inline constexpr const char *kProgressTemplate = " |||||||||||||||||||||||||||||||||||";

class RedrawLoop {
public:
    using Sync = std::function<bool(const std::function<void()> &)>;
    using Sleep = std::function<void(std::chrono::milliseconds)>;

    RedrawLoop(LiveSource &source, RedrawTarget &target, Sync sync, Sleep sleep);

    // The thread body: loops until stop is set.
    void Run(const std::atomic<bool> &stop);
    // One turn of the loop: a redraw pass when the counter moved, else the
    // idle sleep. False when a synchronised step was refused (stopping).
    bool Step();

    std::atomic<bool> hold{false};
    std::atomic<int> mpsPerRow{1};

    [[nodiscard]] std::uint32_t lastSeen() const { return lastSeen_; }
    [[nodiscard]] int gaugePhase() const { return gaugePhase_; }
    [[nodiscard]] int progressCount() const { return progressCount_; }
    [[nodiscard]] int cellsDrawn() const { return cellsDrawn_; }
    [[nodiscard]] int cellsSkipped() const { return cellsSkipped_; }
    // 40 after a small change (at most one grid row of MPs), 35 after a larger one.
    [[nodiscard]] std::uint8_t burstSize() const { return burstSize_; }

private:
    bool Pass();
    bool Wait();

    LiveSource &source_;
    RedrawTarget &target_;
    Sync sync_;
    Sleep sleep_;
    std::uint32_t lastSeen_ = 0;
    int gaugePhase_ = 0;
    int progressCount_ = 0;
    int cellsDrawn_ = 0;
    int cellsSkipped_ = 0;
    std::uint8_t burstSize_ = 0;
    bool repass_ = false;
};

// The text a held display shows after count passes (1..30).
[[nodiscard]] std::string ProgressText(int count);

} // namespace kestrel::grid
