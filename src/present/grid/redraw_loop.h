#pragma once
// The redraw worker's logic, free of any toolkit: it polls the written-MP
// counter every 20 ms and, after new MPs, hands one pass over to the GUI
// thread: take the newest MPs, repaint the grid rows that changed, one line
// gauge in rotation and the status line; while the display is held only the
// gauge and a progress text. The hand-off is posted, not waited for, and
// passes the GUI thread has not taken yet merge into one (PassMailbox), so a
// busy GUI thread never builds up a backlog. The worker never touches a widget.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace kestrel::grid {

class LiveSource;

// What one pass asks of the GUI thread. The grid takes the newest MPs there
// are when the pass runs there, so it never shows fewer than the pass saw.
struct PassRequest {
    unsigned gauges = 0;  // bit g: repaint gauge g (0 load actual, 1 load peak, 2 quality)
    int progress = 0;     // held display: bars of the progress text (1..30); 0 none
    bool grid = false;    // take the newest MPs and repaint the rows that changed

    // A later pass folded into this one, still waiting for the GUI thread.
    void Merge(const PassRequest &later);
    friend bool operator==(const PassRequest &, const PassRequest &) = default;
};

// Where the worker leaves passes for the GUI thread. Put tells whether a
// hand-off has to be queued (the box was empty); passes put while one is
// queued merge into it. Take empties the box on the GUI thread.
class PassMailbox {
public:
    [[nodiscard]] bool Put(const PassRequest &pass);
    [[nodiscard]] std::optional<PassRequest> Take();
    // Passes merged into one already waiting (the GUI thread was behind).
    [[nodiscard]] int merged() const;

private:
    mutable std::mutex mutex_;
    std::optional<PassRequest> pending_;
    int merged_ = 0;
};

// The worker's way to the GUI thread.
class RedrawTarget {
public:
    virtual ~RedrawTarget() = default;
    // Hands the pass over without waiting for it to run. False once the
    // worker is asked to stop.
    virtual bool Post(const PassRequest &pass) = 0;
};

inline constexpr std::chrono::milliseconds kIdleSleep{20};
inline constexpr std::chrono::milliseconds kReceiveWait{10};
inline constexpr int kProgressSteps = 30;
inline constexpr int kGaugeCount = 3;
// One blank and 35 bars; a held display shows its first 1..30 characters.
inline constexpr const char *kProgressTemplate = " |||||||||||||||||||||||||||||||||||";

class RedrawLoop {
public:
    using Sleep = std::function<void(std::chrono::milliseconds)>;

    RedrawLoop(LiveSource &source, RedrawTarget &target, Sleep sleep);

    // The thread body: loops until stop is set or a hand-off is refused.
    void Run(const std::atomic<bool> &stop);
    // One poll of the counter: a pass when it moved, then the poll interval.
    // False when the hand-off was refused (stopping).
    bool Step();

    std::atomic<bool> hold{false};

    [[nodiscard]] std::uint32_t lastSeen() const { return lastSeen_; }
    [[nodiscard]] int gaugePhase() const { return gaugePhase_; }
    [[nodiscard]] int progressCount() const { return progressCount_; }
    [[nodiscard]] long passes() const { return passes_; }

private:
    bool Pass();

    LiveSource &source_;
    RedrawTarget &target_;
    Sleep sleep_;
    std::uint32_t lastSeen_ = 0;
    int gaugePhase_ = 0;
    int progressCount_ = 0;
    long passes_ = 0;
};

// The text a held display shows after count passes (1..30).
[[nodiscard]] std::string ProgressText(int count);

} // namespace kestrel::grid
