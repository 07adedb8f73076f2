// kestrel-cli extcap as Wireshark drives it: the interface, link type and
// option answers; a live capture on the simulated line into a FIFO that ends
// cleanly on SIGTERM and when the reader goes away; the entry in the personal
// extcap folder; and tshark capturing through it (skipped without tshark).

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "record/record_summary.h"
#include "support/pcapng_reader.h"
#include "support/run_cli.h"
#include "support/temp_dir.h"

namespace kestrel {
namespace {

test::CliRun cli(const std::string &args, const std::string &env = {})
{
    return test::RunCapture(KESTREL_CLI_PATH, args, env);
}



TEST(Extcap, AnswersWiresharksQuestions)
{
    test::CliRun r = cli("extcap --extcap-interfaces --extcap-version=4.0");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("extcap {version="), std::string::npos);
    EXPECT_NE(r.out.find("interface {value=kestrel-ports}{display=Kestrel: ports A+B}\n"), std::string::npos);
    EXPECT_NE(r.out.find("interface {value=kestrel-sim}{display=Kestrel: simulated line}\n"), std::string::npos);

    r = cli("extcap --extcap-interface kestrel-sim --extcap-dlts");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_EQ(r.out, "dlt {number=250}{name=RTAC_SERIAL}{display=Serial line (RTAC serial)}\n");

    r = cli("extcap --extcap-interface kestrel-ports --extcap-config");
    ASSERT_EQ(r.code, 0) << r.out;
    for (const char *call : {"--port-a", "--port-b", "--baud", "--data-bits", "--parity", "--stop-bits", "--gap",
                             "--end-byte", "--protocol", "--record"})
        EXPECT_NE(r.out.find(std::string("{call=") + call + "}"), std::string::npos) << call;
    EXPECT_EQ(r.out.find("--scenario"), std::string::npos);
    // The ports found here are offered to choose from, A on the first and B on the second;
    // with none found, a text field takes any device.
    r = cli("extcap --extcap-interface kestrel-ports --extcap-config", "KESTREL_PORTS=/dev/ttyUSB0:/dev/ttyS1");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("{call=--port-a}{display=Port A}{type=selector}"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("value {arg=0}{value=/dev/ttyUSB0}{display=/dev/ttyUSB0}{default=true}\n"
                         "value {arg=0}{value=/dev/ttyS1}{display=/dev/ttyS1}{default=false}\n"),
              std::string::npos) << r.out;
    EXPECT_NE(r.out.find("value {arg=1}{value=/dev/ttyS1}{display=/dev/ttyS1}{default=true}\n"), std::string::npos);
    r = cli("extcap --extcap-interface kestrel-ports --extcap-config", "KESTREL_PORTS=:");
    EXPECT_NE(r.out.find("{call=--port-b}{display=Port B}{type=string}"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("value {arg=0}"), std::string::npos);
    r = cli("extcap --extcap-interface kestrel-sim --extcap-config");
    EXPECT_NE(r.out.find("{call=--scenario}"), std::string::npos);
    EXPECT_EQ(r.out.find("--port-a"), std::string::npos);

    const struct {
        std::string args;
        const char *says;
    } bad[] = {
        {"extcap --extcap-interface serial0 --extcap-dlts", "unknown interface 'serial0'"},
        {"extcap --extcap-interface kestrel-sim --capture", "--fifo"},
        {"extcap --extcap-interface kestrel-ports --capture --fifo /tmp/x --port-a /dev/null", "--port-b"},
        {"extcap", "give --extcap-interfaces"},
    };
    for (const auto &c : bad) {
        r = cli(c.args);
        EXPECT_EQ(r.code, 2) << c.args << "\n" << r.out;
        EXPECT_NE(r.out.find(c.says), std::string::npos) << c.args << "\n" << r.out;
    }
}

// A capture of the simulated line into a FIFO, read by a thread as Wireshark would.
struct LiveCapture : ::testing::Test {
    test::TempDir dir;
    std::string fifo = dir.file("fifo");
    std::string ksr = dir.file("live.ksr");
    std::string log = dir.file("extcap.out");
    std::string received;
    std::thread reader;
    std::atomic<std::size_t> have{0};

