// The simulated line on a virtual clock: pacing, FIFO chunks, modem lines,
// errors, both ports in one instant, looping, port loss, the receive
// buffer, data and status triggers, and the scenario text format.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "capture/clock.h"
#include "capture/receive_channel.h"
#include "capture/scenario.h"
#include "capture/sim_port.h"
#include "note_log.h"
#include "support/event_loop.h"

namespace kestrel {
namespace {

using test::NoteLog;
using test::SpinPending;

constexpr std::int64_t kMs = 1'000'000;

Scenario parse(const std::string &text)
{
    ScenarioError err;
    auto sc = ParseScenario(text, err);
    EXPECT_TRUE(sc.has_value()) << err.text();
    return sc.value_or(Scenario{});
}

// 10,000 baud 8N1 = 10 bits = exactly 1 ms a character.
struct SimFixture : ::testing::Test {
    ManualClock clock;
    NoteLog logA, logB;
    std::unique_ptr<SimLine> line;

    void start(const std::string &text, bool openPorts = true)
    {
        test::TestApp();
        line = std::make_unique<SimLine>(parse(text), clock);
        PortSettings s;
        s.baud = 10000;
        line->portA().setSettings(s);
        line->portB().setSettings(s);
        line->portA().setListener(&logA);
        line->portB().setListener(&logB);
        if (openPorts) {
            ASSERT_TRUE(line->portA().open());
            ASSERT_TRUE(line->portB().open());
        }
        line->restart();
    }
    void at(std::int64_t ns)
    {
        clock.advance(ns - line->elapsedNs());
        line->poll();
        SpinPending();
    }
};

TEST_F(SimFixture, BytesArriveAtTheBaudRateAFifoChunkAtATime)
{
    start("chunk 4\na \"ABCDEFGHIJ\"\n");
    at(4 * kMs - 1);
    EXPECT_TRUE(logA.notes.empty());
    at(4 * kMs);
    EXPECT_EQ(logA.bytes, "ABCD");
    at(9 * kMs);
    EXPECT_EQ(logA.bytes, "ABCDEFGH");
    at(10 * kMs);
    EXPECT_EQ(logA.bytes, "ABCDEFGHIJ");
    EXPECT_EQ(logA.notes, (std::vector<std::string>{"data 4", "data 4", "data 2"}));
    EXPECT_TRUE(logB.notes.empty());
    EXPECT_TRUE(line->finished());
}

TEST_F(SimFixture, ConversationIsSequentialButAmpersandSharesTheInstant)
{
    start("b \"12\"\na \"x\"\nwait 5ms\nb \"y\"\n& a \"z\"\n");
    at(2 * kMs);
    EXPECT_EQ(logB.bytes, "12");
    EXPECT_EQ(logA.bytes, "");
    at(3 * kMs);
    EXPECT_EQ(logA.bytes, "x");
    // "y" and "z" start together at 8 ms and both complete at 9 ms.
    at(9 * kMs - 1);
    EXPECT_EQ(logB.bytes, "12");
    at(9 * kMs);
    EXPECT_EQ(logB.bytes, "12y");
    EXPECT_EQ(logA.bytes, "xz");
}

TEST_F(SimFixture, ModemWordsDeltasAndTheTrailingEdgeOfRing)
{
    start("modem A DSR CTS\nwait 1ms\nmodem A +RI +DCD\nwait 1ms\nmodem A -RI\nwait 1ms\nmodem B DSR\n");
    SimPort &a = line->portA();
    const int ringEdge = a.addStatusTrigger(StatusTriggerKind::Modem);
    ASSERT_TRUE(a.setStatusTrigger(ringEdge, Msr::TeriRi, true));
    at(0);
    EXPECT_EQ(a.modemStatus(), Msr::Dsr | Msr::Cts | 0x01 | 0x02);
    EXPECT_EQ(a.modemStatus(), Msr::Dsr | Msr::Cts); // reading cleared the deltas
    at(1 * kMs);
    EXPECT_EQ(a.modemStatus(), Msr::Dsr | Msr::Cts | Msr::Ri | Msr::Dcd | 0x08);
    EXPECT_EQ(logA.count("tstatus"), 0); // the leading edge of a ring does not count
    at(2 * kMs);
    EXPECT_EQ(a.modemStatus(), Msr::Dsr | Msr::Cts | Msr::Dcd | Msr::TeriRi);
    EXPECT_EQ(logA.notes, (std::vector<std::string>{"modem", "modem", "modem", "tstatus " + std::to_string(ringEdge)}));
    at(3 * kMs);
    EXPECT_EQ(line->portB().modemStatus() & 0xF0, Msr::Dsr);
    EXPECT_EQ(logB.notes, (std::vector<std::string>{"modem"}));
}

TEST_F(SimFixture, StatusTriggersFireOnceUntilArmedAgain)
{
    start("error B parity framing\nwait 1ms\nerror B overrun\nwait 1ms\nerror B break\n");
    SimPort &b = line->portB();
    const int lineTrig = b.addStatusTrigger(StatusTriggerKind::Line);
    const int modemTrig = b.addStatusTrigger(StatusTriggerKind::Modem);
    ASSERT_TRUE(b.setStatusTrigger(lineTrig, 15, true));
    ASSERT_TRUE(b.setStatusTrigger(modemTrig, 180, true));
    at(0);
    at(1 * kMs); // not armed again: no second firing
    ASSERT_TRUE(b.setStatusTrigger(lineTrig, LineError::Parity, true));
    at(2 * kMs); // armed, but break is not in the mask
    const std::string t = "tstatus " + std::to_string(lineTrig);
    EXPECT_EQ(logB.notes, (std::vector<std::string>{"error 6", t, "error 1", "error 8"}));
    EXPECT_FALSE(b.setStatusTrigger(9999, 15, true));
}

TEST_F(SimFixture, LoopsRepeatTheScenarioAndEndOrGoOnForEver)
{
    start("loop 3\na \"z\"\nwait 1ms\n");
    at(100 * kMs);
    EXPECT_EQ(logA.bytes, "zzz");
    EXPECT_TRUE(line->finished());
    start("loop\nb \"ab\"\nwait 3ms\n"); // 5 ms a pass
    at(24 * kMs);
    EXPECT_EQ(logB.bytes, "ababababab"); // passes start at 0, 5, 10, 15, 20 ms
    EXPECT_FALSE(line->finished());
}

TEST_F(SimFixture, ClosedPortDropsBytesButKeepsItsLineLevels)
{
    start("modem A DCD\na \"lost\"\nwait 1ms\n", false);
    at(10 * kMs);
    EXPECT_EQ(line->droppedBytes(), 4u);
    ASSERT_TRUE(line->portA().open());
    EXPECT_EQ(line->portA().modemStatus() & 0xF0, Msr::Dcd);
    EXPECT_FALSE(line->portA().charReady());
}

TEST_F(SimFixture, LostPortIsReportedOnceAndCannotReopenUntilReconnected)
{
    start("a \"x\"\nlost A\nlost A\na \"y\"\n");
    at(10 * kMs);
    EXPECT_EQ(logA.notes, (std::vector<std::string>{"data 1", "lost"}));
    line->portA().close();
    EXPECT_FALSE(line->portA().open());
    EXPECT_FALSE(line->portA().errorText().empty());
    line->reconnect(kSimPortA);
    EXPECT_TRUE(line->portA().open());
}

TEST_F(SimFixture, UnavailableAndBadSettingsRefuseToOpen)
{
    start("", false);
    line->setUnavailable(kSimPortB, true);
    EXPECT_FALSE(line->portB().open());
    EXPECT_FALSE(line->portB().errorText().empty());
    line->setUnavailable(kSimPortB, false);
    EXPECT_TRUE(line->portB().open());
    PortSettings bad;
    bad.dataBits = 9;
    line->portA().setSettings(bad);
    EXPECT_FALSE(line->portA().open());
}

TEST_F(SimFixture, AsFastAsPossibleWaitsForTheConsumerAndLosesNothing)
{
    std::string big(10000, 'q');
    start("pace off\nchunk 64\na \"" + big + "\"\n");
    logA.readBytes = false;
    at(0);
    const std::size_t first = line->portA().channel().buffered();
    EXPECT_LE(first, static_cast<std::size_t>(kReceiveBufferSize));
    EXPECT_GT(first, 0u);
    std::size_t total = 0;
    for (int round = 0; round < 100 && !line->finished(); ++round) {
        while (line->portA().charReady()) {
            (void)line->portA().getChar();
            ++total;
        }
        line->poll();
    }
    while (line->portA().charReady()) {
        (void)line->portA().getChar();
        ++total;
    }
    EXPECT_EQ(total, big.size());
}

TEST_F(SimFixture, InjectedOverflowIsLostVisiblyAsAnOverrun)
{
    start("");
    logA.readBytes = false;
    line->injectBytes(kSimPortA, std::vector<std::uint8_t>(kReceiveBufferSize + 10, 0x55));
    SpinPending();
    EXPECT_EQ(line->droppedBytes(), 10u);
    EXPECT_EQ(logA.notes.back(), "error 1");
}

TEST_F(SimFixture, DataTriggerMatchesAcrossChunksAndEachOccurrence)
{
    start("chunk 3\na \"xxCONNECT 1 CONCONNECT\"\n");
    const int h = line->portA().addDataTrigger({'C', 'O', 'N', 'N', 'E', 'C', 'T'});
    for (std::int64_t t = 0; t <= 30 * kMs; t += kMs)
        at(t);
    const std::string hit = "tdata " + std::to_string(h);
    EXPECT_EQ(logA.count(hit), 2);
    // The hit comes right after the notification that holds its last byte.
    auto it = std::find(logA.notes.begin(), logA.notes.end(), hit);
    ASSERT_NE(it, logA.notes.begin());
    EXPECT_EQ(*(it - 1), "data 3"); // "xxC","ONN","ECT"
    line->portA().removeTrigger(h);
    line->injectBytes(kSimPortA, {'C', 'O', 'N', 'N', 'E', 'C', 'T'});
    SpinPending();
    EXPECT_EQ(logA.count(hit), 2);
}

TEST(SimLineRealTime, TimerPacesTheLineOnTheSystemClock)
{
    test::TestApp();
    ScenarioError err;
    auto sc = ParseScenario("baud 9600\nb \"hello\"\n", err); // about 5 ms on the wire
    ASSERT_TRUE(sc);
    SystemClock clock;
    SimLine line(*sc, clock);
    NoteLog log;
    line.portB().setListener(&log);
    ASSERT_TRUE(line.portB().open());
    line.restart();
    const auto t0 = std::chrono::steady_clock::now();
    line.start(1);
    ASSERT_TRUE(test::SpinUntil([&] { return log.bytes == "hello"; }));
    EXPECT_GE(std::chrono::steady_clock::now() - t0, std::chrono::microseconds(5000));
    EXPECT_TRUE(line.finished());
    line.stopTimer();
}

TEST(ReceiveChannel, ReaderWaitsFromFullUntilTheResumeLevel)
{
    test::TestApp();
    ReceiveChannel ch([](const PortNote &) {});
    std::vector<std::uint8_t> block(kBufferFull, 0x11);
    ASSERT_EQ(ch.pushBytes(block.data(), block.size()), block.size());
    std::atomic<bool> resumed{false};
    std::thread reader([&] {
        resumed = ch.waitForRoom();
    });
    for (int taken = 0; taken < kBufferFull - kBufferResume - 1; ++taken)
        (void)ch.getChar();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(resumed) << "must stay held above the resume level";
    (void)ch.getChar(); // now exactly at the resume level
    reader.join();
    EXPECT_TRUE(resumed);
    EXPECT_EQ(ch.buffered(), static_cast<std::size_t>(kBufferResume));
    // Stopping releases a held reader with false.
    ASSERT_EQ(ch.pushBytes(block.data(), block.size()), block.size());
    std::thread held([&] { resumed = ch.waitForRoom(); });
    ch.stop();
    held.join();
    EXPECT_FALSE(resumed);
}

TEST(PatternMatcher, FindsOverlappingAndSplitOccurrences)
{
    struct Case {
        std::string pattern, stream;
        int hits;
    };
    const Case cases[] = {
        {"aab", "aaab", 1}, {"aa", "aaaa", 3}, {"abab", "abababab", 3},
        {"abc", "abdabcab", 1}, {"x", "", 0}, {"\xff\xff", "\xff\xff\xff", 2}};
    for (const auto &c : cases) {
        PatternMatcher m(std::vector<std::uint8_t>(c.pattern.begin(), c.pattern.end()));
        int hits = 0;
        for (char ch : c.stream)
            hits += m.feed(static_cast<std::uint8_t>(ch)) ? 1 : 0;
        EXPECT_EQ(hits, c.hits) << c.pattern << " in " << c.stream;
    }
}

TEST(Scenario, ByteItemsHexTextEscapesAndControlNames)
{
    std::string why;
    auto b = ParseByteItems(R"(02 0x41 "a\r\n\x7f\"" 'q\'' <ETX><esc> <SP>)", why);
    ASSERT_TRUE(b) << why;
    EXPECT_EQ(*b, (std::vector<std::uint8_t>{0x02, 0x41, 'a', '\r', '\n', 0x7F, '"', 'q', '\'', 0x03, 0x1B, 0x20}));
}

TEST(Scenario, DurationsInEveryUnit)
{
    const std::pair<const char *, std::int64_t> good[] = {
        {"20ms", 20'000'000}, {"250us", 250'000}, {"1.5s", 1'500'000'000}, {"7ns", 7}};
    for (const auto &[text, ns] : good)
        EXPECT_EQ(ParseDuration(text), ns) << text;
    for (const char *bad : {"20", "ms", "-1ms", "1.2.3ms"})
        EXPECT_FALSE(ParseDuration(bad)) << bad;
}

TEST(Scenario, ParseErrorsNameTheLineAndTheReason)
{
    struct Case {
        std::string text;
        int line;
        std::string reason;
    };
    const Case cases[] = {
        {"a \"open", 1, "closing quote"},
        {"# c\n\nb 1G", 3, "not a hex byte"},
        {"a \"\\q\"", 1, "unknown escape"},
        {"a <BOGUS>", 1, "unknown control name"},
        {"a", 1, "no bytes"},
        {"wait 5", 1, "not a time"},
        {"modem C DSR", 1, "unknown port"},
        {"modem A +DSR CTS", 1, "mixing"},
        {"modem A FOO", 1, "unknown modem line"},
        {"error A", 1, "error needs"},
        {"error B smoke", 1, "unknown line error"},
        {"lost", 1, "lost needs"},
        {"loop\nloop", 2, "twice"},
        {"chunk 0", 1, "chunk"},
        {"baud fast", 1, "baud"},
        {"pace maybe", 1, "pace"},
        {"& a 01", 1, "needs a step"},
        {"a 01\nfly away", 2, "unknown command"},
        {"a \"\\x4\"", 1, "two hex digits"},
    };
    for (const auto &c : cases) {
        ScenarioError err;
        EXPECT_FALSE(ParseScenario(c.text, err)) << c.text;
        EXPECT_EQ(err.line, c.line) << c.text;
        EXPECT_NE(err.reason.find(c.reason), std::string::npos) << c.text << " -> " << err.reason;
    }
    // Files that cannot be read are no scenario at all, not an empty one.
    for (const char *path : {"/nonexistent/x.ksc", "/tmp"}) {
        ScenarioError err;
        EXPECT_FALSE(LoadScenarioFile(path, err)) << path;
        EXPECT_EQ(err.line, 0) << path;
        EXPECT_NE(err.reason.find(path), std::string::npos) << err.reason;
    }
}

TEST(Scenario, GarbageNeverCrashesAndErrorsAlwaysNameALine)
{
    const char *pieces[] = {"a ", "b ", "& ", "modem ", "error ", "wait ", "at ", "loop", "chunk ", "\"", "'", "\\",
                            "\\x", "<", ">", "STX", "0x", "FF", "1", "ms", "#", "\n", " ", "+DSR", "-", "A", "\xff", "\0"};
    std::mt19937 rng(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        const int n = static_cast<int>(rng() % 24);
        for (int i = 0; i < n; ++i)
            text += pieces[rng() % std::size(pieces)];
        ScenarioError err;
        if (!ParseScenario(text, err)) {
            EXPECT_GE(err.line, 1) << text;
            EXPECT_FALSE(err.reason.empty()) << text;
        }
    }
}

TEST(Scenario, CommentsAndHashInsideText)
{
    ScenarioError err;
    auto sc = ParseScenario("a \"#1\" # a comment\n  # only a comment\nloop 2 # twice\n", err);
    ASSERT_TRUE(sc) << err.text();
    ASSERT_EQ(sc->steps.size(), 1u);
    EXPECT_EQ(sc->steps[0].bytes, (std::vector<std::uint8_t>{'#', '1'}));
    EXPECT_EQ(sc->loops, 2);
}

TEST_F(SimFixture, BuiltInDemoLooksLikeARealLine)
{
    ScenarioError err;
    ASSERT_TRUE(LoadScenario("", err)) << "the shipped demo must parse: " << err.text();
    start(std::string(DemoScenarioText()));
    const int ring = line->portA().addStatusTrigger(StatusTriggerKind::Modem);
    int rings = 0;
    std::string errorsA, errorsB;
    for (std::int64_t t = 0; t < 4000 * kMs; t += kMs) {
        ASSERT_TRUE(line->portA().setStatusTrigger(ring, Msr::TeriRi, true));
        const auto before = logA.count("tstatus");
        at(t);
        rings += logA.count("tstatus") - before;
    }
    EXPECT_NE(logB.bytes.find("ATDT"), std::string::npos);
    EXPECT_NE(logA.bytes.find("CONNECT 9600"), std::string::npos);
    EXPECT_NE(logA.bytes.find('\x02'), std::string::npos); // STX
    EXPECT_NE(logA.bytes.find('\x03'), std::string::npos); // ETX
    EXPECT_GE(logA.count("error 2"), 1);                   // parity error on D2
    EXPECT_GE(logB.count("error 4"), 1);                   // framing error on D1
    EXPECT_GE(logA.count("modem"), 8);
    EXPECT_GE(logB.count("modem"), 4);
    EXPECT_GE(rings, 2);
    EXPECT_FALSE(line->finished()); // loops for ever
}

} // namespace
} // namespace kestrel
