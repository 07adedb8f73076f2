// The frame splitter's rules: the idle gap at exactly N character times, the
// Modbus floor, circuits framed on their own, the end byte, errors and signal
// changes inside a frame, and the order frames come out in. The rules are
// checked on MPs stamped by hand, the gap also on a recording that the
// recording session made of a scenario handing the bytes over in chunks.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frames/frame_splitter.h"
#include "record/recording_check.h"
#include "support/scenario_recording.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

constexpr double kStart = 45000.5;

// MPs stamped at exact offsets (seconds) from kStart.
struct Line {
    std::vector<MpRecord> mps;
    MpRecord &at(double seconds)
    {
        MpRecord mp;
        if (!mps.empty()) {
            const MpRecord &prev = mps.back();
            mp.s1 = prev.s1, mp.m1 = prev.m1, mp.s2 = prev.s2, mp.m2 = prev.m2, mp.m5 = prev.m5, mp.m3 = prev.m3;
        }
        mp.number = static_cast<std::uint32_t>(mps.size());
        mp.time = kStart + seconds / 86400.0;
        mps.push_back(mp);
        return mps.back();
    }
    void d1(double seconds, std::uint8_t b)
    {
        MpRecord &mp = at(seconds);
        mp.d1 = b, mp.d1Valid = 1;
    }
    void d2(double seconds, std::uint8_t b)
    {
        MpRecord &mp = at(seconds);
        mp.d2 = b, mp.d2Valid = 1;
    }
    // count bytes on D1 back to back from `from`, one character time apart; returns the time of the last.
    double burst(double from, double tchar, std::vector<std::uint8_t> bytes)
    {
        double t = from;
        for (std::size_t i = 0; i < bytes.size(); ++i, t += tchar)
            d1(t, bytes[i]);
        return t - tchar;
    }
};

std::vector<Frame> split(const std::vector<MpRecord> &mps, const FrameRules &rules)
{
    std::vector<Frame> out;
    FrameSplitter s(rules, [&](Frame &&f) { out.push_back(std::move(f)); });
    for (std::size_t i = 0; i < mps.size(); ++i)
        s.add(i, mps[i]);
    s.finish();
    return out;
}

std::vector<Frame> splitFile(const std::string &path, const FrameRules &rules)
{
    RecordReader reader;
    std::string error;
    EXPECT_TRUE(OpenRecording(reader, path, error)) << error;
    std::vector<MpRecord> mps;
    reader.readBlock(0, reader.recordCount(), mps);
    return split(mps, rules);
}

std::string text(const Frame &f) { return {f.bytes.begin(), f.bytes.end()}; }

FrameRules rulesAt(long baud, double gapChars = 3.5)
{
    FrameRules r;
    r.charSeconds = CharacterSeconds(baud, 10);
    r.gapChars = gapChars;
    return r;
}

TEST(FrameSplitter, AnIdleGapOfExactlyNCharacterTimesEndsAFrameAndAShorterOneDoesNot)
{
    for (const double n : {1.5, 3.5, 10.0}) {
        const FrameRules rules = rulesAt(9600, n);
        const double tc = rules.charSeconds;
        Line line;
        double t = line.burst(0.0, tc, {1, 2, 3});
        // Idle time is the distance of the stamps less one character.
        t = line.burst(t + tc + n * tc, tc, {4, 5});        // exactly N: a new frame
        line.burst(t + tc + n * tc - 20e-6, tc, {6, 7});     // 20 us short of N: the same frame
        const std::vector<Frame> frames = split(line.mps, rules);
        ASSERT_EQ(frames.size(), 2u) << n;
        EXPECT_EQ(frames[0].bytes, (std::vector<std::uint8_t>{1, 2, 3})) << n;
        EXPECT_EQ(frames[0].end, FrameEnd::Gap);
        EXPECT_EQ(frames[1].bytes, (std::vector<std::uint8_t>{4, 5, 6, 7})) << n;
        EXPECT_EQ(frames[1].end, FrameEnd::Interrupt);
        EXPECT_EQ(frames[1].firstMp, 3u);
        EXPECT_EQ(frames[1].lastMp, 6u);
        EXPECT_DOUBLE_EQ(frames[1].startTime, line.mps[3].time);
        EXPECT_DOUBLE_EQ(frames[1].endTime, line.mps[6].time);
    }
}

