#pragma once
// Capture: configures the two monitored ports, opens and closes them around a
// recording, and turns every port notification into the pending event and a
// call of the MP writer. Port A carries D2 and M1/M2/M5/M3, port B D1 and
// S1/S2. The ports are ComPort references, so real and simulated lines run
// the same code.
//
// Every line event is written once, by its own handler: a byte by the data
// handler, an error by the line-error handler, a status change by the
// modem-status handler. A status trigger only reads the levels, asks trigger
// evaluation and arms the triggers again; the port reports it after the event
// it belongs to, so a trigger mark follows the MP of its event.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/result.h"
#include "record/com_event.h"
#include "ports/com_port.h"
#include "ports/port_settings.h"

namespace kestrel {

// The texts of the four settings combo boxes.
struct PortComboTexts {
    std::string baud = "9600";
    std::string dataBits = "8";
    std::string parity = "N";
    std::string stopBits = "1";
};

// What a line-error word means for one port's error triple. LE is never set.
struct ErrorFlags {
    std::uint8_t pe = 0, fe = 0, le = 0;
};
[[nodiscard]] ErrorFlags MapLineError(unsigned errorWord);

// Settings from the combo texts; unknown or garbage texts keep the defaults
// (9600 baud, 8 data bits, no parity, 1 stop bit).
// Texts no port takes give the default (9600 8N1) and are listed in unknown.
[[nodiscard]] PortSettings SettingsFromTexts(const PortComboTexts &texts, std::string *unknown = nullptr);

// Which list entries ports A and B take, given the list size and the stored indexes.
// Entries are -1 when the list is empty (both ports then use the first serial device).
struct PortChoice {
    int a = -1, b = -1;
};
[[nodiscard]] PortChoice ChoosePorts(int count, int storedA, int storedB);

// The device both ports use when no serial port was found.
inline constexpr const char *kFallbackDevice = "/dev/ttyS0";

// Message numbers of capture's results.
namespace CaptureMsg {
inline constexpr int PortError = 2000; // the title of a port failure
inline constexpr int PortA = 2010;     // port A cannot be opened; detail: device and reason
inline constexpr int PortB = 2011;
inline constexpr int FewPorts = 2053;  // a warning: fewer than two ports, both use the same
inline constexpr int UnknownSetting = 7158; // a warning: a setting text no port takes; detail: which
inline constexpr int WarningTitle = 205;
} // namespace CaptureMsg

class Reporter;
// True for a result that only warns (2053): the ports can still be used.
[[nodiscard]] inline bool IsCaptureWarning(const Result &r)
{
    return r.code == CaptureMsg::FewPorts || r.code == CaptureMsg::UnknownSetting;
}
// Shows a result of capture: a warning under title 205, a port failure under title 2000.
void ReportCaptureResult(Reporter &reporter, const Result &result);

class Capture final : public ComPortListener {
public:
    struct Hooks {
        std::function<int(std::uint16_t burst)> record;  // the MP writer; 0 = written
        std::function<bool()> gate;                       // recording gate; open when empty
        std::function<void()> burstBegin;                 // wait for and reset the receive event
        std::function<void()> burstEnd;                   // set the receive event
        // Trigger evaluation of a status trigger: false declines the event.
        std::function<bool(ComPort &port, int handle)> statusTrigger;
        std::function<void(ComPort &port, int handle)> dataTrigger;
        std::function<void(ComPort &port, const std::string &reason)> portLost; // once per port and recording
        std::function<void()> afterData;          // sound flag check after a data MP
        std::function<void(const PortSettings &)> settingsApplied; // recompute Tchar and Cps
    };

    Capture(ComPort &portA, ComPort &portB, ComEvent &event, Hooks hooks = {});
    ~Capture() override;
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    Hooks &hooks() { return hooks_; }
    [[nodiscard]] ComPort &ComA() { return a_; }
    [[nodiscard]] ComPort &ComB() { return b_; }

