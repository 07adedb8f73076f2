#include "present/grid/redraw_thread.h"

#include <QMetaObject>

#include "present/grid/grid_log.h"
#include "present/grid/record_grid.h"

namespace kestrel::grid {

RedrawThread::RedrawThread(RecordGrid &grid, LiveSource &source)
    : grid_(grid), loop_(source, *this, [](std::chrono::milliseconds ms) { std::this_thread::sleep_for(ms); })
{
}

RedrawThread::~RedrawThread() { Stop(); }

void RedrawThread::Start()
{
    if (thread_.joinable())
        return;
    // A fresh box: hand-offs still queued from an earlier run stay refused.
    shared_ = std::make_shared<Shared>();
    thread_ = std::thread([this, shared = shared_] { loop_.Run(shared->stop); });
    qCDebug(lcGrid) << "redraw thread started";
}

void RedrawThread::Stop()
{
    shared_->stop = true;
    if (!thread_.joinable())
        return;
    thread_.join();
    qCDebug(lcGrid) << "redraw thread stopped after" << loop_.passes() << "passes," << shared_->mailbox.merged()
                    << "of them merged into one the GUI thread had not taken yet";
}

bool RedrawThread::Post(const PassRequest &pass)
{
    if (shared_->stop.load())
        return false;
    if (!shared_->mailbox.Put(pass))
        return true; // merged into the hand-off already queued
    // The grid is the context: if it goes away the call is dropped unrun.
    QMetaObject::invokeMethod(
        &grid_,
        [shared = shared_, grid = &grid_] {
            // Stop() runs on this thread too: once it has set the flag no
            // queued pass runs.
            if (shared->stop.load())
                return;
            if (const std::optional<PassRequest> p = shared->mailbox.Take())
                grid->LiveShow(*p);
        },
        Qt::QueuedConnection);
    return true;
}

} // namespace kestrel::grid
