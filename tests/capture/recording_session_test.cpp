// The recording session over the simulated line: what the ports hold when
// recording pauses or stops ends up in the file, new settings reach the
// store, and trigger evaluation plugs in through its hooks. (A lost port is
// followed through the window's tests, which use the same session.)

#include <gtest/gtest.h>

#include "base/reporter.h"
#include "base/string_table.h"
#include "capture/recording_session.h"
#include "ports/port_timing.h"
#include "ports/sim_port.h"
#include "record/record_reader.h"
#include "support/event_loop.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

std::vector<std::uint8_t> bytes(const std::string &s) { return {s.begin(), s.end()}; }

struct SessionFixture : ::testing::Test {
    test::TempDir dir;
    ManualClock clock;
    test::ScriptedPrompter prompter;
    PromptReporter reporter{prompter};
    std::unique_ptr<RecordingSession> session;

    void SetUp() override
    {
        test::TestApp();
        SetGlobalLang(kLangEnglish);
        session = RecordingSession::Simulated(Scenario{}, reporter, &clock);
        session->file().setPath(dir.file("session.ksr"));
        session->recorder().setDelay([](std::chrono::milliseconds) {});
        session->recorder().setAppendReplace(RecordMode::Append);
        ASSERT_TRUE(session->applySettings({"9600", "8", "N", "1"}));
    }
    void TearDown() override { SetGlobalLang(kLangGerman); }

    SimLine &line() { return *session->simLine(); }
    std::vector<MpRecord> records()
    {
        RecordReader r;
        std::vector<MpRecord> out;
        if (r.open(session->file().path()))
            r.readBlock(0, r.recordCount(), out);
        return out;
    }
};

// The data bytes of D1 and D2 in file order, and where the first stop mark stands.
struct FileData {
    std::string d1, d2;
    std::vector<int> marks;
    bool gapFree = true;
};

FileData dataOf(const std::vector<MpRecord> &recs)
{
    FileData f;
    for (std::size_t i = 0; i < recs.size(); ++i) {
        f.gapFree = f.gapFree && recs[i].number == i;
        if (recs[i].isSystemMark())
            f.marks.push_back(recs[i].markCode);
        if (recs[i].d1Valid)
            f.d1 += static_cast<char>(recs[i].d1);
        if (recs[i].d2Valid)
            f.d2 += static_cast<char>(recs[i].d2);
    }
    return f;
}

TEST_F(SessionFixture, BytesThePortsHoldAtPauseAndStopAreInTheFileBeforeTheStopMark)
{
    session->record();
    ASSERT_TRUE(session->recording());
    line().injectBytes(kSimPortA, bytes("ab"));
    line().injectBytes(kSimPortB, bytes("1"));
    ASSERT_TRUE(test::SpinUntil([&] { return dataOf(records()).d2 == "ab"; }));
    // Received, not yet delivered when pause is pressed.
    line().injectBytes(kSimPortA, bytes("cd"));
    line().injectBytes(kSimPortB, bytes("23"));
    session->togglePause();
    EXPECT_EQ(dataOf(records()).d2, "abcd");
    line().injectBytes(kSimPortA, bytes("-")); // the ports are closed while paused
    session->togglePause();
    ASSERT_TRUE(session->recording());
    line().injectBytes(kSimPortA, bytes("ef"));
    line().injectBytes(kSimPortB, bytes("456"));
    session->stop();
    test::SpinPending(); // notifications still queued for the closed ports write nothing

    const std::vector<MpRecord> recs = records();
    const FileData f = dataOf(recs);
    EXPECT_EQ(f.d2, "abcdef");
    EXPECT_EQ(f.d1, "123456");
    EXPECT_EQ(f.marks, (std::vector<int>{SystemMark::NewFile, SystemMark::Started, SystemMark::Stopped}));
    EXPECT_TRUE(f.gapFree);
    ASSERT_FALSE(recs.empty());
    EXPECT_TRUE(recs.back().isSystemMark());
    EXPECT_EQ(recs.back().markCode, SystemMark::Stopped);
    EXPECT_TRUE(prompter.asked.empty());
}

// Every byte value, NUL and 0xFF included, goes through port, capture and writer as it came.
TEST_F(SessionFixture, AllByteValuesReachTheFileOnBothCircuits)
{
    std::vector<std::uint8_t> up(256), down(256);
    for (int i = 0; i < 256; ++i) {
        up[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
        down[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(255 - i);
    }
    session->record();
    ASSERT_TRUE(session->recording());
    line().injectBytes(kSimPortB, up);
    line().injectBytes(kSimPortA, down);
    ASSERT_TRUE(test::SpinUntil([&] { return dataOf(records()).d1.size() == 256; }));
    session->stop();
    const FileData f = dataOf(records());
    EXPECT_EQ(f.d1, std::string(up.begin(), up.end()));
    EXPECT_EQ(f.d2, std::string(down.begin(), down.end()));
}

TEST_F(SessionFixture, PortSettingsGiveTheStoreItsCharacterTime)
{
    for (const auto &[baud, bits] : {std::pair{"9600", "8"}, {"115200", "7"}}) {
        EXPECT_TRUE(session->applySettings({baud, bits, "E", "2"}));
        const LineTiming want = ComputeLineTiming(session->port(PortTag::A).settings(), clock.frequency());
        EXPECT_EQ(session->store().lineTiming().tchar, want.tchar) << baud;
        EXPECT_EQ(session->port(PortTag::B).settings(), session->port(PortTag::A).settings());
    }
}

} // namespace
} // namespace kestrel
