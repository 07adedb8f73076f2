// Capture over two ports: port choice, settings from the combo texts, the
// error and signal mappings, pairing bytes into MPs, the recording gate,
// status triggers and the message of a failing port.

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "base/reporter.h"
#include "capture/capture.h"
#include "record/clock.h"
#include "ports/sim_port.h"
#include "base/string_table.h"
#include "support/event_loop.h"
#include "support/scripted_prompter.h"

namespace kestrel {
namespace {

using test::ScriptedPrompter;
using test::SpinPending;

// A port that holds what the test puts in and writes down how its status triggers are set.
class FakePort final : public ComPort {
public:
    FakePort(std::string name, std::vector<std::string> &log) : name_(std::move(name)), log_(log) {}
    void setDevice(const std::string &d) override { device_ = d; }
    std::string device() const override { return device_; }
    void setSettings(const PortSettings &s) override { settings_ = s; }
    PortSettings settings() const override { return settings_; }
    Result open() override
    {
        open_ = !failOpen;
        return failOpen ? Result::Fail(7157, "refused") : Result::Ok();
    }
    void close() override { open_ = false; }
    bool isOpen() const override { return open_; }
    bool charReady() override { return !rx.empty(); }
    std::uint8_t getChar() override
    {
        const auto b = rx.front();
        rx.pop_front();
        return b;
    }
    std::uint8_t modemStatus() override { return msr; }
    void flushInput() override { rx.clear(); }
    int addDataTrigger(const std::vector<std::uint8_t> &) override { return ++handles; }
    int addStatusTrigger(int) override { return ++handles; }
    bool setStatusTrigger(int handle, unsigned mask, bool active) override
    {
        log_.push_back("set " + name_ + " " + std::to_string(handle) + " " + std::to_string(mask) + (active ? " on" : " off"));
        return true;
    }
    void removeTrigger(int) override {}
    void setDispatcherPriority(bool, int) override {}
    ComPortListener *listener() { return listener_; }

    std::deque<std::uint8_t> rx;
    std::uint8_t msr = 0;
    bool failOpen = false;
    int handles = 0;

private:
    std::string name_, device_;
    PortSettings settings_;
    bool open_ = false;
    std::vector<std::string> &log_;
};

struct CaptureFixture : ::testing::Test {
    std::vector<std::string> log;
    FakePort a{"A", log}, b{"B", log};
    ComEvent ev;
    std::vector<ComEvent> mps;
    std::vector<std::uint16_t> bursts;
    bool gate = true;
    Capture cap{a, b, ev, {}};

