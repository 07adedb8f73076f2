// Trigger evaluation over the simulated line with a clock that only moves when
// told: which marks land in the file, what the gate lets through, and when the
// recording ends by itself.

#include <gtest/gtest.h>

#include "base/reporter.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "ports/port_settings.h"
#include "ports/sim_port.h"
#include "record/record_reader.h"
#include "support/event_loop.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"
#include "trigger_engine/trigger_actions.h"
#include "trigger_engine/trigger_engine.h"

namespace kestrel {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

std::vector<std::uint8_t> bytes(const std::string &s) { return {s.begin(), s.end()}; }

TriggerDef DataTrigger(std::int32_t type, const std::string &hex, bool d1)
{
    TriggerDef t;
    t.Name = hex;
    t.Active = true;
    t.Type = type;
    t.Event = TriggerEvent::Data;
    t.Data = hex;
    t.D1 = d1;
    t.D2 = !d1;
    return t;
}

// An inactivity trigger watching one kind of event.
TriggerDef Quiet(std::int32_t seconds, bool TriggerDef::*kind)
{
    TriggerDef t;
    t.Active = true;
    t.Type = TriggerType::Inactivity;
    t.Event = TriggerEvent::Inactivity;
    t.InActivityTime = seconds;
    t.*kind = true;
    return t;
}

std::string Hex(const std::string &text)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : text) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

struct Fired : TriggerActions, TriggerEngineView {
    std::vector<int> ran;
    std::vector<std::string> status;
    std::vector<std::pair<int, std::uint32_t>> marks;
    void run(const TriggerDef &t) override { ran.push_back(t.number); }
    void triggerStatusText(const std::string &text) override { status.push_back(text); }
    void triggerFired(const TriggerDef &t, std::uint32_t mp) override { marks.emplace_back(t.number, mp); }
};

// One MP as the test reads it back: a trigger mark "T<code>/<kind>/<number>", a
// system mark "S<code>", or the data bytes "<d1>|<d2>".
std::string Describe(const MpRecord &mp)
{
    if (mp.isSystemMark())
        return "S" + std::to_string(mp.markCode);
    if (mp.isTriggerMark())
        return "T" + std::to_string(mp.markCode) + "/" + std::to_string(mp.markKind) + "/" +
               std::to_string(mp.markExtra);
    std::string s;
    if (mp.d1Valid)
        s += static_cast<char>(mp.d1);
    s += '|';
    if (mp.d2Valid)
        s += static_cast<char>(mp.d2);
    return s == "|" ? "levels" : s;
}

struct EngineFixture : ::testing::Test {
    test::TempDir dir;
    ManualClock clock;
    test::ScriptedPrompter prompter;
    PromptReporter reporter{prompter};
    std::unique_ptr<RecordingSession> session;
    TriggerEngine *engine = nullptr;
    TriggerList triggers;
    Fired seen;

    void SetUp() override
    {
        test::TestApp();
        SetGlobalLang(kLangEnglish);
        session = RecordingSession::Simulated(Scenario{}, reporter, &clock);
        session->file().setPath(dir.file("triggers.ksr"));
        session->recorder().setDelay([](std::chrono::milliseconds) {});
        session->recorder().setAppendReplace(RecordMode::Replace);
        ASSERT_TRUE(session->applySettings({"9600", "8", "N", "1"}));
        auto owned = std::make_unique<TriggerEngine>();
        engine = owned.get();
        engine->setTriggers(&triggers);
        engine->setActions(&seen);
        engine->setView(&seen);
        session->setTriggerHooks(std::move(owned));
    }
    void TearDown() override { SetGlobalLang(kLangGerman); }

    SimLine &line() { return *session->simLine(); }
    void start()
    {
        session->record();
        ASSERT_TRUE(session->recording());
    }
    // Bytes on D1 (port B) or D2 (port A), handled before returning.
    void send(bool d1, const std::string &text)
    {
        line().injectBytes(d1 ? kSimPortB : kSimPortA, bytes(text));
        test::SpinPending();
    }
    void stopAndWait()
    {
        if (session->loaded())
            session->stop();
    }
    // The file from MP 2 on (after the two opening marks), up to the stop mark.
    std::vector<std::string> body()
    {
        RecordReader r;
        std::vector<MpRecord> recs;
        if (r.open(session->file().path()))
            r.readBlock(0, r.recordCount(), recs);
        std::vector<std::string> out;
        for (std::size_t i = 2; i < recs.size(); ++i)
            out.push_back(Describe(recs[i]));
        return out;
    }
};