    void start(std::size_t closeAfter = 0)
    {
        ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
        reader = std::thread([this, closeAfter] {
            const int fd = ::open(fifo.c_str(), O_RDONLY);
            char buf[4096];
            for (ssize_t n; fd >= 0 && (n = ::read(fd, buf, sizeof buf)) > 0;) {
                received.append(buf, static_cast<std::size_t>(n));
                have = received.size();
                if (closeAfter && received.size() >= closeAfter)
                    break;
            }
            if (fd >= 0)
                ::close(fd);
        });
    }
    bool waitFor(std::size_t bytes)
    {
        for (int i = 0; i < 1000 && have < bytes; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return have >= bytes;
    }
    void TearDown() override
    {
        if (reader.joinable()) {
            // A reader still waiting for a writer is released by opening the other end.
            const int fd = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
            if (fd >= 0)
                ::close(fd);
            reader.join();
        }
    }
};

TEST_F(LiveCapture, SigtermEndsTheCaptureCleanlyWithEveryByteDelivered)
{
    start();
    const pid_t pid = test::StartCli(KESTREL_CLI_PATH,
                                     {"extcap", "--extcap-interface", "kestrel-sim", "--capture", "--fifo", fifo,
                                      "--record", ksr, "--protocol", "mbrtu"},
                                     log);
    ASSERT_TRUE(waitFor(3000)) << test::ReadWholeFile(log); // some frames have come
    ASSERT_EQ(::kill(pid, SIGTERM), 0);
    EXPECT_EQ(test::WaitCli(pid), 0) << test::ReadWholeFile(log);
    reader.join();

    const test::CaptureFile f = test::ReadPcapng(received);
    EXPECT_EQ(f.linkTypes, (std::vector<std::uint16_t>{250, 252}));
    ASSERT_FALSE(f.packets.empty());
    std::string tx, rx;
    int upper = 0;
    for (const auto &p : f.packets) {
        if (p.interface == 1) {
            ++upper;
            continue;
        }
        if (p.event() == 1)
            tx += p.payload();
        if (p.event() == 2)
            rx += p.payload();
    }
    EXPECT_GT(upper, 0);
    EXPECT_EQ(f.packets.back().event(), 6) << "the stop mark comes last";
    EXPECT_NE(f.packets.back().comment.find("stopped"), std::string::npos);

    // What Wireshark got is what the recording holds, byte for byte.
    RecordReader rec;
    ASSERT_TRUE(rec.open(ksr));
    std::vector<MpRecord> mps;
    rec.readBlock(0, rec.recordCount(), mps);
    std::string d1, d2;
    for (const MpRecord &mp : mps) {
        if (mp.d1Valid)
            d1 += static_cast<char>(mp.d1);
        if (mp.d2Valid)
            d2 += static_cast<char>(mp.d2);
    }
    EXPECT_FALSE(d1.empty());
    EXPECT_EQ(tx, d1);
    EXPECT_EQ(rx, d2);
    EXPECT_TRUE(SummarizeRecording(rec).endsWithStopMark());
}

TEST_F(LiveCapture, AReaderThatGoesAwayEndsTheCaptureAndTheTemporaryRecording)
{
    start(200);
    const std::string tmp = dir.file("tmp");
    ASSERT_EQ(::mkdir(tmp.c_str(), 0700), 0);
    const pid_t pid = [&] {
        ::setenv("TMPDIR", tmp.c_str(), 1);
        const pid_t p = test::StartCli(KESTREL_CLI_PATH,
                                       {"extcap", "--extcap-interface", "kestrel-sim", "--capture", "--fifo", fifo}, log);
        ::unsetenv("TMPDIR");
        return p;
    }();
    reader.join(); // read 200 bytes and closed its end
    EXPECT_EQ(test::WaitCli(pid, std::chrono::seconds(15)), 0) << test::ReadWholeFile(log);
    EXPECT_TRUE(std::filesystem::is_empty(tmp)) << "the temporary recording is removed";
}

// Wireshark stops a capture by closing the FIFO, most often while the line is quiet.
TEST_F(LiveCapture, AReaderThatGoesAwayWhileTheLineIsQuietEndsTheCaptureAtOnce)
{
    const std::string scenario = dir.file("quiet.ksc");
    std::ofstream(scenario) << "b 01 02 03\nwait 60s\n";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const pid_t pid = test::StartCli(KESTREL_CLI_PATH,
                                     {"extcap", "--extcap-interface", "kestrel-sim", "--capture", "--fifo", fifo,
                                      "--scenario", scenario, "--record", ksr},
                                     log);
    // Read until the line has been quiet for half a second, then close: nothing more
    // is written that could fail and give the capture away.
    const int fd = ::open(fifo.c_str(), O_RDONLY);
    ASSERT_GE(fd, 0);
    pollfd p{fd, POLLIN, 0};
    char buf[4096];
    for (ssize_t n; ::poll(&p, 1, 500) > 0 && (n = ::read(fd, buf, sizeof buf)) > 0;)
        received.append(buf, static_cast<std::size_t>(n));
    ::close(fd);
    const auto closed = std::chrono::steady_clock::now();
    EXPECT_FALSE(received.empty()) << "the packets of the line came while it was open";
    EXPECT_EQ(test::WaitCli(pid, std::chrono::seconds(10)), 0) << test::ReadWholeFile(log);
    EXPECT_LT(std::chrono::steady_clock::now() - closed, std::chrono::seconds(2));
    RecordReader rec;
    ASSERT_TRUE(rec.open(ksr));
    EXPECT_TRUE(SummarizeRecording(rec).endsWithStopMark());
}

TEST(Extcap, PortsThatDoNotOpenEndTheCaptureWithAMessage)
{
    test::TempDir dir;
    const test::CliRun r = cli("extcap --extcap-interface kestrel-ports --capture --fifo '" + dir.file("out") +
                               "' --port-a /dev/kestrel-none-a --port-b /dev/kestrel-none-b");
    EXPECT_EQ(r.code, 3) << r.out;
    EXPECT_NE(r.out.find("The device does not exist."), std::string::npos) << r.out;
}

TEST(Extcap, InstallsItsEntryAndLeavesAForeignOneAlone)
{
    test::TempDir home;
    const std::string env = "HOME='" + home.path().string() + "' XDG_CONFIG_HOME=";
    test::CliRun r = cli("extcap --install", env);
    ASSERT_EQ(r.code, 0) << r.out;
    const std::string entry = home.file(".config/wireshark/extcap/kestrel-extcap");
    struct stat st {};
    ASSERT_EQ(::stat(entry.c_str(), &st), 0);
    EXPECT_TRUE(st.st_mode & S_IXUSR);
    r = test::RunCapture(entry, "--extcap-interfaces");
    EXPECT_NE(r.out.find("kestrel-sim"), std::string::npos) << r.out;
    EXPECT_EQ(cli("extcap --install", env).code, 0) << "its own entry is written again";

    std::ofstream(entry, std::ios::trunc) << "#!/bin/sh\necho someone else's\n";
    r = cli("extcap --install", env);
    EXPECT_EQ(r.code, 2) << r.out;
    EXPECT_NE(r.out.find("is not Kestrel's"), std::string::npos) << r.out;
    EXPECT_EQ(test::ReadWholeFile(entry), "#!/bin/sh\necho someone else's\n");
}

TEST(Extcap, TsharkCapturesLiveFromTheSimulatedLine)
{
    if (!test::HaveTshark())
        GTEST_SKIP() << "tshark is not installed (apt-get install tshark)";
    test::TempDir home;
    const std::string env = "HOME='" + home.path().string() + "' XDG_CONFIG_HOME=";
    ASSERT_EQ(cli("extcap --install", env).code, 0);
    const test::CliRun list = test::RunCapture("tshark", "-D", env, false);
    EXPECT_NE(list.out.find("kestrel-sim (Kestrel: simulated line)"), std::string::npos) << list.out;
    EXPECT_NE(list.out.find("kestrel-ports (Kestrel: ports A+B)"), std::string::npos) << list.out;

    const std::string out = home.file("live.pcapng");
    const test::CliRun r = test::RunCapture("tshark", "-i kestrel-sim -a duration:3 -w '" + out + "'", env);
    ASSERT_EQ(r.code, 0) << r.out;
    const test::CliRun read = test::RunCapture("tshark", "-r '" + out + "' -T fields -e rtacser.eventtype", {}, false);
    std::istringstream lines(read.out);
    int tx = 0, rx = 0;
    for (std::string line; std::getline(lines, line);) {
        tx += line == "0x01";
        rx += line == "0x02";
    }
    EXPECT_GT(tx, 0) << read.out;
    EXPECT_GT(rx, 0) << read.out;
}

} // namespace
} // namespace kestrel