    void SetUp() override
    {
        SetGlobalLang(kLangEnglish);
        cap.hooks().record = [this](std::uint16_t burst) {
            mps.push_back(ev);
            bursts.push_back(burst);
            return 0;
        };
        cap.hooks().gate = [this] { return gate; };
        (void)a.open();
        (void)b.open();
    }
    ComPortListener &listener() { return *a.listener(); }
};

TEST(PortChoice, RulesForZeroOneTwoAndMorePorts)
{
    struct Case {
        int count, a, b, wantA, wantB;
    };
    const Case cases[] = {
        {0, 3, 4, -1, -1}, {1, 5, 2, 0, 0}, {2, 1, 1, 0, 1}, {3, 1, 1, 2, 1},
        {3, 2, 2, 0, 2},   {3, 0, 3, 1, 0}, {4, -7, 99, 1, 0},
    };
    for (const auto &c : cases) {
        const PortChoice p = ChoosePorts(c.count, c.a, c.b);
        EXPECT_EQ(std::make_pair(p.a, p.b), std::make_pair(c.wantA, c.wantB)) << c.count << " " << c.a << " " << c.b;
    }
}

TEST(ComboTexts, ParityStopBitsAndGarbage)
{
    // "1" with five data bits is taken as 1.5 by the port; anything unknown is the plain
    // default, and named.
    struct Case {
        PortComboTexts texts;
        PortSettings want;
        std::string unknown;
    };
    const Case cases[] = {
        {{"115200", "7", "E", "2"}, {115200, 7, Parity::Even, StopBits::Two}, ""},
        {{" 1200 ", "5", "s", "1"}, {1200, 5, Parity::Space, StopBits::Two}, ""},
        {{"0", "9", "Mark", "3"}, {9600, 8, Parity::None, StopBits::One},
         "baud '0', data bits '9', parity 'Mark', stop bits '3'"},
        {{"fast", "", "M", "1.5"}, {9600, 8, Parity::Mark, StopBits::Two}, "baud 'fast', data bits ''"},
        {{"300", "6", "O", "2"}, {300, 6, Parity::Odd, StopBits::Two}, ""},
    };
    for (const Case &c : cases) {
        std::string unknown;
        EXPECT_EQ(SettingsFromTexts(c.texts, &unknown), c.want) << c.texts.baud;
        EXPECT_EQ(unknown, c.unknown);
    }
}

TEST_F(CaptureFixture, OnePortWarnsOnceAndBothPortsShareIt)
{
    cap.setPortList({"/dev/ttyUSB0"});
    PortSettings applied;
    cap.hooks().settingsApplied = [&](const PortSettings &s) { applied = s; };
    EXPECT_EQ(cap.InitInterface({"19200", "8", "O", "1"}), Result::Fail(CaptureMsg::FewPorts));
    EXPECT_TRUE(cap.InitInterface({"19200", "8", "O", "1"}));
    // A text no port takes is a warning of its own that names it.
    EXPECT_EQ(cap.InitInterface({"19200", "9", "O", "1"}), Result::Fail(CaptureMsg::UnknownSetting, " data bits '9'"));
    EXPECT_TRUE(cap.InitInterface({"19200", "8", "O", "1"}));
    EXPECT_EQ(a.device() + b.device(), "/dev/ttyUSB0/dev/ttyUSB0");
    EXPECT_EQ(b.settings(), a.settings());
    EXPECT_EQ(applied, a.settings());
    // A new scan warns again; the warning is shown as one, under its own title.
    cap.setPortList({});
    const std::vector<Result> told = cap.TryToOpenPorts({"19200", "8", "O", "1"});
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(IsCaptureWarning(told[0]));
    EXPECT_EQ(a.device(), kFallbackDevice);
    ScriptedPrompter prompter;
    PromptReporter reporter(prompter);
    ReportCaptureResult(reporter, told[0]);
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, Str(205));
    EXPECT_EQ(prompter.asked[0].text, Str(2053));
    EXPECT_EQ(prompter.asked[0].icon, Icon::Warning);
}

TEST_F(CaptureFixture, TwoBytesTogetherMakeOneMpWithBothValid)
{
    std::vector<std::size_t> mpsAt; // when the burst begins and ends
    cap.hooks().burstBegin = [&] { mpsAt.push_back(mps.size()); };
    cap.hooks().burstEnd = [&] { mpsAt.push_back(mps.size()); };
    a.rx = {0x41, 0x42};
    b.rx = {0x31};
    listener().onDataAvailable(a, 2);
    ASSERT_EQ(mps.size(), 2u);
    EXPECT_EQ(mps[0].d1, 0x31);
    EXPECT_EQ(mps[0].d2, 0x41);
    EXPECT_EQ(mps[0].d1Valid, 1);
    EXPECT_EQ(mps[0].d2Valid, 1);
    EXPECT_EQ(mps[1].d2, 0x42);
    EXPECT_EQ(mps[1].d1Valid, 0); // cleared after the first MP
    EXPECT_EQ(bursts, (std::vector<std::uint16_t>{0, 1}));
    EXPECT_EQ(ev.d1Count, 1u);
    EXPECT_EQ(ev.d2Count, 2u);
    EXPECT_EQ(mpsAt, (std::vector<std::size_t>{0, 2}));
}

TEST_F(CaptureFixture, ClosedGateChangesLevelsButWritesNoMp)
{
    gate = false;
    a.msr = Msr::Dsr | Msr::Cts | Msr::Dcd | Msr::Ri;
    listener().onModemStatusChanged(a);
    b.msr = Msr::Dsr;
    listener().onModemStatusChanged(b);
    a.rx = {7};
    listener().onDataAvailable(a, 1);
    listener().onLineError(b, LineError::Parity);
    EXPECT_TRUE(mps.empty());
    EXPECT_EQ(ev.m1 + ev.m2 + ev.m5 + ev.m3, 4);
    EXPECT_EQ(ev.s1, 1);
    EXPECT_EQ(ev.s2, 0);
    EXPECT_EQ(ev.peCount, 1u); // the event is counted even though no MP is written
    // Draining at the end of a recording does not ask the gate.
    a.rx = {8, 9};
    cap.ComReadAllPendingData();
    ASSERT_EQ(mps.size(), 2u);
    EXPECT_EQ(mps[1].d2, 9);
}

TEST_F(CaptureFixture, SignalMappingPerPort)
{
    struct Case {
        bool portA;
        std::uint8_t msr;
        std::array<int, 6> levels; // s1 m1 s2 m2 m5 m3
    };
    const Case cases[] = {
        {true, Msr::Dsr, {0, 1, 0, 0, 0, 0}}, {true, Msr::Cts, {0, 0, 0, 1, 0, 0}},
        {true, Msr::Dcd, {0, 0, 0, 0, 1, 0}}, {true, Msr::Ri, {0, 0, 0, 0, 0, 1}},
        {false, Msr::Dsr, {1, 0, 0, 0, 0, 0}}, {false, Msr::Cts, {0, 0, 1, 0, 0, 0}},
        {false, Msr::Dcd | Msr::Ri | 0x0F, {0, 0, 0, 0, 0, 0}},
    };
    for (const auto &c : cases) {
        ev = ComEvent{};
        mps.clear();
        FakePort &p = c.portA ? a : b;
        p.msr = c.msr;
        listener().onModemStatusChanged(p);
        p.msr = 0;
        ASSERT_EQ(mps.size(), 1u);
        const ComEvent &m = mps[0];
        EXPECT_EQ((std::array<int, 6>{m.s1, m.m1, m.s2, m.m2, m.m5, m.m3}), c.levels) << int(c.msr);
    }
}

TEST_F(CaptureFixture, LineErrorsFillTheReportingPortsTripleOnly)
{
    listener().onLineError(a, 1);
    listener().onLineError(b, LineError::Framing);
    ASSERT_EQ(mps.size(), 2u);
    EXPECT_EQ((std::array<int, 6>{mps[0].peD1, mps[0].feD1, mps[0].leD1, mps[0].peD2, mps[0].feD2, mps[0].leD2}),
              (std::array<int, 6>{0, 0, 0, 1, 0, 0}));
    EXPECT_EQ((std::array<int, 6>{mps[1].peD1, mps[1].feD1, mps[1].leD1, mps[1].peD2, mps[1].feD2, mps[1].leD2}),
              (std::array<int, 6>{0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(ev.peCount, 1u);
    EXPECT_EQ(ev.feCount, 1u);
    // The next MP does not carry an error again.
    listener().onLineError(b, LineError::Parity);
    a.msr = Msr::Cts;
    listener().onModemStatusChanged(a);
    EXPECT_EQ(mps.back().m2, 1);
    EXPECT_EQ(mps.back().peD1, 0);
}

TEST_F(CaptureFixture, OwnStatusTriggersAreRearmedAndOthersGoToEvaluation)
{
    cap.ArmStatusTriggers();
    const int modemA = cap.modemTriggerHandle(true);

    // Our own trigger only gets armed again: its event has its own MP.
    log.clear();
    listener().onTriggerStatus(a, modemA);
    EXPECT_TRUE(mps.empty());
    EXPECT_EQ(log, (std::vector<std::string>{"set A " + std::to_string(modemA) + " 180 on"}));

    // A trigger of the evaluation: both modem words are read, then evaluation decides.
    int seen = 0;
    cap.hooks().statusTrigger = [&](ComPort &, int h) {
        seen = h;
        return false;
    };
    a.msr = Msr::Dcd;
    b.msr = Msr::Cts;
    log.clear();
    listener().onTriggerStatus(b, 77);
    EXPECT_EQ(seen, 77);
    EXPECT_EQ(ev.m5, 1);
    EXPECT_EQ(ev.s2, 1);
    EXPECT_TRUE(log.empty()); // declined: nothing armed again
}

TEST_F(CaptureFixture, FailingPortIsReportedAndNothingStaysOpen)
{
    a.close();
    b.close();
    a.setDevice("/dev/ttyUSB7");
    a.failOpen = true;
    const Result r = cap.OpenPortsForRecording();
    EXPECT_EQ(r, Result::Fail(CaptureMsg::PortA, "\n\n/dev/ttyUSB7\nrefused"));
    EXPECT_FALSE(a.isOpen() || b.isOpen());
    ScriptedPrompter prompter;
    PromptReporter reporter(prompter);
    ReportCaptureResult(reporter, r);
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.asked[0].title, Str(2000));
    EXPECT_NE(prompter.asked[0].text.find("COM port A cannot be initialised"), std::string::npos);

    // Trying the settings tests both ports and tells each failure, A before B.
    b.failOpen = true;
    b.setDevice("/dev/ttyUSB8");
    cap.setPortList({"/dev/ttyUSB7", "/dev/ttyUSB8"});
    cap.setStoredIndexes(0, 1);
    const std::vector<Result> told = cap.TryToOpenPorts({"9600", "8", "N", "1"});
    ASSERT_EQ(told.size(), 2u);
    EXPECT_EQ(told[0].code, CaptureMsg::PortA);
    EXPECT_EQ(told[1], Result::Fail(CaptureMsg::PortB, "\n\n/dev/ttyUSB8\nrefused"));
    EXPECT_FALSE(a.isOpen() || b.isOpen());
}

TEST_F(CaptureFixture, PortLossIsForwardedOncePerRecording)
{
    int lost = 0;
    cap.hooks().portLost = [&](ComPort &p, const std::string &why) {
        EXPECT_EQ(&p, &a);
        EXPECT_EQ(why, "gone");
        ++lost;
    };
    listener().onPortLost(a, "gone");
    listener().onPortLost(a, "gone");
    EXPECT_EQ(lost, 1);
    a.close();
    b.close();
    ASSERT_TRUE(cap.OpenPortsForRecording());
    listener().onPortLost(a, "gone");
    EXPECT_EQ(lost, 2);
}

// The whole road over the simulated line: a scenario byte pair in one instant
// becomes one MP, a modem change one MP, a parity error one MP.
TEST(CaptureOverSimLine, ScenarioEventsBecomeMps)
{
    test::TestApp();
    ScenarioError err;
    auto sc = ParseScenario("a \"x\"\n& b \"y\"\n", err);
    ASSERT_TRUE(sc) << err.text();
    ManualClock clock;
    SimLine line(*sc, clock);
    ComEvent ev;
    std::vector<ComEvent> mps;
    Capture cap(line.portA(), line.portB(), ev, {});
    cap.hooks().record = [&](std::uint16_t) {
        mps.push_back(ev);
        return 0;
    };
    cap.setPortList({"sim:A", "sim:B"});
    cap.setStoredIndexes(0, 1);
    (void)cap.InitInterface({"10000", "8", "N", "1"});
    ASSERT_TRUE(cap.OpenPortsForRecording());
    cap.ArmStatusTriggers();
    line.restart();
    clock.advance(10'000'000);
    line.poll();
    ASSERT_TRUE(test::SpinUntil([&] { return !mps.empty(); }));
    SpinPending();
    ASSERT_EQ(mps.size(), 1u); // a byte pair in one instant is one MP
    EXPECT_EQ(std::make_pair(mps[0].d2, mps[0].d1), std::make_pair(std::uint8_t{'x'}, std::uint8_t{'y'}));
    cap.ClosePorts();

    // Paused and resumed: the reopened ports get their status triggers again.
    ASSERT_TRUE(cap.OpenPortsForRecording());
    cap.ArmStatusTriggers();
    EXPECT_TRUE(line.portA().channel().hasTrigger(cap.modemTriggerHandle(true)));
    EXPECT_TRUE(line.portB().channel().hasTrigger(cap.lineTriggerHandle(false)));
    line.injectLineError(kSimPortB, LineError::Framing);
    ASSERT_TRUE(test::SpinUntil([&] { return mps.size() == 2; }));
    EXPECT_EQ(mps[1].feD1, 1);
}

} // namespace
} // namespace kestrel