using Body = std::vector<std::string>;

TEST_F(EngineFixture, WithoutActiveTriggersEverythingIsRecordedFromTheStart)
{
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("X"), true));
    triggers.DisableAll();
    start();
    EXPECT_TRUE(session->recordingGate());
    EXPECT_FALSE(engine->timerRunning());
    send(true, "ab");
    stopAndWait();
    EXPECT_EQ(body(), (Body{"levels", "a|", "b|", "S5"}));
    EXPECT_TRUE(seen.status.empty());
}

TEST_F(EngineFixture, StartThenStopRecordsOnlyBetweenAndEndsTheRecording)
{
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("GO"), true));
    triggers.Append(DataTrigger(TriggerType::StopRecording, Hex("END"), false));
    start();
    EXPECT_FALSE(session->recordingGate());
    EXPECT_EQ(seen.status, (Body{"Waiting for START TRIGGER (1)"}));
    send(true, "xGO");
    EXPECT_TRUE(session->recordingGate());
    send(false, "hi");
    send(false, "END");
    ASSERT_TRUE(test::SpinUntil([&] { return !session->loaded(); }));
    send(false, "late"); // the ports are closed: nothing more
    EXPECT_EQ(body(), (Body{"T1/0/1", "|h", "|i", "|E", "|N", "|D", "T2/0/2", "S5"}));
    EXPECT_EQ(seen.status, (Body{"Waiting for START TRIGGER (1)", "", "Waiting for STOP TRIGGER (2)", ""}));
    EXPECT_EQ(seen.ran, (std::vector<int>{1, 2}));
    ASSERT_EQ(seen.marks.size(), 2u);
    EXPECT_EQ(seen.marks[0].second, 2u); // the MP number of its mark
}

TEST_F(EngineFixture, AStopInsideTheChainPausesUntilTheNextStart)
{
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("A"), true));
    triggers.Append(DataTrigger(TriggerType::StopRecording, Hex("B"), true));
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("C"), true));
    triggers.Append(DataTrigger(TriggerType::StopRecording, Hex("D"), true));
    start();
    // A group's port triggers see the bytes that arrive after it was armed.
    for (const char *burst : {"A", "1B", "2C", "3D"})
        send(true, burst);
    ASSERT_TRUE(test::SpinUntil([&] { return !session->loaded(); }));
    EXPECT_EQ(body(), (Body{"T1/0/1", "1|", "B|", "T2/0/2", "T1/0/3", "3|", "D|", "T2/0/4", "S5"}));
}

TEST_F(EngineFixture, OfTwoStartTriggersTheFirstToFireOpensTheGateAndDisarmsTheOther)
{
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("ONE"), true));
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("TWO"), false));
    start();
    EXPECT_EQ(seen.status.back(), "Waiting for START TRIGGER (2)");
    send(false, "TWO");
    send(true, "ONE");
    stopAndWait();
    EXPECT_EQ(body(), (Body{"T1/0/2", "O|", "N|", "E|", "S5"}));
    EXPECT_FALSE(session->recorder().triggerControlled); // the chain is used up: record on
}

TEST_F(EngineFixture, ASignalTriggerWaitsThroughTheWrongEdge)
{
    TriggerDef rise;
    rise.Active = true;
    rise.Event = TriggerEvent::Signal;
    rise.M2 = SignalEdge::Rises;
    triggers.Append(rise);
    line().injectModemState(kSimPortA, Msr::Cts); // M2 high before the recording
    start();
    line().injectModemState(kSimPortA, 0); // falls: not the edge it waits for
    test::SpinPending();
    EXPECT_FALSE(session->recordingGate());
    EXPECT_TRUE(seen.marks.empty());
    line().injectModemState(kSimPortA, Msr::Cts); // rises
    test::SpinPending();
    EXPECT_EQ(seen.marks.size(), 1u);
    EXPECT_TRUE(session->recordingGate());
}

