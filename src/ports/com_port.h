#pragma once
// A monitored serial port: receive-only, never drives DTR or RTS. Two
// implementations stand behind this interface: real devices through termios,
// and the simulated line that a scenario drives (the test source). Everything
// above the port layer is the same for both.
//
// Notifications reach the listener on the thread that runs the event loop
// (the Qt main thread), in arrival order per port. Data of consecutive reads
// comes as one data-available notification; a line error comes before the
// byte it damaged; a status trigger comes after the line-error or
// modem-status notification of the event that fired it; a data trigger right
// after the data that completes its pattern.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/result.h"
#include "ports/port_settings.h"

namespace kestrel {

class ComPort;

class ComPortListener {
public:
    virtual ~ComPortListener() = default;
    virtual void onDataAvailable(ComPort &port, int count) = 0;       // count bytes are ready to be read
    virtual void onTriggerData(ComPort &port, int handle) = 0;        // a data trigger's pattern completed
    virtual void onTriggerStatus(ComPort &port, int handle) = 0;      // an armed status trigger fired (once)
    virtual void onLineError(ComPort &port, unsigned errorWord) = 0;  // LineError bits
    virtual void onModemStatusChanged(ComPort &port) = 0;
    virtual void onPortLost(ComPort &port, const std::string &reason) = 0; // unplugged, other side closed
};

// Status trigger kinds.
namespace StatusTriggerKind {
inline constexpr int Modem = 1; // mask over the Msr bits
inline constexpr int Line = 2;  // mask over the LineError bits
} // namespace StatusTriggerKind

// Trigger handles run from 1 to this; the bits above are free for a caller's own tags.
inline constexpr int kMaxTriggerHandle = 0x1FFF;

// Receive-buffer thresholds: "full" and resume.
inline constexpr int kBufferFull = 3686;
inline constexpr int kBufferResume = 409;

class ComPort {
public:
    virtual ~ComPort() = default;

    void setListener(ComPortListener *listener) { listener_ = listener; }

    // The device: a path such as /dev/ttyUSB0, or a simulated line's name.
    virtual void setDevice(const std::string &device) = 0;
    [[nodiscard]] virtual std::string device() const = 0;
    virtual void setSettings(const PortSettings &settings) = 0;
    [[nodiscard]] virtual PortSettings settings() const = 0;

    // Fails when the device is missing, busy or refuses the settings: the code is the
    // PortTextId of the failure, the detail the whole reason, ready to show.
    [[nodiscard]] virtual Result open() = 0;
    virtual void close() = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;

    [[nodiscard]] virtual bool charReady() = 0;
    [[nodiscard]] virtual std::uint8_t getChar() = 0; // call only when charReady()
    [[nodiscard]] virtual std::uint8_t modemStatus() = 0; // Msr bits
    virtual void flushInput() = 0;

    // Data trigger: reported once the received bytes contain the pattern, across reads.
    virtual int addDataTrigger(const std::vector<std::uint8_t> &pattern) = 0;
    virtual int addStatusTrigger(int kind) = 0;
    virtual bool setStatusTrigger(int handle, unsigned mask, bool active) = 0;
    virtual void removeTrigger(int handle) = 0;

    // Raise the receive dispatcher (time-critical, with an extra boost of n steps); best effort.
    virtual void setDispatcherPriority(bool timeCritical, int boost) = 0;

protected:
    ComPortListener *listener_ = nullptr;
};

} // namespace kestrel
