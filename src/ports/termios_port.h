#pragma once
// A real serial device through termios: raw, receive-only (DTR and RTS are
// lowered right after the open raised them, and HUPCL is cleared so that
// closing leaves them alone),
// per-byte errors through PARMRK, modem changes through a thread blocked in
// TIOCMIWAIT (or polling TIOCMGET where the driver cannot wait), held
// exclusively (TIOCEXCL and flock) while open.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "ports/com_port.h"
#include "ports/parmrk_decoder.h"
#include "ports/receive_channel.h"

namespace kestrel {

class TermiosPort final : public ComPort {
public:
    explicit TermiosPort(std::string device = {});
    ~TermiosPort() override;
    TermiosPort(const TermiosPort &) = delete;
    TermiosPort &operator=(const TermiosPort &) = delete;

    void setDevice(const std::string &device) override { device_ = device; }
    [[nodiscard]] std::string device() const override { return device_; }
    // Applied at once when open (the modem thread is stopped around it).
    void setSettings(const PortSettings &settings) override;
    [[nodiscard]] PortSettings settings() const override { return settings_; }

    [[nodiscard]] Result open() override;
    void close() override;
    [[nodiscard]] bool isOpen() const override { return fd_ >= 0; }

    [[nodiscard]] bool charReady() override { return fd_ >= 0 && channel_.charReady(); }
    [[nodiscard]] std::uint8_t getChar() override { return channel_.getChar(); }
    [[nodiscard]] std::uint8_t modemStatus() override { return fd_ >= 0 ? channel_.readModemStatus() : 0; }
    void flushInput() override;

    // Triggers belong to an open session (0 when closed).
    int addDataTrigger(const std::vector<std::uint8_t> &pattern) override { return fd_ >= 0 ? channel_.addDataTrigger(pattern) : 0; }
    int addStatusTrigger(int kind) override { return fd_ >= 0 ? channel_.addStatusTrigger(kind) : 0; }
    bool setStatusTrigger(int handle, unsigned mask, bool active) override { return channel_.setStatusTrigger(handle, mask, active); }
    void removeTrigger(int handle) override { channel_.removeTrigger(handle); }
    void setDispatcherPriority(bool timeCritical, int boost) override;

    // The modem thread waits in TIOCMIWAIT (true) or polls TIOCMGET (false); for tests and diagnostics.
    [[nodiscard]] bool modemWaitsForInterrupts() const { return modemWaits_; }
    [[nodiscard]] bool hasLineCounters() const { return counters_.valid; }
    [[nodiscard]] ReceiveChannel &channel() { return channel_; }

private:
    Result applySettings();
    Result openDevice();
    void readerLoop();
    void lose(const std::string &reason); // from the reader thread
    void modemLoop();
    void process(const std::uint8_t *data, std::size_t size);
    void startModemThread();
    void stopModemThread();
    void applyPriority();

    std::string device_;
    PortSettings settings_;
    int fd_ = -1;
    int wakeFd_ = -1;

    ReceiveChannel channel_;
    ParmrkDecoder decoder_;
    LineCounters counters_;
    std::uint32_t lastOverruns_ = 0;
    std::uint32_t lastParity_ = 0, lastFrame_ = 0, lastBrk_ = 0, lastRing_ = 0;

    std::thread reader_;
    std::thread modem_;
    std::atomic<bool> stopModem_{false};
    std::atomic<bool> modemDone_{true};
    std::atomic<bool> modemWaits_{false};
    std::mutex modemMutex_;
    std::condition_variable modemCv_;

    std::atomic<bool> parityOn_{false}; // read by the reader thread, changed by setSettings
    bool timeCritical_ = false;
    int boost_ = 0;
};

namespace detail {
// termios2 with BOTHER: any baud rate the driver can make. false when the driver refuses.
bool SetBaudTermios2(int fd, long baud);
long GetBaudTermios2(int fd);
} // namespace detail

} // namespace kestrel
