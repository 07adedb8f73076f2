#pragma once
// The MP writer: turns the pending event into the next MP, numbers and
// time-stamps it, keeps the running counters, line load and quality, appends
// the record to the record file and copies it into the live buffer.
//
// All writes run on the main thread. Inside a receive burst the records are
// collected and written with one system call when the burst ends (the data
// handler ends every burst before it returns, so every MP is in the file by
// then); outside a burst each MP is written at once. Whatever the path, a
// record that did not reach the file is not counted: numbering and counters
// go on from the last record that did.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "record/clock.h"
#include "record/last_events.h"
#include "record/com_event.h"
#include "record/line_timing.h"
#include "record/live_buffer.h"
#include "record/mp_record.h"

namespace kestrel {

// Where the records go: the record file, or a test double.
class MpSink {
public:
    virtual ~MpSink() = default;
    // Appends whole records and returns the bytes that reached the file. After a
    // short write the sink ends on a whole record again, so the next append lands
    // at (records in the file) * 80.
    [[nodiscard]] virtual std::size_t appendRecords(const std::uint8_t *data, std::size_t bytes) = 0;
};

// Writer results.
namespace WriteResult {
inline constexpr int Ok = 0;
inline constexpr int WriteFailed = 2;
} // namespace WriteResult

// Channels of the last-change table (read by trigger evaluation).
enum class Channel : int { D1, D2, S1, M1, S2, M2, M5, M3, PeD1, FeD1, LeD1, PeD2, FeD2, LeD2 };
inline constexpr int kChannelCount = 14;
struct ChannelChange {
    std::uint8_t value = 0; // byte for D1/D2, level or flag otherwise
    std::uint8_t valid = 0; // D1/D2 only
    double time = 0.0;      // date-time of the last change
};
using LastChangeTable = std::array<ChannelChange, kChannelCount>;

class RecordStore {
public:
    explicit RecordStore(Clock &clock);
    RecordStore(const RecordStore &) = delete;
    RecordStore &operator=(const RecordStore &) = delete;

    void setSink(MpSink *sink) { sink_ = sink; }
    // Told of every line event MP that is recorded (trigger evaluation's inactivity clock).
    void setEventWatch(LastEvents *events) { events_ = events; }

    // The pending event that capture fills.
    [[nodiscard]] ComEvent &pending() { return pending_; }
    void ResetComEvent();

    // The core writer; 0 or 2 (the record did not reach the file).
    int WriteMp(const ComEvent &content, std::uint16_t burst, bool reset);
    // An MP from the pending event; burst is the index within the receive burst.
    int RecordComEvent(std::uint16_t burst);
    // Trigger mark t + 1 with kind a and extra b, carrying the pending data and levels.
    int WriteTriggerMark(std::uint8_t t, std::uint8_t a, std::uint8_t b);
    // System mark (kind 99, all data, signal and error fields 0).
    int WriteSystemMark(std::uint8_t code, bool reset = false);

    // New or replaced file: counters, load bytes and the last-change table from scratch.
    void ResetCounters();
    // Appending: take over MP 0 and the last MP of the file (nullptr = short read).
    void RestoreFromFirstMp(const MpRecord *first);
    void RestoreFromLastMp(const MpRecord *last);
    // After the start marks: T0 := time of the last MP, counter base := now.
    void RebaseCounter();
    // Every channel's baseline: current pending levels, no data or errors, time now.
    void ResetLastChange();
    void ClearLiveBuffer() { live_.clear(); }

    void SetLineTiming(const LineTiming &timing) { timing_ = timing; }
    [[nodiscard]] std::int64_t frequency() const { return frequency_; }
    [[nodiscard]] LineTiming lineTiming() const { return timing_; }

    // Receive bursts: records are collected until endBurst() writes them.
    void beginBurst() { batching_ = true; }
    int endBurst();
    // Writes what is collected (also used before closing the file); 0 or 2.
    int flush();

    [[nodiscard]] const MpRecord &previous() const { return previous_; }
    [[nodiscard]] const LastChangeTable &lastChange() const { return lastChange_; }
    [[nodiscard]] LiveBuffer &liveBuffer() { return live_; }
    [[nodiscard]] const LiveBuffer &liveBuffer() const { return live_; }
    // MPs in the file since the recorder was loaded; the redraw thread polls it.
    [[nodiscard]] std::atomic<std::uint32_t> &writtenCounter() { return written_; }
    // MPs that did not reach the file (short writes) since construction.
    [[nodiscard]] std::uint64_t lostCount() const { return lost_; }
    [[nodiscard]] bool dataWritten() const { return dataWritten_; }
    void clearDataWritten() { dataWritten_ = false; }
    [[nodiscard]] double t0() const { return t0_; }
    [[nodiscard]] double recordingStart() const { return recordingStart_; }

private:
    void updateLastChange(const MpRecord &mp);
    [[nodiscard]] std::uint8_t loadActual(const MpRecord &mp) const;
    [[nodiscard]] std::uint8_t quality() const;
    void rollbackTo(std::size_t recordsWritten);

    Clock &clock_;
    MpSink *sink_ = nullptr;
    LastEvents *events_ = nullptr;
    ComEvent pending_;

    MpRecord previous_;          // last MP written (its number is the base of the next)
    std::uint64_t counts_[5] = {}; // D1, D2, PE, FE, LE
    double t0_ = 0.0;
    double recordingStart_ = 0.0;
    std::int64_t cbase_ = 0;
    std::int64_t clast_ = 0;
    std::int64_t frequency_;
    LineTiming timing_;
    LastChangeTable lastChange_{};

    // Records written since the last flush, encoded and as records (for the live buffer).
    bool batching_ = false;
    std::vector<std::uint8_t> batchBytes_;
    std::vector<MpRecord> batchRecords_;
    MpRecord beforeBatch_;            // state to return to when nothing reaches the file
    std::uint64_t beforeCounts_[5] = {};

    LiveBuffer live_;
    std::atomic<std::uint32_t> written_{0};
    std::uint64_t lost_ = 0;
    bool dataWritten_ = false;
};

} // namespace kestrel
