#pragma once
// The recorder's side of live mode: the record store's written-MP counter and
// live buffer, and the receive event, seen through the grid's LiveSource.
// The main window creates one next to its RecordStore and hands it to
// RecordGrid::StartRedraw from RecorderView::startRedrawThread.

#include "capture/receive_event.h"
#include "record/record_store.h"
#include "present/grid/live_source.h"

namespace kestrel::grid {

class StoreLiveSource final : public LiveSource {
public:
    StoreLiveSource(RecordStore &store, ReceiveEvent &event) : store_(store), event_(event) {}

    std::uint32_t WrittenMpCount() const override { return store_.writtenCounter().load(std::memory_order_relaxed); }
    bool WaitReceive(std::chrono::milliseconds timeout) override { return event_.wait(timeout); }
    std::vector<MpRecord> NewestMps() const override { return store_.liveBuffer().snapshot(); }
    // The live buffer keeps as many MPs as the grid shows (plus its neighbours).
    void WantNewest(std::size_t count) override { store_.liveBuffer().setSize(count); }

private:
    RecordStore &store_;
    ReceiveEvent &event_;
};

} // namespace kestrel::grid
