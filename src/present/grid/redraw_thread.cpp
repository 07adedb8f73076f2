#include "present/grid/redraw_thread.h"

#include <QMetaObject>
#include <QThread>

#include "present/grid/record_grid.h"

namespace kestrel::grid {

namespace {

// Completion of one step handed to the GUI thread; shared with the posted
// call so that a step finishing after a stop request touches nothing freed.
struct StepDone {
    std::mutex mutex;
    std::condition_variable cv;
    bool done = false;
};

constexpr std::chrono::milliseconds kStopPoll{5};

} // namespace

RedrawThread::RedrawThread(RecordGrid &grid, LiveSource &source)
    : grid_(grid),
      loop_(source, *this, [this](const std::function<void()> &step) { return RunOnGuiThread(step); },
            [](std::chrono::milliseconds ms) { std::this_thread::sleep_for(ms); })
{
}

RedrawThread::~RedrawThread() { Stop(); }

void RedrawThread::Start()
{
    if (thread_.joinable())
        return;
    // A fresh flag: steps still queued from an earlier run stay refused.
    stop_ = std::make_shared<std::atomic<bool>>(false);
    thread_ = std::thread([this, flag = stop_] { loop_.Run(*flag); });
}

void RedrawThread::Stop()
{
    *stop_ = true;
    if (thread_.joinable())
        thread_.join();
}

bool RedrawThread::RunOnGuiThread(const std::function<void()> &step)
{
    if (stop_->load())
        return false;
    auto done = std::make_shared<StepDone>();
    auto stop = stop_;
    // The grid is the context: if it goes away the call is dropped unrun.
    QMetaObject::invokeMethod(
        &grid_,
        [done, step, stop] {
            // Stop() runs on this thread too: once it has set the flag no
            // queued step runs, and the worker's captures are not touched.
            if (!stop->load())
                step();
            std::lock_guard lock(done->mutex);
            done->done = true;
            done->cv.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock lock(done->mutex);
    while (!done->done) {
        if (stop_->load())
            return false;
        done->cv.wait_for(lock, kStopPoll);
    }
    return !stop_->load();
}

void RedrawThread::BeginPass(int &rowCount, int &colCount) { grid_.LivePassBegin(rowCount, colCount); }
void RedrawThread::RepaintGauge(int phase) { grid_.LiveGauge(phase); }
void RedrawThread::FetchCellRect(int col, int row) { grid_.LiveFetchCellRect(col, row); }
void RedrawThread::DrawCurrentCell() { grid_.LiveDrawCurrentCell(); }
void RedrawThread::RefreshStatusLine() { grid_.RefreshStatusLine(); }
void RedrawThread::SetProgressText(const std::string &text)
{
    emit grid_.progressTextChanged(QString::fromStdString(text));
}

} // namespace kestrel::grid