TEST(FrameSplitter, ModbusRulesKeepTheirFloorOf1750MicrosecondsAbove19200Baud)
{
    EXPECT_NEAR(ModbusRtuRules(9600, 11).gapSeconds(), 3.5 * 11 / 9600.0, 1e-12);
    EXPECT_NEAR(ModbusRtuRules(19200, 11).gapSeconds(), 3.5 * 11 / 19200.0, 1e-12);
    EXPECT_DOUBLE_EQ(ModbusRtuRules(38400, 11).gapSeconds(), 0.00175);
    EXPECT_DOUBLE_EQ(ModbusRtuRules(115200, 10).gapSeconds(), 0.00175);
    // A gap the user chose is taken as it is.
    EXPECT_NEAR(ModbusRtuRules(115200, 10, 3.5).gapSeconds(), 3.5 * 10 / 115200.0, 1e-12);

    const FrameRules rules = ModbusRtuRules(38400, 10);
    const double tc = rules.charSeconds;
    Line line;
    double t = line.burst(0.0, tc, {1, 2});
    t = line.burst(t + tc + 0.0015, tc, {3}); // 1.5 ms: above 3.5 Tc, under the floor
    line.burst(t + tc + 0.00175, tc, {4});
    const std::vector<Frame> frames = split(line.mps, rules);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].bytes, (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(frames[1].bytes, (std::vector<std::uint8_t>{4}));
}

// Each circuit is framed on its own: an answer that starts sooner than the gap
// is a frame of its own, and bytes of the other circuit in between do not cut one.
TEST(FrameSplitter, EachCircuitIsFramedOnItsOwnAndFramesComeOutByTheirFirstByte)
{
    const FrameRules rules = rulesAt(9600);
    const double tc = rules.charSeconds;
    Line line;
    const double t = line.burst(0.0, tc, {'Q', '1'});
    line.d2(t + tc, 'A'); // one character after the question
    line.d1(t + 1.5 * tc, '2'); // the question goes on while the answer runs
    line.d2(t + 2 * tc, 'B');
    line.d1(t + 2.5 * tc, '3');
    line.d2(t + 10 * tc, 'C'); // D2 idle long enough: a new answer
    MpRecord &both = line.at(t + 20 * tc); // both circuits in one MP: D1's frame comes first
    both.d1 = 'x', both.d1Valid = 1, both.d2 = 'y', both.d2Valid = 1;
    const std::vector<Frame> frames = split(line.mps, rules);
    ASSERT_EQ(frames.size(), 5u);
    EXPECT_EQ(frames[0].circuit, FrameCircuit::D1);
    EXPECT_EQ(text(frames[0]), "Q123");
    EXPECT_EQ(frames[1].circuit, FrameCircuit::D2);
    EXPECT_EQ(text(frames[1]), "AB");
    EXPECT_EQ(text(frames[2]), "C");
    EXPECT_LT(frames[0].firstMp, frames[1].firstMp);
    EXPECT_EQ(text(frames[3]) + text(frames[4]), "xy");
}

TEST(FrameSplitter, AFrameWaitsForAnEarlierOneOfTheOtherCircuit)
{
    const FrameRules rules = rulesAt(9600);
    const double tc = rules.charSeconds;
    Line line;
    line.d1(0, 'L');
    line.d2(tc, 's');
    line.d1(2 * tc, 'o');
    line.d1(5 * tc, 'n'); // D2 has been idle 3 Tc: not yet
    line.d1(6 * tc, 'g'); // now it has: "s" ends, but "Long" started first
    std::vector<std::uint64_t> order;
    FrameSplitter s(rules, [&](Frame &&f) { order.push_back(f.firstMp); });
    for (std::size_t i = 0; i < line.mps.size(); ++i)
        s.add(i, line.mps[i]);
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(s.pendingFrom(), 0u);
    s.advanceTo(line.mps.back().time + 5 * tc);
    EXPECT_EQ(order, (std::vector<std::uint64_t>{0, 1}));
    EXPECT_FALSE(s.pendingFrom());
}

TEST(FrameSplitter, AnEndByteEndsAFrameAndTheGapStillApplies)
{
    FrameRules rules = rulesAt(9600);
    rules.endByte = '\n';
    const double tc = rules.charSeconds;
    Line line;
    double t = line.burst(0.0, tc, {'o', 'k', '\n', 'g', 'o'});
    t = line.burst(t + 10 * tc, tc, {'!', '\n'});
    line.burst(t + tc, tc, {'\n'});
    const std::vector<Frame> frames = split(line.mps, rules);
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(text(frames[0]), "ok\n");
    EXPECT_EQ(frames[0].end, FrameEnd::EndByte);
    EXPECT_EQ(text(frames[1]), "go");
    EXPECT_EQ(frames[1].end, FrameEnd::Gap);
    EXPECT_EQ(text(frames[2]), "!\n");
    EXPECT_EQ(text(frames[3]), "\n");
}

