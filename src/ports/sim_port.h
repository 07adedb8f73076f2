#pragma once
// The simulated line: a scenario feeds two simulated ports the way a monitor
// cable feeds two real ones. Port A receives D2 and the M lines, port B D1 and
// the S lines. Time comes from a Clock: a ManualClock in tests (nothing moves
// until the test says so), the system clock for demos, paced at the baud rate.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "record/clock.h"
#include "ports/com_port.h"
#include "ports/receive_channel.h"
#include "ports/scenario.h"

class QTimer;

namespace kestrel {

class SimLine;

// The device names of the two simulated ports. They are no devices: an environment
// saved on the simulated line names them, and a real port cannot open them.
inline constexpr const char *kSimDeviceA = "sim:A";
inline constexpr const char *kSimDeviceB = "sim:B";

class SimPort final : public ComPort {
public:
    SimPort(SimLine &line, int index, std::string name);

    void setDevice(const std::string &device) override { name_ = device; }
    [[nodiscard]] std::string device() const override { return name_; }
    void setSettings(const PortSettings &settings) override { settings_ = settings; }
    [[nodiscard]] PortSettings settings() const override { return settings_; }

    [[nodiscard]] Result open() override;
    void close() override;
    [[nodiscard]] bool isOpen() const override { return open_; }

    [[nodiscard]] bool charReady() override { return open_ && channel_.charReady(); }
    [[nodiscard]] std::uint8_t getChar() override { return channel_.getChar(); }
    [[nodiscard]] std::uint8_t modemStatus() override { return open_ ? channel_.readModemStatus() : 0; }
    void flushInput() override { channel_.flush(); }

    int addDataTrigger(const std::vector<std::uint8_t> &pattern) override { return open_ ? channel_.addDataTrigger(pattern) : 0; }
    int addStatusTrigger(int kind) override { return open_ ? channel_.addStatusTrigger(kind) : 0; }
    bool setStatusTrigger(int handle, unsigned mask, bool active) override { return channel_.setStatusTrigger(handle, mask, active); }
    void removeTrigger(int handle) override { channel_.removeTrigger(handle); }
    void setDispatcherPriority(bool, int) override {}

    [[nodiscard]] ReceiveChannel &channel() { return channel_; }
    [[nodiscard]] int openCount() const { return openCount_; }

private:
    SimLine &line_;
    int index_;
    std::string name_;
    PortSettings settings_;
    bool open_ = false;
    int openCount_ = 0;
    ReceiveChannel channel_;
};

class SimLine {
public:
    SimLine(Scenario scenario, Clock &clock);
    ~SimLine();
    SimLine(const SimLine &) = delete;
    SimLine &operator=(const SimLine &) = delete;

    [[nodiscard]] SimPort &portA() { return *ports_[kSimPortA]; }
    [[nodiscard]] SimPort &portB() { return *ports_[kSimPortB]; }
    [[nodiscard]] SimPort &port(int index) { return *ports_[index]; }

    // Time 0 of the scenario is now.
    void restart();
    // Delivers everything due by the clock's current time. Returns the number of events delivered.
    std::size_t poll();
    // Polls from the event loop every intervalMs (real-time demos).
    void start(int intervalMs = 2);
    void stopTimer();
    [[nodiscard]] bool finished() const;
    [[nodiscard]] std::int64_t elapsedNs() const;

    // A port's device missing or held by someone else: open() fails.
    void setUnavailable(int port, bool missing, const std::string &reason = {});
    // Direct injection (tests, demos): happens now.
    void injectBytes(int port, const std::vector<std::uint8_t> &bytes);
    void injectModemState(int port, std::uint8_t state);
    void injectLineError(int port, unsigned errorWord);
    void disconnect(int port);   // port lost
    void reconnect(int port);    // the device is back; open() works again

    [[nodiscard]] std::uint8_t modemState(int port) const { return modem_[port]; }
    [[nodiscard]] std::string unavailableReason(int port) const;
    [[nodiscard]] std::uint64_t droppedBytes() const { return dropped_; }

private:
    friend class SimPort;
    struct Event {
        std::int64_t at = 0; // ns after the start of the pass
        int port = 0;
        ScenarioStep::Kind kind = ScenarioStep::Kind::Bytes;
        std::vector<std::uint8_t> bytes;
        unsigned value = 0;
    };
    void compile();
    std::int64_t charTimeNs() const;
    // false when the event could not be handed over yet (the port's buffer is too full).
    bool apply(const Event &e);

    Scenario scenario_;
    Clock &clock_;
    std::array<std::unique_ptr<SimPort>, 2> ports_;
    std::array<std::uint8_t, 2> modem_{};
    std::array<bool, 2> gone_{};
    std::array<std::string, 2> unavailable_{};

    std::vector<Event> events_;
    std::int64_t passLength_ = 0;
    std::int64_t passBase_ = 0;
    std::size_t next_ = 0;
    int pass_ = 0;
    std::int64_t startCounter_ = 0;
    std::uint64_t dropped_ = 0;
    std::unique_ptr<QTimer> timer_;
};

} // namespace kestrel
