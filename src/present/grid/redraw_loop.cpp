#include "present/grid/redraw_loop.h"

#include <string_view>

#include "present/grid/live_source.h"

namespace kestrel::grid {

RedrawLoop::RedrawLoop(LiveSource &source, RedrawTarget &target, Sync sync, Sleep sleep)
    : source_(source), target_(target), sync_(std::move(sync)), sleep_(std::move(sleep))
{
}

std::string ProgressText(int count)
{
    const std::string_view all(kProgressTemplate);
    return std::string(all.substr(0, static_cast<std::size_t>(count)));
}

void RedrawLoop::Run(const std::atomic<bool> &stop)
{
    while (!stop.load()) {
        if (!Step())
            break;
    }
}

bool RedrawLoop::Step()
{
    const std::uint32_t written = source_.WrittenMpCount();
    const std::uint32_t d = written - lastSeen_;
    if (d == 0 && !repass_) {
        sleep_(kIdleSleep);
        return true;
    }
    burstSize_ = d <= static_cast<std::uint32_t>(mpsPerRow.load()) ? 40 : 35;
    // The pass counts as seen only what it read at its start (and at its
    // cell checks); MPs written while it ran, even during its very last
    // wait, get the next pass instead of being counted as shown.
    lastSeen_ = written;
    return Pass();
}

bool RedrawLoop::Wait()
{
    source_.WaitReceive(kReceiveWait);
    return true;
}

bool RedrawLoop::Pass()
{
    Wait();

    // One gauge per pass, in rotation.
    Wait();
    const int phase = gaugePhase_;
    if (!sync_([&] { target_.RepaintGauge(phase); }))
        return false;
    gaugePhase_ = (gaugePhase_ + 1) % 3;

    if (hold.load()) {
        Wait();
        progressCount_ = progressCount_ % kProgressSteps + 1;
        const std::string text = ProgressText(progressCount_);
        return sync_([&] {
            target_.SetProgressText(text);
            target_.RefreshStatusLine();
        });
    }

    // The grid takes its data at the counter read here; a cell is drawn only
    // while no newer MP has arrived, so nothing is drawn from stale data.
    repass_ = false;
    int rows = 0, cols = 0;
    const std::uint32_t seen = source_.WrittenMpCount();
    if (!sync_([&] { target_.BeginPass(rows, cols); }))
        return false;
    lastSeen_ = seen;
    for (int row = 1; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            Wait();
            if (!sync_([&] { target_.FetchCellRect(col, row); }))
                return false;
            Wait();
            if (source_.WrittenMpCount() == lastSeen_) {
                if (!sync_([&] {
                        target_.DrawCurrentCell();
                        target_.RefreshStatusLine();
                    }))
                    return false;
                ++cellsDrawn_;
            } else {
                lastSeen_ = source_.WrittenMpCount();
                ++cellsSkipped_;
                // Cells left undrawn get a pass of their own even if no
                // further MP arrives; in Qt they would otherwise stay stale.
                repass_ = true;
            }
        }
    }
    Wait();
    return true;
}

} // namespace kestrel::grid