TEST(FrameSplitter, AFullFrameEndsAndARecordingsStopEndsEveryFrame)
{
    FrameRules rules = rulesAt(9600);
    rules.maxBytes = 4;
    const double tc = rules.charSeconds;
    Line line;
    const double t = line.burst(0.0, tc, {1, 2, 3, 4, 5, 6});
    line.d2(t, 9);
    MpRecord &stop = line.at(t + tc);
    stop.markKind = kSystemMarkKind, stop.markCode = SystemMark::Stopped;
    MpRecord &start = line.at(t + 2 * tc);
    start.markKind = kSystemMarkKind, start.markCode = SystemMark::Appended;
    line.d1(t + 3 * tc, 7); // back to back with 6, yet in another recording
    const std::vector<Frame> frames = split(line.mps, rules);
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(frames[0].bytes.size(), 4u);
    EXPECT_EQ(frames[0].end, FrameEnd::Full);
    EXPECT_EQ(frames[1].bytes, (std::vector<std::uint8_t>{5, 6}));
    EXPECT_EQ(frames[1].end, FrameEnd::Interrupt);
    EXPECT_EQ(frames[2].circuit, FrameCircuit::D2);
    EXPECT_EQ(frames[3].bytes, (std::vector<std::uint8_t>{7}));
}

TEST(FrameSplitter, ErrorsGoWithTheirByteAndSignalChangesWithTheFrameTheyHappenIn)
{
    const FrameRules rules = rulesAt(9600);
    const double tc = rules.charSeconds;
    Line line;
    line.d2(0, 'a');
    line.at(0.5 * tc).peD2 = 1; // reported before the damaged byte
    line.d2(tc, 'b');
    line.d2(2 * tc, 'c');
    line.mps.back().m2 = 1;     // CTS on with the last byte: still inside the frame
    line.at(2.5 * tc).m5 = 1;   // after the last byte: not in the frame
    line.at(3 * tc).feD1 = 1;   // D1: no byte follows
    line.at(20 * tc).feD2 = 1;  // D2: the byte it belongs to starts the next frame
    line.d2(21 * tc, 'x');
    const std::vector<Frame> frames = split(line.mps, rules);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(text(frames[0]), "abc");
    ASSERT_EQ(frames[0].errors.size(), 1u);
    EXPECT_EQ(frames[0].errors[0], (FrameError{1, line.mps[1].time, 1, ErrorBit::PE}));
    ASSERT_EQ(frames[0].lineChanges.size(), 1u);
    EXPECT_EQ(frames[0].lineChanges[0].mp, 3u);
    EXPECT_EQ(frames[0].lineChanges[0].levels, LevelBit::M2);
    ASSERT_EQ(frames[1].errors.size(), 1u);
    EXPECT_EQ(frames[1].errors[0].beforeByte, 0u);
    EXPECT_EQ(frames[1].errors[0].kinds, ErrorBit::FE);
    EXPECT_TRUE(frames[1].lineChanges.empty());
    EXPECT_EQ(frames[1].levelsAtStart, LevelBit::M2 | LevelBit::M5);

    FrameSplitter s(rules, [](Frame &&) {});
    for (std::size_t i = 0; i < line.mps.size(); ++i)
        s.add(i, line.mps[i]);
    s.finish();
    EXPECT_EQ(s.loneErrors(), 1u);
}

// A recording the recording session made, the bytes handed over in chunks of 8 at
// 10,000 baud (one character is exactly 1 ms): the gap still splits at 3.5 characters.
TEST(RecordedFrames, ChunkedBytesGapOfExactly3Point5CharactersSplitsAndAQuarterLessDoesNot)
{
    test::TempDir dir;
    const std::string ksr = dir.file("line.ksr");
    test::RecordScenario("baud 10000\nchunk 8\n"
                         "b 01 02 03 04 05 06 07 08\n"
                         "wait 3.5ms\n"
                         "b 11 12 13 14 15 16 17 18\n"
                         "wait 3.25ms\n"
                         "b 21 22 23 24 25 26 27 28 29 2A\n" // two chunks
                         "wait 20ms\n",
                         ksr, {"10000", "8", "N", "1"});
    const std::vector<Frame> frames = splitFile(ksr, rulesAt(10000));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].bytes.size(), 8u);
    EXPECT_EQ(frames[1].bytes.size(), 18u);
    EXPECT_EQ(frames[1].bytes.front(), 0x11);
    EXPECT_EQ(frames[1].bytes.back(), 0x2A);
}

} // namespace
} // namespace kestrel