TEST_F(EngineFixture, AnErrorTriggerFiresOnEitherPort)
{
    for (int port : {kSimPortB, kSimPortA}) {
        triggers.Clear();
        TriggerDef error;
        error.Active = true;
        error.Type = TriggerType::StopRecording;
        error.Event = TriggerEvent::Error;
        error.FE = true;
        triggers.Append(error);
        start();
        line().injectLineError(port, LineError::Parity); // not watched
        test::SpinPending();
        EXPECT_TRUE(session->loaded()) << port;
        line().injectLineError(port, LineError::Framing);
        ASSERT_TRUE(test::SpinUntil([&] { return !session->loaded(); })) << port;
        const Body b = body();
        ASSERT_GE(b.size(), 2u);
        EXPECT_EQ(b[b.size() - 2], "T2/2/1") << port;
    }
}

TEST_F(EngineFixture, InactivityFiresAfterAWholePeriodAndThenOncePerPeriod)
{
    triggers.Append(Quiet(1, &TriggerDef::EventD1));
    start();
    EXPECT_TRUE(session->recordingGate()); // an inactivity group records
    EXPECT_TRUE(engine->timerRunning());
    clock.advance(kSecond / 2);
    engine->tick();
    EXPECT_TRUE(seen.marks.empty());
    clock.advance(kSecond / 2);
    engine->tick();
    EXPECT_EQ(seen.marks.size(), 1u);
    engine->tick(); // the silence was reported; the next period starts now
    EXPECT_EQ(seen.marks.size(), 1u);
    clock.advance(kSecond / 2);
    send(true, "a"); // D1 is alive again
    clock.advance(kSecond * 3 / 4);
    engine->tick();
    EXPECT_EQ(seen.marks.size(), 1u);
    clock.advance(kSecond / 4 + kSecond / 100); // the byte's stamp may run a character time ahead
    engine->tick();
    EXPECT_EQ(seen.marks.size(), 2u);
    EXPECT_TRUE(engine->timerRunning()); // stays armed
    stopAndWait();
    EXPECT_EQ(body(), (Body{"levels", "T3/4/1", "a|", "T3/4/1", "S5"}));
}

TEST_F(EngineFixture, AStatusLineHeldHighIsNotSilent)
{
    triggers.Append(Quiet(2, &TriggerDef::EventM5));
    line().injectModemState(kSimPortA, Msr::Dcd);
    start();
    clock.advance(kSecond * 5);
    engine->tick();
    EXPECT_TRUE(seen.marks.empty());
    line().injectModemState(kSimPortA, 0);
    test::SpinPending();
    clock.advance(kSecond * 2 + kSecond / 100);
    engine->tick();
    EXPECT_EQ(seen.marks.size(), 1u);
}

TEST_F(EngineFixture, ATimeTriggerFiresOnlyOnceItsTimeHasPassed)
{
    TriggerDef at;
    at.Active = true;
    at.Event = TriggerEvent::TimeReached;
    at.TimeReached = clock.nowDateTime() - 1.0; // yesterday
    triggers.Append(at);
    start();
    engine->tick();
    EXPECT_EQ(seen.marks.size(), 1u);
    EXPECT_TRUE(session->recordingGate());
    EXPECT_FALSE(engine->timerRunning()); // the group is disarmed
    stopAndWait();

    seen.marks.clear();
    ManualClock probe = clock;
    probe.advance(2 * kSecond);
    triggers[0].TimeReached = probe.nowDateTime(); // exactly the time of the tick below
    start();
    clock.advance(2 * kSecond);
    engine->tick();
    EXPECT_TRUE(seen.marks.empty()); // equal is not later
    clock.advance(1000);
    engine->tick();
    EXPECT_EQ(seen.marks.size(), 1u);
}

TEST_F(EngineFixture, TriggerNumbersFromOneThousandHaveNoSlotAndAreToldOnce)
{
    for (int i = 0; i < 1000; ++i)
        triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("Z"), true));
    triggers.DisableAll();
    triggers.SetActive(998, true); // number 999: the last slot
    triggers.SetActive(999, true); // number 1000
    triggers.Append(DataTrigger(TriggerType::StartRecording, Hex("Y"), true));
    triggers.SetActive(1000, true); // number 1001
    start();
    ASSERT_EQ(prompter.asked.size(), 1u);
    EXPECT_NE(prompter.asked[0].text.find("1000, 1001"), std::string::npos) << prompter.asked[0].text;
    EXPECT_NE(engine->handleSlot(999) & kPortTagB, 0);
    send(true, "Y");
    EXPECT_TRUE(seen.marks.empty()); // 1001 cannot fire
    send(true, "Z");
    ASSERT_EQ(seen.marks.size(), 1u);
    EXPECT_EQ(seen.marks[0].first, 999);
}

} // namespace
} // namespace kestrel
