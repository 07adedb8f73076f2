// kestrel-cli export --format pcapng|pcap, read back by Wireshark's tshark: a
// Modbus RTU conversation recorded by the recording session decodes with its
// CRC verdicts (the damaged answer shows a bad CRC in tshark as in
// 'kestrel-cli frames'), and packet counts per event type, directions,
// control lines and time stamps agree with the recording. The tshark cases
// are skipped where tshark is not installed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "frames/frame_splitter.h"
#include "record/recording_check.h"
#include "support/modbus_line.h"
#include "support/run_cli.h"
#include "support/scenario_recording.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {


#define NEED_TSHARK()                                                                                                  \
    if (!test::HaveTshark())                                                                                                 \
    GTEST_SKIP() << "tshark is not installed (apt-get install tshark)"

test::CliRun cli(const std::string &args) { return test::RunCapture(KESTREL_CLI_PATH, args, "TZ=Europe/Berlin"); }

// One line per packet, the fields split at '|'.
std::vector<std::vector<std::string>> tshark(const std::string &file, const std::string &fields)
{
    const test::CliRun r = test::RunCapture("tshark", "-r '" + file + "' -o mbrtu.crc_verification:TRUE -T fields -E separator='|' " + fields,
                                            {}, false);
    EXPECT_EQ(r.code, 0) << r.out;
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(r.out);
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> row;
        std::size_t at = 0;
        for (std::size_t bar; (bar = line.find('|', at)) != std::string::npos; at = bar + 1)
            row.push_back(line.substr(at, bar - at));
        row.push_back(line.substr(at));
        rows.push_back(row);
    }
    return rows;
}


struct PcapCli : ::testing::Test {
    test::TempDir dir;
    std::string ksr = dir.file("modbus.ksr");
    std::string ng = dir.file("modbus.pcapng");
    std::string classic = dir.file("modbus.pcap");
    void SetUp() override { test::RecordScenario(test::kModbusScenario, ksr, {"19200", "8", "N", "1"}); }

    // The frames as the splitter sees them, to compare what tshark shows with.
    std::vector<Frame> frames()
    {
        RecordReader reader;
        std::string error;
        EXPECT_TRUE(OpenRecording(reader, ksr, error)) << error;
        std::vector<Frame> out;
        FrameSplitter s(ModbusRtuRules(19200, 10), [&](Frame &&f) { out.push_back(std::move(f)); });
        std::vector<MpRecord> mps;
        reader.readBlock(0, reader.recordCount(), mps);
        for (std::size_t i = 0; i < mps.size(); ++i)
            s.add(i, mps[i]);
        s.finish();
        return out;
    }
};

TEST_F(PcapCli, AModbusConversationDecodesInTsharkWithItsCrcVerdicts)
{
    NEED_TSHARK();
    const test::CliRun r = cli("export '" + ksr + "' --format pcapng -o '" + ng + "' --baud 19200 --protocol mbrtu");
    ASSERT_EQ(r.code, 0) << r.out;
    const auto rows = tshark(ng, "-e frame.interface_id -e mbrtu.unit_id -e mbrtu.crc16.status");
    std::string verdicts;
    for (const auto &row : rows)
        if (row.at(0) == "1")
            verdicts += row.at(2) == "1" ? "good " : row.at(2) == "0" ? "BAD " : "? ";
    EXPECT_EQ(verdicts, "good good good good good BAD good good ");

    const test::CliRun frames = cli("frames '" + ksr + "' --baud 19200 --protocol modbus-rtu");
    ASSERT_EQ(frames.code, 0) << frames.out;
    EXPECT_NE(frames.out.find("#6 D2 MP"), std::string::npos);
    EXPECT_NE(frames.out.find("CRC bad", frames.out.find("#6 D2 MP")), std::string::npos) << frames.out;
    EXPECT_EQ(frames.out.find("CRC bad", frames.out.find("#7 D1 MP")), std::string::npos) << frames.out;
}