    // The port list of A and B (device paths from the scan, or a fixed list). Resets the
    // stored indexes to 0 and lets the next InitInterface warn again when fewer than two.
    void setPortList(std::vector<std::string> ports);
    [[nodiscard]] const std::vector<std::string> &portList() const { return portList_; }
    void setStoredIndexes(int a, int b) { indexA_ = a; indexB_ = b; }
    [[nodiscard]] int storedIndexA() const { return indexA_; }
    [[nodiscard]] int storedIndexB() const { return indexB_; }

    // Applies devices and settings to both ports. The warning 2053 when fewer than two
    // ports are listed, once per port list (not at every settings change).
    Result InitInterface(const PortComboTexts &texts);
    // Tests the settings: applies them, then opens and closes A, then B. What the user is
    // to be told, in order: the warning of InitInterface, 2010 for A, 2011 for B (detail:
    // the device and the port's reason). Empty when all went well.
    [[nodiscard]] std::vector<Result> TryToOpenPorts(const PortComboTexts &texts);

    // Recording: open B then A, raise their dispatchers, flush. On failure 2010 / 2011 and
    // nothing stays open.
    [[nodiscard]] Result OpenPortsForRecording();
    // Flush and close A, then B.
    void ClosePorts();
    // Adds (if missing) and arms each open port's line (mask 15) and modem (mask 180) status trigger.
    void ArmStatusTriggers();
    // Forgets the four status trigger handles (a new recording adds them again).
    void ForgetStatusTriggers();
    // Reads both ports' modem status into the six signal fields.
    void ReadModemStatuses();

    void ComRecordAvailData(int n);
    void ComReadAllPendingData();

    // The notification handlers, per port.
    void ComATriggerAvail(int count) { dataAvailable(count); }
    void ComBTriggerAvail(int count) { dataAvailable(count); }
    void ComATriggerStatus(int handle) { triggerStatus(a_, handle); }
    void ComBTriggerStatus(int handle) { triggerStatus(b_, handle); }
    void ComATriggerLineError(unsigned errorWord) { lineError(kA, errorWord); }
    void ComBTriggerLineError(unsigned errorWord) { lineError(kB, errorWord); }
    void ComATriggerModemStatus() { modemStatusChanged(kA); }
    void ComBTriggerModemStatus() { modemStatusChanged(kB); }

    [[nodiscard]] int lineTriggerHandle(bool portA) const { return lineHandle_[portA ? kA : kB]; }
    [[nodiscard]] int modemTriggerHandle(bool portA) const { return modemHandle_[portA ? kA : kB]; }

    static constexpr unsigned kLineTriggerMask = 15;
    static constexpr unsigned kModemTriggerMask = 180; // DCD, DSR, CTS and the trailing edge of RI

private:
    static constexpr int kA = 0, kB = 1;

    // ComPortListener
    void onDataAvailable(ComPort &port, int count) override;
    void onTriggerData(ComPort &port, int handle) override;
    void onTriggerStatus(ComPort &port, int handle) override;
    void onLineError(ComPort &port, unsigned errorWord) override;
    void onModemStatusChanged(ComPort &port) override;
    void onPortLost(ComPort &port, const std::string &reason) override;

    [[nodiscard]] bool gateOpen() const { return !hooks_.gate || hooks_.gate(); }
    int record(std::uint16_t burst) { return hooks_.record ? hooks_.record(burst) : 0; }
    [[nodiscard]] ComPort &port(int index) { return index == kA ? a_ : b_; }
    void dataAvailable(int count);
    void triggerStatus(ComPort &port, int handle);
    void lineError(int index, unsigned errorWord);
    void modemStatusChanged(int index);
    void readModemStatus(int index);
    bool takeRound(); // one byte from each port into the pending event; true when any was taken
    void armLine(int index);
    void armModem(int index);
    [[nodiscard]] Result portFailure(int index, const Result &why);

    ComPort &a_;
    ComPort &b_;
    ComEvent &ev_;
    Hooks hooks_;

    std::vector<std::string> portList_;
    int indexA_ = 0, indexB_ = 0;
    bool warnedFewPorts_ = false;

    std::array<int, 2> lineHandle_{};
    std::array<int, 2> modemHandle_{};
    std::array<bool, 2> lostReported_{};
};

} // namespace kestrel
