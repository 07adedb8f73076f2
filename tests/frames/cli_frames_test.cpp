// kestrel-cli frames end to end: a Modbus RTU conversation recorded by the
// recording session, listed with its CRC verdicts and pairs, as text and as
// JSON; the frame options reach the splitter; bad input gets exit codes.

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/modbus_line.h"
#include "support/run_cli.h"
#include "support/scenario_recording.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

test::CliRun cli(const std::string &args) { return test::RunCapture(KESTREL_CLI_PATH, args); }

int count(const std::string &text, const std::string &what)
{
    int n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size()))
        ++n;
    return n;
}

struct FramesCli : ::testing::Test {
    test::TempDir dir;
    std::string ksr = dir.file("modbus.ksr");
    void SetUp() override { test::RecordScenario(test::kModbusScenario, ksr, {"19200", "8", "N", "1"}); }
};

TEST_F(FramesCli, AModbusConversationShowsItsCrcVerdictsAndPairs)
{
    const test::CliRun r = cli("frames '" + ksr + "' --baud 19200 --protocol modbus-rtu");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_EQ(count(r.out, " bytes: "), test::kModbusFrames) << r.out;
    EXPECT_EQ(count(r.out, "CRC good"), test::kModbusFrames - 1) << r.out;
    EXPECT_EQ(count(r.out, "| BAD "), 1) << r.out;
    const std::string bad = "#" + std::to_string(test::kModbusBadFrame) + " D2 ";
    const auto line = r.out.find(bad);
    ASSERT_NE(line, std::string::npos) << r.out;
    EXPECT_NE(r.out.find("CRC bad (found 3219, computed", line), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("response to #1 after"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("#8 D2 MP"), std::string::npos);
    EXPECT_NE(r.out.find("[PE before byte 5]"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("# 8 frames (D1 4, D2 4)"), std::string::npos) << r.out;

    const test::CliRun j = cli("frames '" + ksr + "' --baud 19200 --protocol modbus-rtu --json --naming rs232");
    ASSERT_EQ(j.code, 0) << j.out;
    EXPECT_EQ(count(j.out, "\"crc\": \"bad\""), 1);
    EXPECT_EQ(count(j.out, "\"role\": \"response\""), 4) << j.out;
    EXPECT_EQ(count(j.out, "\"circuit\": \"Tx\""), 4);
    EXPECT_NE(j.out.find("\"bytes\": \"010300000001840A\""), std::string::npos);
    EXPECT_NE(j.out.find("\"kinds\": [\"PE\"]"), std::string::npos);
    EXPECT_NE(j.out.find("\"count\": 8"), std::string::npos);
}

TEST_F(FramesCli, GapEndByteRangeAndSettingsReachTheSplitter)
{
    // A gap of 100 characters (52 ms) joins each question with the next one.
    test::CliRun r = cli("frames '" + ksr + "' --baud 19200 --gap 100");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("# 2 frames (D1 1, D2 1)"), std::string::npos) << r.out;
    // The byte 0x0A ends the first question after its last byte; 0x02 ends several frames.
    r = cli("frames '" + ksr + "' --baud 19200 --end-byte 02 --range 0:40");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("8 bytes: 01 03 00 00 00 01 84 0A\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("3 bytes: 01 03 02 (end byte)"), std::string::npos) << r.out;
    // At 9600 baud the line looks twice as fast as it may be: a warning, the same frames.
    r = cli("frames '" + ksr + "'");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("give the recording's --baud"), std::string::npos) << r.out;
}

TEST_F(FramesCli, BadInputGetsAMessageAndItsExitCode)
{
    const std::string text = dir.file("note.txt");
    std::ofstream(text) << "not a recording, just a note of a hundred bytes or so, long enough to hold a record or two";
    const struct {
        std::string args;
        int code;
        const char *says;
    } cases[] = {
        {"frames '" + dir.file("missing.ksr") + "'", 3, "missing.ksr"},
        {"frames '" + text + "'", 3, "not a"},
        {"frames '" + ksr + "' --protocol dnp9", 2, "unknown protocol 'dnp9' (known: modbus-rtu)"},
        {"frames '" + ksr + "' --gap 0", 2, "--gap"},
        {"frames '" + ksr + "' --gap x", 2, "--gap"},
        {"frames '" + ksr + "' --end-byte '0A 0D'", 2, "takes one byte"},
        {"frames '" + ksr + "' --range 9:2", 2, "starts after it ends"},
        {"frames '" + ksr + "' --range 0:99999", 2, "beyond the recording"},
        {"frames '" + ksr + "' --baud 0", 2, "--baud"},
    };
    for (const auto &c : cases) {
        const test::CliRun r = cli(c.args);
        EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.out;
        EXPECT_NE(r.out.find(c.says), std::string::npos) << c.args << "\n" << r.out;
    }
}

} // namespace
} // namespace kestrel
