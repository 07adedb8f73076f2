#include "present/grid/redraw_loop.h"

#include <algorithm>
#include <string_view>

#include "present/grid/live_source.h"

namespace kestrel::grid {

std::string ProgressText(int count)
{
    const std::string_view all(kProgressTemplate);
    return std::string(all.substr(0, static_cast<std::size_t>(std::clamp(count, 0, kProgressSteps))));
}

void PassRequest::Merge(const PassRequest &later)
{
    gauges |= later.gauges;
    if (later.progress != 0)
        progress = later.progress;
    grid = grid || later.grid;
}

bool PassMailbox::Put(const PassRequest &pass)
{
    std::lock_guard lock(mutex_);
    if (pending_) {
        pending_->Merge(pass);
        ++merged_;
        return false;
    }
    pending_ = pass;
    return true;
}

std::optional<PassRequest> PassMailbox::Take()
{
    std::lock_guard lock(mutex_);
    std::optional<PassRequest> out;
    out.swap(pending_);
    return out;
}

int PassMailbox::merged() const
{
    std::lock_guard lock(mutex_);
    return merged_;
}

RedrawLoop::RedrawLoop(LiveSource &source, RedrawTarget &target, Sleep sleep)
    : source_(source), target_(target), sleep_(std::move(sleep))
{
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
    if (written != lastSeen_) {
        // The pass counts as seen only what it read here: MPs written while
        // it runs make the next poll pass again.
        lastSeen_ = written;
        if (!Pass())
            return false;
    }
    sleep_(kIdleSleep);
    return true;
}

bool RedrawLoop::Pass()
{
    // A burst being recorded right now is let through first, so that the
    // GUI thread does not take it half written.
    source_.WaitReceive(kReceiveWait);

    PassRequest pass;
    // One gauge per pass, in rotation.
    pass.gauges = 1u << gaugePhase_;
    gaugePhase_ = (gaugePhase_ + 1) % kGaugeCount;
    if (hold.load()) {
        progressCount_ = progressCount_ % kProgressSteps + 1;
        pass.progress = progressCount_;
    } else {
        pass.grid = true;
    }
    if (!target_.Post(pass))
        return false;
    ++passes_;
    return true;
}

} // namespace kestrel::grid