TEST_F(PcapCli, CountsDirectionsLinesAndTimesAgreeWithTheRecording)
{
    NEED_TSHARK();
    ASSERT_EQ(cli("export '" + ksr + "' --format pcapng -o '" + ng + "' --baud 19200 --protocol mbrtu").code, 0);
    const auto rows = tshark(ng, "-e frame.interface_id -e rtacser.eventtype -e frame.packet_flags_direction "
                                 "-e rtacser.cts -e rtacser.dsr -e rtacser.dtr -e rtacser.rts -e rtacser.dcd "
                                 "-e frame.time_epoch -e frame.comment");
    std::map<std::string, int> events;
    std::vector<std::vector<std::string>> data;
    int upper = 0;
    for (const auto &row : rows) {
        if (row.at(0) == "1") {
            ++upper;
            continue;
        }
        ++events[row.at(1)];
        if (row.at(1) == "0x01" || row.at(1) == "0x02")
            data.push_back(row);
    }
    // Two opening marks and three line changes; four questions, four answers; one parity error; the stop.
    EXPECT_EQ(events["0x00"], 5);
    EXPECT_EQ(events["0x01"], 4);
    EXPECT_EQ(events["0x02"], 4);
    EXPECT_EQ(events["0x08"], 1);
    EXPECT_EQ(events["0x07"], 0);
    EXPECT_EQ(events["0x06"], 1);
    EXPECT_EQ(upper, 8);

    const std::vector<Frame> want = frames();
    ASSERT_EQ(data.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i + 1));
        const bool tx = want[i].circuit == FrameCircuit::D1;
        EXPECT_EQ(data[i].at(1), tx ? "0x01" : "0x02");
        EXPECT_EQ(data[i].at(2), tx ? "0x00000002" : "0x00000001"); // outbound, inbound
        // DSR and CTS of port A throughout; DTR throughout, RTS (port B's CTS input) gone before #7.
        EXPECT_EQ(data[i].at(3) + data[i].at(4) + data[i].at(5) + data[i].at(6) + data[i].at(7),
                  i < 6 ? "11110" : "11100");
        // The recording was made at 12:00 in Berlin in March: 11:00 UTC.
        const double local = (want[i].startTime - 25569.0) * 86400.0;
        EXPECT_NEAR(std::stod(data[i].at(8)), local - 3600.0, 2e-6);
    }
    EXPECT_NE(rows.back().at(9).find("stopped"), std::string::npos);
}

TEST_F(PcapCli, PcapHoldsLinkType250AloneAndReadsTheSame)
{
    NEED_TSHARK();
    ASSERT_EQ(cli("export '" + ksr + "' --format pcapng -o '" + ng + "' --baud 19200").code, 0);
    ASSERT_EQ(cli("export '" + ksr + "' --format pcap -o '" + classic + "' --baud 19200").code, 0);
    const auto a = tshark(ng, "-e rtacser.eventtype -e frame.time_epoch -e data.data -e frame.interface_id");
    const auto b = tshark(classic, "-e rtacser.eventtype -e frame.time_epoch -e data.data -e frame.encap_type");
    ASSERT_EQ(a.size(), b.size());
    ASSERT_EQ(a.size(), 15u);
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].at(0), b[i].at(0)) << i;
        EXPECT_EQ(a[i].at(1), b[i].at(1)) << i;
        EXPECT_EQ(a[i].at(2), b[i].at(2)) << i;
        EXPECT_EQ(a[i].at(3), "0");
    }
    EXPECT_EQ(a[4].at(2), "010300000001840a");
}

TEST_F(PcapCli, CaptureFilesAreNeverWrittenOverAndBadOptionsSayWhy)
{
    std::ofstream(ng) << "someone's capture";
    const struct {
        std::string args;
        int code;
        const char *says;
    } cases[] = {
        {"export '" + ksr + "' --format pcapng -o '" + ng + "'", 2, "exists; give --overwrite"},
        {"export '" + ksr + "' --format pcap --protocol mbrtu -o '" + classic + "'", 2, "needs --format pcapng"},
        {"export '" + ksr + "' --format pcapng --protocol 'm b' -o '" + classic + "'", 2, "dissector name"},
        {"export '" + dir.file("none.ksr") + "' --format pcapng -o '" + classic + "'", 3, "none.ksr"},
        {"export '" + ksr + "' --format pcapng -o '" + dir.file("no/such/folder.pcapng") + "'", 3, "cannot create"},
        {"export '" + ksr + "' --format pcapng --range 5:1 -o '" + classic + "'", 2, "starts after it ends"},
        {"export '" + ksr + "' --format pcapng --gap -1 -o '" + classic + "'", 2, "--gap"},
    };
    for (const auto &c : cases) {
        const test::CliRun r = cli(c.args);
        EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.out;
        EXPECT_NE(r.out.find(c.says), std::string::npos) << c.args << "\n" << r.out;
    }
    EXPECT_EQ(test::ReadWholeFile(ng), "someone's capture");
    ASSERT_EQ(cli("export '" + ksr + "' --format pcapng --overwrite -o '" + ng + "'").code, 0);
    EXPECT_EQ(test::ReadWholeFile(ng).substr(0, 4), std::string("\x0a\x0d\x0d\x0a", 4));
}

} // namespace
} // namespace kestrel
