// The simulated line on a virtual clock: pacing, FIFO chunks, modem lines,
// overruns, and the scenario text format.

#include <gtest/gtest.h>

#include <random>

#include "record/clock.h"
#include "ports/receive_channel.h"
#include "ports/scenario.h"
#include "ports/pattern_set.h"
#include "ports/sim_port.h"
#include "support/note_log.h"
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

TEST_F(SimFixture, InjectedOverflowIsLostVisiblyAsAnOverrun)
{
    start("");
    logA.readBytes = false;
    line->injectBytes(kSimPortA, std::vector<std::uint8_t>(kReceiveBufferSize + 10, 0x55));
    SpinPending();
    EXPECT_EQ(line->droppedBytes(), 10u);
    EXPECT_EQ(logA.notes.back(), "error 1");
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

// The set must find exactly what independent matchers find, in handle order,
// whatever part-way matches, shared first bytes and removals it goes through.
TEST(PatternSet, FindsWhatSeparateMatchersFind)
{
    const std::vector<std::string> patterns = {"ab", "aab", "b", "abab", "ba", "aaaa", "ZZ1", "Z"};
    std::mt19937 rng(7);
    for (int round = 0; round < 20; ++round) {
        PatternSet set;
        std::map<int, PatternMatcher> single;
        for (std::size_t i = 0; i < patterns.size(); ++i) {
            const std::vector<std::uint8_t> p(patterns[i].begin(), patterns[i].end());
            set.add(static_cast<int>(10 - i), p); // handles in another order than the patterns
            single.emplace(static_cast<int>(10 - i), PatternMatcher(p));
        }
        std::vector<int> got;
        for (int n = 0; n < 400; ++n) {
            if (n == 200) { // half-way one pattern goes, mid-match or not
                set.remove(10 - round % 8);
                single.erase(10 - round % 8);
            }
            const std::uint8_t byte = "abZ1"[rng() % 4];
            set.feed(byte, got);
            std::vector<int> want;
            for (auto &[handle, m] : single)
                if (m.feed(byte))
                    want.push_back(handle);
            ASSERT_EQ(got, want) << "round " << round << " byte " << n;
        }
    }
}

TEST(Scenario, ByteItemsHexTextEscapesAndControlNames)
{
    std::string why;
    auto b = ParseByteItems(R"(02 0x41 "a\r\n\x7f\"" 'q\'' <ETX><esc> <SP>)", why);
    ASSERT_TRUE(b) << why;
    EXPECT_EQ(*b, (std::vector<std::uint8_t>{0x02, 0x41, 'a', '\r', '\n', 0x7F, '"', 'q', '\'', 0x03, 0x1B, 0x20}));
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
        {"wait 5", 1, "not a time"},
        {"modem C DSR", 1, "unknown port"},
        {"lost", 1, "lost needs"},
        {"& a 01", 1, "needs a step"},
        {"a 01\nfly away", 2, "unknown command"},
    };
    for (const auto &c : cases) {
        ScenarioError err;
        EXPECT_FALSE(ParseScenario(c.text, err)) << c.text;
        EXPECT_EQ(err.line, c.line) << c.text;
        EXPECT_NE(err.reason.find(c.reason), std::string::npos) << c.text << " -> " << err.reason;
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

} // namespace
} // namespace kestrel
