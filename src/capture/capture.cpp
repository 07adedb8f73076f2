#include "capture/capture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "base/reporter.h"
#include "capture/capture_log.h"
#include "ports/port_texts.h"

namespace kestrel {

namespace {

// A drain after the ports stopped reporting ends at the latest after this many rounds.
constexpr int kMaxDrainRounds = 1'000'000;

} // namespace

void ReportCaptureResult(Reporter &reporter, const Result &result)
{
    if (result.ok())
        return;
    if (IsCaptureWarning(result))
        reporter.report(CaptureMsg::WarningTitle, result, {}, Severity::Warning);
    else
        reporter.report(CaptureMsg::PortError, result);
}

ErrorFlags MapLineError(unsigned errorWord)
{
    ErrorFlags f;
    f.pe = (errorWord & 3u) != 0 ? 1 : 0;
    f.fe = (errorWord & 4u) != 0 ? 1 : 0;
    f.le = 0; // the line flag is never set from the error word
    return f;
}

PortSettings SettingsFromTexts(const PortComboTexts &texts, std::string *unknown)
{
    PortSettings s; // 9600 8N1 for whatever cannot be read
    auto note = [unknown](const char *what, const std::string &text) {
        if (unknown != nullptr)
            *unknown += (unknown->empty() ? "" : ", ") + std::string(what) + " '" + text + "'";
    };
    if (const auto baud = ParseBaudText(texts.baud))
        s.baud = *baud;
    else
        note("baud", texts.baud);
    if (const auto bits = ParseDataBitsText(texts.dataBits))
        s.dataBits = *bits;
    else
        note("data bits", texts.dataBits);
    if (const auto parity = ParseParityText(texts.parity))
        s.parity = *parity;
    else
        note("parity", texts.parity);
    // With five data bits the port takes "two" as one and a half; "1" then means 1.5 as well.
    if (const auto stop = ParseStopBitsText(texts.stopBits))
        s.stopBits = *stop == StopBitsChoice::One && s.dataBits != 5 ? StopBits::One : StopBits::Two;
    else
        note("stop bits", texts.stopBits);
    return s;
}

PortChoice ChoosePorts(int count, int storedA, int storedB)
{
    if (count <= 0)
        return {-1, -1};
    if (count == 1)
        return {0, 0};
    // Stored indexes come from an environment file and may be anything: bring them into
    // range first, so that A and B never end up on the same port.
    int a = storedA, b = storedB;
    if (b < 0 || b >= count)
        b = 0;
    if (a < 0 || a >= count)
        a = 0;
    if (a == b)
        a = count == 2 ? 1 - b : (a + 1) % count;
    return {a, b};
}

Capture::Capture(ComPort &portA, ComPort &portB, ComEvent &event, Hooks hooks)
    : a_(portA), b_(portB), ev_(event), hooks_(std::move(hooks))
{
    a_.setListener(this);
    b_.setListener(this);
}

Capture::~Capture()
{
    a_.setListener(nullptr);
    b_.setListener(nullptr);
}

void Capture::setPortList(std::vector<std::string> ports)
{
    portList_ = std::move(ports);
    indexA_ = indexB_ = 0;
    warnedFewPorts_ = false;
}

Result Capture::InitInterface(const PortComboTexts &texts)
{
    const int c = static_cast<int>(portList_.size());
    Result warning;
    if (c < 2 && !warnedFewPorts_) {
        warnedFewPorts_ = true; // once per scan, not at every settings change
        warning = Result::Fail(CaptureMsg::FewPorts);
    }
    const PortChoice choice = ChoosePorts(c, indexA_, indexB_);
    if (c == 0) {
        a_.setDevice(kFallbackDevice);
        b_.setDevice(kFallbackDevice);
    } else {
        indexA_ = choice.a;
        indexB_ = choice.b;
        a_.setDevice(portList_[static_cast<std::size_t>(choice.a)]);
        b_.setDevice(portList_[static_cast<std::size_t>(choice.b)]);
    }
    std::string unknown;
    const PortSettings s = SettingsFromTexts(texts, &unknown);
    if (!unknown.empty() && warning.ok()) // a text no port takes: the default is used, and said
        warning = Result::Fail(CaptureMsg::UnknownSetting, " " + unknown);
    a_.setSettings(s);
    b_.setSettings(a_.settings()); // B always copies A
    if (hooks_.settingsApplied)
        hooks_.settingsApplied(a_.settings());
    return warning;
}

Result Capture::portFailure(int index, const Result &why)
{
    ComPort &p = port(index);
    std::string detail = "\n\n" + p.device();
    if (!why.detail.empty())
        detail += "\n" + why.detail;
    qCInfo(lcCapture) << "port" << (index == kA ? "A" : "B") << p.device().c_str() << "does not open:" << why.detail.c_str();
    return Result::Fail(index == kA ? CaptureMsg::PortA : CaptureMsg::PortB, std::move(detail));
}

std::vector<Result> Capture::TryToOpenPorts(const PortComboTexts &texts)
{
    std::vector<Result> told;
    if (Result warning = InitInterface(texts); !warning)
        told.push_back(std::move(warning));
    for (int index : {kA, kB}) {
        ComPort &p = port(index);
        if (p.isOpen())
            p.close();
        if (const Result opened = p.open(); !opened) {
            told.push_back(portFailure(index, opened));
            continue;
        }
        p.close();
    }
    return told;
}

Result Capture::OpenPortsForRecording()
{
    lostReported_ = {};
    for (int index : {kB, kA}) {
        ComPort &p = port(index);
        if (p.isOpen())
            continue;
        if (const Result opened = p.open(); !opened) {
            Result failed = portFailure(index, opened);
            ClosePorts();
            return failed;
        }
        lineHandle_[index] = modemHandle_[index] = 0; // a fresh session knows no triggers
        p.setDispatcherPriority(true, index == kA ? 2 : 0);
        p.flushInput();
    }
    return Result::Ok();
}

void Capture::ClosePorts()
{
    for (int index : {kA, kB}) {
        ComPort &p = port(index);
        if (p.isOpen()) {
            p.flushInput();
            p.close();
        }
    }
}

void Capture::armLine(int index)
{
    if (lineHandle_[index] != 0)
        port(index).setStatusTrigger(lineHandle_[index], kLineTriggerMask, true);
}

void Capture::armModem(int index)
{
    if (modemHandle_[index] != 0)
        port(index).setStatusTrigger(modemHandle_[index], kModemTriggerMask, true);
}

void Capture::ArmStatusTriggers()
{
    for (int index : {kA, kB}) {
        ComPort &p = port(index);
        if (!p.isOpen())
            continue;
        // A port forgets its triggers when it closes: a handle it no longer knows is added anew.
        if (lineHandle_[index] == 0 || !p.setStatusTrigger(lineHandle_[index], kLineTriggerMask, true)) {
            lineHandle_[index] = p.addStatusTrigger(StatusTriggerKind::Line);
            armLine(index);
        }
        if (modemHandle_[index] == 0 || !p.setStatusTrigger(modemHandle_[index], kModemTriggerMask, true)) {
            modemHandle_[index] = p.addStatusTrigger(StatusTriggerKind::Modem);
            armModem(index);
        }
    }
}

void Capture::ForgetStatusTriggers()
{
    lineHandle_ = {};
    modemHandle_ = {};
}

void Capture::readModemStatus(int index)
{
    const unsigned msr = port(index).modemStatus();
    auto bit = [msr](unsigned mask) -> std::uint8_t { return (msr & mask) != 0 ? 1 : 0; };
    if (index == kA) {
        ev_.m1 = bit(Msr::Dsr);
        ev_.m2 = bit(Msr::Cts);
        ev_.m5 = bit(Msr::Dcd);
        ev_.m3 = bit(Msr::Ri);
    } else {
        ev_.s1 = bit(Msr::Dsr);
        ev_.s2 = bit(Msr::Cts);
    }
}

void Capture::ReadModemStatuses()
{
    if (a_.isOpen())
        readModemStatus(kA);
    if (b_.isOpen())
        readModemStatus(kB);
}

bool Capture::takeRound()
{
    bool took = false;
    if (b_.isOpen() && b_.charReady()) {
        ev_.d1 = b_.getChar();
        ev_.d1Valid = 1;
        ++ev_.d1Count;
        took = true;
    }
    if (a_.isOpen() && a_.charReady()) {
        ev_.d2 = a_.getChar();
        ev_.d2Valid = 1;
        ++ev_.d2Count;
        took = true;
    }
    return took;
}

void Capture::ComRecordAvailData(int n)
{
    ev_.clearData();
    ev_.clearErrors();
    for (int i = 0; i < n; ++i) {
        if (!takeRound())
            break; // both buffers are empty: the remaining rounds would take nothing
        if (gateOpen()) {
            record(static_cast<std::uint16_t>(std::min(i, 0xFFFF)));
            ev_.clearData();
            ev_.clearErrors();
            if (hooks_.afterData)
                hooks_.afterData();
        }
    }
}

void Capture::ComReadAllPendingData()
{
    ev_.clearData();
    ev_.clearErrors();
    for (int round = 0; round < kMaxDrainRounds && takeRound(); ++round) {
        record(0); // no gate here: what the ports still hold belongs to the recording
        if (hooks_.afterData)
            hooks_.afterData();
        ev_.clearData();
        ev_.clearErrors();
    }
}

void Capture::dataAvailable(int count)
{
    if (hooks_.burstBegin)
        hooks_.burstBegin();
    ComRecordAvailData(count);
    if (hooks_.burstEnd)
        hooks_.burstEnd();
}

void Capture::lineError(int index, unsigned errorWord)
{
    const ErrorFlags f = MapLineError(errorWord);
    ev_.clearErrors();
    if (index == kA) {
        ev_.peD2 = f.pe;
        ev_.feD2 = f.fe;
        ev_.leD2 = f.le;
    } else {
        ev_.peD1 = f.pe;
        ev_.feD1 = f.fe;
        ev_.leD1 = f.le;
    }
    ev_.peCount += f.pe;
    ev_.feCount += f.fe;
    if (gateOpen())
        record(0);
    // The error belongs to the one MP that reports it; a later MP must not count it again.
    ev_.clearErrors();
    armLine(index);
}

void Capture::modemStatusChanged(int index)
{
    if (port(index).isOpen())
        readModemStatus(index);
    if (gateOpen())
        record(0);
    armModem(index);
}

void Capture::triggerStatus(ComPort &p, int handle)
{
    const int index = &p == &a_ ? kA : kB;
    if (handle == lineHandle_[index] || handle == modemHandle_[index]) {
        // Our own status triggers: the line-error or modem-status handler has written the
        // MP of this event already; only arm them again.
        if (handle == lineHandle_[index])
            armLine(index);
        else
            armModem(index);
        return;
    }
    if (a_.isOpen() && b_.isOpen()) {
        readModemStatus(kA);
        readModemStatus(kB);
    }
    const bool accepted = hooks_.statusTrigger ? hooks_.statusTrigger(p, handle) : true;
    if (accepted)
        ArmStatusTriggers();
}

void Capture::onDataAvailable(ComPort &p, int count)
{
    if (&p == &a_)
        ComATriggerAvail(count);
    else
        ComBTriggerAvail(count);
}

void Capture::onTriggerData(ComPort &p, int handle)
{
    if (hooks_.dataTrigger)
        hooks_.dataTrigger(p, handle);
}

void Capture::onTriggerStatus(ComPort &p, int handle)
{
    triggerStatus(p, handle);
}

void Capture::onLineError(ComPort &p, unsigned errorWord)
{
    lineError(&p == &a_ ? kA : kB, errorWord);
}

void Capture::onModemStatusChanged(ComPort &p)
{
    modemStatusChanged(&p == &a_ ? kA : kB);
}

void Capture::onPortLost(ComPort &p, const std::string &reason)
{
    const int index = &p == &a_ ? kA : kB;
    if (lostReported_[index])
        return;
    lostReported_[index] = true;
    qCInfo(lcCapture) << "port" << (index == kA ? "A" : "B") << p.device().c_str() << "lost:" << reason.c_str();
    if (hooks_.portLost)
        hooks_.portLost(p, reason);
}

} // namespace kestrel
