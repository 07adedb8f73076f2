#pragma once
// The receive side that both port backends share: the bounded receive buffer
// between the producer (a reader thread or the simulated line) and getChar on
// the event-loop thread, the data and status triggers, the modem status word,
// and the queue that hands notifications to the event-loop thread in arrival
// order. Producer calls are thread-safe; consumer calls belong to the
// event-loop thread.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ports/pattern_set.h"

class QObject;

namespace kestrel {

class ComPort;
class ComPortListener;

// Capacity of the receive buffer; the reader stops at kBufferFull and goes on at kBufferResume.
inline constexpr int kReceiveBufferSize = 4096;

struct PortNote {
    enum class Kind { Data, LineError, ModemStatus, TriggerData, TriggerStatus, Lost };
    Kind kind = Kind::Data;
    int value = 0; // byte count, error word, trigger handle
    std::string text;
};

class ReceiveChannel {
public:
    using Deliver = std::function<void(const PortNote &)>;

    // Create on the event-loop thread: notifications are delivered on the thread that made it.
    explicit ReceiveChannel(Deliver deliver);
    ~ReceiveChannel();
    ReceiveChannel(const ReceiveChannel &) = delete;
    ReceiveChannel &operator=(const ReceiveChannel &) = delete;

    // --- producer side (any thread) ---
    // Appends what fits; returns the number of bytes taken (the rest would overrun).
    std::size_t pushBytes(const std::uint8_t *data, std::size_t size);
    void pushLineError(unsigned errorWord);
    // New state bits of the modem status word (CTS, DSR, RI, DCD); ignored when unchanged.
    void pushModemState(std::uint8_t state);
    // The device went away; reported once per session.
    void pushLost(const std::string &reason);
    [[nodiscard]] std::size_t buffered() const;
    [[nodiscard]] std::size_t freeSpace() const;
    // Blocks while the buffer is above the resume level after reaching "full"; false when stop() was called.
    bool waitForRoom();
    void stop();

    // --- consumer side (event-loop thread) ---
    [[nodiscard]] bool charReady() const;
    [[nodiscard]] std::uint8_t getChar();
    void flush();
    // State bits plus the delta bits collected since the previous read (which clears them).
    [[nodiscard]] std::uint8_t readModemStatus();
    [[nodiscard]] std::uint8_t modemState() const;

    int addDataTrigger(const std::vector<std::uint8_t> &pattern);
    int addStatusTrigger(int kind);
    bool setStatusTrigger(int handle, unsigned mask, bool active);
    void removeTrigger(int handle);
    [[nodiscard]] bool hasTrigger(int handle) const;

    // A new session (open): empties the buffer, forgets triggers, notes and the lost flag.
    void reset(std::uint8_t initialModemState = 0);

    // Delivers queued notes now (the queued call does the same from the event loop).
    void deliverPending();

private:
    struct StatusTrigger {
        int kind = 0;
        unsigned mask = 0;
        bool active = false;
    };
    void queueLocked(PortNote note); // mutex_ held
    void fireStatusLocked(int kind, unsigned bits);

    Deliver deliver_;
    std::unique_ptr<QObject> context_;

    mutable std::mutex mutex_;
    std::condition_variable roomCv_;
    std::vector<std::uint8_t> ring_;
    std::size_t head_ = 0, count_ = 0;
    bool throttled_ = false; // reached "full", waiting for the resume level
    bool stopped_ = false;
    bool lost_ = false;

    std::deque<PortNote> notes_;
    bool drainPosted_ = false;

    std::uint8_t modemState_ = 0;
    std::uint8_t modemDeltas_ = 0;

    PatternSet dataTriggers_;
    std::vector<int> completed_; // scratch of pushBytes
    std::map<int, StatusTrigger> statusTriggers_;
};

// Hands one note to the listener's matching notification.
void DeliverNote(ComPortListener *listener, ComPort &port, const PortNote &note);

} // namespace kestrel
